#ifndef RADIO_CALIBRATION_STUCKDETECTOR_H
#define RADIO_CALIBRATION_STUCKDETECTOR_H

#include "radio/calibration/Calibration.h"
#include "radio/model/LeakageModel.h"

#include <string>

namespace Radio::Calibration {

/**
 * Why the readings of a search that came to its end have nothing to do with the corrections, although they
 * differ: "readings stay within 1 of 500 whatever the corrections are: the detector is stuck". Empty: they
 * may have, or the search was too short to tell. `detector` is null on hardware.
 *
 * A search that narrows its ranges to a sixteenth at least has either come 16 times nearer to the least
 * leakage, or gone across a slope to an end of its ranges. What shows neither is noise.
 */
std::string whyStuck(const Point& point, const Settings& settings, const DetectorDescription* detector);

} // namespace Radio::Calibration

#endif
