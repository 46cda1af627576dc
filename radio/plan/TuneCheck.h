#ifndef RADIO_PLAN_TUNECHECK_H
#define RADIO_PLAN_TUNECHECK_H

#include "radio/board/Board.h"
#include "radio/board/PlatformWords.h"
#include "standalone/Platform.h"

#include <cstdint>
#include <string>

/** What is asked of a radio, held against what its board allows before anything is written. */
namespace Radio::Plan {

/**
 * Why a channel should not be tuned to a carrier in kHz: it lies outside the rasters that the board has for
 * the direction, from the first to the last carrier of each, it takes a synthesiser beyond the board's
 * limits, it would come out too far off, or a word lies outside the range of its driver. Empty when nothing
 * speaks against it; a board without rasters and limits forbids nothing. `platform` is that of the radio,
 * which is up; it is only read.
 */
std::string whyNotTune(const Board& board, Standalone::Platform& platform, Direction direction, int channel,
                       std::uint32_t carrier);

/** The same for a temperature, in degrees Celsius: outside the board's limits. */
std::string whyNotTemperature(const Board& board, int degrees);

} // namespace Radio::Plan

#endif
