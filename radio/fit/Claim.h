#ifndef RADIO_FIT_CLAIM_H
#define RADIO_FIT_CLAIM_H

#include "radio/fit/Knowledge.h"
#include "radio/fit/Outcome.h"
#include "radio/fit/Surface.h"
#include "radio/fit/TableMaker.h"

#include <vector>

namespace Radio::Fit {

/** By how many deviations the surface is taken to be off, at most. */
constexpr double claimedDeviations = 4.0;

/**
 * The most that is left of what can be cancelled at a place with a table: what the table leaves of the
 * surface, and what the surface may be off by, as a power relative to the signal's.
 */
double claimedPower(const Order& order, const Knowledge& knowledge, const Surface& surface,
                    const Table& table, const Place& place);

/** The highest of them in the whole band and at all temperatures, with what cannot be cancelled. */
LevelAt claimAnywhere(const Order& order, const Knowledge& knowledge, const Surface& surface,
                      const Table& table);

/** What is claimed holds the limit, if there is one; a limit in dBc is held by no level that is not known so.
 */
bool isWithinLimit(const Order& order, double level);

} // namespace Radio::Fit

#endif
