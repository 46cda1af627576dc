#ifndef RADIOCTL_CALIBRATE_PAGE_CORRECTIONFIGURES_H
#define RADIOCTL_CALIBRATE_PAGE_CORRECTIONFIGURES_H

#include "radio/calibration/Calibration.h"

#include <ostream>

namespace Radio::Calibration {

/** Writes the pictures of a page that show the corrections found over the carrier, a curve for each
 * temperature; of a fit those in its tables. Nothing when no point has any. Throws InputError when they
 * cannot be drawn. */
void writeCorrectionFigures(std::ostream& out, const Result& result);

} // namespace Radio::Calibration

#endif
