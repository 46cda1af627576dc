#ifndef RADIO_FIT_BOWL_H
#define RADIO_FIT_BOWL_H

#include "radio/fit/Order.h"

#include <optional>
#include <vector>

namespace Radio::Fit {

/** I and Q between the values that can be set, in units of the drivers. */
struct Pair {
    double i = 0.0;
    double q = 0.0;
};

/** A probe, with what was measured as a power relative to the signal's. */
struct PowerProbe {
    Corrections at{};
    double power = 0.0;
};

/**
 * How the leaking power grows with the distance from the best corrections: a quadratic form, the same for
 * all phases of the leakage. Powers relative to the signal's, for each unit of the drivers squared.
 */
struct Curvature {
    double ii = 0.0;
    /** Half of the mixed term. */
    double iq = 0.0;
    double qq = 0.0;

    double power(const Pair& distance) const {
        return ii * distance.i * distance.i + 2.0 * iq * distance.i * distance.q +
               qq * distance.q * distance.q;
    }
    /** Amplitude for each unit, in the mean over all directions. */
    double amplitude() const;
    /** Positive definite, and of a form that a modulator can have: no direction ten times as steep as
     * another. */
    bool isBowl() const;
};

/** The leaking power over I and Q: power = curvature(v - bottom) + floor. */
struct Bowl {
    Curvature curvature{};
    Pair bottom{};
    /** What is left at the bottom; of noise it can be below 0. */
    double floor = 0.0;
    /** Root mean square of what the probes miss the bowl by, as a fraction of their powers; per freedom. */
    double misfit = 0.0;
    /** Probes more than unknowns. */
    int freedom = 0;
    /** Standard deviation of the bottom in units, for a relative error of 1 of each probe. */
    double spread = 0.0;
};

/** By least squares with all unknowns; nothing with less than six probes, or when there is no bowl in them.
 */
std::optional<Bowl> fitBowl(const std::vector<PowerProbe>& probes);

/** Where the bottom of a bowl of known curvature is; nothing with less than three probes, or in a line. */
std::optional<Bowl> fitBottom(const std::vector<PowerProbe>& probes, const Curvature& curvature);

/** The curvature that all places have, from the probes of each; nothing when they do not tell. */
std::optional<Curvature> fitCurvature(const std::vector<std::vector<PowerProbe>>& places);

} // namespace Radio::Fit

#endif
