#ifndef RADIO_BOARD_TABLEREADER_H
#define RADIO_BOARD_TABLEREADER_H

#include "radio/board/Board.h"
#include "radio/board/TableFile.h"
#include "radio/board/TomlItem.h"

#include <string>

namespace Radio {

/** The table `name` of a board file, whose entry is `item`; of a CSV file, out of `files`. */
TableDescription readTable(const std::string& name, const TomlItem& item, TableFiles& files);

} // namespace Radio

#endif
