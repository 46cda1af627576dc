#include "radio/tables/LimitLint.h"

#include "radio/board/BoardNames.h"
#include "radio/calibration/LeakageVerdict.h"
#include "radio/tables/Corrections.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <utility>

namespace Radio::Tables {

namespace {

constexpr double highestLevel = 1000.0;

struct NodeLevels {
    std::optional<double> before;
    std::optional<double> after;
};

/** By carrier and temperature. */
using LevelsOfNodes = std::map<std::pair<std::int32_t, std::int32_t>, NodeLevels>;

/** What a file says that leaks at its nodes; nothing where it has no columns for it. */
LevelsOfNodes levelsIn(const CsvFile& file) {
    LevelsOfNodes levels;
    if (!file.hasColumn("before_dbc") || !file.hasColumn("after_dbc")) {
        return levels;
    }
    const std::size_t before = file.column("before_dbc");
    const std::size_t after = file.column("after_dbc");
    for (std::size_t row = 0; row < file.rows(); ++row) {
        levels[{file.item(row, 0).integer(), file.item(row, 1).integer()}] = {
            file.item(row, before).number(highestLevel), file.item(row, after).number(highestLevel)};
    }
    return levels;
}

/** What a file says of the calibration that it comes from. */
struct Origin {
    LevelsOfNodes levels;
    bool isHardware = false;
    bool hasClaim = false;
};

Origin originIn(const CsvFile& file) {
    const std::optional<CsvItem> mode = file.findProperty("mode");
    return {levelsIn(file), mode && mode->text() == Calibration::hardwareMode,
            file.findProperty("claim_dbc").has_value()};
}

NodeLevels levelsByModel(const LeakageDescription* leakage, const Calibration::Point& point) {
    if (leakage == nullptr) {
        return {};
    }
    const Surroundings place{point.frequency, static_cast<double>(point.temperature)};
    return {leakageLevel(*leakage, place, {0, 0}), leakageLevel(*leakage, place, {point.i, point.q})};
}

template <typename Number>
std::vector<Number> bothAxes(const std::vector<std::int32_t>& one, const std::vector<std::int32_t>& other) {
    std::vector<Number> axis;
    std::set_union(one.begin(), one.end(), other.begin(), other.end(), std::back_inserter(axis));
    return axis;
}

/** The tables as if a calibration had just found them. */
Calibration::Result resultOf(const Corrections& tables, const LevelsOfNodes& levels,
                             const LeakageDescription* leakage) {
    Calibration::Result result;
    Calibration::Settings& settings = result.settings;
    settings.frequencies = bothAxes<std::uint32_t>(tables.i.axis1, tables.q.axis1);
    settings.temperatures = bothAxes<std::int32_t>(tables.i.axis2, tables.q.axis2);
    for (const std::int32_t temperature : settings.temperatures) {
        for (const std::uint32_t frequency : settings.frequencies) {
            const auto carrier = static_cast<std::int32_t>(frequency);
            const LoCorrections corrections = tables.at(carrier, temperature);
            Calibration::Point point;
            point.frequency = frequency;
            point.temperature = temperature;
            point.state = Calibration::PointState::good;
            point.i = corrections.i;
            point.q = corrections.q;
            const auto known = levels.find({carrier, temperature});
            const NodeLevels found = known != levels.end() ? known->second : levelsByModel(leakage, point);
            point.before = found.before;
            point.after = found.after;
            result.points.push_back(point);
        }
    }
    return result;
}

} // namespace

void lintLimits(const Board& board, int channel, const TableDescription& i, const TableDescription& q,
                std::vector<Finding>& findings) {
    Limits limits = board.limits;
    const bool isLimited = limits.leakage || limits.leakageAtNodes || limits.leakageImprovement;
    // Swapped axes are a mistake of their own.
    if (!isLimited || i.table.axis1.front() < 0 || q.table.axis1.front() < 0) {
        return;
    }
    const bool hasFile = !i.file.empty() && i.file == q.file;
    const Origin origin = hasFile ? originIn(CsvFile(i.file, "a calibration table")) : Origin();
    const LeakageDescription* const leakage = origin.isHardware ? nullptr : findLeakage(board, channel);
    if (leakage == nullptr && origin.hasClaim) {
        // Held against the claim by itself, and nobody knows better.
        limits.leakage.reset();
    }
    const Calibration::Result result = resultOf({channel, i.table, q.table}, origin.levels, leakage);
    const Calibration::LeakageSummary summary =
        leakage != nullptr ? Calibration::summarise(result, *leakage) : Calibration::summarise(result);
    const Verdict verdict = Calibration::verdictOn(result, summary, limits);
    for (const JudgedLimit& limit : verdict.limits) {
        if (!limit.isHeld()) {
            findings.push_back({limit.found ? Severity::error : Severity::warning, i.place,
                                "channel " + std::to_string(channel) + ": " + missedText(limit)});
        }
    }
}

void lintClaim(const Board& board, int channel, const CsvFile& file, std::vector<Finding>& findings) {
    const std::optional<CsvItem> item = file.findProperty("claim_dbc");
    if (!item) {
        return;
    }
    const double claim = item->number(highestLevel);
    const std::optional<double>& limit = board.limits.leakage;
    if (limit && !meetsLimit("leakage", toHundredth(claim), *limit)) {
        findings.push_back({Severity::error, item->place(),
                            "channel " + std::to_string(channel) + ": leakage anywhere " +
                                inTwoDecimals(claim) + " dBc by the claim of its fit, limit " +
                                limitText(*limit)});
    }
}

} // namespace Radio::Tables
