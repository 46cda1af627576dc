#ifndef RADIO_THERMAL_THERMALLOG_H
#define RADIO_THERMAL_THERMALLOG_H

#include <cstdint>
#include <filesystem>
#include <istream>
#include <string>
#include <vector>

/** Temperature logs. Touches no radio; may be called on any thread. */
namespace Radio::Thermal {

/** A temperature that was measured. */
struct Sample {
    std::int64_t seconds;
    /** Celsius; whole degrees, as the temperature service gives them. */
    std::int32_t degrees;
};

/** Samples in the order of time, no two at the same second; at least one. */
using ThermalLog = std::vector<Sample>;

/**
 * Reads a temperature log: the line "seconds,degrees", and below it a line for each sample. Throws
 * InputError, and nothing else, for a file that cannot be read or used.
 */
ThermalLog readThermalLog(const std::filesystem::path& file);
/** The same for what `stream` gives, the content of a file called `name`. */
ThermalLog readThermalLog(std::istream& stream, const std::string& name);

} // namespace Radio::Thermal

#endif
