#ifndef RADIO_CALIBRATION_SURFACE_H
#define RADIO_CALIBRATION_SURFACE_H

#include "radio/calibration/Calibration.h"
#include "radio/model/LeakageModel.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace Radio::Calibration {

/** Leakage, or what a detector read, over carriers and temperatures. */
struct Surface {
    /** In kHz, ascending. */
    std::vector<std::uint32_t> frequencies;
    /** In degrees Celsius, ascending. */
    std::vector<std::int32_t> temperatures;
    /** In dBc or in units of the detector, for each temperature all carriers; nothing where there are no
     * corrections. */
    std::vector<std::optional<double>> levels;
};

/** Without corrections, at the points of a calibration. */
Surface leakageBefore(const Result& result);
/** With the corrections found, at the points of a calibration. */
Surface leakageAfter(const Result& result);

/** What the detector read at the first probes, at the points of a calibration on hardware. */
Surface firstReadings(const Result& result);
/** At the last probes. */
Surface lastReadings(const Result& result);

/**
 * At and between the points, with the corrections that the platform interpolates from tables of these points:
 * what leaks when the radio is tuned anywhere in its band. Nothing unless all points have corrections.
 */
std::optional<Surface> leakageBetween(const Result& result, const LeakageDescription& leakage);

/** The highest leakage, in dBc, or the highest reading, and where it is. */
struct Worst {
    double level;
    /** In kHz. */
    std::uint32_t frequency;
    /** In degrees Celsius. */
    std::int32_t temperature;
};

/** The first of the highest levels; nothing when there is no level at all. */
std::optional<Worst> worstOf(const Surface& surface);

/** Of points that have corrections, the first with the highest level that anybody saw; nothing where nobody
 * did. */
std::optional<Worst> worstSeen(const std::vector<Point>& points);

/** What came of a calibration. */
struct LeakageSummary {
    /** Over the points that have corrections; nothing when there are none. */
    std::optional<Worst> before;
    std::optional<Worst> after;
    /** The most that detector or analyser saw of the corrections found; in a simulation `after`. */
    std::optional<Worst> seen;
    /** Of leakageBetween(). */
    std::optional<Worst> between;
    /** Of a fit on hardware: the most that was seen where its tables were tried. */
    std::optional<Worst> tried;
    /** Of a fit: what its tables leave anywhere at most, as it says itself; nothing when it cannot. */
    std::optional<Worst> claim;
    /** Of a calibration on hardware, which has none of the three above: the readings of the first probes and
     * of the last. */
    std::optional<Worst> firstReading;
    std::optional<Worst> lastReading;
    /** Points by their state. */
    std::size_t good = 0;
    std::size_t missed = 0;
    std::size_t edge = 0;
    std::size_t failed = 0;
};

LeakageSummary summarise(const Result& result, const LeakageDescription& leakage);
/** Of a calibration on hardware, or of tables of which no model is known: nothing between the points. */
LeakageSummary summarise(const Result& result);

/** Whole numbers from `low` to `high`, both among them, with distances as even as can be: `parts` + 1 of
 * them, or fewer when there are not so many. */
std::vector<std::int64_t> evenSteps(std::int64_t low, std::int64_t high, std::int64_t parts);

} // namespace Radio::Calibration

#endif
