#ifndef RADIOCTL_CALIBRATE_PAGE_FITLISTS_H
#define RADIOCTL_CALIBRATE_PAGE_FITLISTS_H

#include "radio/calibration/Calibration.h"
#include "radio/calibration/Surface.h"

#include <ostream>

namespace Radio::Calibration {

/** Writes what a fit says of itself, beside what the model says, if there is one. `result` has a fit. */
void writeFitClaim(std::ostream& out, const Result& result, const LeakageSummary& summary);

/** The table of the points as they were fitted; `result` has a fit. */
void writeFittedPoints(std::ostream& out, const Result& result);

/** The table of the places where the table was tried; nothing when it was tried nowhere. */
void writeTries(std::ostream& out, const Fit::Outcome& fit);

} // namespace Radio::Calibration

#endif
