#ifndef RADIO_FIT_SURFACE_H
#define RADIO_FIT_SURFACE_H

#include "radio/fit/Bowl.h"
#include "radio/fit/Order.h"

#include <cstddef>
#include <vector>

namespace Radio::Fit {

/** The best corrections at a place, as they were found there. */
struct Sample {
    Place place{};
    Pair bottom{};
    /** Standard deviation of I and of Q, in units of the drivers; above 0. */
    double deviation = 0.0;
};

/** What a surface says of a place. */
struct Forecast {
    Pair bottom{};
    /** Standard deviation of I and of Q, in units of the drivers. */
    double deviation = 0.0;
};

/** By which factor coefficients are expected to fall from one degree to the next; between 0 and 1. */
struct Decay {
    double carrier = 0.3;
    double temperature = 0.3;
};

/**
 * The best corrections over carrier and temperature, as Chebyshev polynomials in both. Each coefficient is
 * expected to be the smaller the higher its degree is, by a factor which is chosen so that the surface
 * foretells each sample best from all others. Thereby there is a surface from the first sample on, no degree
 * has to be cut off, and each place has a deviation.
 */
class Surface {
public:
    /** `range`: the size that corrections can have, in units of the drivers. */
    Surface(const Order& order, double range);

    /** Fits the samples; `isDecayChosen`: and finds out how coefficients fall. */
    void fit(const std::vector<Sample>& samples, bool isDecayChosen);
    Forecast at(const Place& place) const;
    /** Corrections alone, which is quicker: at one temperature, for carriers in kHz. */
    std::vector<Pair> bottomsAt(std::int32_t temperature, const std::vector<std::uint32_t>& carriers) const;
    Pair bottomAt(const Place& place) const { return bottomsAt(place.temperature, {place.carrier}).front(); }

    const Decay& decay() const { return m_decay; }
    /** By how much the samples lie farther off than their deviations say, each foretold from all others; at
     * least 1. Deviations of forecasts have it in them. */
    double excess() const { return m_excess; }

private:
    std::vector<double> termsAt(const Place& place) const;
    void choose(const std::vector<Sample>& samples);
    /** How badly the samples are foretold, each from all others, with such a decay: less is better. */
    double solve(const std::vector<Sample>& samples, const Decay& decay);

    Order m_order;
    double m_range;
    Decay m_decay{};
    double m_excess = 1.0;
    std::vector<double> m_i;
    std::vector<double> m_q;
    /** Of the coefficients, in rows. */
    std::vector<double> m_covariance;
};

} // namespace Radio::Fit

#endif
