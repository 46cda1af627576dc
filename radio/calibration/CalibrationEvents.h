#ifndef RADIO_CALIBRATION_CALIBRATIONEVENTS_H
#define RADIO_CALIBRATION_CALIBRATIONEVENTS_H

#include "radio/board/Board.h"
#include "radio/calibration/CalibrationRun.h"
#include "radio/calibration/Climate.h"
#include "radio/files/Json.h"

#include <cstddef>
#include <string>
#include <vector>

/** What a calibration tells programs: events, of which docs/calibration.md has the members. */
namespace Radio::Calibration {

/** `put_away`: what was called `file` had to make room for the journal. */
Json putAwayEvent(const std::string& file, const PutAway& putAway);
/** `calibration`, the first of each. */
Json beginningEvent(const Board& board, const Result& result, std::size_t knownProbes);
/** `awaiting` */
Json awaitingEvent(const AwaitedTemperature& awaited);
/** `point`; those of a fit have no iterations. */
Json pointEvent(const Point& point, bool isFit);
/** `tried` for each place where a fit tried its tables; for a search there are none. */
std::vector<Json> triedEvents(const Result& result);
/** `calibrated`, without the members that only who ran it knows. */
Json endEvent(const CalibrationOutcome& outcome);

} // namespace Radio::Calibration

#endif
