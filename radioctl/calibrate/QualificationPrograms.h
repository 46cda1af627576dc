#ifndef RADIOCTL_CALIBRATE_QUALIFICATIONPROGRAMS_H
#define RADIOCTL_CALIBRATE_QUALIFICATIONPROGRAMS_H

#include "radio/calibration/ChannelQualification.h"
#include "radioctl/bench/HardwareOptions.h"

#include <string>

namespace Radio::Calibration {

/** What the user chose on the command line. */
struct QualificationOptions {
    std::string board;
    QualificationOrder order;
    HardwareOptions hardware;
    /** What the board forbids is measured on hardware all the same. */
    bool isForced = false;
    bool json = false;
};

/** Qualifies the measuring chain of a channel and reports what came of it; gives the exit code. */
int runQualification(const QualificationOptions& options);

} // namespace Radio::Calibration

#endif
