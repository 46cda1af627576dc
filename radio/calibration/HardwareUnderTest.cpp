#include "radio/calibration/HardwareUnderTest.h"

#include "radio/board/BoardNames.h"
#include "radio/calibration/SearchDrivers.h"
#include "radio/files/Fingerprint.h"
#include "radio/files/InputError.h"
#include "radio/text/Words.h"

#include <algorithm>

namespace Radio::Calibration {

namespace {

using Devices::DriverHardware;

[[noreturn]] void fail(const Board& board, int channel, const std::string& what) {
    throw InputError({board.file.string(), 0}, "channel " + std::to_string(channel) + ": " + what);
}

Place placeOf(const Board& board, const std::string& driver) {
    return board.hardware.places.at(driver);
}

/** What a driver is; `use` is the key that it has to have. */
const DriverHardware& requireHardware(const Board& board, int channel, const std::string& driver,
                                      const char* use,
                                      std::optional<Devices::AttributeName> DriverHardware::*attribute) {
    const DriverHardware* const hardware = findHardware(board, driver);
    if (hardware == nullptr) {
        fail(board, channel,
             "driver " + inQuotes(driver) + " has no hardware, expected it in [hardware] with the key " +
                 use);
    }
    if (!(hardware->*attribute)) {
        throw InputError(placeOf(board, driver),
                         inQuotes(driver) + ": expected the key " + use + " for a calibration, found none");
    }
    return *hardware;
}

void requireWithin(const Board& board, const DriverHardware& hardware, const Range& range,
                   const std::string& branch, const char* choice) {
    if (range.low >= range.high) {
        throw ChoiceError(placeOf(board, hardware.driver),
                          inQuotes(hardware.driver) + " leaves nothing to search for " + branch +
                              ", expected a range of more than one value",
                          choice);
    }
    if (!hardware.lowest || (range.low >= *hardware.lowest && range.high <= *hardware.highest)) {
        return;
    }
    throw ChoiceError(placeOf(board, hardware.driver),
                      branch + " is to be searched from " + std::to_string(range.low) + " to " +
                          std::to_string(range.high) + ", but " + inQuotes(hardware.driver) + " takes " +
                          std::to_string(*hardware.lowest) + " to " + std::to_string(*hardware.highest) +
                          ", expected a range of " + branch + " within that",
                      choice);
}

void requireCorrections(const Board& board, const Settings& settings, const SearchDrivers& drivers) {
    const auto require = [&](const std::string& driver, const Range& range, const char* branch,
                             const char* choice) {
        requireWithin(board,
                      requireHardware(board, settings.channel, driver, "write", &DriverHardware::write),
                      range, branch, choice);
    };
    require(drivers.i, settings.i, "I", "i-range");
    require(drivers.q, settings.q, "Q", "q-range");
}

void requireChamber(const Board& board, const Settings& settings) {
    const std::string chamber = chamberOf(board, settings.channel);
    if (chamber.empty()) {
        return;
    }
    const DriverHardware& hardware =
        requireHardware(board, settings.channel, chamber, "write", &DriverHardware::write);
    if (!board.hardware.description.sensor) {
        throw InputError(placeOf(board, chamber),
                         inQuotes(chamber) + " sets temperatures, but there is no [sensor], expected one "
                                             "that tells when they are reached");
    }
    for (const std::int32_t degrees : settings.temperatures) {
        if (hardware.lowest && (degrees < *hardware.lowest || degrees > *hardware.highest)) {
            throw ChoiceError(placeOf(board, chamber),
                              inQuotes(chamber) + " takes " + std::to_string(*hardware.lowest) + " to " +
                                  std::to_string(*hardware.highest) + " degrees, not " +
                                  std::to_string(degrees) + ", expected temperatures within that",
                              "temperatures");
        }
    }
}

/** What the board says of a channel's calibration; null when it says nothing. */
const CalibrationDescription* findCalibration(const Board& board, int channel) {
    const auto found = std::find_if(board.calibrations.begin(), board.calibrations.end(),
                                    [channel](const auto& one) { return one.channel == channel; });
    return found == board.calibrations.end() ? nullptr : &*found;
}

void add(Fingerprint& fingerprint, const Board& board, const Devices::AttributeName& name) {
    const auto& devices = board.hardware.description.devices;
    const auto device = std::find_if(devices.begin(), devices.end(),
                                     [&](const auto& one) { return one.name == name.device; });
    fingerprint.add(device == devices.end() ? "" : device->address);
    fingerprint.add(name.attribute);
}

void add(Fingerprint& fingerprint, const Board& board, const DriverHardware& hardware) {
    for (const auto* const attribute : {&hardware.write, &hardware.negative, &hardware.read}) {
        fingerprint.add(attribute->has_value());
        if (*attribute) {
            add(fingerprint, board, **attribute);
        }
    }
    const Devices::Conversion& conversion = hardware.conversion;
    fingerprint.add(conversion.scale);
    fingerprint.add(conversion.offset);
    fingerprint.add(static_cast<int>(conversion.rounding));
    fingerprint.add(conversion.decimals);
}

} // namespace

void requireCalibratable(const Board& board, const Settings& settings, bool isAttended) {
    const SearchDrivers drivers = driversOf(board, settings.channel);
    if (drivers.i.empty() || drivers.q.empty()) {
        fail(board, settings.channel,
             "nothing to calibrate, expected a type with LO cancellation, and its drivers");
    }
    const std::string& detector = drivers.read(settings.useHighDetector);
    if (detector.empty()) {
        fail(board, settings.channel,
             std::string("no ") + (settings.useHighDetector ? "high-range " : "") +
                 "detector, expected a driver that a search can read");
    }
    requireCorrections(board, settings, drivers);
    requireHardware(board, settings.channel, detector, "read", &DriverHardware::read);
    requireChamber(board, settings);
    if (const std::string analyser = analyserOf(board, settings.channel); !analyser.empty()) {
        requireHardware(board, settings.channel, analyser, "read", &DriverHardware::read);
    }
    if (!board.hardware.description.sensor && !isAttended && settings.temperatures.size() > 1) {
        throw ChoiceError({board.file.string(), 0},
                          "channel " + std::to_string(settings.channel) + ": " +
                              std::to_string(settings.temperatures.size()) +
                              " temperatures, and no [sensor] that tells when they are reached, expected one "
                              "temperature",
                          "temperatures");
    }
}

std::string hardwareFingerprint(const Board& board, int channel) {
    const SearchDrivers drivers = driversOf(board, channel);
    Fingerprint fingerprint;
    for (const std::string* const driver :
         {&drivers.i, &drivers.q, &drivers.detector, &drivers.highDetector}) {
        fingerprint.add(*driver);
        if (const DriverHardware* const hardware = findHardware(board, *driver)) {
            add(fingerprint, board, *hardware);
        }
    }
    return fingerprint.text();
}

std::string chamberOf(const Board& board, int channel) {
    const CalibrationDescription* const described = findCalibration(board, channel);
    return described == nullptr ? "" : described->chamber;
}

std::string analyserOf(const Board& board, int channel) {
    const CalibrationDescription* const described = findCalibration(board, channel);
    return described == nullptr ? "" : described->analyser;
}

std::chrono::minutes awaitLimitOf(const Board& board, int channel) {
    constexpr std::uint32_t usualMinutes = 60;
    const CalibrationDescription* const described = findCalibration(board, channel);
    return std::chrono::minutes(described == nullptr ? usualMinutes
                                                     : described->awaitLimit.value_or(usualMinutes));
}

} // namespace Radio::Calibration
