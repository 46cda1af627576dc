#ifndef RADIO_CALIBRATION_LEAKAGEVERDICT_H
#define RADIO_CALIBRATION_LEAKAGEVERDICT_H

#include "radio/board/Board.h"
#include "radio/board/Verdict.h"
#include "radio/calibration/Calibration.h"
#include "radio/calibration/Surface.h"

/** What a calibration came to, held against the limits that the board states for the leakage of its LO. */
namespace Radio::Calibration {

/**
 * Takes the state "good" from a point that leaks more, or is improved less, than `limits` ask for, or of
 * which nobody knows that; its remark then names limit and level. Points that failed stay as they are.
 */
void holdToLimits(Point& point, const Limits& limits);

/**
 * Judges a calibration with all its points, of which `summary` is made. What was not measured passes no
 * limit. There is no verdict without limits, nor when points are missing.
 */
Verdict verdictOn(const Result& result, const LeakageSummary& summary, const Limits& limits);

} // namespace Radio::Calibration

#endif
