#ifndef RADIOCTL_CALIBRATE_PAGE_FITFIGURES_H
#define RADIOCTL_CALIBRATE_PAGE_FITFIGURES_H

#include "radio/calibration/Calibration.h"
#include "radio/model/LeakageModel.h"

#include <ostream>

namespace Radio::Calibration {

/**
 * Writes the pictures of a page that show how a fit went: where it probed and where it tried its table, what
 * the detector then read as a level, and the probes of one point. Nothing when it probed nowhere. `leakage`
 * is null on hardware: then nothing modelled lies below the probes. `result` has a fit. Throws InputError
 * when they cannot be drawn.
 */
void writeFitFigures(std::ostream& out, const Result& result, const LeakageDescription* leakage);

} // namespace Radio::Calibration

#endif
