#ifndef RADIO_BOARD_HARDWARERANGES_H
#define RADIO_BOARD_HARDWARERANGES_H

#include "radio/board/Board.h"
#include "radio/board/Finding.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Radio {

/**
 * Holds the ranges of drivers against the tables whose values go to them: what is between two nodes lies
 * between their values, so that a table within the range never gives a value outside. Touches no hardware.
 */
std::vector<Finding> checkHardwareRanges(const Board& board);

/** Why a driver should not be given a value: it lies outside the range that the board states. Empty when
 * nothing speaks against it. */
std::string whyNotWrite(const Board& board, const std::string& driver, std::int64_t value);

} // namespace Radio

#endif
