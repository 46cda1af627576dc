#include "python/binding/Orders.h"

#include "radio/board/CalibrationBounds.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <utility>

namespace Radio::Python {

namespace {

py::object valueOf(const py::dict& given, const char* key) {
    return given.contains(key) ? py::object(given[key]) : py::object(py::none());
}

std::string stringOf(const py::dict& given, const char* key) {
    const py::object value = valueOf(given, key);
    return value.is_none() ? std::string() : value.cast<std::string>();
}

bool flagOf(const py::dict& given, const char* key) {
    const py::object value = valueOf(given, key);
    return !value.is_none() && value.cast<bool>();
}

/** `value` within `bounds`, or WordError. */
std::int64_t within(const py::handle& value, const char* key, const Range& bounds) {
    int isOverflow = 0;
    const long long number = PyLong_AsLongLongAndOverflow(value.ptr(), &isOverflow);
    if (number == -1 && PyErr_Occurred() != nullptr) {
        throw py::error_already_set();
    }
    if (isOverflow != 0 || number < bounds.low || number > bounds.high) {
        throw WordError(std::string(key) + ": " + py::str(value).cast<std::string>() + ", expected from " +
                        std::to_string(bounds.low) + " to " + std::to_string(bounds.high));
    }
    return number;
}

template <typename Number>
void take(const py::dict& given, const char* key, const Range& bounds, std::optional<Number>& number) {
    const py::object value = valueOf(given, key);
    if (!value.is_none()) {
        number = static_cast<Number>(within(value, key, bounds));
    }
}

void take(const py::dict& given, const char* key, const Range& bounds, bool mayBeEqual,
          std::optional<Range>& range) {
    const py::object value = valueOf(given, key);
    if (value.is_none()) {
        return;
    }
    const auto ends = value.cast<py::tuple>();
    range = Range{within(ends[0], key, bounds), within(ends[1], key, bounds)};
    if (range->low > range->high || (range->low == range->high && !mayBeEqual)) {
        throw WordError(std::string(key) + ": " + std::to_string(range->low) + " and " +
                        std::to_string(range->high) +
                        ", expected the lowest value first and a higher one behind it");
    }
}

std::vector<std::int32_t> temperaturesOf(const py::dict& given) {
    std::vector<std::int32_t> temperatures;
    const py::object value = valueOf(given, "temperatures");
    if (value.is_none()) {
        return temperatures;
    }
    for (const py::handle degrees : value.cast<py::tuple>()) {
        temperatures.push_back(static_cast<std::int32_t>(within(degrees, "temperatures", temperatureBounds)));
    }
    std::sort(temperatures.begin(), temperatures.end());
    const auto twice = std::adjacent_find(temperatures.begin(), temperatures.end());
    if (twice != temperatures.end()) {
        throw WordError("temperatures: " + std::to_string(*twice) +
                        " is there twice, expected each temperature once");
    }
    return temperatures;
}

Calibration::Beginning beginningOf(const std::string& word) {
    using Calibration::Beginning;
    for (const auto& [name, beginning] :
         {std::pair("fresh", Beginning::fresh), std::pair("resume", Beginning::resume),
          std::pair("restart", Beginning::restart), std::pair("offline", Beginning::offline)}) {
        if (word == name) {
            return beginning;
        }
    }
    throw WordError("beginning: " + inQuotes(word) + ", expected one of fresh, resume, restart, offline");
}

void takeMethod(const py::dict& given, CalibrationDescription& wishes) {
    const std::string method = stringOf(given, "method");
    wishes.method = calibrationMethodFromString(method);
    if (!method.empty() && !wishes.method) {
        throw WordError("method: " + inQuotes(method) + ", expected fit or search");
    }
    const std::string detector = stringOf(given, "detector");
    if (!detector.empty() && detector != "low" && detector != "high") {
        throw WordError("detector: " + inQuotes(detector) + ", expected low or high");
    }
    if (!detector.empty()) {
        wishes.useHighDetector = detector == "high";
    }
    const py::object shrink = valueOf(given, "shrink");
    if (!shrink.is_none()) {
        wishes.shrinkFactor = shrink.cast<double>();
        if (!isShrinkFactor(*wishes.shrinkFactor)) {
            throw WordError("shrink: " + py::str(shrink).cast<std::string>() + ", expected " +
                            shrinkFactorText);
        }
    }
}

} // namespace

CalibrationDescription wishesOf(const py::dict& given) {
    CalibrationDescription wishes;
    wishes.channel = given["channel"].cast<int>();
    takeMethod(given, wishes);
    wishes.temperatures = temperaturesOf(given);
    take(given, "probes", budgetBounds, wishes.probes);
    take(given, "band", carrierBounds, true, wishes.band);
    take(given, "step", carrierBounds, wishes.step);
    take(given, "i_range", correctionBounds, false, wishes.iRange);
    take(given, "q_range", correctionBounds, false, wishes.qRange);
    take(given, "min_delta", minDeltaBounds, wishes.minDelta);
    take(given, "max_iterations", iterationBounds, wishes.maxIterations);
    take(given, "settle_time", settleTimeBounds, wishes.settleTime);
    take(given, "tolerance", toleranceBounds, wishes.tolerance);
    take(given, "dwell", dwellBounds, wishes.dwell);
    return wishes;
}

Calibration::CalibrationOrder calibrationOrderOf(const py::dict& given) {
    Calibration::CalibrationOrder order;
    order.wishes = wishesOf(given);
    order.serial = stringOf(given, "serial");
    order.beginning = beginningOf(stringOf(given, "beginning"));
    order.journal = stringOf(given, "journal");
    order.tables = stringOf(given, "tables");
    order.acceptsEdge = flagOf(given, "accept_edge");
    order.acceptsFail = flagOf(given, "accept_fail");
    order.qualifies = flagOf(given, "qualify");
    order.isRealTime = flagOf(given, "real_time");
    order.isHardware = flagOf(given, "hardware");
    order.version = FREQUENCYHANDLER_VERSION_TEXT;
    order.station = stringOf(given, "station");
    if (order.beginning == Calibration::Beginning::offline && (order.isHardware || order.journal.empty())) {
        throw WordError(
            "beginning: \"offline\" goes through a journal again, expected a journal and no hardware");
    }
    return order;
}

Calibration::QualificationOrder qualificationOrderOf(const py::dict& given) {
    Calibration::QualificationOrder order;
    order.wishes = wishesOf(given);
    order.isHardware = flagOf(given, "hardware");
    order.isRealTime = flagOf(given, "real_time");
    return order;
}

std::string whyNotWithMethod(const CalibrationDescription& wishes, CalibrationMethod method) {
    const bool isFit = method == CalibrationMethod::fit;
    if (!(isFit ? wishes.step.has_value() : wishes.probes.has_value())) {
        return {};
    }
    return std::string(isFit ? "step" : "probes") + ": not together with the method " +
           std::string(toString(method)) + ", expected " + (isFit ? "method=\"search\"" : "method=\"fit\"") +
           " with it";
}

} // namespace Radio::Python
