#include "service/radio/CalibrationBody.h"

#include "radio/board/CalibrationBounds.h"
#include "radio/files/Label.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace Radio::Service {

namespace {

constexpr std::size_t mostTemperatures = temperatureBounds.high - temperatureBounds.low + 1;

template <typename Number>
void take(Body& body, const char* name, const Range& bounds, std::optional<Number>& number) {
    if (const auto value = body.optionalInteger(name, bounds.low, bounds.high)) {
        number = static_cast<Number>(*value);
    }
}

void take(Body& body, const char* name, const Range& bounds, bool mayBeEqual, std::optional<Range>& range) {
    const std::vector<std::int32_t> ends = body.optionalIntegers(
        name, 2, 2, static_cast<std::int32_t>(bounds.low), static_cast<std::int32_t>(bounds.high));
    if (ends.empty()) {
        return;
    }
    if (ends[0] > ends[1] || (ends[0] == ends[1] && !mayBeEqual)) {
        throw std::invalid_argument(inQuotes(name) + ": expected the lowest value first and a higher one " +
                                    "behind it");
    }
    range = Range{ends[0], ends[1]};
}

/** One of two words; nothing when nothing is said. */
std::optional<bool> isFirst(Body& body, const char* name, const char* first, const char* second) {
    const std::string word = body.optionalText(name);
    if (word.empty()) {
        return std::nullopt;
    }
    if (word != first && word != second) {
        throw std::invalid_argument(inQuotes(name) + ": expected " + inQuotes(first) + " or " +
                                    inQuotes(second));
    }
    return word == first;
}

Calibration::Beginning beginning(Body& body) {
    using Calibration::Beginning;
    const std::string word = body.optionalText("beginning");
    if (word.empty() || word == "fresh") {
        return Beginning::fresh;
    }
    if (word != "resume" && word != "restart") {
        throw std::invalid_argument("\"beginning\": expected one of fresh, resume, restart");
    }
    return word == "resume" ? Beginning::resume : Beginning::restart;
}

std::string label(Body& body, const char* name) {
    std::string text = body.optionalText(name);
    const std::string wrong = text.empty() ? "" : whyNoLabel(text);
    if (!wrong.empty()) {
        throw std::invalid_argument(inQuotes(name) + ": " + wrong);
    }
    return text;
}

void takeTemperatures(Body& body, std::vector<std::int32_t>& temperatures) {
    temperatures = body.optionalIntegers("temperatures_c", 1, mostTemperatures,
                                         static_cast<std::int32_t>(temperatureBounds.low),
                                         static_cast<std::int32_t>(temperatureBounds.high));
    std::sort(temperatures.begin(), temperatures.end());
    const auto twice = std::adjacent_find(temperatures.begin(), temperatures.end());
    if (twice != temperatures.end()) {
        throw std::invalid_argument("\"temperatures_c\": " + std::to_string(*twice) +
                                    " is there twice, expected each temperature once");
    }
}

void takeSearch(Body& body, CalibrationDescription& wishes) {
    take(body, "i_range", correctionBounds, false, wishes.iRange);
    take(body, "q_range", correctionBounds, false, wishes.qRange);
    wishes.shrinkFactor = body.optionalNumber("shrink_factor");
    if (wishes.shrinkFactor && !isShrinkFactor(*wishes.shrinkFactor)) {
        throw std::invalid_argument(std::string("\"shrink_factor\": expected ") + shrinkFactorText);
    }
    take(body, "min_delta", minDeltaBounds, wishes.minDelta);
    take(body, "max_iterations", iterationBounds, wishes.maxIterations);
    take(body, "settle_time_ms", settleTimeBounds, wishes.settleTime);
    wishes.useHighDetector = isFirst(body, "detector", "high", "low");
    take(body, "tolerance", toleranceBounds, wishes.tolerance);
    take(body, "dwell_s", dwellBounds, wishes.dwell);
}

} // namespace

WantedCalibration wantedCalibration(Body& body) {
    WantedCalibration wanted;
    Calibration::CalibrationOrder& order = wanted.order;
    CalibrationDescription& wishes = order.wishes;
    wishes.channel = static_cast<int>(body.integer("channel", 0, std::numeric_limits<int>::max()));
    if (const auto isFit = isFirst(body, "method", "fit", "search")) {
        wishes.method = *isFit ? CalibrationMethod::fit : CalibrationMethod::search;
    }
    take(body, "probes", budgetBounds, wishes.probes);
    take(body, "band_khz", carrierBounds, true, wishes.band);
    take(body, "step_khz", carrierBounds, wishes.step);
    takeTemperatures(body, wishes.temperatures);
    takeSearch(body, wishes);
    order.serial = label(body, "serial");
    order.station = label(body, "station");
    order.beginning = beginning(body);
    order.acceptsEdge = body.flag("accept_edge");
    order.acceptsFail = body.flag("accept_fail");
    order.qualifies = body.flag("qualify", true);
    order.isRealTime = body.flag("real_time");
    order.isAttended = body.flag("attended");
    wanted.isForced = body.flag("force");
    body.end();
    return wanted;
}

std::string whyNotWithMethod(const CalibrationDescription& wishes, CalibrationMethod method) {
    const bool isFit = method == CalibrationMethod::fit;
    if (!(isFit ? wishes.step.has_value() : wishes.probes.has_value())) {
        return {};
    }
    return inQuotes(isFit ? "step_khz" : "probes") + ": not together with the method " +
           std::string(toString(method)) + R"(, expected "method": ")" + (isFit ? "search" : "fit") +
           "\" with it";
}

} // namespace Radio::Service
