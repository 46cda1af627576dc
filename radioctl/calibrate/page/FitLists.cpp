#include "radioctl/calibrate/page/FitLists.h"

#include "radio/text/Words.h"
#include "radioctl/calibrate/page/PointLists.h"
#include "radioctl/page/Html.h"

#include <algorithm>
#include <string>

namespace Radio::Calibration {

namespace {

using namespace Page;

std::string placeText(const Fit::Place& place) {
    return pointPlace(place.carrier, place.temperature);
}

std::string claimText(const Fit::Outcome& fit) {
    if (!fit.claim) {
        return "nothing is claimed";
    }
    const std::string level = fit.isRelative
                                  ? inTwoDecimals(fit.claim->level) +
                                        " dB against what leaked without corrections at the first point"
                                  : levelText(fit.claim->level);
    return level + ", at " + placeText(fit.claim->place);
}

std::string tablesText(const Fit::Table& table, bool hasTables) {
    return !hasTables ? "none"
                      : counted(table.carriers.size(), "carrier") + " by " +
                            counted(table.temperatures.size(), "temperature");
}

std::string triesText(const std::vector<Fit::Verification>& tries) {
    const auto worse = std::count_if(tries.begin(), tries.end(),
                                     [](const Fit::Verification& tried) { return !tried.isAsForetold; });
    return counted(tries.size(), "place") +
           (tries.empty() ? ""
            : worse == 0  ? ", all as foretold"
                          : ", " + std::to_string(worse) + " of them worse than foretold, and fitted then");
}

std::string probesText(const Result& result) {
    const std::uint32_t taken = result.qualification ? result.qualification->taken : 0;
    return std::to_string(result.fit->probes + taken) + " of " + std::to_string(result.settings.budget) +
           (taken == 0 ? "" : ", " + std::to_string(taken) + " of them to qualify the detector");
}

std::string numberOrDash(const std::optional<double>& level) {
    return level ? inTwoDecimals(*level) : "-";
}

std::string numberOrDash(const std::optional<std::int32_t>& reading) {
    return reading ? std::to_string(*reading) : "-";
}

void writePoint(std::ostream& out, const Point& point, const Fit::Point& fitted, bool isHardware) {
    const bool isFound = point.state != PointState::failed;
    out << (point.state == PointState::good ? "<tr>" : "<tr class=\"bad\">")
        << numberCell(std::to_string(point.frequency)) << numberCell(std::to_string(point.temperature))
        << cell(std::string(toString(point.state))) << numberCell(isFound ? std::to_string(point.i) : "-")
        << numberCell(isFound ? std::to_string(point.q) : "-");
    if (isHardware) {
        out << numberCell(numberOrDash(point.firstReading));
    } else {
        out << numberCell(numberOrDash(point.before))
            << numberCell(isFound ? numberOrDash(point.after) : "-");
    }
    out << numberCell(isFound ? numberOrDash(fitted.reading) : "-")
        << numberCell(std::to_string(fitted.probes)) << cell(inHtml(point.remark)) << "</tr>\n";
}

} // namespace

void writeFitClaim(std::ostream& out, const Result& result, const LeakageSummary& summary) {
    const Fit::Outcome& fit = *result.fit;
    out << "<h2>What the fit says of its tables</h2>\n<table>\n";
    writeLine(out, "leaks anywhere, at most", claimText(fit));
    if (!result.isHardware) {
        writeLine(out, "leaks anywhere, as modelled",
                  summary.between ? levelText(summary.between->level) + ", at " +
                                        pointPlace(summary.between->frequency, summary.between->temperature)
                                  : "there are no tables");
    }
    if (!fit.reason.empty()) {
        writeLine(out, "what stands against them", inHtml(fit.reason));
    }
    writeLine(out, "tables", tablesText(fit.table, !result.nodes.empty()));
    writeLine(out, "tried at", triesText(fit.verifications));
    writeLine(out, "probes", probesText(result));
    writeLine(out, "temperatures one after the other", std::to_string(fit.temperatureChanges));
    if (fit.slope > 0) {
        writeLine(out, "slope of the detector", inTwoDecimals(fit.slope) + " units for each dB");
    }
    out << "</table>\n<p class=\"note\">The fit knows readings, and what is stated of the detector. What it "
           "says "
           "leaks at most anywhere in band and temperatures holds with what the radio interpolates, the "
           "rounding of its DACs included, for a transmitter without features narrower than the distance of "
           "its points.</p>\n";
}

void writeFittedPoints(std::ostream& out, const Result& result) {
    out << "<h2>All points</h2>\n<table>\n<tr><th class=\"number\">kHz</th><th class=\"number\">°C</th>"
           "<th>state</th><th class=\"number\">I</th><th class=\"number\">Q</th>"
        << (result.isHardware ? "<th class=\"number\">first reading</th>"
                              : R"(<th class="number">before, dBc</th><th class="number">after, dBc</th>)")
        << "<th class=\"number\">last reading</th><th class=\"number\">probes</th><th>remark</th></tr>\n";
    for (std::size_t k = 0; k < result.points.size(); ++k) {
        writePoint(out, result.points[k], result.fit->points.at(k), result.isHardware);
    }
    out << "</table>\n";
}

void writeTries(std::ostream& out, const Fit::Outcome& fit) {
    if (fit.verifications.empty()) {
        return;
    }
    out << "<h2>Where the table was tried</h2>\n<table>\n<tr><th class=\"number\">kHz</th>"
           "<th class=\"number\">°C</th><th class=\"number\">I</th><th class=\"number\">Q</th>"
           "<th class=\"number\">reading</th><th class=\"number\">level, "
        << (fit.isRelative ? "dB" : "dBc") << "</th><th>as foretold</th></tr>\n";
    for (const Fit::Verification& tried : fit.verifications) {
        out << (tried.isAsForetold ? "<tr>" : "<tr class=\"bad\">")
            << numberCell(std::to_string(tried.place.carrier))
            << numberCell(std::to_string(tried.place.temperature))
            << numberCell(std::to_string(tried.corrections.i))
            << numberCell(std::to_string(tried.corrections.q)) << numberCell(std::to_string(tried.reading))
            << numberCell(inTwoDecimals(tried.level))
            << cell(tried.isAsForetold ? "yes" : "no, it reads more") << "</tr>\n";
    }
    out << "</table>\n";
}

} // namespace Radio::Calibration
