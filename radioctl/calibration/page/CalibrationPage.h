#ifndef RADIOCTL_CALIBRATION_PAGE_CALIBRATIONPAGE_H
#define RADIOCTL_CALIBRATION_PAGE_CALIBRATIONPAGE_H

#include "Board.h"
#include "calibration/Calibration.h"

#include <ostream>

namespace Radioctl::Calibration {

/**
 * Writes one HTML page with everything about a calibration in it: it opens from a file and asks nobody for
 * anything. `leakage` is that of the channel that was calibrated. Throws InputError when the plots cannot be
 * drawn.
 */
void writePage(std::ostream& out, const Board& board, const LeakageDescription& leakage,
               const Result& result);

} // namespace Radioctl::Calibration

#endif
