#ifndef RADIO_CALIBRATION_RESERVATIONS_H
#define RADIO_CALIBRATION_RESERVATIONS_H

#include "radio/board/Board.h"
#include "radio/calibration/Calibration.h"
#include "standalone/Platform.h"

#include <string>

namespace Radio::Calibration {

/**
 * What the board has against the carriers and temperatures of a calibration: the first, and how many more;
 * empty: nothing. Of a fit these are the 49 carriers that it chooses from, and all whole degrees. With
 * `wantsZero` a real detector is to tell whether the limit of a fit is held, which it cannot without its
 * zero. Boots a simulated radio for it. Throws RadioError when that does not come up.
 */
std::string reservationAgainst(const Board& board, const Settings& settings, bool wantsZero);
/** The same where a radio of the board is up already, of which only `platform` is looked at. */
std::string reservationAgainst(const Board& board, Standalone::Platform& platform, const Settings& settings,
                               bool wantsZero);

} // namespace Radio::Calibration

#endif
