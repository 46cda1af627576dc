#include "radioctl/store/ReportText.h"

#include "radio/text/Words.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/TextTable.h"
#include "radioctl/store/StoreReport.h"

#include <algorithm>
#include <limits>

namespace Radio::Store {

namespace {

/** What is shown unless all is asked for. */
constexpr std::size_t fewRows = 20;
constexpr std::size_t idLetters = 8;

const std::string& orDash(const std::string& text) {
    static const std::string dash = "-";
    return text.empty() ? dash : text;
}

void tellYields(std::ostream& out, const StatisticsReport& report) {
    TextTable table;
    table.add({"day", "station", "runs", "passed", "failed", "yield"});
    for (const std::size_t column : {2U, 3U, 4U, 5U}) {
        table.alignRight(column);
    }
    for (const auto& [where, yield] : report.yields) {
        table.add({where.first, orDash(where.second), std::to_string(yield.runs),
                   std::to_string(yield.passed), std::to_string(yield.failed), yieldText(yield)});
    }
    out << "\nYield by day and station\n";
    table.write(out);
}

void tellMeasurands(std::ostream& out, const std::vector<const MeasurandReport*>& rows, std::size_t of) {
    TextTable table;
    table.add({"measurement", "values", "mean", "deviation", "Cpk", "missed", "unit"});
    for (const std::size_t column : {1U, 2U, 3U, 4U, 5U}) {
        table.alignRight(column);
    }
    for (const MeasurandReport* const row : rows) {
        table.add({nameOf(row->measurand), std::to_string(row->values.count()),
                   inTwoDecimals(row->values.mean()), figureText(row->values.deviation()),
                   figureText(row->cpk), row->judged == 0 ? "-" : std::to_string(row->missed),
                   orDash(row->measurand.unit)});
    }
    out << "\nMeasurements, the least room first"
        << (rows.size() < of
                ? ", " + std::to_string(rows.size()) + " of " + std::to_string(of) + " (--all shows all)"
                : "")
        << "\n";
    table.write(out);
}

void tellDrift(std::ostream& out, const std::vector<const MeasurandReport*>& rows) {
    TextTable table;
    table.add({"measurement", "changes", "mean", "deviation", "largest", "unit", "run"});
    for (const std::size_t column : {1U, 2U, 3U, 4U}) {
        table.alignRight(column);
    }
    bool isEmpty = true;
    for (const MeasurandReport* const row : rows) {
        if (row->largestDrift) {
            isEmpty = false;
            table.add({nameOf(row->measurand), std::to_string(row->drift.count()),
                       inTwoDecimals(row->drift.mean()), figureText(row->drift.deviation()),
                       inTwoDecimals(row->largestDrift->value), row->largestDrift->serial,
                       row->largestDrift->run.substr(0, idLetters)});
        }
    }
    if (!isEmpty) {
        out << "\nFrom one run of a unit to its next\n";
        table.write(out);
    }
}

void tellStations(std::ostream& out, const std::vector<const MeasurandReport*>& rows) {
    TextTable table;
    table.add({"station", "mean", "others", "errors apart", "measurement"});
    for (const std::size_t column : {1U, 2U, 3U}) {
        table.alignRight(column);
    }
    bool isEmpty = true;
    for (const MeasurandReport* const row : rows) {
        for (const StationDifference& one : row->stations) {
            isEmpty = false;
            table.add({orDash(one.station), inTwoDecimals(one.mean), inTwoDecimals(one.meanOfOthers),
                       inDecimals(one.errors, 1), nameOf(row->measurand)});
        }
    }
    if (!isEmpty) {
        out << "\nStations that differ\n";
        table.write(out);
    }
}

void tellOutliers(std::ostream& out, const std::vector<const MeasurandReport*>& rows) {
    TextTable table;
    table.add({"unit", "run", "value", "mean", "measurement"});
    table.alignRight(2);
    table.alignRight(3);
    bool isEmpty = true;
    for (const MeasurandReport* const row : rows) {
        for (const Extreme& one : row->outliers) {
            isEmpty = false;
            table.add({one.serial, one.run.substr(0, idLetters), inTwoDecimals(one.value),
                       inTwoDecimals(row->values.mean()), nameOf(row->measurand)});
        }
    }
    if (!isEmpty) {
        out << "\nFar from all others (\"store show RUN\" has each)\n";
        table.write(out);
    }
}

Json extremeJson(const Extreme& one) {
    return {{"value", one.value}, {"serial", one.serial}, {"run", one.run}};
}

Json measurandEvent(const MeasurandReport& report) {
    const Measurand& of = report.measurand;
    Json stations = Json::array();
    for (const StationDifference& one : report.stations) {
        stations.push_back({{"station", one.station.empty() ? Json(nullptr) : Json(one.station)},
                            {"values", one.count},
                            {"mean", one.mean},
                            {"mean_of_others", one.meanOfOthers},
                            {"errors", one.errors}});
    }
    Json outliers = Json::array();
    for (const Extreme& one : report.outliers) {
        outliers.push_back(extremeJson(one));
    }
    const bool isValued = report.values.count() != 0;
    const auto orNothing = [isValued](double value) { return isValued ? Json(value) : Json(nullptr); };
    Json event = {{"event", "report_measurement"},
                  {"kind", of.kind},
                  {"board", of.board},
                  {"name", of.name},
                  {"unit", of.unit.empty() ? Json(nullptr) : Json(of.unit)},
                  {"channel", orNull(of.channel)},
                  {"khz", orNull(of.frequency)},
                  {"degrees", orNull(of.temperature)},
                  {"lowest", orNull(of.lowest)},
                  {"highest", orNull(of.highest)}};
    event["values"] = report.values.count();
    event["judged"] = report.judged;
    event["missed"] = report.missed;
    event["mean"] = orNothing(report.values.mean());
    event["deviation"] = orNull(report.values.deviation());
    event["least"] = orNothing(report.values.least());
    event["most"] = orNothing(report.values.most());
    event["cpk"] = orNull(report.cpk);
    event["histogram"] = isValued ? Json({{"begin", report.histogram.begin()},
                                          {"width", report.histogram.width()},
                                          {"counts", report.histogram.counts()}})
                                  : Json(nullptr);
    event["drift"] = report.largestDrift ? Json({{"changes", report.drift.count()},
                                                 {"mean", report.drift.mean()},
                                                 {"deviation", orNull(report.drift.deviation())},
                                                 {"largest", extremeJson(*report.largestDrift)}})
                                         : Json(nullptr);
    event["stations"] = stations;
    event["outliers"] = outliers;
    return event;
}

} // namespace

std::vector<const MeasurandReport*> byRoom(const StatisticsReport& report) {
    std::vector<const MeasurandReport*> rows;
    for (const MeasurandReport& one : report.measurands) {
        if (one.values.count() != 0) {
            rows.push_back(&one);
        }
    }
    std::stable_sort(rows.begin(), rows.end(), [](const MeasurandReport* one, const MeasurandReport* other) {
        constexpr double none = std::numeric_limits<double>::infinity();
        return one->cpk.value_or(none) < other->cpk.value_or(none);
    });
    return rows;
}

std::string nameOf(const Measurand& measurand) {
    Measurement at{measurand.name};
    at.channel = measurand.channel;
    at.frequency = measurand.frequency;
    at.temperature = measurand.temperature;
    const std::string place = placeText(at);
    return measurand.name + (place.empty() ? "" : " at " + place);
}

std::string yieldText(const Yield& yield) {
    constexpr double percent = 100.0;
    const std::optional<double> part = yield.part();
    return part ? inDecimals(*part * percent, 1) + " %" : "-";
}

std::string figureText(const std::optional<double>& figure) {
    constexpr int decimals = 3;
    return figure ? inDecimals(*figure, decimals) : "-";
}

void writeText(std::ostream& out, const StatisticsReport& report, bool all) {
    out << counted(report.runs, "run") << " of " << counted(report.units, "unit") << ": " << report.all.passed
        << " passed, " << report.all.failed << " failed, yield " << yieldText(report.all) << "\n";
    tellYields(out, report);
    std::vector<const MeasurandReport*> rows = byRoom(report);
    const std::size_t count = rows.size();
    const std::vector<const MeasurandReport*> whole = rows;
    if (!all && rows.size() > fewRows) {
        rows.resize(fewRows);
    }
    if (count != 0) {
        tellMeasurands(out, rows, count);
        tellDrift(out, rows);
    }
    tellStations(out, whole);
    tellOutliers(out, whole);
}

void writeEvents(std::ostream& out, const StatisticsReport& report) {
    for (const auto& [where, yield] : report.yields) {
        writeJsonLine(out, {{"event", "report_yield"},
                            {"day", where.first},
                            {"station", where.second.empty() ? Json(nullptr) : Json(where.second)},
                            {"runs", yield.runs},
                            {"passed", yield.passed},
                            {"failed", yield.failed},
                            {"yield", orNull(yield.part())}});
    }
    for (const MeasurandReport& one : report.measurands) {
        writeJsonLine(out, measurandEvent(one));
    }
}

} // namespace Radio::Store
