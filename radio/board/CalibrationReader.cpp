#include "radio/board/CalibrationReader.h"

#include "radio/board/CalibrationBounds.h"
#include "radio/board/ChannelReader.h"
#include "radio/text/NearestName.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <string>

namespace Radio {

namespace {

std::optional<bool> isHighDetector(std::string_view word) {
    if (word == "low") {
        return false;
    }
    return word == "high" ? std::optional<bool>(true) : std::nullopt;
}

std::optional<Range> readRange(const TomlItem& calibration, std::string_view key, std::int64_t least,
                               std::int64_t most) {
    const std::optional<TomlItem> item = calibration.find(key);
    if (!item) {
        return std::nullopt;
    }
    const std::vector<TomlItem> ends = item->elements();
    item->requireCount(ends.size(), 2, "the lowest and the highest value");
    const Range range{ends[0].integer(), ends[1].integer()};
    if (range.low < least || range.high > most) {
        item->fail("expected values from " + std::to_string(least) + " to " + std::to_string(most) +
                   ", found " + std::to_string(range.low < least ? range.low : range.high));
    }
    if (range.low >= range.high && key != "band") {
        item->fail("expected the lowest value first and a higher one behind it, found " +
                   std::to_string(range.low) + " and " + std::to_string(range.high));
    }
    if (range.low > range.high) {
        item->fail("expected the lowest carrier first, found " + std::to_string(range.high) + " after " +
                   std::to_string(range.low));
    }
    return range;
}

/** A whole number within `bounds`, if it is there. */
std::optional<std::uint32_t> readNumber(const TomlItem& calibration, std::string_view key, Range bounds) {
    const std::optional<TomlItem> item = calibration.find(key);
    if (!item) {
        return std::nullopt;
    }
    const std::int32_t number = item->integer();
    if (number < bounds.low || number > bounds.high) {
        item->fail("expected a number from " + std::to_string(bounds.low) + " to " +
                   std::to_string(bounds.high) + ", found " + std::to_string(number));
    }
    return static_cast<std::uint32_t>(number);
}

std::vector<std::int32_t> readTemperatures(const TomlItem& calibration) {
    const std::optional<TomlItem> item = calibration.find("temperatures");
    if (!item) {
        return {};
    }
    std::vector<std::int32_t> temperatures = item->distinctIntegers();
    for (const std::int32_t degrees : temperatures) {
        if (degrees < temperatureBounds.low || degrees > temperatureBounds.high) {
            item->fail("expected degrees from " + std::to_string(temperatureBounds.low) + " to " +
                       std::to_string(temperatureBounds.high) + ", found " + std::to_string(degrees));
        }
    }
    std::sort(temperatures.begin(), temperatures.end());
    return temperatures;
}

std::string readDriver(const TomlItem& item, const std::vector<DriverDescription>& drivers) {
    std::string name = item.nonEmptyText("the name of a driver");
    std::vector<std::string> names;
    names.reserve(drivers.size());
    for (const DriverDescription& driver : drivers) {
        names.push_back(driver.name);
    }
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        item.fail("the board has no driver " + inQuotes(name) + didYouMean(name, names) +
                  ", expected one of [drivers]");
    }
    return name;
}

/** What the real detector makes of a level. */
void readDetector(const TomlItem& item, CalibrationDescription& calibration) {
    constexpr double steepest = 1e6;
    constexpr double farthest = 1000.0;
    const std::optional<TomlItem> slope = item.find("detector_slope");
    const std::optional<TomlItem> zero = item.find("detector_zero");
    if (slope) {
        calibration.detectorSlope = slope->number(steepest);
        if (!(*calibration.detectorSlope > 0.0)) {
            slope->failExpecting("units of the reading for each dB, more than 0");
        }
    }
    if (zero) {
        calibration.detectorZero = zero->number(farthest);
        if (!slope) {
            zero->failExpecting("detector_slope beside it");
        }
    }
}

CalibrationDescription readCalibration(const TomlItem& item, ChannelReader& channel,
                                       const std::vector<DriverDescription>& drivers) {
    item.entries({"channel",   "band",           "step",          "temperatures",   "i_range",
                  "q_range",   "shrink_factor",  "min_delta",     "max_iterations", "settle_time",
                  "detector",  "detector_slope", "detector_zero", "chamber",        "analyser",
                  "tolerance", "dwell",          "await_limit",   "method",         "probes"});
    CalibrationDescription calibration = readCalibrationSettings(item);
    calibration.channel = channel.read(item);
    readDetector(item, calibration);
    if (const std::optional<TomlItem> chamber = item.find("chamber")) {
        calibration.chamber = readDriver(*chamber, drivers);
    }
    calibration.tolerance = readNumber(item, "tolerance", toleranceBounds);
    calibration.dwell = readNumber(item, "dwell", dwellBounds);
    if (const std::optional<TomlItem> analyser = item.find("analyser")) {
        calibration.analyser = readDriver(*analyser, drivers);
    }
    calibration.awaitLimit = readNumber(item, "await_limit", awaitLimitBounds);
    return calibration;
}

} // namespace

CalibrationDescription readCalibrationSettings(const TomlItem& item) {
    CalibrationDescription calibration;
    if (const std::optional<TomlItem> method = item.find("method")) {
        calibration.method = method->word(calibrationMethodFromString, {"fit", "search"});
    }
    calibration.probes = readNumber(item, "probes", budgetBounds);
    calibration.band = readRange(item, "band", 1, carrierBounds.high);
    calibration.step = readNumber(item, "step", carrierBounds);
    calibration.temperatures = readTemperatures(item);
    calibration.iRange = readRange(item, "i_range", correctionBounds.low, correctionBounds.high);
    calibration.qRange = readRange(item, "q_range", correctionBounds.low, correctionBounds.high);
    if (const std::optional<TomlItem> factor = item.find("shrink_factor")) {
        calibration.shrinkFactor = factor->number(1.0);
        if (!isShrinkFactor(*calibration.shrinkFactor)) {
            factor->failExpecting(shrinkFactorText);
        }
    }
    if (const auto delta = readNumber(item, "min_delta", minDeltaBounds)) {
        calibration.minDelta = static_cast<std::int32_t>(*delta);
    }
    calibration.maxIterations = readNumber(item, "max_iterations", iterationBounds);
    calibration.settleTime = readNumber(item, "settle_time", settleTimeBounds);
    if (const std::optional<TomlItem> detector = item.find("detector")) {
        calibration.useHighDetector = detector->word(isHighDetector, {"low", "high"});
    }
    return calibration;
}

std::vector<CalibrationDescription> readCalibrations(const TomlItem& root,
                                                     const std::vector<ChannelDescription>& channels,
                                                     const std::vector<DriverDescription>& drivers) {
    std::vector<CalibrationDescription> result;
    ChannelReader channel(channels, "calibration");
    for (const TomlItem& item : root.tables("calibration", "channel")) {
        result.push_back(readCalibration(item, channel, drivers));
    }
    return result;
}

} // namespace Radio
