#include "radioctl/calibrate/CalibrationReport.h"

#include "radio/calibration/Settings.h"
#include "radio/text/Words.h"
#include "radioctl/calibrate/QualificationReport.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/TextTable.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iterator>

namespace Radio::Calibration {

namespace {

double rounded(double level) {
    return std::round(level * 100) / 100;
}

/** A reading is a whole number. */
std::string readingText(double reading) {
    return std::to_string(std::llround(reading));
}

std::string textOrDash(const std::optional<double>& level) {
    return level ? levelText(*level) : "-";
}

std::string textOrDash(const std::optional<std::int32_t>& reading) {
    return reading ? std::to_string(*reading) : "-";
}

Json roundedOrNull(const std::optional<double>& level) {
    return level ? Json(rounded(*level)) : Json(nullptr);
}

std::vector<std::string> texts(const std::vector<std::int32_t>& numbers) {
    std::vector<std::string> result;
    std::transform(numbers.begin(), numbers.end(), std::back_inserter(result),
                   [](std::int32_t number) { return std::to_string(number); });
    return result;
}

std::string placeText(const Worst& worst) {
    return "at " + std::to_string(worst.frequency) + " kHz, " + std::to_string(worst.temperature) +
           " degrees";
}

void addWorst(TextTable& table, const std::string& what, const std::optional<Worst>& worst) {
    if (worst) {
        table.add({what, levelText(worst->level), placeText(*worst)});
    }
}

void addReading(TextTable& table, const std::string& what, const std::optional<Worst>& worst) {
    if (worst) {
        table.add({what, readingText(worst->level), placeText(*worst)});
    }
}

/** How the temperatures of a real radio come about. */
std::string temperatureText(const Board& board, const Result& result) {
    const ClimateTerms& climate = result.climate;
    const auto dwell = static_cast<std::uint64_t>(climate.dwell.count());
    if (board.hardware.description.sensor) {
        return "Each temperature begins when the sensor " +
               (dwell == 0 ? "is" : "has been for " + counted(dwell, "second")) + " within " +
               counted(static_cast<std::uint64_t>(climate.tolerance), "degree") + " of it.";
    }
    return climate.isAttended ? "There is no [sensor]: each temperature begins when you say so."
                              : "There is no [sensor]: the radio is taken to be at " +
                                    std::to_string(result.settings.temperatures.front()) + " degrees.";
}

const char* temperatureSource(const Board& board, const Result& result) {
    if (!result.isHardware) {
        return "modelled";
    }
    return board.hardware.description.sensor ? "sensor" : result.climate.isAttended ? "person" : "given";
}

Json toJson(const std::optional<Worst>& worst) {
    return worst ? Json{{"dbc", rounded(worst->level)},
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

/** What has to be said about the end of a calibration, so that nobody takes it for another one. */
std::string verdict(const CalibrationOutcome& outcome, const CalibrationEnd& end) {
    const LeakageSummary& summary = outcome.summary;
    if (!outcome.tables.empty()) {
        return (outcome.isUnchanged ? "Stored before, and the same: " : "Stored: ") + outcome.tables +
               (outcome.backup.empty() ? "" : "; what was there is now " + outcome.backup);
    }
    if (end.signal != 0) {
        return "Interrupted: no tables were stored; --resume goes on where it stopped.";
    }
    if (!outcome.refusal.empty()) {
        return "Nothing was calibrated: " + outcome.refusal + ". --no-qualify begins all the same.";
    }
    if (!end.trouble.empty()) {
        return "No tables were stored: " + end.trouble;
    }
    if (outcome.wantedTables.empty()) {
        return "No tables were asked for.";
    }
    if (summary.failed != 0) {
        return "No tables were stored: " + counted(summary.failed, "point") +
               " without corrections. When what is said about them is mended, " +
               (outcome.result.isHardware
                    ? "--resume measures what could not be measured, and --restart all of it."
                    : "--restart begins anew.");
    }
    return "No tables were stored: the search ended at the edge of a range for " +
           counted(summary.edge, "point") +
           "; the same once more with --accept-edge, and with --resume after a measurement, stores them.";
}

} // namespace

std::string awaitedText(const AwaitedTemperature& awaited) {
    const std::string wanted = std::to_string(awaited.wanted) + " degrees";
    const std::string now = awaited.now ? ", now " + std::to_string(*awaited.now) : "";
    if (awaited.isByWord) {
        return (awaited.isByHand ? "Bring the radio to " : "Waiting for ") + wanted + now +
               "; Enter when it is there, or type what it is";
    }
    return (awaited.isByHand ? "Bring the radio to " : "waiting for ") + wanted +
           (now.empty() ? ", now unknown" : now);
}

void CalibrationText::warns(const std::string& reservation) {
    m_out << "Warning: " << harmless(reservation) << "\n" << std::flush;
}

void CalibrationText::qualified(const Qualification& qualification) {
    // Of a refusal the last line tells.
    if (qualification.isGood()) {
        m_out << qualificationText(qualification) << std::flush;
    }
}

void CalibrationText::awaits(const AwaitedTemperature& awaited, bool isBeginning) {
    if (isBeginning || (awaited.isByWord && awaited.now)) {
        m_out << "     " << awaitedText(awaited) << "\n" << std::flush;
    }
}

void CalibrationText::begins(const Board& board, const Result& result, std::size_t knownProbes) {
    const Settings& settings = result.settings;
    m_out << board.name << " (" << board.file.string() << "), serial " << harmless(result.serial)
          << "\nChannel " << settings.channel << ": " << counted(settings.frequencies.size(), "carrier")
          << ", " << settings.frequencies.front() << " to " << settings.frequencies.back() << " kHz, at "
          << counted(settings.temperatures.size(), "temperature") << ", " << settings.temperatures.front()
          << " to " << settings.temperatures.back() << " degrees\n";
    if (result.isHardware) {
        m_out << temperatureText(board, result) << "\n";
        if (result.route != settings.temperatures) {
            m_out << "They are gone through in the order " << joined(texts(result.route), " ") << ".\n";
        }
    }
    if (knownProbes != 0) {
        m_out << "The journal has " << counted(knownProbes, "probe") << "; they are not made again.\n";
    }
    m_out << std::flush;
}

void CalibrationText::finished(const CalibrationOutcome& outcome, const CalibrationEnd& end) {
    const Result& result = outcome.result;
    const LeakageSummary& summary = outcome.summary;
    showPoints(result);
    showWorst(summary);
    m_out << "\n"
          << counted(result.points.size(), "point") << " of " << outcome.wanted << ": " << summary.good
          << " good, " << summary.edge << " at an edge, " << summary.failed << " failed; "
          << counted(outcome.newProbes, "probe") << " made"
          << (outcome.qualifyingReadings == 0
                  ? ""
                  : ", " + std::to_string(outcome.qualifyingReadings) + " of them to qualify the detector,")
          << " in " << std::fixed << std::setprecision(2) << outcome.seconds << " s\n";
    if (!outcome.journal.empty()) {
        m_out << "Journal: " << harmless(outcome.journal) << "\n";
    }
    if (!end.page.empty()) {
        m_out << "Page: " << harmless(end.page) << "\n";
    }
    m_out << harmless(verdict(outcome, end)) << "\n" << std::flush;
}

void CalibrationText::showPoints(const Result& result) {
    TextTable table;
    for (const std::size_t column : {0U, 1U, 2U, 3U, 4U, 5U, 6U}) {
        table.alignRight(column);
    }
    const bool isHardware = result.isHardware;
    table.add({"kHz", "degrees", "I", "Q", isHardware ? "first" : "before", isHardware ? "last" : "after",
               "iterations", "state"});
    bool isEmpty = true;
    for (const Point& point : result.points) {
        if (m_showsAll || point.state != PointState::good || !point.remark.empty()) {
            const bool isFound = point.state != PointState::failed;
            table.add({std::to_string(point.frequency), std::to_string(point.temperature),
                       isFound ? std::to_string(point.i) : "-", isFound ? std::to_string(point.q) : "-",
                       isHardware ? textOrDash(point.firstReading) : textOrDash(point.before),
                       !isFound     ? "-"
                       : isHardware ? textOrDash(point.lastReading)
                                    : textOrDash(point.after),
                       std::to_string(point.iterations),
                       std::string(toString(point.state)) +
                           (point.remark.empty() ? "" : ": " + harmless(point.remark))});
            isEmpty = false;
        }
    }
    if (!isEmpty) {
        m_out << "\n";
        table.write(m_out);
    }
}

void CalibrationText::showWorst(const LeakageSummary& summary) {
    TextTable table;
    table.alignRight(1);
    if (summary.firstReading) {
        addReading(table, "at the first probe", summary.firstReading);
        addReading(table, "at the last probe", summary.lastReading);
        m_out << "\nHighest readings of the detector\n";
        table.write(m_out);
    }
    if (!summary.before) {
        return;
    }
    table = TextTable();
    table.alignRight(1);
    addWorst(table, "without corrections", summary.before);
    addWorst(table, "calibrated, at the nodes", summary.after);
    addWorst(table, "calibrated, between the nodes", summary.between);
    m_out << (summary.firstReading ? "\nWorst leakage by the detector\n" : "\nWorst modelled leakage\n");
    table.write(m_out);
}

void CalibrationJson::warns(const std::string& reservation) {
    writeJsonLine(m_out, {{"event", "warning"}, {"text", reservation}});
}

void CalibrationJson::qualified(const Qualification& qualification) {
    writeJsonLine(m_out, qualificationEvent(qualification));
}

void CalibrationJson::awaits(const AwaitedTemperature& awaited, bool /*isBeginning*/) {
    writeJsonLine(m_out, {{"event", "awaiting"},
                          {"degrees", awaited.wanted},
                          {"now", orNull(awaited.now)},
                          {"by_hand", awaited.isByHand},
                          {"by_word", awaited.isByWord}});
}

void CalibrationJson::begins(const Board& board, const Result& result, std::size_t knownProbes) {
    writeJsonLine(m_out, {{"event", "calibration"},
                          {"file", board.file.string()},
                          {"serial", result.serial},
                          {"date", result.date},
                          {"known_probes", knownProbes},
                          {"mode", result.isHardware ? "hardware" : "simulation"},
                          {"temperature", temperatureSource(board, result)},
                          {"settings", toJson(result.settings)},
                          {"order_c", result.route}});
}

void CalibrationJson::calibrated(const Point& point) {
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
        event["improvement_db"] = rounded(*point.improvement);
    }
    event["iterations"] = point.iterations;
    event["max_delta"] = point.maxDelta;
    event["probes"] = point.probes.size();
    writeJsonLine(m_out, event);
}

void CalibrationJson::finished(const CalibrationOutcome& outcome, const CalibrationEnd& end) {
    const Result& result = outcome.result;
    const LeakageSummary& summary = outcome.summary;
    Json event = {{"event", "calibrated"},
                  {"points", result.points.size()},
                  {"wanted_points", outcome.wanted},
                  {"good", summary.good},
                  {"edge", summary.edge},
                  {"failed", summary.failed},
                  {"probes", outcome.newProbes},
                  {"known_probes", outcome.knownProbes},
                  {"qualifying_probes", outcome.qualifyingReadings}};
    event["worst_before"] = toJson(summary.before);
    event["worst_after"] = toJson(summary.after);
    event["worst_between"] = toJson(summary.between);
    if (result.isHardware) {
        event["highest_first_reading"] = readingJson(summary.firstReading);
        event["highest_last_reading"] = readingJson(summary.lastReading);
    }
    event["tables"] = nullIfEmpty(outcome.tables);
    event["backup"] = nullIfEmpty(outcome.backup);
    event["journal"] = nullIfEmpty(outcome.journal);
    event["page"] = nullIfEmpty(end.page);
    event["elapsed_seconds"] = outcome.seconds;
    event["interrupted"] = end.signal != 0;
    event["exit_code"] = end.exitCode;
    writeJsonLine(m_out, event);
}

} // namespace Radio::Calibration
