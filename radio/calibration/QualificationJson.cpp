#include "radio/calibration/QualificationJson.h"

namespace Radio::Calibration {

Json toJson(const Qualification& qualification) {
    return {{"settle_time_ms", qualification.settleTime},  {"readings", qualification.readings},
            {"settled_ms", orNull(qualification.settled)}, {"noise", qualification.noise},
            {"slope", orNull(qualification.slope)},        {"taken", qualification.taken}};
}

Json qualificationEvent(const Qualification& qualification) {
    Json event = {{"event", "qualified"}};
    if (qualification.isGood()) {
        const Json figures = toJson(qualification);
        for (const auto& [key, value] : figures.members()) {
            event[key] = value;
        }
    } else {
        event["taken"] = qualification.taken;
    }
    event["warnings"] = qualification.warnings;
    event["refusal"] = qualification.refusal.empty() ? Json(nullptr) : Json(qualification.refusal);
    return event;
}

} // namespace Radio::Calibration
