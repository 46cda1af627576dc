#include "radio/calibration/FitOutcome.h"

#include "radio/board/BoardNames.h"

#include <algorithm>
#include <utility>

namespace Radio::Calibration {

namespace {

Fit::Branch branchOf(const Range& range, std::int32_t step) {
    return {static_cast<std::int32_t>(range.low), static_cast<std::int32_t>(range.high), step};
}

/** Nothing for the slope of a detector that is stuck, or shows less the more there is. */
std::optional<double> usable(const std::optional<double>& slope) {
    return slope && *slope > 0.0 ? slope : std::nullopt;
}

/** A modelled detector is known; of a real one what is stated, or what qualifying it has found. */
Fit::Detector detectorOf(const Result& result, const LeakageDescription* leakage) {
    const std::optional<Qualification>& qualification = result.qualification;
    if (leakage == nullptr && result.detectorSlope) {
        return {usable(result.detectorSlope), result.detectorZero, {}, {}, {}};
    }
    if (leakage == nullptr) {
        return {qualification ? usable(qualification->slope) : std::nullopt, {}, {}, {}, {}};
    }
    const bool isHigh = result.settings.useHighDetector && leakage->highDetector;
    const DetectorDescription& detector = isHigh ? *leakage->highDetector : leakage->detector;
    return {usable(detector.slope), detector.zero, detector.low, detector.high, detector.floor};
}

PointState stateOf(Fit::PointState state) {
    return state == Fit::PointState::good   ? PointState::good
           : state == Fit::PointState::edge ? PointState::edge
                                            : PointState::failed;
}

/** What leaks in the model at a point without corrections and with its own. */
void addModelledLevels(Point& point, const LeakageDescription& leakage) {
    const Surroundings surroundings{point.frequency, static_cast<double>(point.temperature)};
    point.before = leakageLevel(leakage, surroundings, {0, 0});
    point.after = leakageLevel(leakage, surroundings, {point.i, point.q});
}

} // namespace

Result asTables(const Result& result) {
    Result tables = result;
    if (result.settings.method == CalibrationMethod::fit) {
        tables.points = result.nodes;
        tables.settings.frequencies.clear();
        tables.settings.temperatures.clear();
        for (const Point& node : result.nodes) {
            if (node.temperature == result.nodes.front().temperature) {
                tables.settings.frequencies.push_back(node.frequency);
            }
            if (node.frequency == result.nodes.front().frequency) {
                tables.settings.temperatures.push_back(node.temperature);
            }
        }
    }
    return tables;
}

Fit::Order fitOrder(const Board& board, const Result& result) {
    const Settings& settings = result.settings;
    const LeakageDescription* const leakage =
        result.isHardware ? nullptr : findLeakage(board, settings.channel);
    Fit::Order order;
    order.lowCarrier = settings.frequencies.front();
    order.highCarrier = settings.frequencies.back();
    order.lowTemperature = settings.temperatures.front();
    order.highTemperature = settings.temperatures.back();
    order.startTemperature = result.route.front();
    order.i = branchOf(settings.i, leakage == nullptr ? 1 : leakage->i.step);
    order.q = branchOf(settings.q, leakage == nullptr ? 1 : leakage->q.step);
    order.detector = detectorOf(result, leakage);
    const std::uint32_t taken = result.qualification ? result.qualification->taken : 0;
    order.budget = settings.budget - std::min(settings.budget, taken);
    order.probesOfSearch = 4 * settings.maxIterations;
    order.limit = settings.limit;
    return order;
}

Point pointOf(const Fit::Point& fitted, std::vector<Probe> probes, const LeakageDescription* leakage,
              bool isAbsolute) {
    Point point;
    point.frequency = fitted.place.carrier;
    point.temperature = fitted.place.temperature;
    point.state = stateOf(fitted.state);
    point.remark = fitted.remark;
    point.i = fitted.corrections.i;
    point.q = fitted.corrections.q;
    point.probes = std::move(probes);
    if (leakage != nullptr) {
        addModelledLevels(point, *leakage);
        return point;
    }
    if (!point.probes.empty()) {
        point.firstReading = point.probes.front().reading;
        point.lastReading = fitted.reading;
    }
    if (isAbsolute) {
        point.before = fitted.uncorrected;
        point.after = fitted.level;
    } else if (fitted.uncorrected && fitted.level) {
        point.improvement = *fitted.uncorrected - *fitted.level;
    }
    return point;
}

Point triedPointOf(const Fit::Verification& tried, const LeakageDescription* leakage, bool isAbsolute) {
    Point point;
    point.frequency = tried.place.carrier;
    point.temperature = tried.place.temperature;
    point.state = PointState::good;
    point.i = tried.corrections.i;
    point.q = tried.corrections.q;
    if (leakage != nullptr) {
        addModelledLevels(point, *leakage);
        return point;
    }
    point.lastReading = tried.reading;
    if (isAbsolute) {
        point.after = tried.level;
    }
    return point;
}

std::optional<double> claimOf(const Fit::Outcome& outcome, const std::optional<double>& limit) {
    if (!outcome.claim || outcome.isRelative) {
        return std::nullopt;
    }
    const double claim = outcome.claim->level;
    const bool isHeld = outcome.verdict == Fit::Verdict::held;
    const bool isAboveLimit = outcome.verdict == Fit::Verdict::missed && limit && claim > *limit;
    return isHeld || isAboveLimit ? std::optional(claim) : std::nullopt;
}

std::vector<Point> nodesOf(const Fit::Table& table, const Settings& settings,
                           const LeakageDescription* leakage) {
    const auto isEnd = [](std::int32_t value, const Range& range) {
        return value <= range.low || value >= range.high;
    };
    std::vector<Point> nodes;
    nodes.reserve(table.i.size());
    for (std::size_t row = 0; row < table.temperatures.size(); ++row) {
        for (std::size_t column = 0; column < table.carriers.size(); ++column) {
            const std::size_t place = column * table.temperatures.size() + row;
            Point node;
            node.frequency = static_cast<std::uint32_t>(table.carriers[column]);
            node.temperature = table.temperatures[row];
            node.i = table.i[place];
            node.q = table.q[place];
            node.state =
                isEnd(node.i, settings.i) || isEnd(node.q, settings.q) ? PointState::edge : PointState::good;
            if (leakage != nullptr) {
                addModelledLevels(node, *leakage);
            }
            nodes.push_back(std::move(node));
        }
    }
    return nodes;
}

} // namespace Radio::Calibration
