#ifndef RADIO_CALIBRATION_DIAGNOSIS_H
#define RADIO_CALIBRATION_DIAGNOSIS_H

#include "radio/calibration/Calibration.h"
#include "radio/model/LeakageModel.h"

namespace Radio::Calibration {

/**
 * Judges a point whose search came to its end: sets its state, and says in its remark what is wrong with its
 * readings or its result, if anything is.
 */
void diagnose(Point& point, const Settings& settings, const LeakageDescription& leakage);
/** The same on hardware: nobody knows the limits of the detector, and instead of the leakage there are the
 * readings at the beginning and at the end. */
void diagnose(Point& point, const Settings& settings);

} // namespace Radio::Calibration

#endif
