#ifndef RADIOCTL_CALIBRATE_CALIBRATIONPROGRAMS_H
#define RADIOCTL_CALIBRATE_CALIBRATIONPROGRAMS_H

#include "radio/board/Board.h"

#include <cstdint>
#include <string>

namespace Radio::Calibration {

/** What becomes of a journal that is there. */
enum class Beginning : std::uint8_t {
    fresh,   ///< a finished one is kept as a backup, an unfinished one is an error
    resume,  ///< its calibration goes on
    restart, ///< it is kept as a backup, finished or not
    offline, ///< it is gone through again, and nothing is measured
};

/** What the user chose on the command line. */
struct CalibrationOptions {
    std::string board;
    /** What was chosen of the calibration itself. */
    CalibrationDescription wishes;
    /** Empty: the board's. */
    std::string serial;
    Beginning beginning = Beginning::fresh;
    /** A file; empty: the usual one beside the board. */
    std::string journal;
    /** Where the tables go; empty: to the file from which the board takes them, or nowhere when offline. */
    std::string tables;
    /** Where the page goes; empty: there is none. */
    std::string html;
    bool acceptsEdge = false;
    bool isRealTime = false;
    bool isVerbose = false;
    bool json = false;
};

/** Calibrates a channel and reports what came of it; gives the exit code. */
int runCalibration(const CalibrationOptions& options);

} // namespace Radio::Calibration

#endif
