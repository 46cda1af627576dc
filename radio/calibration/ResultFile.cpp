#include "radio/calibration/ResultFile.h"

#include "radio/board/CalibrationBounds.h"
#include "radio/board/WordList.h"
#include "radio/calibration/Settings.h"
#include "radio/text/Spreadsheet.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

namespace Radio::Calibration {

namespace {

/** The columns of a row. Nodes of a fit are not searched, and on hardware nothing is measured at them. */
std::string_view headingFor(const Result& result) {
    if (result.settings.method == CalibrationMethod::fit) {
        return result.isHardware ? "frequency_khz,temperature_c,i,q,state"
                                 : "frequency_khz,temperature_c,i,q,before_dbc,after_dbc,state";
    }
    return result.isHardware
               ? "frequency_khz,temperature_c,i,q,first_reading,last_reading,iterations,max_delta,state"
               : "frequency_khz,temperature_c,i,q,before_dbc,after_dbc,iterations,max_delta,state";
}

constexpr std::string_view program = "radioctl ";
constexpr double highestLevel = 1000.0;
constexpr std::int64_t mostIterations = std::numeric_limits<std::uint32_t>::max();
constexpr std::int64_t widestRange = std::numeric_limits<std::int32_t>::max();

/** A point that failed is in no file. */
constexpr std::array<Word<PointState>, 3> stateWords{
    {{"good", PointState::good}, {"missed", PointState::missed}, {"edge", PointState::edge}}};

/** What failed is in a file only where somebody accepted it. */
constexpr std::array<Word<VerdictKind>, 2> verdictWords{
    {{"PASS", VerdictKind::pass}, {"FAIL (accepted)", VerdictKind::fail}}};

/** With as many digits as it takes to read the same number. */
std::string exactText(double number) {
    std::array<char, 32> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), result.ptr};
}

/** "# verdict: PASS" as a line; nothing when there is none. */
std::string verdictLine(VerdictKind verdict) {
    for (const auto& entry : verdictWords) {
        if (entry.value == verdict) {
            return "# verdict: " + std::string(entry.word) + "\n";
        }
    }
    return {};
}

std::string_view wordFor(PointState state) {
    for (const auto& entry : stateWords) {
        if (entry.value == state) {
            return entry.word;
        }
    }
    throw std::logic_error("a point that failed has no corrections to be written");
}

std::string bothEnds(const Range& range) {
    return std::to_string(range.low) + " " + std::to_string(range.high);
}

/** A column with a level of a real transmitter. */
using LevelColumn = std::pair<std::string_view, std::optional<double> Point::*>;

/** Those that all points have. */
std::vector<LevelColumn> levelColumns(const Result& result) {
    std::vector<LevelColumn> columns;
    for (const LevelColumn& column :
         {LevelColumn("before_dbc", &Point::before), LevelColumn("after_dbc", &Point::after),
          LevelColumn("improvement_db", &Point::improvement),
          LevelColumn("analyser_dbc", &Point::analysed)}) {
        const bool isThere =
            std::all_of(result.points.begin(), result.points.end(),
                        [&column](const Point& point) { return (point.*column.second).has_value(); });
        if (result.isHardware && isThere && !result.points.empty()) {
            columns.push_back(column);
        }
    }
    return columns;
}

/** What has been found at a point besides its corrections. */
std::string foundAt(const Point& point, bool isHardware) {
    return isHardware
               ? std::to_string(point.firstReading.value_or(0)) + ',' +
                     std::to_string(point.lastReading.value_or(0))
               : inTwoDecimals(point.before.value_or(0)) + ',' + inTwoDecimals(point.after.value_or(0));
}

template <typename Number>
Number integer(const CsvItem& item, const Range& bounds) {
    return static_cast<Number>(item.integer(bounds.low, bounds.high));
}

Range readRange(const CsvItem& item) {
    const std::string& text = item.text();
    const std::size_t blank = std::min(text.find(' '), text.size());
    const std::size_t second = std::min(text.find_first_not_of(' ', blank), text.size());
    const auto end = [&](std::string_view number) {
        return integer<std::int64_t>(CsvItem("end of the range", number, item.place()), correctionBounds);
    };
    const Range range{end(text.substr(0, blank)), end(text.substr(second))};
    if (range.low > range.high) {
        item.failExpecting("the lowest value first");
    }
    return range;
}

double readShrinkFactor(const CsvItem& item) {
    const double factor = item.number(1.0);
    if (!isShrinkFactor(factor)) {
        item.failExpecting(shrinkFactorText);
    }
    return factor;
}

bool readDetector(const CsvItem& item) {
    if (item.text() != "low" && item.text() != "high") {
        item.failExpecting("low or high");
    }
    return item.text() == "high";
}

std::string readVersion(const CsvItem& item) {
    if (item.text().substr(0, program.size()) != program) {
        item.failExpecting("\"radioctl\" and its version");
    }
    return item.text().substr(program.size());
}

/** Files without a method are of a search. */
bool readIsFit(const CsvFile& file) {
    const std::optional<CsvItem> method = file.findProperty("method");
    if (method && method->text() != "fit") {
        method->failExpecting("fit");
    }
    return method.has_value();
}

Settings readSettings(const CsvFile& file) {
    Settings settings;
    settings.channel = integer<int>(file.property("channel"), {0, std::numeric_limits<int>::max()});
    settings.i = readRange(file.property("i_range"));
    settings.q = readRange(file.property("q_range"));
    settings.shrinkFactor = readShrinkFactor(file.property("shrink_factor"));
    settings.minDelta = integer<std::int32_t>(file.property("min_delta"), minDeltaBounds);
    settings.maxIterations = integer<std::uint32_t>(file.property("max_iterations"), iterationBounds);
    settings.settleTime = integer<std::uint32_t>(file.property("settle_time_ms"), settleTimeBounds);
    settings.useHighDetector = readDetector(file.property("detector"));
    if (readIsFit(file)) {
        settings.method = CalibrationMethod::fit;
        settings.budget = integer<std::uint32_t>(file.property("probes"), budgetBounds);
    }
    if (const std::optional<CsvItem> readings = file.findProperty("readings")) {
        settings.readings = integer<std::uint32_t>(*readings, {2, mostReadings});
    }
    return settings;
}

/** Files without a mode are of a simulation. */
bool readIsHardware(const CsvFile& file) {
    const std::optional<CsvItem> mode = file.findProperty("mode");
    if (mode && mode->text() != hardwareMode) {
        mode->failExpecting(std::string(hardwareMode));
    }
    return mode.has_value();
}

std::string readStation(const CsvFile& file) {
    const std::optional<CsvItem> station = file.findProperty("station");
    return station ? station->nonEmptyText("where it was calibrated") : "";
}

/** On hardware nobody knows better what leaks between the nodes of a fit. Older files have none. */
std::optional<double> readClaim(const CsvFile& file) {
    const std::optional<CsvItem> claim = file.findProperty("claim_dbc");
    return claim ? std::optional(claim->number(highestLevel)) : std::nullopt;
}

/** Of a board without limits there is none. */
VerdictKind readVerdict(const CsvFile& file) {
    const std::optional<CsvItem> verdict = file.findProperty("verdict");
    if (!verdict) {
        return VerdictKind::none;
    }
    const std::optional<VerdictKind> known = valueOf(verdictWords, verdict->text());
    if (!known) {
        verdict->failExpecting("PASS or FAIL (accepted)");
    }
    return *known;
}

Point readPoint(const CsvFile& file, std::size_t row, const Result& result) {
    const auto item = [&](std::string_view column) { return file.item(row, file.column(column)); };
    Point point;
    point.frequency = integer<std::uint32_t>(item("frequency_khz"), carrierBounds);
    point.temperature = integer<std::int32_t>(item("temperature_c"), temperatureBounds);
    point.i = integer<std::int32_t>(item("i"), correctionBounds);
    point.q = integer<std::int32_t>(item("q"), correctionBounds);
    const bool isFit = result.settings.method == CalibrationMethod::fit;
    if (result.isHardware) {
        if (!isFit) {
            point.firstReading = item("first_reading").integer();
            point.lastReading = item("last_reading").integer();
        }
        const auto level = [&](std::string_view column) {
            return file.hasColumn(column) ? std::optional(item(column).number(highestLevel)) : std::nullopt;
        };
        point.before = level("before_dbc");
        point.after = level("after_dbc");
        point.improvement = level("improvement_db");
        point.analysed = level("analyser_dbc");
    } else {
        point.before = item("before_dbc").number(highestLevel);
        point.after = item("after_dbc").number(highestLevel);
    }
    if (!isFit) {
        point.iterations = integer<std::uint32_t>(item("iterations"), {0, mostIterations});
        point.maxDelta = integer<std::int32_t>(item("max_delta"), {0, widestRange});
    }
    const CsvItem state = item("state");
    const std::optional<PointState> known = valueOf(stateWords, state.text());
    if (!known) {
        state.failExpecting("good, missed or edge");
    }
    point.state = *known;
    return point;
}

template <typename Value>
void makeDistinct(std::vector<Value>& values) {
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
}

} // namespace

void writeResult(std::ostream& out, const Result& result) {
    const Settings& settings = result.settings;
    const bool isFit = settings.method == CalibrationMethod::fit;
    out << "# LO-leakage calibration\n"
        << "# serial: " << asComment(result.serial) << "\n"
        << (result.station.empty() ? "" : "# station: " + asComment(result.station) + "\n")
        << "# channel: " << settings.channel << "\n"
        << "# date: " << asComment(result.date) << "\n"
        << "# tool: " << program << asComment(result.version) << "\n"
        << (result.isHardware ? "# mode: " + std::string(hardwareMode) + "\n" : "")
        << "# i_range: " << bothEnds(settings.i) << "\n"
        << "# q_range: " << bothEnds(settings.q) << "\n"
        << (isFit ? "# method: fit\n# probes: " + std::to_string(settings.budget) + "\n" : "")
        << "# shrink_factor: " << exactText(settings.shrinkFactor) << "\n"
        << "# min_delta: " << settings.minDelta << "\n"
        << "# max_iterations: " << settings.maxIterations << "\n"
        << "# settle_time_ms: " << settings.settleTime << "\n"
        << (settings.readings > 1 ? "# readings: " + std::to_string(settings.readings) + "\n" : "")
        << "# detector: " << (settings.useHighDetector ? "high" : "low") << "\n"
        << (result.claim ? "# claim_dbc: " + inTwoDecimals(*result.claim) + "\n" : "")
        << verdictLine(result.verdict) << headingFor(result);
    const Result tables = asTables(result);
    const std::vector<LevelColumn> levels = levelColumns(tables);
    for (const LevelColumn& column : levels) {
        out << ',' << column.first;
    }
    out << "\n";
    for (const Point& point : tables.points) {
        out << point.frequency << ',' << point.temperature << ',' << point.i << ',' << point.q << ',';
        if (!isFit) {
            out << foundAt(point, result.isHardware) << ',' << point.iterations << ',' << point.maxDelta
                << ',';
        } else if (!result.isHardware) {
            out << foundAt(point, false) << ',';
        }
        out << wordFor(point.state);
        for (const LevelColumn& column : levels) {
            out << ',' << inTwoDecimals((point.*column.second).value_or(0));
        }
        out << "\n";
    }
}

Result readResult(const std::filesystem::path& file) {
    return readResult(CsvFile(file, "a calibration"));
}

Result readResult(const CsvFile& csv) {
    Result result;
    result.serial = csv.property("serial").nonEmptyText("the serial number of the radio");
    result.date = csv.property("date").nonEmptyText("when the calibration began");
    result.version = readVersion(csv.property("tool"));
    result.station = readStation(csv);
    result.claim = readClaim(csv);
    result.verdict = readVerdict(csv);
    result.isHardware = readIsHardware(csv);
    result.settings = readSettings(csv);
    for (std::size_t row = 0; row < csv.rows(); ++row) {
        result.points.push_back(readPoint(csv, row, result));
        result.settings.frequencies.push_back(result.points.back().frequency);
        result.settings.temperatures.push_back(result.points.back().temperature);
    }
    makeDistinct(result.settings.frequencies);
    makeDistinct(result.settings.temperatures);
    if (result.settings.method == CalibrationMethod::fit) {
        result.nodes = result.points;
    }
    return result;
}

} // namespace Radio::Calibration
