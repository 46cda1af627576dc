#ifndef RADIO_THERMAL_THERMALVERDICT_H
#define RADIO_THERMAL_THERMALVERDICT_H

#include "radio/board/Board.h"
#include "radio/board/Verdict.h"
#include "radio/thermal/Replay.h"

namespace Radio::Thermal {

/**
 * Judges a replay by what the board allows of image and carrier leakage with compensation, at the worst of
 * all moments and channels. A channel whose transmitter is not described passes no limit. There is no verdict
 * without limits, nor on a part of a log.
 */
Verdict verdictOn(const ReplayResult& result, const Limits& limits);

} // namespace Radio::Thermal

#endif
