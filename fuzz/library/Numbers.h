#ifndef FUZZ_LIBRARY_NUMBERS_H
#define FUZZ_LIBRARY_NUMBERS_H

#include "Bytes.h"

#include <cstdint>
#include <limits>

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

// Numbers for which some bytes stand: mostly those that a radio has to do with, but any can come.

std::int32_t anyNumber(Bytes& bytes);
/** In kHz; some need more than 32 bits, which is for whoever takes them to cut. */
std::int64_t anyFrequency(Bytes& bytes);
/** In degrees. */
std::int32_t anyTemperature(Bytes& bytes);
/** Mostly between 0 and 1, for what a calibration keeps of its ranges. */
double anyFactor(Bytes& bytes);

#endif
