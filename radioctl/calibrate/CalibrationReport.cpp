#include "radioctl/calibrate/CalibrationReport.h"

#include "radio/calibration/Settings.h"
#include "radio/text/Words.h"
#include "radioctl/calibrate/QualificationReport.h"
#include "radioctl/report/TextTable.h"
#include "radioctl/report/VerdictReport.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iterator>
#include <vector>

namespace Radio::Calibration {

namespace {

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

/** Which carriers and temperatures are calibrated. */
std::string askedText(const Settings& settings) {
    const std::string band = std::to_string(settings.frequencies.front()) + " to " +
                             std::to_string(settings.frequencies.back()) + " kHz";
    const std::string degrees = std::to_string(settings.temperatures.front()) + " to " +
                                std::to_string(settings.temperatures.back()) + " degrees";
    return settings.method == CalibrationMethod::fit
               ? "a fit over " + band + ", " + degrees + ", of at most " + counted(settings.budget, "probe")
               : counted(settings.frequencies.size(), "carrier") + ", " + band + ", at " +
                     counted(settings.temperatures.size(), "temperature") + ", " + degrees;
}

/** What came of the points. */
std::string pointsText(const CalibrationOutcome& outcome) {
    const LeakageSummary& summary = outcome.summary;
    const Result& result = outcome.result;
    std::string text = counted(result.points.size(), "point");
    if (result.settings.method == CalibrationMethod::search) {
        text += " of " + std::to_string(outcome.wanted);
    }
    text += ": " + std::to_string(summary.good) + " good, " +
            (summary.missed == 0 ? "" : std::to_string(summary.missed) + " missed, ") +
            std::to_string(summary.edge) + " at an edge, " + std::to_string(summary.failed) + " failed; ";
    if (result.fit) {
        text += counted(result.fit->verifications.size(), "place") + " verified; ";
    }
    return text;
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

/** What could be stored if it were accepted, and with which options. */
std::string heldBackText(const CalibrationOutcome& outcome) {
    std::vector<std::string> reasons;
    std::vector<std::string> options;
    if (outcome.isHeldBackByEdge) {
        const bool isFit = outcome.result.settings.method == CalibrationMethod::fit;
        reasons.push_back((isFit ? "the best corrections lie beyond a range for "
                                 : "the search ended at the edge of a range for ") +
                          counted(outcome.summary.edge, "point"));
        options.emplace_back("--accept-edge");
    }
    if (outcome.isHeldBackByFail) {
        const bool isLimit = outcome.result.verdict == VerdictKind::fail;
        reasons.emplace_back(isLimit ? "limits of the board are not held" : "the fit does not hold");
        options.emplace_back("--accept-fail");
    }
    const bool wantsProbes =
        outcome.result.fit && outcome.result.fit->isBudgetSpent && outcome.isHeldBackByFail;
    return (wantsProbes ? "more --probes, with --restart, may do; " : std::string()) +
           joined(reasons, ", and ") + "; the same once more with " + joined(options, " ") +
           ", and with --resume after a measurement, stores them.";
}

} // namespace

std::string storedText(const CalibrationOutcome& outcome, const CalibrationEnd& end) {
    if (!outcome.tables.empty()) {
        return (outcome.isUnchanged ? "Stored before, and the same: " : "Stored: ") + outcome.tables +
               (outcome.verdict.kind() == VerdictKind::fail ? ", marked FAIL (accepted)" : "") +
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
    if (outcome.result.fit && outcome.result.nodes.empty()) {
        return "No tables were stored: " + outcome.result.fit->reason +
               ". When that is mended, --restart begins anew.";
    }
    if (outcome.summary.failed != 0) {
        return "No tables were stored: " + counted(outcome.summary.failed, "point") +
               " without corrections. When what is said about them is mended, " +
               (outcome.result.isHardware && !outcome.result.fit
                    ? "--resume measures what could not be measured, and --restart all of it."
                    : "--restart begins anew.");
    }
    return "No tables were stored: " + heldBackText(outcome);
}

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

void CalibrationText::makesRoom(const std::string& file, const PutAway& putAway) {
    m_out << "Put away: " << harmless(file) << " is now " << harmless(putAway.backup)
          << (putAway.remark.empty() ? "" : "; it was no journal to go on with: " + harmless(putAway.remark))
          << "\n"
          << std::flush;
}

void CalibrationText::awaits(const AwaitedTemperature& awaited, bool isBeginning) {
    if (isBeginning || (awaited.isByWord && awaited.now)) {
        m_out << "     " << awaitedText(awaited) << "\n" << std::flush;
    }
}

void CalibrationText::begins(const Board& board, const Result& result, std::size_t knownProbes) {
    const Settings& settings = result.settings;
    m_out << harmless(board.name + " (" + board.file.string() + "), serial " + result.serial) << "\nChannel "
          << settings.channel << ": " << askedText(settings) << "\n";
    if (result.isHardware) {
        m_out << temperatureText(board, result) << "\n";
        if (settings.method == CalibrationMethod::fit && settings.temperatures.size() > 1) {
            m_out << "It begins at " << result.route.front() << " degrees.\n";
        } else if (result.route != settings.temperatures) {
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
    m_out << "\n";
    writeText(m_out, outcome.verdict);
    m_out << harmless(storedText(outcome, end)) << "\n";
    showPoints(result);
    showWorst(summary, result.settings.method == CalibrationMethod::fit);
    showFit(result);
    m_out << "\n"
          << pointsText(outcome) << counted(outcome.newProbes, "probe") << " made"
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
    m_out << std::flush;
}

void CalibrationText::showPoints(const Result& result) {
    TextTable table;
    for (const std::size_t column : {0U, 1U, 2U, 3U, 4U, 5U, 6U}) {
        table.alignRight(column);
    }
    const bool isHardware = result.isHardware;
    const bool isFit = result.settings.method == CalibrationMethod::fit;
    table.add({"kHz", "degrees", "I", "Q", isHardware ? "first" : "before", isHardware ? "last" : "after",
               isFit ? "probes" : "iterations", "state"});
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
                       std::to_string(isFit ? point.probes.size() : point.iterations),
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

void CalibrationText::showFit(const Result& result) {
    if (!result.fit) {
        return;
    }
    const Fit::Outcome& fit = *result.fit;
    m_out << "\n";
    if (!result.nodes.empty()) {
        m_out << "Tables of " << counted(fit.table.carriers.size(), "carrier") << " by "
              << counted(fit.table.temperatures.size(), "temperature");
        if (fit.claim) {
            m_out << ": at most " << levelText(fit.claim->level)
                  << (fit.isRelative ? " against no corrections" : "") << " anywhere, by the fit itself";
        }
        m_out << "\n";
    }
    if (!fit.reason.empty()) {
        m_out << "The fit: " << harmless(fit.reason) << "\n";
    }
}

void CalibrationText::showWorst(const LeakageSummary& summary, bool isFit) {
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
    addWorst(table, isFit ? "calibrated, at the points" : "calibrated, at the nodes", summary.after);
    addWorst(table, isFit ? "calibrated, anywhere" : "calibrated, between the nodes", summary.between);
    m_out << (summary.firstReading ? "\nWorst leakage by the detector\n" : "\nWorst modelled leakage\n");
    table.write(m_out);
}

} // namespace Radio::Calibration
