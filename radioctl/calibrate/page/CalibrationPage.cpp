#include "radioctl/calibrate/page/CalibrationPage.h"

#include "radio/board/VerdictJson.h"
#include "radio/calibration/LeakageVerdict.h"
#include "radio/calibration/SearchDrivers.h"
#include "radio/calibration/Surface.h"
#include "radio/text/Median.h"
#include "radio/text/Words.h"
#include "radioctl/calibrate/page/CorrectionFigures.h"
#include "radioctl/calibrate/page/FitFigures.h"
#include "radioctl/calibrate/page/FitLists.h"
#include "radioctl/calibrate/page/LeakageFigures.h"
#include "radioctl/calibrate/page/PointLists.h"
#include "radioctl/calibrate/page/SearchFigures.h"
#include "radioctl/page/Html.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace Radio::Calibration {

namespace {

using namespace Page;

std::string numberText(double number) {
    std::ostringstream text;
    text << number;
    return text.str();
}

std::string rangeText(const Range& range) {
    return std::to_string(range.low) + " to " + std::to_string(range.high);
}

/** "5 from 17700000 to 18700000 kHz" */
template <typename Number>
std::string axisText(const std::vector<Number>& axis, const std::string& unit) {
    const std::string last = std::to_string(axis.back()) + ' ' + unit;
    return axis.size() == 1
               ? last
               : std::to_string(axis.size()) + " from " + std::to_string(axis.front()) + " to " + last;
}

std::string detectorText(const SearchDrivers& drivers, const Settings& settings) {
    if (settings.useHighDetector && drivers.highDetector.empty()) {
        return "high range, which the board does not have";
    }
    return inHtml(drivers.read(settings.useHighDetector)) + (drivers.highDetector.empty() ? ""
                                                             : settings.useHighDetector   ? ", high range"
                                                                                          : ", low range");
}

/** "17700000 to 18700000 kHz" */
template <typename Number>
std::string endsText(const std::vector<Number>& ends, const std::string& unit) {
    const std::string last = std::to_string(ends.back()) + ' ' + unit;
    return ends.size() == 1 ? last : std::to_string(ends.front()) + " to " + last;
}

/** How a fit was to be made. */
void writeFitOrder(std::ostream& out, const Settings& settings) {
    writeLine(out, "method", "fit");
    writeLine(out, "carriers", endsText(settings.frequencies, "kHz"));
    writeLine(out, "temperatures", endsText(settings.temperatures, "°C"));
    writeLine(out, "probes", "at most " + std::to_string(settings.budget));
    writeLine(out, "to leak anywhere",
              settings.limit ? "at most " + levelText(*settings.limit)
                             : "as little as these probes can find; the board states no limit");
}

void writeParameters(std::ostream& out, const Board& board, const SearchDrivers& drivers,
                     const Result& result) {
    const Settings& settings = result.settings;
    out << "<h2>How it was calibrated</h2>\n<table>\n";
    writeLine(out, "board", inHtml(board.name) + " (" + inHtml(board.file.string()) + ")");
    writeLine(out, "serial", inHtml(result.serial));
    if (!result.station.empty()) {
        writeLine(out, "station", inHtml(result.station));
    }
    writeLine(out, "channel", std::to_string(settings.channel));
    if (result.isHardware) {
        writeLine(out, "mode", std::string(hardwareMode));
    }
    writeLine(out, "date", inHtml(result.date) + " (UTC)");
    writeLine(out, "tool", "radioctl " + inHtml(result.version));
    const bool isFit = settings.method == CalibrationMethod::fit;
    if (isFit) {
        writeFitOrder(out, settings);
    } else {
        writeLine(out, "carriers", axisText(settings.frequencies, "kHz"));
        writeLine(out, "temperatures", axisText(settings.temperatures, "°C"));
    }
    const std::string range = isFit ? "range of " : "search range of ";
    writeLine(out, range + "I", rangeText(settings.i) + " (units of " + inHtml(drivers.i) + ")");
    writeLine(out, range + "Q", rangeText(settings.q) + " (units of " + inHtml(drivers.q) + ")");
    if (!isFit) {
        writeLine(out, "shrink factor", numberText(settings.shrinkFactor));
        writeLine(out, "a search ends",
                  "at a range of " + std::to_string(settings.minDelta) + " or less, or after " +
                      counted(settings.maxIterations, "iteration"));
    }
    writeLine(out, "settle time", std::to_string(settings.settleTime) + " ms");
    writeLine(out, "detector", detectorText(drivers, settings));
    out << "</table>\n";
}

void writeWorst(std::ostream& out, const std::string& what, const std::optional<Worst>& worst) {
    out << "<tr>" << cell(what);
    if (worst) {
        out << numberCell(inTwoDecimals(worst->level))
            << cell(pointPlace(worst->frequency, worst->temperature));
    } else {
        out << numberCell("-") << cell("not every point has corrections");
    }
    out << "</tr>\n";
}

/** How many iterations the points took, and how many probes all of them. */
void writeEffort(std::ostream& out, const Result& result) {
    std::vector<double> iterations;
    std::size_t probes = 0;
    for (const Point& point : result.points) {
        probes += point.probes.size();
        if (point.state != PointState::failed) {
            iterations.push_back(point.iterations);
        }
    }
    if (!iterations.empty()) {
        const double most = *std::max_element(iterations.begin(), iterations.end());
        out << "Iterations of a search: median " << median(iterations) << ", at most " << most << ". ";
    }
    out << counted(probes, "probe") << " in total.";
}

void writeReading(std::ostream& out, const std::string& what, const std::optional<Worst>& worst) {
    out << "<tr>" << cell(what);
    if (worst) {
        out << numberCell(numberText(worst->level)) << cell(pointPlace(worst->frequency, worst->temperature));
    } else {
        out << numberCell("-") << cell("no point has corrections");
    }
    out << "</tr>\n";
}

void writeSummary(std::ostream& out, const LeakageSummary& summary, const Result& result) {
    if (result.isHardware) {
        out << "<table>\n<tr><th>highest reading of the detector</th><th class=\"number\">reading</th>"
               "<th>where</th></tr>\n";
        writeReading(out, "at the first probe", summary.firstReading);
        writeReading(out, "at the last probe", summary.lastReading);
    } else {
        out << "<table>\n<tr><th>highest modelled leakage</th><th class=\"number\">dBc</th>"
               "<th>where</th></tr>\n";
        writeWorst(out, "before, at the points", summary.before);
        writeWorst(out, "after, at the points", summary.after);
        writeWorst(out, result.fit ? "after, anywhere with the tables" : "after, also between the points",
                   summary.between);
    }
    out << "</table>\n<p>" << counted(result.points.size(), "point") << ": " << summary.good << " good, "
        << (summary.missed == 0 ? "" : std::to_string(summary.missed) + " missed a limit, ") << summary.edge
        << (result.fit ? " at the edge of a range, " : " at the edge of a search range, ") << summary.failed
        << " failed. ";
    if (!result.fit) {
        writeEffort(out, result);
    }
    out << "</p>\n";
}

/** `leakage` is null on hardware. */
void writeWholePage(std::ostream& out, const Board& board, const LeakageDescription* leakage,
                    const Result& result, const std::string& stored) {
    std::vector<const Point*> points;
    for (const Point& point : result.points) {
        points.push_back(&point);
    }
    writeBeginning(out, inHtml(board.name) + ": calibration of the LO leakage");
    const LeakageSummary summary = leakage != nullptr ? summarise(result, *leakage) : summarise(result);
    out << "<h1>Calibration of the LO leakage</h1>\n";
    const Verdict verdict = verdictOn(result, summary, board.limits);
    std::vector<std::string> lines = linesOf(verdict);
    lines.push_back(stored);
    writeVerdict(out, verdictWord(verdict), lines);
    out << "<p>" << inHtml(board.name) << ", serial " << inHtml(result.serial) << ", channel "
        << result.settings.channel << ", "
        << (result.station.empty() ? "" : "station " + inHtml(result.station) + ", ") << inHtml(result.date)
        << ", radioctl " << inHtml(result.version) << "</p>\n";
    writeSummary(out, summary, result);
    writeWarnings(out, points);
    out << (leakage != nullptr
                ? "<p class=\"note\">Leakage is that of the modelled transmitter, relative to its signal: "
                  "the "
                  "lower, the cleaner. Before, both corrections are 0.</p>\n"
                : "<p class=\"note\">Calibrated on hardware: what leaks is known from the detector alone, in "
                  "its units; the lower, the cleaner. ");
    if (leakage == nullptr) {
        out << (result.fit ? "The first probe of a point is one of a ring around the corrections that were "
                             "expected there; the last has those found.</p>\n"
                           : "The first probe of a search has both corrections at the low ends of their "
                             "ranges.</p>\n");
    }
    if (result.fit) {
        writeFitClaim(out, result, summary);
    }
    writeParameters(out, board,
                    leakage != nullptr ? driversOf(*leakage) : driversOf(board, result.settings.channel),
                    result);
    if (leakage != nullptr) {
        writeLeakageFigures(out, result, *leakage);
    } else if (!result.fit) {
        writeReadingFigures(out, result);
    }
    if (result.fit) {
        writeFitFigures(out, result, leakage);
        writeCorrectionFigures(out, result);
        writeFittedPoints(out, result);
        writeTries(out, *result.fit);
    } else {
        writeSearchFigures(out, result, leakage);
        writeCorrectionFigures(out, result);
        writePoints(out, std::move(points), leakage == nullptr);
    }
    writeEnd(out);
}

} // namespace

void writePage(std::ostream& out, const Board& board, const LeakageDescription& leakage, const Result& result,
               const std::string& stored) {
    writeWholePage(out, board, &leakage, result, stored);
}

void writePage(std::ostream& out, const Board& board, const Result& result, const std::string& stored) {
    writeWholePage(out, board, nullptr, result, stored);
}

} // namespace Radio::Calibration
