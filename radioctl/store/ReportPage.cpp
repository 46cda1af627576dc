#include "radioctl/store/ReportPage.h"

#include "radio/text/Words.h"
#include "radioctl/page/Html.h"
#include "radioctl/page/Svg.h"
#include "radioctl/store/ReportText.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <vector>

namespace Radio::Store {

namespace {

using namespace Page;

/** A page is to be read: so many measurements are drawn, those with the least room. */
constexpr std::size_t mostFigures = 24;
constexpr std::size_t mostRows = 400;

constexpr const char* beginning = "set terminal svg noenhanced dynamic size 960,300 font 'sans-serif,13'\n"
                                  "set key outside top right horizontal\nset grid\nset border 3\n"
                                  "set tics nomirror\n";

std::string link(const Extreme& one) {
    return "<a href=\"#run-" + one.run + "\">" + inHtml(one.run.substr(0, 8)) + "</a>";
}

/** All stations of a day together. */
std::map<std::string, Yield> yieldsOfDays(const StatisticsReport& report) {
    std::map<std::string, Yield> days;
    for (const auto& [where, yield] : report.yields) {
        Yield& day = days[where.first];
        day.runs += yield.runs;
        day.passed += yield.passed;
        day.failed += yield.failed;
    }
    return days;
}

void writeYieldFigure(std::ostream& out, const StatisticsReport& report) {
    std::ostringstream script;
    script << beginning << "set xdata time\nset timefmt '%Y-%m-%d'\nset format x '%Y-%m-%d'\n"
           << "set xtics rotate by -30\nset yrange [0:100]\nset ylabel 'yield in %'\n$days << END\n";
    bool isEmpty = true;
    for (const auto& [day, yield] : yieldsOfDays(report)) {
        if (const std::optional<double> part = yield.part()) {
            script << day << ' ' << *part * 100.0 << '\n';
            isEmpty = false;
        }
    }
    script << "END\nplot $days using 1:2 with linespoints linewidth 2 pointtype 7 linecolor rgb '" << blue
           << "' title 'yield of the day'\n";
    if (!isEmpty) {
        writeFigure(out, "Yield by day", drawSvg(script.str(), "yield", "Yield by day"));
    }
}

void writeYields(std::ostream& out, const StatisticsReport& report) {
    out << "<h2>Yield</h2>\n";
    writeYieldFigure(out, report);
    out << "<table>\n<tr><th>day</th><th>station</th><th class=\"number\">runs</th><th "
           "class=\"number\">passed</th><th class=\"number\">failed</th><th "
           "class=\"number\">yield</th></tr>\n";
    for (const auto& [where, yield] : report.yields) {
        out << "<tr>" << cell(inHtml(where.first)) << cell(where.second.empty() ? "-" : inHtml(where.second))
            << numberCell(std::to_string(yield.runs)) << numberCell(std::to_string(yield.passed))
            << numberCell(std::to_string(yield.failed)) << numberCell(yieldText(yield)) << "</tr>\n";
    }
    out << "</table>\n";
}

void writeHistogram(std::ostream& out, const MeasurandReport& of, std::size_t number) {
    const std::string id = "measurement-" + std::to_string(number);
    const std::string name = nameOf(of.measurand);
    std::ostringstream script;
    script.precision(12);
    script << beginning << "set ylabel 'values'\nset xlabel '"
           << (of.measurand.unit == "dBc" || of.measurand.unit == "dB" || of.measurand.unit == "Hz"
                   ? of.measurand.unit
                   : "value")
           << "'\nset style fill solid 0.6\nset yrange [0:*]\nset offsets graph 0.05, graph 0.05, graph 0.1, "
              "0\n";
    const double width = of.histogram.width();
    double at = of.histogram.begin() + width / 2;
    std::uint64_t most = 1;
    script << "$bins << END\n";
    for (const std::uint64_t count : of.histogram.counts()) {
        script << at << ' ' << count << '\n';
        at += width;
        most = std::max(most, count);
    }
    script << "END\n";
    std::string limits;
    for (const std::optional<double>& limit : {of.measurand.lowest, of.measurand.highest}) {
        if (limit) {
            const std::string block = limits.empty() ? "$one" : "$other";
            script << block << " << END\n" << *limit << " 0\n" << *limit << ' ' << most << "\nEND\n";
            limits += ", " + block + " with lines linewidth 2 linecolor rgb '" + orange + "' title '" +
                      (limits.empty() ? "limit" : "") + "'";
        }
    }
    script << "set boxwidth " << width << "\nplot $bins with boxes linecolor rgb '" << blue << "' title '"
           << of.values.count() << " values'" << limits << '\n';
    writeFigure(out, inHtml(name) + (of.cpk ? ", Cpk " + figureText(of.cpk) : ""),
                drawSvg(script.str(), id, inHtml(name)));
}

void writeMeasurands(std::ostream& out, const std::vector<const MeasurandReport*>& rows) {
    out << "<h2>Measurements against their limits</h2>\n";
    if (rows.size() > mostFigures) {
        out << "<p class=\"note\">Drawn are the " << mostFigures << " of " << rows.size()
            << " with the least room.</p>\n";
    }
    for (std::size_t n = 0; n < std::min(rows.size(), mostFigures); ++n) {
        writeHistogram(out, *rows[n], n + 1);
    }
    out << "<table>\n<tr><th>measurement</th><th>board</th><th class=\"number\">values</th><th "
           "class=\"number\">mean</th><th class=\"number\">deviation</th><th class=\"number\">Cpk</th><th "
           "class=\"number\">missed</th></tr>\n";
    for (std::size_t n = 0; n < std::min(rows.size(), mostRows); ++n) {
        const MeasurandReport& one = *rows[n];
        out << "<tr>" << cell(inHtml(nameOf(one.measurand))) << cell(inHtml(one.measurand.board))
            << numberCell(std::to_string(one.values.count()))
            << numberCell(inHtml(inTwoDecimals(one.values.mean()) + " " + one.measurand.unit))
            << numberCell(figureText(one.values.deviation())) << numberCell(figureText(one.cpk))
            << numberCell(one.judged == 0 ? "-" : std::to_string(one.missed)) << "</tr>\n";
    }
    out << "</table>\n";
}

void writeDrift(std::ostream& out, const std::vector<const MeasurandReport*>& rows) {
    out << "<h2>Drift from one run of a unit to its next</h2>\n<table>\n<tr><th>measurement</th><th "
           "class=\"number\">changes</th><th class=\"number\">mean</th><th "
           "class=\"number\">deviation</th><th "
           "class=\"number\">largest</th><th>unit</th><th>run</th></tr>\n";
    std::size_t count = 0;
    for (const MeasurandReport* const one : rows) {
        if (one->largestDrift && ++count <= mostRows) {
            out << "<tr>" << cell(inHtml(nameOf(one->measurand)))
                << numberCell(std::to_string(one->drift.count()))
                << numberCell(inTwoDecimals(one->drift.mean()))
                << numberCell(figureText(one->drift.deviation()))
                << numberCell(inTwoDecimals(one->largestDrift->value))
                << cell(inHtml(one->largestDrift->serial)) << cell(link(*one->largestDrift)) << "</tr>\n";
        }
    }
    out << "</table>\n";
}

void writeStations(std::ostream& out, const std::vector<const MeasurandReport*>& rows) {
    out << "<h2>Stations that differ</h2>\n<table>\n<tr><th>station</th><th>measurement</th><th "
           "class=\"number\">mean</th><th class=\"number\">all others</th><th class=\"number\">standard "
           "errors "
           "apart</th></tr>\n";
    for (const MeasurandReport* const row : rows) {
        for (const StationDifference& one : row->stations) {
            out << "<tr class=\"bad\">" << cell(one.station.empty() ? "-" : inHtml(one.station))
                << cell(inHtml(nameOf(row->measurand))) << numberCell(inTwoDecimals(one.mean))
                << numberCell(inTwoDecimals(one.meanOfOthers)) << numberCell(inDecimals(one.errors, 1))
                << "</tr>\n";
        }
    }
    out << "</table>\n";
}

void writeOutliers(std::ostream& out, const std::vector<const MeasurandReport*>& rows) {
    out << "<h2>Far from all others</h2>\n<table>\n<tr><th>unit</th><th>measurement</th><th "
           "class=\"number\">value</th><th class=\"number\">mean</th><th>run</th></tr>\n";
    for (const MeasurandReport* const row : rows) {
        for (const Extreme& one : row->outliers) {
            out << "<tr>" << cell(inHtml(one.serial)) << cell(inHtml(nameOf(row->measurand)))
                << numberCell(inTwoDecimals(one.value)) << numberCell(inTwoDecimals(row->values.mean()))
                << cell(link(one)) << "</tr>\n";
        }
    }
    out << "</table>\n";
}

/** Where links of a run lead: how it is shown. */
void writeRuns(std::ostream& out, const std::vector<const MeasurandReport*>& rows) {
    std::map<std::string, std::string> runs;
    for (const MeasurandReport* const row : rows) {
        for (const Extreme& one : row->outliers) {
            runs.emplace(one.run, one.serial);
        }
        if (row->largestDrift) {
            runs.emplace(row->largestDrift->run, row->largestDrift->serial);
        }
    }
    out << "<h2>Runs</h2>\n<table>\n<tr><th>unit</th><th>what shows it</th></tr>\n";
    for (const auto& [run, serial] : runs) {
        out << "<tr id=\"run-" << run << "\">" << cell(inHtml(serial)) << cell("radioctl store show " + run)
            << "</tr>\n";
    }
    out << "</table>\n";
}

} // namespace

void writePage(std::ostream& out, const StatisticsReport& report, const std::string& store) {
    writeBeginning(out, "Runs of " + counted(report.units, "unit"));
    out << "<h1>What " << counted(report.runs, "run") << " say together</h1>\n";
    writeVerdict(out, "none",
                 {"Yield " + yieldText(report.all) + ": " + std::to_string(report.all.passed) + " passed, " +
                  std::to_string(report.all.failed) + " failed, of " + counted(report.runs, "run") + " of " +
                  counted(report.units, "unit")});
    out << "<p>" << inHtml(store) << "</p>\n";
    const std::vector<const MeasurandReport*> rows = byRoom(report);
    writeYields(out, report);
    writeMeasurands(out, rows);
    writeDrift(out, rows);
    writeStations(out, rows);
    writeOutliers(out, rows);
    writeRuns(out, rows);
    writeEnd(out);
}

} // namespace Radio::Store
