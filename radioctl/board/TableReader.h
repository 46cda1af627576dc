#ifndef RADIOCTL_BOARD_TABLEREADER_H
#define RADIOCTL_BOARD_TABLEREADER_H

#include "Board.h"
#include "TomlItem.h"

#include <string>

namespace Radioctl {

/** The table `name` of a board file, whose entry is `item`. */
TableDescription readTable(const std::string& name, const TomlItem& item, const CsvSource& csv);

} // namespace Radioctl

#endif
