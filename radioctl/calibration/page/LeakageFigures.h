#ifndef RADIOCTL_CALIBRATION_PAGE_LEAKAGEFIGURES_H
#define RADIOCTL_CALIBRATION_PAGE_LEAKAGEFIGURES_H

#include "calibration/Calibration.h"
#include "model/LeakageModel.h"

#include <ostream>

namespace Radioctl::Calibration {

/** Writes the pictures of a page that show leakage over carrier and temperature, on one colour scale: before,
 * after, and between the points. Throws InputError when they cannot be drawn. */
void writeLeakageFigures(std::ostream& out, const Result& result, const LeakageDescription& leakage);

} // namespace Radioctl::Calibration

#endif
