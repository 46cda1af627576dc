#ifndef RADIO_FIT_KNOWLEDGE_H
#define RADIO_FIT_KNOWLEDGE_H

#include "radio/fit/Bowl.h"
#include "radio/fit/Order.h"
#include "radio/fit/Scale.h"

#include <cstddef>
#include <vector>

namespace Radio::Fit {

/** What all places of a transmitter have in common, as it becomes known from probe to probe. */
class Knowledge {
public:
    explicit Knowledge(const Order& order) : m_order(order) {}

    Scale scale{};
    Curvature curvature{};
    /** By which part the slope of the detector may be off. */
    double slopeDoubt = 0.0;
    /** What the first bowl was missed by, as a fraction of its powers. */
    double firstMisfit = 0.0;

    /** Probes that were inside the detector's limits, as powers. */
    std::vector<PowerProbe> powersOf(const std::vector<Reading>& readings) const;
    /** A place was fitted: its probes near the bottom tell of the curvature, its last one of the floor. */
    void learn(const std::vector<PowerProbe>& probes, const Bowl& bowl, double bottomPower);
    /** The probes of the first place tell of the curvature alone. */
    void learnFirst(const std::vector<PowerProbe>& probes) { m_places.push_back(probes); }
    /** A fit missed its probes by so much. */
    void learnNoise(double misfit, int freedom);

    /** At a place where the table was tried the surface was off by so many of its deviations. */
    void learnTried(double deviations);

    /** By what factor the surface's deviations are too small, from places where the table was tried; at
     * least 1. */
    double excess() const;
    /** Standard deviation of a measured power, as a fraction of it. */
    double noise() const;
    /** What is measured besides what leaks: the median of all places. */
    double floor() const;
    /** What leaks whatever the corrections are, at most: what is measured at the bottoms beyond what the
     * detector is known to show without any. */
    double uncancelled() const;
    /** By how many dB levels of what is left may be off, for what is wrong with the detector. */
    double doubt() const;
    /** The least radius of a ring in units: well above the floor, and some steps of the DACs. */
    double leastRadius() const;

private:
    const Order& m_order;
    std::vector<std::vector<PowerProbe>> m_places;
    std::vector<double> m_floors;
    double m_mostOff = 0.0;
    std::size_t m_tries = 0;
    double m_noiseSquare = 0.0;
    double m_noiseFreedom = 0.0;
};

} // namespace Radio::Fit

#endif
