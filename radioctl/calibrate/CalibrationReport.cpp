#include "radioctl/calibrate/CalibrationReport.h"

#include "radio/calibration/Settings.h"
#include "radio/text/Words.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/TextTable.h"

#include <algorithm>
#include <cmath>
#include <iomanip>

namespace Radio::Calibration {

namespace {

double rounded(double level) {
    return std::round(level * 100) / 100;
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

Json toJson(const std::optional<Worst>& worst) {
    return worst ? Json{{"dbc", rounded(worst->level)},
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
    if (!end.trouble.empty()) {
        return "No tables were stored: " + end.trouble;
    }
    if (outcome.wantedTables.empty()) {
        return "No tables were asked for.";
    }
    if (summary.failed != 0) {
        return "No tables were stored: " + counted(summary.failed, "point") +
               " without corrections. When what is said about them is mended, --restart begins anew.";
    }
    return "No tables were stored: the search ended at the edge of a range for " +
           counted(summary.edge, "point") +
           "; the same once more with --accept-edge, and with --resume after a measurement, stores them.";
}

} // namespace

void CalibrationText::begins(const Board& board, const Result& result, std::size_t knownProbes) {
    const Settings& settings = result.settings;
    m_out << board.name << " (" << board.file.string() << "), serial " << harmless(result.serial)
          << "\nChannel " << settings.channel << ": " << counted(settings.frequencies.size(), "carrier")
          << ", " << settings.frequencies.front() << " to " << settings.frequencies.back() << " kHz, at "
          << counted(settings.temperatures.size(), "temperature") << ", " << settings.temperatures.front()
          << " to " << settings.temperatures.back() << " degrees\n";
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
          << counted(outcome.newProbes, "probe") << " made in " << std::fixed << std::setprecision(2)
          << outcome.seconds << " s\n";
    m_out << "Journal: " << harmless(outcome.journal) << "\n";
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
    table.add({"kHz", "degrees", "I", "Q", "before", "after", "iterations", "state"});
    bool isEmpty = true;
    for (const Point& point : result.points) {
        if (m_showsAll || point.state != PointState::good || !point.remark.empty()) {
            const bool isFound = point.state != PointState::failed;
            table.add({std::to_string(point.frequency), std::to_string(point.temperature),
                       isFound ? std::to_string(point.i) : "-", isFound ? std::to_string(point.q) : "-",
                       levelText(point.before), isFound ? levelText(point.after) : "-",
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
    if (!summary.before) {
        return;
    }
    TextTable table;
    table.alignRight(1);
    addWorst(table, "without corrections", summary.before);
    addWorst(table, "calibrated, at the nodes", summary.after);
    addWorst(table, "calibrated, between the nodes", summary.between);
    m_out << "\nWorst modelled leakage\n";
    table.write(m_out);
}

void CalibrationJson::begins(const Board& board, const Result& result, std::size_t knownProbes) {
    writeJsonLine(m_out, {{"event", "calibration"},
                          {"file", board.file.string()},
                          {"serial", result.serial},
                          {"date", result.date},
                          {"known_probes", knownProbes},
                          {"settings", toJson(result.settings)}});
}

void CalibrationJson::calibrated(const Point& point) {
    const bool isFound = point.state != PointState::failed;
    writeJsonLine(m_out, {{"event", "point"},
                          {"khz", point.frequency},
                          {"degrees", point.temperature},
                          {"state", toString(point.state)},
                          {"remark", nullIfEmpty(point.remark)},
                          {"i", isFound ? Json(point.i) : Json(nullptr)},
                          {"q", isFound ? Json(point.q) : Json(nullptr)},
                          {"before_dbc", rounded(point.before)},
                          {"after_dbc", isFound ? Json(rounded(point.after)) : Json(nullptr)},
                          {"iterations", point.iterations},
                          {"max_delta", point.maxDelta},
                          {"probes", point.probes.size()}});
}

void CalibrationJson::finished(const CalibrationOutcome& outcome, const CalibrationEnd& end) {
    const Result& result = outcome.result;
    const LeakageSummary& summary = outcome.summary;
    writeJsonLine(m_out, {{"event", "calibrated"},
                          {"points", result.points.size()},
                          {"wanted_points", outcome.wanted},
                          {"good", summary.good},
                          {"edge", summary.edge},
                          {"failed", summary.failed},
                          {"probes", outcome.newProbes},
                          {"known_probes", outcome.knownProbes},
                          {"worst_before", toJson(summary.before)},
                          {"worst_after", toJson(summary.after)},
                          {"worst_between", toJson(summary.between)},
                          {"tables", nullIfEmpty(outcome.tables)},
                          {"backup", nullIfEmpty(outcome.backup)},
                          {"journal", outcome.journal},
                          {"page", nullIfEmpty(end.page)},
                          {"elapsed_seconds", outcome.seconds},
                          {"interrupted", end.signal != 0},
                          {"exit_code", end.exitCode}});
}

} // namespace Radio::Calibration
