#include "radioctl/calibrate/CalibrationRecord.h"

#include "radio/calibration/Settings.h"
#include "radioctl/keep/Keeper.h"

#include <utility>

namespace Radio::Calibration {

namespace {

Store::Measurement at(const Point& point, const Settings& settings, const char* name, const char* unit) {
    Store::Measurement measurement{name, unit};
    measurement.channel = settings.channel;
    measurement.frequency = point.frequency;
    measurement.temperature = point.temperature;
    return measurement;
}

void recordPoint(const Point& point, const Settings& settings, const Limits& limits, Store::Run& run) {
    Store::Measurement after = at(point, settings, "leakage_after", "dBc");
    after.value = point.analysed ? point.analysed : point.after;
    if (limits.leakageAtNodes) {
        after.highest = limits.leakageAtNodes;
        after.isHeld = after.value && meetsLimit("leakage_at_nodes", *after.value, *after.highest);
    }
    run.measurements.push_back(after);
    Store::Measurement before = at(point, settings, "leakage_before", "dBc");
    before.value = point.before;
    run.measurements.push_back(before);
    if (point.state == PointState::failed) {
        return;
    }
    for (const auto& [name, value] :
         {std::pair("correction_i", point.i), std::pair("correction_q", point.q)}) {
        Store::Measurement correction = at(point, settings, name, "");
        correction.value = value;
        run.measurements.push_back(correction);
    }
}

} // namespace

void record(const Board& board, const CalibrationOutcome& outcome, const CalibrationEnd& end,
            Store::Run& run) {
    const Result& result = outcome.result;
    run.serial = result.serial;
    run.begun = result.date;
    run.isHardware = result.isHardware;
    run.channel = result.settings.channel;
    run.verdict = outcome.isGood ? outcome.verdict.kind() : VerdictKind::fail;
    run.exitCode = end.exitCode;
    run.settings = toText(toJson(result.settings));
    run.measurements = measurementsOf(outcome.verdict);
    for (Store::Measurement& measurement : run.measurements) {
        measurement.channel = result.settings.channel;
    }
    Store::Measurement probes{"probes"};
    probes.channel = result.settings.channel;
    probes.value = static_cast<double>(outcome.newProbes + outcome.knownProbes);
    run.measurements.push_back(probes);
    // Of a fit its tables have nodes, the same in all runs; where it probed differs.
    const auto nodes = asTables(result).points;
    for (const Point& point : nodes) {
        recordPoint(point, result.settings, board.limits, run);
    }
    addFile(run, "tables", outcome.tables);
    addFile(run, "journal", outcome.journal);
    addFile(run, "page", end.page);
}

} // namespace Radio::Calibration
