#ifndef RADIO_BOARD_TABLEREADER_H
#define RADIO_BOARD_TABLEREADER_H

#include "radio/board/Board.h"
#include "radio/board/BoardFile.h"
#include "radio/board/TomlItem.h"

#include <string>

namespace Radio {

/** The table `name` of a board file, whose entry is `item`. */
TableDescription readTable(const std::string& name, const TomlItem& item, const CsvSource& csv);

} // namespace Radio

#endif
