#include "radio/calibration/CalibrationEvents.h"

#include "radio/board/VerdictJson.h"
#include "radio/calibration/Settings.h"

#include <cmath>

namespace Radio::Calibration {

namespace {

double inHundredths(double level) {
    return std::round(level * 100) / 100;
}

Json roundedOrNull(const std::optional<double>& level) {
    return level ? Json(inHundredths(*level)) : Json(nullptr);
}

const char* temperatureSource(const Board& board, const Result& result) {
    if (!result.isHardware) {
        return "modelled";
    }
    return board.hardware.description.sensor ? "sensor" : result.climate.isAttended ? "person" : "given";
}

Json toJson(const std::optional<Worst>& worst) {
    return worst ? Json{{"dbc", inHundredths(worst->level)},
                        {"khz", worst->frequency},
                        {"degrees", worst->temperature}}
                 : Json(nullptr);
}

Json readingJson(const std::optional<Worst>& worst) {
    return worst ? Json{{"reading", std::llround(worst->level)},
                        {"khz", worst->frequency},
                        {"degrees", worst->temperature}}
                 : Json(nullptr);
}

Json nullIfEmpty(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

/** What a fit says of itself; null for a search, and for a fit that did not come to its end. */
Json fitJson(const std::optional<Fit::Outcome>& fit) {
    if (!fit) {
        return nullptr;
    }
    const std::optional<Fit::LevelAt>& claim = fit->claim;
    return {{"claim_dbc", claim ? Json(inHundredths(claim->level)) : Json(nullptr)},
            {"claim_khz", claim ? Json(claim->place.carrier) : Json(nullptr)},
            {"claim_degrees", claim ? Json(claim->place.temperature) : Json(nullptr)},
            {"is_relative", fit->isRelative},
            {"verifications", fit->verifications.size()},
            {"temperature_changes", fit->temperatureChanges},
            {"slope", inHundredths(fit->slope)},
            {"reason", nullIfEmpty(fit->reason)},
            {"budget_spent", fit->isBudgetSpent}};
}

/** A place where a fit tried its tables. */
Json triedEvent(const Fit::Verification& tried, const Point& point) {
    return {{"event", "tried"},
            {"khz", tried.place.carrier},
            {"degrees", tried.place.temperature},
            {"i", tried.corrections.i},
            {"q", tried.corrections.q},
            {"reading", tried.reading},
            {"dbc", inHundredths(tried.level)},
            {"as_foretold", tried.isAsForetold},
            {"analyser_dbc", roundedOrNull(point.analysed)}};
}

} // namespace

Json putAwayEvent(const std::string& file, const PutAway& putAway) {
    return {{"event", "put_away"},
            {"file", file},
            {"backup", putAway.backup},
            {"remark", nullIfEmpty(putAway.remark)}};
}

Json awaitingEvent(const AwaitedTemperature& awaited) {
    return {{"event", "awaiting"},
            {"degrees", awaited.wanted},
            {"now", orNull(awaited.now)},
            {"by_hand", awaited.isByHand},
            {"by_word", awaited.isByWord}};
}

Json beginningEvent(const Board& board, const Result& result, std::size_t knownProbes) {
    return {{"event", "calibration"},
            {"file", board.file.string()},
            {"serial", result.serial},
            {"date", result.date},
            {"station", nullIfEmpty(result.station)},
            {"known_probes", knownProbes},
            {"mode", result.isHardware ? "hardware" : "simulation"},
            {"temperature", temperatureSource(board, result)},
            {"settings", toJson(result.settings)},
            {"order_c", result.route}};
}

Json pointEvent(const Point& point, bool isFit) {
    const bool isFound = point.state != PointState::failed;
    Json event = {{"event", "point"},
                  {"khz", point.frequency},
                  {"degrees", point.temperature},
                  {"state", toString(point.state)},
                  {"remark", nullIfEmpty(point.remark)},
                  {"i", isFound ? Json(point.i) : Json(nullptr)},
                  {"q", isFound ? Json(point.q) : Json(nullptr)}};
    event["before_dbc"] = roundedOrNull(point.before);
    event["after_dbc"] = isFound ? roundedOrNull(point.after) : Json(nullptr);
    if (point.firstReading || !point.before) {
        event["first_reading"] = orNull(point.firstReading);
        event["last_reading"] = isFound ? orNull(point.lastReading) : Json(nullptr);
    }
    if (point.improvement) {
        event["improvement_db"] = inHundredths(*point.improvement);
    }
    if (point.analysed) {
        event["analyser_dbc"] = inHundredths(*point.analysed);
    }
    event["iterations"] = isFit ? Json(nullptr) : Json(point.iterations);
    event["max_delta"] = isFit ? Json(nullptr) : Json(point.maxDelta);
    event["probes"] = point.probes.size();
    return event;
}

std::vector<Json> triedEvents(const Result& result) {
    std::vector<Json> events;
    for (std::size_t n = 0; result.fit && n < result.fit->verifications.size(); ++n) {
        events.push_back(triedEvent(result.fit->verifications[n], result.tries.at(n)));
    }
    return events;
}

Json endEvent(const CalibrationOutcome& outcome) {
    const Result& result = outcome.result;
    const LeakageSummary& summary = outcome.summary;
    Json event = {
        {"event", "calibrated"},    {"points", result.points.size()}, {"wanted_points", outcome.wanted},
        {"good", summary.good},     {"missed", summary.missed},       {"edge", summary.edge},
        {"failed", summary.failed}, {"probes", outcome.newProbes},    {"known_probes", outcome.knownProbes}};
    event["qualifying_probes"] = outcome.qualifyingReadings;
    event["verdict"] = verdictJson(outcome.verdict);
    event["limits"] = limitsJson(outcome.verdict);
    event["worst_before"] = toJson(summary.before);
    event["worst_after"] = toJson(summary.after);
    event["worst_between"] = toJson(summary.between);
    if (result.isHardware) {
        event["highest_first_reading"] = readingJson(summary.firstReading);
        event["highest_last_reading"] = readingJson(summary.lastReading);
    }
    event["fit"] = fitJson(result.fit);
    event["tables"] = nullIfEmpty(outcome.tables);
    event["backup"] = nullIfEmpty(outcome.backup);
    event["journal"] = nullIfEmpty(outcome.journal);
    return event;
}

} // namespace Radio::Calibration
