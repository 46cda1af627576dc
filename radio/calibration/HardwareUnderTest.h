#ifndef RADIO_CALIBRATION_HARDWAREUNDERTEST_H
#define RADIO_CALIBRATION_HARDWAREUNDERTEST_H

#include "radio/board/Board.h"
#include "radio/calibration/Calibration.h"

#include <chrono>
#include <string>

/** What a calibration has to know of the hardware that a board describes. Touches none of it. */
namespace Radio::Calibration {

/**
 * Throws InputError unless a calibration can be carried out on what the board describes: corrections have
 * hardware that can be written, the detector has some that can be read, ranges lie within those of the
 * drivers (else ChoiceError, with the choice "i-range" or "q-range"), and there is a way to know the
 * temperature (else with the choice "temperatures"): several want a sensor, or somebody who is there.
 * `settings` are for one of the board's channels.
 */
void requireCalibratable(const Board& board, const Settings& settings, bool isAttended = false);

/** Sixteen hexadecimal digits that change with what the channel's corrections and detectors are in hardware:
 * where they are, and how their numbers are converted. */
std::string hardwareFingerprint(const Board& board, int channel);

/** The driver that sets the temperature of a calibration; empty: there is none. */
std::string chamberOf(const Board& board, int channel);

/** The driver of the spectrum analyser that looks at what a calibration leaves; empty: there is none. */
std::string analyserOf(const Board& board, int channel);

/** How long a temperature of a calibration may take to come about. */
std::chrono::minutes awaitLimitOf(const Board& board, int channel);

} // namespace Radio::Calibration

#endif
