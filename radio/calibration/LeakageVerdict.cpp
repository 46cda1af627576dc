#include "radio/calibration/LeakageVerdict.h"

#include "radio/text/Words.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Radio::Calibration {

namespace {

constexpr const char* unknownLevel = "nobody knows in dBc what leaks";
constexpr const char* unknownGain = "nobody knows what the corrections gain";

/** By how many dB the corrections found lower the leakage. */
std::optional<double> improvementAt(const Point& point) {
    if (point.improvement) {
        return point.improvement;
    }
    return point.before && point.after ? std::optional(*point.before - *point.after) : std::nullopt;
}

/** The clause about a point and one limit; empty when it meets it. */
std::string clauseFor(std::string_view name, const std::optional<double>& limit,
                      const std::optional<double>& found) {
    if (!limit || (found && meetsLimit(name, toHundredth(*found), *limit))) {
        return {};
    }
    const bool isLeast = name == "leakage_improvement";
    const std::string demand = std::string(name) + (isLeast ? " asks for " : " allows ") + limitText(*limit);
    if (!found) {
        return std::string(isLeast ? unknownGain : unknownLevel) + ", and " + demand;
    }
    return isLeast ? "its corrections gain " + inTwoDecimals(*found) + " dB, and " + demand
                   : "it leaks " + levelText(*found) + ", and " + demand;
}

/** The points of a calibration, and of a fit in a simulation the nodes of its tables, of which the model
 * knows. */
std::vector<Point> judgedPoints(const Result& result) {
    std::vector<Point> points = result.points;
    const bool areKnown = std::all_of(result.nodes.begin(), result.nodes.end(),
                                      [](const Point& node) { return node.after.has_value(); });
    if (areKnown) {
        points.insert(points.end(), result.nodes.begin(), result.nodes.end());
    }
    return points;
}

/** The least improvement, and where it is. */
std::optional<Worst> leastImprovement(const std::vector<Point>& points) {
    std::optional<Worst> least;
    for (const Point& point : points) {
        const std::optional<double> found = improvementAt(point);
        if (point.state != PointState::failed && found && (!least || *found < least->level)) {
            least = Worst{*found, point.frequency, point.temperature};
        }
    }
    return least;
}

/** Judges a figure whose worst is `worst`, as far as it is known. */
JudgedLimit judgeLimit(std::string_view name, double limit, const std::optional<Worst>& worst) {
    JudgedLimit judged{name, limit};
    if (worst) {
        judged.found = toHundredth(worst->level);
        judged.frequency = worst->frequency;
        judged.temperature = worst->temperature;
    }
    return judged;
}

/** Makes nothing known of a figure that only looks well as long as some of it is missing. */
void distrust(JudgedLimit& judged, const Result& result, const std::string& whyUnknown) {
    if (judged.found && !judged.isHeld()) {
        return;
    }
    judged = {judged.name, judged.limit};
    judged.whyUnknown = whyUnknown;
    const auto failed = std::find_if(result.points.begin(), result.points.end(),
                                     [](const Point& point) { return point.state == PointState::failed; });
    if (failed != result.points.end()) {
        judged.whyUnknown = "the point has no corrections";
        judged.frequency = failed->frequency;
        judged.temperature = failed->temperature;
    }
}

/** A figure of each point. */
JudgedLimit judgePoints(std::string_view name, double limit, const std::optional<Worst>& worst,
                        const Result& result) {
    JudgedLimit judged = judgeLimit(name, limit, worst);
    const bool isKnown = std::all_of(result.points.begin(), result.points.end(), [&](const Point& point) {
        return point.state != PointState::failed &&
               (name == "leakage_improvement" ? improvementAt(point) : seenLevel(point));
    });
    if (!isKnown || result.points.empty()) {
        distrust(judged, result, name == "leakage_improvement" ? unknownGain : unknownLevel);
    } else if (result.fit && result.fit->verdict != Fit::Verdict::held && !result.claim) {
        // Points say nothing of tables that were not tried.
        distrust(judged, result, result.fit->reason);
    }
    return judged;
}

/** Anywhere is at the points as well. */
JudgedLimit judgeAnywhere(double limit, const LeakageSummary& summary, const Result& result) {
    // A fit is held to what it claims: on a real radio nobody knows better. What was seen is there in any
    // case.
    const std::optional<Worst>& anywhere = result.fit ? summary.claim : summary.between;
    std::optional<Worst> worst = anywhere;
    for (const std::optional<Worst>& other : {summary.seen, summary.tried, summary.between}) {
        if (other && (!worst || other->level > worst->level)) {
            worst = other;
        }
    }
    JudgedLimit judged = judgeLimit("leakage", limit, worst);
    if (!anywhere) {
        distrust(judged, result, summary.seen ? "nobody knows what leaks between the points" : unknownLevel);
    }
    if (result.fit && result.fit->verdict != Fit::Verdict::held) {
        // What it claims holds only as far as it could be tried.
        distrust(judged, result, result.fit->reason);
    }
    return judged;
}

} // namespace

void holdToLimits(Point& point, const Limits& limits) {
    if (point.state == PointState::failed) {
        return;
    }
    std::vector<std::string> clauses;
    const std::optional<double> seen = seenLevel(point);
    for (std::string clause :
         {clauseFor("leakage", limits.leakage, seen),
          clauseFor("leakage_at_nodes", limits.leakageAtNodes, seen),
          clauseFor("leakage_improvement", limits.leakageImprovement, improvementAt(point))}) {
        if (!clause.empty()) {
            clauses.push_back(std::move(clause));
        }
    }
    if (clauses.empty()) {
        return;
    }
    point.state = std::max(point.state, PointState::missed);
    if (!point.remark.empty()) {
        clauses.insert(clauses.begin(), point.remark);
    }
    point.remark = joined(clauses, "; ");
}

Verdict verdictOn(const Result& result, const LeakageSummary& summary, const Limits& limits) {
    Verdict verdict;
    if (!limits.leakage && !limits.leakageAtNodes && !limits.leakageImprovement) {
        verdict.whyNone = "the board states no leakage in its [limits]";
        return verdict;
    }
    const Settings& settings = result.settings;
    const bool isFit = settings.method == CalibrationMethod::fit;
    if (isFit ? !result.fit
              : result.points.size() < settings.frequencies.size() * settings.temperatures.size()) {
        verdict.whyNone = "not all points were calibrated";
        return verdict;
    }
    const std::vector<Point> points = judgedPoints(result);
    if (limits.leakage) {
        verdict.limits.push_back(judgeAnywhere(*limits.leakage, summary, result));
    }
    if (limits.leakageAtNodes) {
        verdict.limits.push_back(
            judgePoints("leakage_at_nodes", *limits.leakageAtNodes, worstSeen(points), result));
    }
    if (limits.leakageImprovement) {
        verdict.limits.push_back(
            judgePoints("leakage_improvement", *limits.leakageImprovement, leastImprovement(points), result));
    }
    return verdict;
}

} // namespace Radio::Calibration
