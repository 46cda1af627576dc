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

/** What a table has of the settings that a calibration of a modelled transmitter takes: method, probes, band,
 * step, temperatures, i_range, q_range, shrink_factor, min_delta, max_iterations, settle_time and detector.
 * Other keys are the caller's. */
CalibrationDescription readCalibrationSettings(const TomlItem& item);

} // namespace Radio

#endif
