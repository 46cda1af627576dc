#ifndef RADIOCTL_CALIBRATION_DIAGNOSIS_H
#define RADIOCTL_CALIBRATION_DIAGNOSIS_H

#include "calibration/Calibration.h"
#include "model/LeakageModel.h"

namespace Radioctl::Calibration {

/**
 * Judges a point whose search came to its end: sets its state, and says in its remark what is wrong with its
 * readings or its result, if anything is.
 */
void diagnose(Point& point, const Settings& settings, const LeakageDescription& leakage);

} // namespace Radioctl::Calibration

#endif
