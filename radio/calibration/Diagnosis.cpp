#include "radio/calibration/Diagnosis.h"

#include "radio/calibration/StuckDetector.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Radio::Calibration {

namespace {

/** Readings differ if they do by more than this part of their span. */
constexpr std::int64_t partOfSpan = 10;

/** What the detector read during a search, as a whole. */
struct Readings {
    std::int64_t lowest = 0;
    std::int64_t highest = 0;
    /** The largest difference of two readings with the same corrections. */
    std::int64_t spread = 0;
    std::size_t count = 0;
};

Readings readingsOf(const std::vector<Probe>& probes) {
    Readings readings;
    std::map<std::pair<std::int32_t, std::int32_t>, std::pair<std::int64_t, std::int64_t>> ofSettings;
    for (const Probe& probe : probes) {
        if (!probe.reading) {
            continue;
        }
        const std::int64_t reading = *probe.reading;
        readings.lowest = readings.count == 0 ? reading : std::min(readings.lowest, reading);
        readings.highest = readings.count == 0 ? reading : std::max(readings.highest, reading);
        auto& [least, most] =
            ofSettings.try_emplace({probe.i, probe.q}, std::pair(reading, reading)).first->second;
        least = std::min(least, reading);
        most = std::max(most, reading);
        readings.spread = std::max(readings.spread, most - least);
        ++readings.count;
    }
    return readings;
}

/** Why the readings say nothing about the leakage; empty: they do. */
std::string whyNoUse(const Readings& readings, const Point& point, const Settings& settings,
                     const DetectorDescription* detector) {
    if (readings.count == 0) {
        return std::string("the ") + (settings.useHighDetector ? "high-range " : "") +
               "detector was never read: the radio has none";
    }
    if (readings.lowest != readings.highest) {
        return whyStuck(point, settings, detector);
    }
    const std::string every = "every reading is " + std::to_string(readings.lowest);
    if (detector != nullptr && readings.lowest >= detector->high) {
        return every + ", the highest there is: the detector is saturated";
    }
    if (detector != nullptr && readings.lowest <= detector->low) {
        return every + ", the lowest there is: the detector sees nothing";
    }
    return every + ": the detector is stuck";
}

/** The clause about a correction that lies where the search could not go on; empty: it does not. */
std::string atTheEdge(const char* branch, std::int32_t value, const Range& range, std::int32_t maxDelta) {
    const bool isLow = value - range.low <= maxDelta;
    const bool isHigh = range.high - value <= maxDelta;
    if (!isLow && !isHigh) {
        return {};
    }
    return std::string(branch) + " ended at the " + (isLow ? "low" : "high") + " edge of its range, " +
           std::to_string(isLow ? range.low : range.high);
}

void add(std::vector<std::string>& clauses, std::string clause) {
    if (!clause.empty()) {
        clauses.push_back(std::move(clause));
    }
}

/** Whether the readings can be used; gives the point its state and its remark if not. */
bool judge(Point& point, const std::string& whyNoUse) {
    point.remark = whyNoUse;
    point.state = PointState::failed;
    return whyNoUse.empty();
}

/** The clauses about a result at the end of a range, which give the point its state. */
std::vector<std::string> edgesOf(Point& point, const Settings& settings) {
    std::vector<std::string> clauses;
    add(clauses, atTheEdge("I", point.i, settings.i, point.maxDelta));
    add(clauses, atTheEdge("Q", point.q, settings.q, point.maxDelta));
    point.state = clauses.empty() ? PointState::good : PointState::edge;
    return clauses;
}

/** What can be said of any transmitter. */
void conclude(Point& point, const Settings& settings, const Readings& readings,
              std::vector<std::string> clauses) {
    if (readings.spread * partOfSpan > readings.highest - readings.lowest) {
        add(clauses, "readings with the same corrections differ by up to " + std::to_string(readings.spread) +
                         ": the detector is noisy, or the settle time too short");
    }
    if (point.maxDelta > settings.minDelta) {
        add(clauses, "the ranges are still " + std::to_string(point.maxDelta) + " wide after " +
                         counted(point.iterations, "iteration"));
    }
    point.remark = joined(clauses, "; ");
}

/** The lowest reading of the four probes of an iteration, the first or the last one. */
template <typename Probes>
std::int64_t lowestOf(Probes probe, Probes end) {
    constexpr int probesOfIteration = 4;
    std::int64_t lowest = std::numeric_limits<std::int32_t>::max();
    for (int n = 0; n < probesOfIteration && probe != end; ++n, ++probe) {
        if (probe->reading) {
            lowest = std::min<std::int64_t>(lowest, *probe->reading);
        }
    }
    return lowest;
}

} // namespace

std::string_view toString(PointState state) {
    switch (state) {
    case PointState::good:
        return "good";
    case PointState::missed:
        return "missed";
    case PointState::edge:
        return "edge";
    case PointState::failed:
        break;
    }
    return "failed";
}

void diagnose(Point& point, const Settings& settings, const LeakageDescription& leakage) {
    const bool hasHigh = settings.useHighDetector && leakage.highDetector;
    const DetectorDescription& detector = hasHigh ? *leakage.highDetector : leakage.detector;
    const Readings readings = readingsOf(point.probes);
    if (!judge(point, whyNoUse(readings, point, settings, &detector))) {
        return;
    }
    std::vector<std::string> clauses = edgesOf(point, settings);
    if (point.after > point.before) {
        point.state = PointState::failed;
        add(clauses, "the corrections found leave " + levelText(point.after.value_or(0)) +
                         ", more than the " + levelText(point.before.value_or(0)) + " without any");
    }
    const auto saturated = static_cast<std::size_t>(
        std::count_if(point.probes.begin(), point.probes.end(),
                      [&](const Probe& probe) { return probe.reading && *probe.reading >= detector.high; }));
    // One corner at the limit still lets the others be compared.
    if (saturated > 1) {
        add(clauses, "the detector was saturated at " + std::to_string(saturated) + " of " +
                         counted(readings.count, "probe"));
    }
    conclude(point, settings, readings, std::move(clauses));
}

void diagnose(Point& point, const Settings& settings) {
    const Readings readings = readingsOf(point.probes);
    if (!judge(point, whyNoUse(readings, point, settings, nullptr))) {
        return;
    }
    std::vector<std::string> clauses = edgesOf(point, settings);
    const std::int64_t begun = lowestOf(point.probes.begin(), point.probes.end());
    const std::int64_t ended = lowestOf(point.probes.rbegin(), point.probes.rend());
    if ((ended - begun) * partOfSpan > readings.highest - readings.lowest) {
        point.state = PointState::failed;
        add(clauses, "the search ended at a reading of " + std::to_string(ended) + ", more than the " +
                         std::to_string(begun) + " with which it began");
    }
    conclude(point, settings, readings, std::move(clauses));
}

} // namespace Radio::Calibration
