#include "radio/calibration/CalibrationEvents.h"
#include "radio/calibration/QualificationJson.h"
#include "radioctl/calibrate/CalibrationReport.h"
#include "radioctl/report/JsonLine.h"

namespace Radio::Calibration {

void CalibrationJson::warns(const std::string& reservation) {
    writeJsonLine(m_out, {{"event", "warning"}, {"text", reservation}});
}

void CalibrationJson::makesRoom(const std::string& file, const PutAway& putAway) {
    writeJsonLine(m_out, putAwayEvent(file, putAway));
}

void CalibrationJson::qualified(const Qualification& qualification) {
    writeJsonLine(m_out, qualificationEvent(qualification));
}

void CalibrationJson::awaits(const AwaitedTemperature& awaited, bool /*isBeginning*/) {
    writeJsonLine(m_out, awaitingEvent(awaited));
}

void CalibrationJson::begins(const Board& board, const Result& result, std::size_t knownProbes) {
    m_isFit = result.settings.method == CalibrationMethod::fit;
    writeJsonLine(m_out, beginningEvent(board, result, knownProbes));
}

void CalibrationJson::calibrated(const Point& point) {
    writeJsonLine(m_out, pointEvent(point, m_isFit));
}

void CalibrationJson::finished(const CalibrationOutcome& outcome, const CalibrationEnd& end) {
    for (const Json& tried : triedEvents(outcome.result)) {
        writeJsonLine(m_out, tried);
    }
    Json event = endEvent(outcome);
    event["page"] = end.page.empty() ? Json(nullptr) : Json(end.page);
    event["elapsed_seconds"] = outcome.seconds;
    event["interrupted"] = end.signal != 0;
    event["exit_code"] = end.exitCode;
    writeJsonLine(m_out, event);
}

} // namespace Radio::Calibration
