#include "python/binding/CalibrationValues.h"

#include "python/binding/BoardHandle.h"

namespace Radio::Python {

namespace {

/** (level, carrier in kHz, degrees), or None. */
py::object worstObject(const std::optional<Calibration::Worst>& worst) {
    return worst ? py::object(py::make_tuple(worst->level, worst->frequency, worst->temperature))
                 : py::object(py::none());
}

py::list probeList(const std::vector<Calibration::Probe>& probes) {
    py::list list;
    for (const Calibration::Probe& probe : probes) {
        list.append(py::make_tuple(probe.i, probe.q, orNone(probe.reading)));
    }
    return list;
}

py::list pointList(const std::vector<Calibration::Point>& points) {
    py::list list;
    for (const Calibration::Point& point : points) {
        list.append(toPython(point));
    }
    return list;
}

py::dict summaryDict(const Calibration::LeakageSummary& summary) {
    py::dict dict;
    dict["before"] = worstObject(summary.before);
    dict["after"] = worstObject(summary.after);
    dict["seen"] = worstObject(summary.seen);
    dict["between"] = worstObject(summary.between);
    dict["tried"] = worstObject(summary.tried);
    dict["claim"] = worstObject(summary.claim);
    dict["first_reading"] = worstObject(summary.firstReading);
    dict["last_reading"] = worstObject(summary.lastReading);
    dict["good"] = summary.good;
    dict["missed"] = summary.missed;
    dict["edge"] = summary.edge;
    dict["failed"] = summary.failed;
    return dict;
}

/** What is said of files: where they are, and why they are not. */
void addFiles(const Calibration::CalibrationOutcome& outcome, py::dict& dict) {
    dict["tables"] = orNone(std::string_view(outcome.tables));
    dict["wanted_tables"] = orNone(std::string_view(outcome.wantedTables));
    dict["backup"] = orNone(std::string_view(outcome.backup));
    dict["journal"] = orNone(std::string_view(outcome.journal));
    dict["held_back_by_edge"] = outcome.isHeldBackByEdge;
    dict["held_back_by_fail"] = outcome.isHeldBackByFail;
    dict["unchanged"] = outcome.isUnchanged;
}

} // namespace

py::dict toPython(const Calibration::Point& point) {
    py::dict dict;
    dict["carrier_khz"] = point.frequency;
    dict["temperature"] = point.temperature;
    dict["state"] = text(Calibration::toString(point.state));
    dict["remark"] = text(point.remark);
    dict["i"] = point.i;
    dict["q"] = point.q;
    dict["max_delta"] = point.maxDelta;
    dict["iterations"] = point.iterations;
    dict["before_dbc"] = orNone(point.before);
    dict["after_dbc"] = orNone(point.after);
    dict["first_reading"] = orNone(point.firstReading);
    dict["last_reading"] = orNone(point.lastReading);
    dict["analysed_dbc"] = orNone(point.analysed);
    dict["improvement_db"] = orNone(point.improvement);
    dict["probes"] = probeList(point.probes);
    return dict;
}

py::dict toPython(const Calibration::Qualification& qualification) {
    py::dict dict;
    dict["settle_time_ms"] = qualification.settleTime;
    dict["readings"] = qualification.readings;
    dict["settled_ms"] = orNone(qualification.settled);
    dict["noise"] = qualification.noise;
    dict["slope"] = orNone(qualification.slope);
    dict["taken"] = qualification.taken;
    dict["warnings"] = texts(qualification.warnings);
    dict["refusal"] = orNone(std::string_view(qualification.refusal));
    dict["interrupted"] = qualification.isInterrupted;
    dict["is_good"] = qualification.isGood();
    return dict;
}

py::dict toPython(const Calibration::CalibrationProgress& progress) {
    py::dict dict;
    const bool isFit = progress.mostProbes != 0;
    dict["done"] = isFit ? progress.probes : progress.points;
    dict["total"] = isFit ? progress.mostProbes : progress.wantedPoints;
    dict["unit"] = isFit ? "probes" : "points";
    dict["worst_dbc"] = orNone(progress.worst);
    dict["highest_reading"] = orNone(progress.highestReading);
    dict["awaited"] =
        progress.awaited ? py::object(py::make_tuple(progress.awaited->wanted, orNone(progress.awaited->now)))
                         : py::object(py::none());
    return dict;
}

py::dict toPython(const Calibration::CalibrationOutcome& outcome) {
    const Calibration::Result& result = outcome.result;
    py::dict dict;
    dict["complete"] = outcome.isComplete;
    dict["trouble"] = orNone(std::string_view(outcome.trouble));
    dict["refusal"] = orNone(std::string_view(outcome.refusal));
    dict["way_on"] = orNone(std::string_view(outcome.wayOn));
    dict["serial"] = text(result.serial);
    dict["date"] = text(result.date);
    dict["channel"] = result.settings.channel;
    dict["method"] = text(Radio::toString(result.settings.method));
    dict["points"] = pointList(result.points);
    dict["tries"] = pointList(result.tries);
    dict["nodes"] = pointList(result.nodes);
    dict["claim_dbc"] = orNone(result.claim);
    dict["qualification"] =
        result.qualification ? py::object(toPython(*result.qualification)) : py::object(py::none());
    dict["summary"] = summaryDict(outcome.summary);
    dict["verdict"] = toPython(outcome.verdict);
    dict["wanted"] = outcome.wanted;
    dict["known_probes"] = outcome.knownProbes;
    dict["new_probes"] = outcome.newProbes;
    dict["qualifying_readings"] = outcome.qualifyingReadings;
    dict["seconds"] = outcome.seconds;
    addFiles(outcome, dict);
    dict["is_good"] = outcome.isGood;
    return dict;
}

} // namespace Radio::Python
