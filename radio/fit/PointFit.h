#ifndef RADIO_FIT_POINTFIT_H
#define RADIO_FIT_POINTFIT_H

#include "radio/fit/Bench.h"
#include "radio/fit/Knowledge.h"
#include "radio/fit/Outcome.h"
#include "radio/fit/Surface.h"

#include <optional>

namespace Radio::Fit {

/** A place after its probes. */
struct FittedPoint {
    Point point{};
    /** For the surface; nothing when the place tells nothing. */
    std::optional<Sample> sample;
};

/**
 * Fits one place where the curvature is known: rings of four around what is foretold, each the narrower the
 * better is known where the bottom is, and a probe there. What that reads has to agree; else there are more
 * rings, then the caller's own search, and then the point is failed. `wanted`: the deviation that will do, in
 * units of the drivers. The bench is at the place.
 */
FittedPoint fitPoint(Bench& bench, Knowledge& knowledge, const Place& place, const Forecast& forecast,
                     double wanted);

/** Four probes around a centre, drawn inside the ranges where it is near their ends. */
/** One probe so far beside corrections that it has to read more than they do, within what can be set. */
std::optional<Reading> probeBeside(Bench& bench, const Knowledge& knowledge, const Corrections& at);

std::vector<Reading> probeRing(Bench& bench, const Pair& centre, double radius, int corners);

/** The corrections that can be set of which the bowl leaves least. */
Corrections bestSettable(const Bench& bench, const Curvature& curvature, const Pair& bottom);

/** What is left of a bowl without its floor. */
double residualPower(const Curvature& curvature, const Corrections& at, const Pair& bottom);

} // namespace Radio::Fit

#endif
