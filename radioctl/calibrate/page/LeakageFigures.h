#ifndef RADIOCTL_CALIBRATE_PAGE_LEAKAGEFIGURES_H
#define RADIOCTL_CALIBRATE_PAGE_LEAKAGEFIGURES_H

#include "radio/calibration/Calibration.h"
#include "radio/model/LeakageModel.h"

#include <ostream>

namespace Radio::Calibration {

/** Writes the pictures of a page that show leakage over carrier and temperature, on one colour scale: before,
 * after, and between the points; of a fit at the nodes of its tables and between them. Throws InputError when
 * they cannot be drawn. */
void writeLeakageFigures(std::ostream& out, const Result& result, const LeakageDescription& leakage);

/** The same of what the detector read on hardware: at the first probe of each search, and at the last. */
void writeReadingFigures(std::ostream& out, const Result& result);

} // namespace Radio::Calibration

#endif
