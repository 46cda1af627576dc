#ifndef RADIO_FIT_ORDER_H
#define RADIO_FIT_ORDER_H

#include <cstddef>
#include <cstdint>
#include <optional>

/** Calibrating the LO leakage of a transmitter with few probes, by what is known of its form. */
namespace Radio::Fit {

/** Where a transmitter is probed. */
struct Place {
    /** Transmit carrier in kHz. */
    std::uint32_t carrier = 0;
    /** In degrees Celsius. */
    std::int32_t temperature = 0;
};

/** Both corrections, in units of their drivers. */
struct Corrections {
    std::int32_t i = 0;
    std::int32_t q = 0;
};

/** What can be set of one correction. */
struct Branch {
    /** The lowest and the highest value that may be set, in units of the driver. */
    std::int32_t low = 0;
    std::int32_t high = 0;
    /** Units from one value of its DAC to the next, counted from `low`; at least 1. */
    std::int32_t step = 1;
};

/** A logarithmic power detector, as far as it is known. */
struct Detector {
    /** Units of the reading for each dB, above 0; nothing: it is estimated from probes. */
    std::optional<double> slope;
    /** The level at which the reading is 0, in dBc; nothing: levels are relative to the uncorrected one. */
    std::optional<double> zero;
    /** The lowest and the highest reading, where the detector saturates. */
    std::optional<std::int32_t> lowest;
    std::optional<std::int32_t> highest;
    /** What it shows besides what leaks, in dBc; nothing: nobody knows, and all that is left at the bottoms
     * counts as leaking. */
    std::optional<double> floor{};
};

/** What a calibration is asked for. */
struct Order {
    /** The first and the last transmit carrier in kHz, ascending. */
    std::uint32_t lowCarrier = 0;
    std::uint32_t highCarrier = 0;
    /** In degrees Celsius, ascending. */
    std::int32_t lowTemperature = 0;
    std::int32_t highTemperature = 0;
    /** Where the unit is when it begins, in degrees Celsius; the nearer end of the range is the first. */
    std::int32_t startTemperature = 25;
    Branch i{};
    Branch q{};
    Detector detector{};
    /** The most probes that may be made, those for verification and of searches included. */
    std::uint32_t budget = 400;
    /** The most that one search of the prober makes. */
    std::uint32_t probesOfSearch = 160;
    /** What may leak anywhere in band and temperatures, in dBc; nothing: as little as the budget allows. */
    std::optional<double> limit;
    /** The most nodes of the table, at least 2 each. */
    std::size_t mostCarriers = 81;
    std::size_t mostTemperatures = 23;
};

} // namespace Radio::Fit

#endif
