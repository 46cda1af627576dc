#ifndef RADIOCTL_CALIBRATE_PAGE_SEARCHFIGURES_H
#define RADIOCTL_CALIBRATE_PAGE_SEARCHFIGURES_H

#include "radio/calibration/Calibration.h"
#include "radio/model/LeakageModel.h"

#include <ostream>

namespace Radio::Calibration {

/** Writes the pictures of a page that show how the searches went: the path of one, and the convergence of
 * all. Nothing when there is no complete iteration. `leakage` is null on hardware: then there are
 * readings in its place. Throws InputError when they cannot be drawn. */
void writeSearchFigures(std::ostream& out, const Result& result, const LeakageDescription* leakage);

} // namespace Radio::Calibration

#endif
