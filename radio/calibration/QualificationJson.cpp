#include "radio/calibration/QualificationJson.h"

namespace Radio::Calibration {

Json toJson(const Qualification& qualification) {
    return {{"settle_time_ms", qualification.settleTime},  {"readings", qualification.readings},
            {"settled_ms", orNull(qualification.settled)}, {"noise", qualification.noise},
            {"slope", orNull(qualification.slope)},        {"taken", qualification.taken}};
}

} // namespace Radio::Calibration
