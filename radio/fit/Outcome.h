#ifndef RADIO_FIT_OUTCOME_H
#define RADIO_FIT_OUTCOME_H

#include "radio/fit/Order.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Radio::Fit {

enum class PointState : std::uint8_t {
    good,
    edge,   ///< the best corrections lie beyond what can be set
    failed, ///< there are no corrections
};

/** A place whose best corrections were looked for. */
struct Point {
    Place place{};
    PointState state = PointState::failed;
    /** One clause; empty: nothing is to be said. */
    std::string remark;
    /** What was found, in units of the drivers; of a failed point 0. */
    Corrections corrections{};
    /** What the last probe read, with just these corrections; nothing when there was none. */
    std::optional<std::int32_t> reading;
    /** The reading as a level in dBc, detector's floor and noise included. */
    std::optional<double> level;
    /** What the bowl that was fitted has without corrections, in dBc; nothing when there was none. */
    std::optional<double> uncorrected;
    /** How many probes were made here. */
    std::uint32_t probes = 0;
};

/** A place that no surface was fitted to, at which the table was tried. */
struct Verification {
    Place place{};
    /** What the radio would set here. */
    Corrections corrections{};
    std::int32_t reading = 0;
    /** The reading as a level in dBc, detector's floor and noise included. */
    double level = 0.0;
    /** It was not above what was foretold; else the place was fitted, and the table made anew. */
    bool isAsForetold = false;
};

/** The corrections that a radio interpolates between. */
struct Table {
    /** In kHz, ascending. */
    std::vector<std::int32_t> carriers;
    /** In degrees Celsius, ascending. */
    std::vector<std::int32_t> temperatures;
    /** In units of the drivers: for each carrier all temperatures. */
    std::vector<std::int32_t> i;
    std::vector<std::int32_t> q;
};

/** What a level is said of. */
struct LevelAt {
    /** In dBc. */
    double level = 0.0;
    Place place{};
};

enum class Verdict : std::uint8_t {
    held,   ///< the table is below the limit everywhere; without a limit: there is a table with its claim
    missed, ///< there is a table, and what is claimed of it is above the limit, or cannot be held against it
    failed, ///< there is no table that could be trusted
    interrupted, ///< the caller did not go on
};

/** What a calibration came to. */
struct Outcome {
    Verdict verdict = Verdict::failed;
    /** Why it is not held, as one clause; empty: it is. */
    std::string reason;
    std::vector<Point> points;
    std::vector<Verification> verifications;
    Table table{};
    /** An upper bound of what leaks anywhere in band and temperatures with the table, and where that is. */
    std::optional<LevelAt> claim;
    /** Levels are in dB relative to the uncorrected one at the first point, since the zero is not known. */
    bool isRelative = false;
    /** Units for each dB, as described or as estimated. */
    double slope = 0.0;
    std::uint32_t probes = 0;
    /** How often the unit was brought to a temperature, the first time included. */
    std::uint32_t temperatureChanges = 0;
    /** There were too few probes for more: with more of them it might hold. */
    bool isBudgetSpent = false;
};

} // namespace Radio::Fit

#endif
