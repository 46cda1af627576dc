#ifndef RADIO_LABORATORY_LABORATORYREADER_H
#define RADIO_LABORATORY_LABORATORYREADER_H

#include "radio/laboratory/Laboratory.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace Radio::Laboratory {

/** What transmitters there can be, and sets of settings. */
constexpr std::int32_t mostTransmitters = 1000000;
constexpr std::size_t mostSettings = 100;
/** In bytes: the units of mostTransmitters. */
constexpr std::size_t largestUnitsFile = std::size_t{1024} * 1024 * 1024;

/**
 * Reads a laboratory file, and the board that it names. Throws InputError, also for settings that a
 * calibration of the board would refuse.
 */
Description loadLaboratory(const std::filesystem::path& file);

} // namespace Radio::Laboratory

#endif
