#ifndef RADIO_CALIBRATION_CALIBRATION_H
#define RADIO_CALIBRATION_CALIBRATION_H

#include "radio/board/Board.h"
#include "radio/board/Verdict.h"
#include "radio/calibration/ClimateTerms.h"
#include "radio/calibration/Qualification.h"
#include "radio/fit/Outcome.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** Calibrating the LO leakage of a transmitter over its band and temperatures. */
namespace Radio::Calibration {

/** What a calibration is asked for. */
struct Settings {
    int channel = 0;
    CalibrationMethod method = CalibrationMethod::search;
    /** Transmit carriers in kHz, ascending; at least one. Of a fit the first and the last. */
    std::vector<std::uint32_t> frequencies;
    /** In degrees Celsius, ascending; at least one. Of a fit the lowest and the highest. */
    std::vector<std::int32_t> temperatures;
    /** Of a fit: how many probes there may be in all, and what may leak anywhere, in dBc, if anybody says. */
    std::uint32_t budget = 0;
    std::optional<double> limit;
    /** Where the corrections are searched, in units of their drivers. */
    Range i{};
    Range q{};
    /** The fraction of a range that an iteration keeps. */
    double shrinkFactor = 0.0;
    /** A search ends once the wider range is at most this, in units of the drivers. */
    std::int32_t minDelta = 0;
    std::uint32_t maxIterations = 0;
    /** In ms. */
    std::uint32_t settleTime = 0;
    bool useHighDetector = false;
    /** So many readings of the detector make that of a probe, which is their mean. */
    std::uint32_t readings = 1;
};

/** Corrections that were set, and what the detector then read; nothing when nothing was read. */
struct Probe {
    std::int32_t i = 0;
    std::int32_t q = 0;
    std::optional<std::int32_t> reading;
};

enum class PointState : std::uint8_t {
    good,
    missed, ///< there are corrections, but they do not meet the limits of the board
    edge,   ///< the search ended at the edge of a range: the best corrections may lie beyond
    failed, ///< there are no corrections
};

/** "good", "missed", "edge" or "failed". */
std::string_view toString(PointState state);

/** What is said of a calibration on hardware in the files that come of it; others say nothing. */
constexpr std::string_view hardwareMode = "hardware";

/** One carrier at one temperature. */
struct Point {
    /** In kHz. */
    std::uint32_t frequency = 0;
    /** In degrees Celsius. */
    std::int32_t temperature = 0;
    PointState state = PointState::failed;
    /** What the user should know about it, as one clause; empty: nothing. */
    std::string remark;
    /** The corrections found, in units of their drivers; of a failed point 0. */
    std::int32_t i = 0;
    std::int32_t q = 0;
    /** The wider range at the end, in units of the drivers, and how many iterations it took. */
    std::int32_t maxDelta = 0;
    std::uint32_t iterations = 0;
    /** Modelled leakage without any correction and with those found, in dBc; of a failed point the same. On
     * hardware what the detector says, where its slope and its zero are stated. */
    std::optional<double> before;
    std::optional<double> after;
    /** What the detector read at the first and at the last probe; of a search on hardware that came to its
     * end. */
    std::optional<std::int32_t> firstReading;
    std::optional<std::int32_t> lastReading;
    /** What the detector read without corrections, before the search; where it makes a level. */
    std::optional<std::int32_t> uncorrectedReading;
    /** What a spectrum analyser saw of the corrections found, in dBc; nothing without one. */
    std::optional<double> analysed;
    /** By how many dB the corrections lower the leakage, where levels themselves are not known. */
    std::optional<double> improvement;
    /** Four for each iteration, in their order. */
    std::vector<Probe> probes;
};

/** The highest level that anybody saw of its corrections, in dBc; nothing when nobody did. */
std::optional<double> seenLevel(const Point& point);

/** A calibration that was carried out. */
struct Result {
    /** Of the radio; "unknown" when nobody said. */
    std::string serial;
    /** When it began, in UTC, for example "2026-03-01T09:30:00Z". */
    std::string date;
    /** Of the program that calibrated. */
    std::string version;
    /** Where it was calibrated; empty when nobody said. */
    std::string station{};
    /** What the limits of the board made of it. */
    VerdictKind verdict = VerdictKind::none;
    /** A real radio was calibrated, and nothing is modelled. */
    bool isHardware = false;
    Settings settings;
    /** The temperatures of the settings in the order in which they are gone through. */
    std::vector<std::int32_t> route{};
    /** How a real radio gets to them. */
    ClimateTerms climate{};
    /** Of the real detector, as far as the board states it: see CalibrationDescription. */
    std::optional<double> detectorSlope{};
    std::optional<double> detectorZero{};
    /** What the measuring chain was found to be before the first point; nothing when nobody looked. */
    std::optional<Qualification> qualification{};
    /** Of a search, in the order of the route, for each temperature all frequencies; of a fit where it
     * probed. Once the calibration is over, temperatures ascend. */
    std::vector<Point> points;
    /** Of a fit: where it tried its tables, with what these set there. */
    std::vector<Point> tries{};
    /** Of a fit that came to its end: what it says of itself, its points being those above in the same order,
     * and the nodes of its tables, for each temperature all frequencies; none when it has no tables. */
    std::optional<Fit::Outcome> fit{};
    std::vector<Point> nodes{};
    /** Of a fit: what its tables leave anywhere at most, in dBc, as it claims itself, and as stands with them
     * in their file; nothing where the claim is not known in dBc, or does not hold. */
    std::optional<double> claim{};
};

/** Its tables as a result with their nodes for points, and their axes; of a search the result itself. */
Result asTables(const Result& result);

} // namespace Radio::Calibration

#endif
