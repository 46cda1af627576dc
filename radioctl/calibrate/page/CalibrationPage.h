#ifndef RADIOCTL_CALIBRATE_PAGE_CALIBRATIONPAGE_H
#define RADIOCTL_CALIBRATE_PAGE_CALIBRATIONPAGE_H

#include "radio/board/Board.h"
#include "radio/calibration/Calibration.h"

#include <ostream>
#include <string>

namespace Radio::Calibration {

/**
 * Writes one HTML page with everything about a calibration in it: it opens from a file and asks nobody for
 * anything. `leakage` is that of the channel that was calibrated; `stored` says whether its tables were
 * stored. Throws InputError when the plots cannot be drawn.
 */
void writePage(std::ostream& out, const Board& board, const LeakageDescription& leakage, const Result& result,
               const std::string& stored);
/** The same of a calibration on hardware: what the detector read, in place of leakage. */
void writePage(std::ostream& out, const Board& board, const Result& result, const std::string& stored);

} // namespace Radio::Calibration

#endif
