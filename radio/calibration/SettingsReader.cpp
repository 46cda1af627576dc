#include "radio/calibration/SettingsReader.h"

#include "radio/board/CalibrationBounds.h"

#include <algorithm>
#include <functional>
#include <vector>

namespace Radio::Calibration {

namespace {

Range rangeFrom(const ParsedJson& json, const Range& bounds) {
    const Range range{wholeNumber<std::int64_t>(json.at(0), bounds),
                      wholeNumber<std::int64_t>(json.at(1), bounds)};
    if (json.size() != 2 || range.low >= range.high) {
        throw std::runtime_error("not a range");
    }
    return range;
}

template <typename Number>
std::vector<Number> axisFrom(const ParsedJson& json, const Range& bounds) {
    std::vector<Number> axis;
    for (const ParsedJson& element : json) {
        axis.push_back(wholeNumber<Number>(element, bounds));
    }
    const auto wrong = std::adjacent_find(axis.begin(), axis.end(), std::greater_equal<>());
    if (!json.is_array() || axis.empty() || wrong != axis.end()) {
        throw std::runtime_error("not ascending numbers");
    }
    return axis;
}

/** A number of at most 1e9 either way, or nothing for null. */
std::optional<double> numberFrom(const ParsedJson& json) {
    constexpr double most = 1e9;
    if (json.is_null()) {
        return std::nullopt;
    }
    const auto number = json.get<double>();
    if (!(number >= -most && number <= most)) {
        throw std::runtime_error("not a number of a qualification");
    }
    return number;
}

} // namespace

Settings settingsFromJson(const ParsedJson& json) {
    Settings settings;
    settings.channel = wholeNumber<int>(json.at("channel"), {0, 2147483647});
    // Journals were without a method when there was but one.
    const auto method = calibrationMethodFromString(json.value("method", "search"));
    if (!method) {
        throw std::runtime_error("not the method of a calibration");
    }
    settings.method = *method;
    if (settings.method == CalibrationMethod::fit) {
        settings.budget = wholeNumber<std::uint32_t>(json.at("probes"), budgetBounds);
        settings.limit = numberFrom(json.at("limit_dbc"));
    }
    settings.frequencies = axisFrom<std::uint32_t>(json.at("frequencies_khz"), carrierBounds);
    settings.temperatures = axisFrom<std::int32_t>(json.at("temperatures_c"), temperatureBounds);
    settings.i = rangeFrom(json.at("i_range"), correctionBounds);
    settings.q = rangeFrom(json.at("q_range"), correctionBounds);
    settings.shrinkFactor = json.at("shrink_factor").get<double>();
    settings.minDelta = wholeNumber<std::int32_t>(json.at("min_delta"), minDeltaBounds);
    settings.maxIterations = wholeNumber<std::uint32_t>(json.at("max_iterations"), iterationBounds);
    settings.settleTime = wholeNumber<std::uint32_t>(json.at("settle_time_ms"), settleTimeBounds);
    const auto detector = json.at("detector").get<std::string>();
    if (!isShrinkFactor(settings.shrinkFactor) || (detector != "low" && detector != "high") ||
        settings.frequencies.size() * settings.temperatures.size() > maxPoints) {
        throw std::runtime_error("not the settings of a calibration");
    }
    settings.useHighDetector = detector == "high";
    return settings;
}

std::vector<std::int32_t> routeFromJson(const ParsedJson& json, const Settings& settings) {
    std::vector<std::int32_t> route;
    for (const ParsedJson& element : json) {
        route.push_back(wholeNumber<std::int32_t>(element, temperatureBounds));
    }
    if (!std::is_permutation(route.begin(), route.end(), settings.temperatures.begin(),
                             settings.temperatures.end())) {
        throw std::runtime_error("not an order of the temperatures");
    }
    return route;
}

Qualification qualificationFromJson(const ParsedJson& json) {
    constexpr std::int64_t mostTaken = 1000;
    Qualification qualification;
    qualification.settleTime = wholeNumber<std::uint32_t>(json.at("settle_time_ms"), settleTimeBounds);
    qualification.readings = wholeNumber<std::uint32_t>(json.at("readings"), {1, mostReadings});
    qualification.settled = numberFrom(json.at("settled_ms"));
    qualification.noise = numberFrom(json.at("noise")).value_or(0.0);
    qualification.slope = numberFrom(json.at("slope"));
    qualification.taken = wholeNumber<std::uint32_t>(json.at("taken"), {0, mostTaken});
    if (qualification.slope == 0.0) {
        throw std::runtime_error("not a slope");
    }
    return qualification;
}

} // namespace Radio::Calibration
