#ifndef RADIO_CALIBRATION_SEARCHDRIVERS_H
#define RADIO_CALIBRATION_SEARCHDRIVERS_H

#include "radio/board/Board.h"

#include <string>

namespace Radio::Calibration {

/** Between which drivers a search goes on, by their names. */
struct SearchDrivers {
    std::string i;
    std::string q;
    /** The only detector, or that of the low range. */
    std::string detector;
    /** Empty: there is no other one. */
    std::string highDetector{};

    /** The one that is read. */
    const std::string& read(bool useHighDetector) const { return useHighDetector ? highDetector : detector; }
};

/** Those of a modelled transmitter. */
SearchDrivers driversOf(const LeakageDescription& leakage);
/** Those that a channel takes of what its board has; empty ones are not there, or the channel's type has no
 * use for them. */
SearchDrivers driversOf(const Board& board, int channel);

} // namespace Radio::Calibration

#endif
