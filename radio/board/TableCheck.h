#ifndef RADIO_BOARD_TABLECHECK_H
#define RADIO_BOARD_TABLECHECK_H

#include "radio/board/Board.h"
#include "radio/board/Finding.h"

#include <optional>
#include <string>
#include <vector>

/** Mistakes in LO-cancellation tables that show without looking at their values. */
namespace Radio {

/**
 * How the axes of a table are swapped, for a message, when they are: the first has temperatures, where
 * carriers should stand, and the second what no temperature is.
 */
std::optional<std::string> swappedAxes(const CalibrationTable& table);

/** Warns when the file of a channel's table says that it was made for another radio or another channel. */
std::vector<Finding> findingsOfOrigin(const TableDescription& table, const Board& board, int channel);

} // namespace Radio

#endif
