#ifndef RADIOCTL_CALIBRATION_PAGE_SEARCHFIGURES_H
#define RADIOCTL_CALIBRATION_PAGE_SEARCHFIGURES_H

#include "calibration/Calibration.h"
#include "model/LeakageModel.h"

#include <ostream>

namespace Radioctl::Calibration {

/** Writes the pictures of a page that show how the searches went: the path of one, and the convergence of
 * all. Nothing when there is no complete iteration. Throws InputError when they cannot be drawn. */
void writeSearchFigures(std::ostream& out, const Result& result, const LeakageDescription& leakage);

} // namespace Radioctl::Calibration

#endif
