#ifndef RADIO_CALIBRATION_QUALIFICATIONJSON_H
#define RADIO_CALIBRATION_QUALIFICATIONJSON_H

#include "radio/calibration/Qualification.h"
#include "radio/files/Json.h"

namespace Radio::Calibration {

/** The figures of a chain that can be measured with, as they stand in a journal and are shown to programs. */
Json toJson(const Qualification& qualification);

/** The event `qualified`. */
Json qualificationEvent(const Qualification& qualification);

} // namespace Radio::Calibration

#endif
