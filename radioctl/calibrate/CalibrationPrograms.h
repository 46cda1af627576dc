#ifndef RADIOCTL_CALIBRATE_CALIBRATIONPROGRAMS_H
#define RADIOCTL_CALIBRATE_CALIBRATIONPROGRAMS_H

#include "radio/calibration/CalibrationRun.h"
#include "radioctl/bench/HardwareOptions.h"
#include "radioctl/keep/KeepOptions.h"

#include <string>

namespace Radio::Calibration {

/** What the user chose on the command line. */
struct CalibrationOptions {
    std::string board;
    CalibrationOrder order;
    HardwareOptions hardware;
    /** What the board forbids is calibrated on hardware all the same. */
    bool isForced = false;
    KeepOptions keep{};
    /** Where the page goes; empty: there is none. */
    std::string html;
    bool isVerbose = false;
    bool json = false;
};

/** Calibrates a channel and reports what came of it; gives the exit code. */
int runCalibration(const CalibrationOptions& options);

} // namespace Radio::Calibration

#endif
