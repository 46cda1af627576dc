#ifndef RADIO_FIT_FIRSTPOINT_H
#define RADIO_FIT_FIRSTPOINT_H

#include "radio/fit/Bench.h"
#include "radio/fit/Knowledge.h"

#include <optional>
#include <string>

namespace Radio::Fit {

/** Where the bowl of the first point is. */
struct FirstBowl {
    /** Why there is none, or why what it says cannot be trusted, as one clause; empty: it can. */
    std::string trouble;
    /** Where the bottom is about, and how sure that is, in units. */
    Pair bottom{};
    double deviation = 0.0;
};

/**
 * Finds the bowl of the first place, of which nothing is known: a ring of six and its centre, moved and
 * narrowed until there is a bowl in it, and narrower rings that tell curvature and slope of the detector. The
 * bench is at the place; `knowledge` gets scale and curvature.
 */
FirstBowl findFirstBowl(Bench& bench, Knowledge& knowledge, const Place& place);

} // namespace Radio::Fit

#endif
