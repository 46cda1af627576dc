#ifndef RADIO_FIT_SCALE_H
#define RADIO_FIT_SCALE_H

#include "radio/fit/Bowl.h"
#include "radio/fit/Order.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace Radio::Fit {

/** A probe as it was read. */
struct Reading {
    Corrections at{};
    std::int32_t reading = 0;
};

/** What readings of a logarithmic detector say. */
struct Scale {
    /** Units for each dB. */
    double slope = 1.0;
    /** The level at which the reading is 0, in dBc. */
    double zero = 0.0;

    double level(double reading) const { return reading / slope + zero; }
    /** Relative to the signal's. */
    double power(double reading) const;
    /** A relative error of the power for each unit that a reading is off. */
    double relativeError() const;
};

/** 10 log10 of a power, not below -200 dBc. */
double levelOf(double power);
double powerOf(double level);

/** Whether a detector was inside its limits. */
bool isInside(const Detector& detector, std::int32_t reading);

/** A slope that probes of one place speak for. */
struct SlopeEstimate {
    double slope = 0.0;
    /** Root mean square of what readings miss the bowl by, in units, with this slope and with another that
     * was asked about. */
    double misfit = 0.0;
    /** Its standard deviation in parts of the slope, from that. */
    double deviation = 0.0;
};

/**
 * The slope with which the leaking power is a bowl over I and Q best. It takes probes whose distances from
 * the bottom differ by factors; nothing when they do not tell.
 */
std::optional<SlopeEstimate> estimateSlope(const std::vector<Reading>& readings);

/** How far readings miss a bowl with such a slope, in units: root mean square; nothing: no bowl. */
std::optional<double> misfitWith(double slope, const std::vector<Reading>& readings);

} // namespace Radio::Fit

#endif
