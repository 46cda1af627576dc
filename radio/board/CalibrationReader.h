#ifndef RADIO_BOARD_CALIBRATIONREADER_H
#define RADIO_BOARD_CALIBRATIONREADER_H

#include "radio/board/Board.h"
#include "radio/board/TomlItem.h"

#include <vector>

namespace Radio {

/** The [[calibration]] tables of a board file, in its order; each for another one of `channels`. Chambers are
 * some of `drivers`. */
std::vector<CalibrationDescription> readCalibrations(const TomlItem& root,
                                                     const std::vector<ChannelDescription>& channels,
                                                     const std::vector<DriverDescription>& drivers);

} // namespace Radio

#endif
