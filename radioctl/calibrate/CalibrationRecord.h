#ifndef RADIOCTL_CALIBRATE_CALIBRATIONRECORD_H
#define RADIOCTL_CALIBRATE_CALIBRATIONRECORD_H

#include "radio/calibration/CalibrationRun.h"
#include "radio/store/Run.h"
#include "radioctl/calibrate/CalibrationReport.h"

namespace Radio::Calibration {

/** Fills in what the store keeps of a calibration: settings, verdict, what each point came to, tables,
 * journal and page. */
void record(const Board& board, const CalibrationOutcome& outcome, const CalibrationEnd& end,
            Store::Run& run);

} // namespace Radio::Calibration

#endif
