#ifndef RADIO_BOARD_HARDWARERANGES_H
#define RADIO_BOARD_HARDWARERANGES_H

#include "radio/board/Board.h"
#include "radio/board/Finding.h"

#include <vector>

namespace Radio {

/**
 * Holds the ranges of drivers against the tables whose values go to them: what is between two nodes lies
 * between their values, so that a table within the range never gives a value outside. Touches no hardware.
 */
std::vector<Finding> checkHardwareRanges(const Board& board);

} // namespace Radio

#endif
