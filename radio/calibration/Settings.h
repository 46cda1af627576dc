#ifndef RADIO_CALIBRATION_SETTINGS_H
#define RADIO_CALIBRATION_SETTINGS_H

#include "radio/board/Board.h"
#include "radio/calibration/Calibration.h"
#include "radio/files/Json.h"

namespace Radio::Calibration {

/**
 * What a calibration of a channel comes to: what is wished for, else what the board describes, else what
 * serves most transmitters. Throws ChoiceError, with the choice "band", "step" or "temperatures", when
 * something has to be said and nobody does, and InputError for too many points. `wishes` names
 * one of the board's channels, which has a leakage. On hardware the channel needs none: then corrections are
 * searched where their drivers can be written, and the choice is "i-range" or "q-range" when nobody says
 * where that is.
 */
Settings settingsFor(const Board& board, const CalibrationDescription& wishes, bool isHardware = false);

/** What is wished for, and for the rest what a calibration was begun with: how it goes on. */
CalibrationDescription asBegun(const CalibrationDescription& wishes, const Settings& begun);

/** The settle time in ms that is wished for, or that the board describes; nothing when nobody says. */
std::optional<std::uint32_t> statedSettleTime(const Board& board, const CalibrationDescription& wishes);

/** What is written in front of a journal, and shown to other programs. */
Json toJson(const Settings& settings);

} // namespace Radio::Calibration

#endif
