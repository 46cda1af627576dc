#ifndef RADIO_STORE_STATISTICS_H
#define RADIO_STORE_STATISTICS_H

#include "radio/store/Run.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/** What many runs say together. Values in, values out; what it takes of memory grows with what is measured
 * and with days and stations, and not with the runs. */
namespace Radio::Store {

/** Mean and deviation of values of which none is kept. */
class Moments {
public:
    void add(double value);
    std::uint64_t count() const { return m_count; }
    double mean() const { return m_mean; }
    double least() const { return m_least; }
    double most() const { return m_most; }
    /** Of the population that they are a sample of; nothing of fewer than two. */
    std::optional<double> deviation() const;

private:
    std::uint64_t m_count = 0;
    double m_mean = 0.0;
    /** The squares of the distances from the mean. */
    double m_squares = 0.0;
    double m_least = 0.0;
    double m_most = 0.0;
};

/**
 * How often values were where. Bins are as wide as a power of two, and begin at multiples of it, so that what
 * comes of values does not depend on their order; they become wider as values need it.
 */
class Histogram {
public:
    static constexpr std::size_t bins = 64;

    void add(double value);
    /** The width of a bin, and where the first one with values begins. */
    double width() const;
    double begin() const;
    /** From the first to the last bin that has values. */
    std::vector<std::uint64_t> counts() const;
    /** The value below which this part of all lies, as far as the bins tell; between 0 and 1. Nothing before
     * the first value. */
    std::optional<double> quantile(double part) const;

private:
    void widen();

    std::array<std::uint64_t, bins> m_counts{};
    /** The exponent of the width, and the number of the first bin. */
    int m_exponent = 0;
    std::int64_t m_first = 0;
    std::uint64_t m_total = 0;
};

/** What is measured, and what it may be; the same in many runs. */
struct Measurand {
    std::string kind;
    std::string board;
    std::string name;
    std::string unit;
    std::optional<std::int64_t> channel;
    std::optional<std::int64_t> frequency;
    std::optional<std::int64_t> temperature;
    std::optional<double> lowest;
    std::optional<double> highest;
};

/** A value, and whose it was. */
struct Extreme {
    double value = 0.0;
    std::string serial{};
    std::string run{};
};

/** A station whose units come out otherwise than those of all others. */
struct StationDifference {
    std::string station;
    std::uint64_t count = 0;
    double mean = 0.0;
    double meanOfOthers = 0.0;
    /** How many standard errors these are apart (Welch). */
    double errors = 0.0;
};

/** Everything about one thing that was measured. */
struct MeasurandReport {
    Measurand measurand;
    Moments values;
    /** How often it was judged, and how often its limit was not held. */
    std::uint64_t judged = 0;
    std::uint64_t missed = 0;
    /** (limit - mean) / (3 deviations), the smaller one of two limits; nothing without limits or deviation.
     */
    std::optional<double> cpk{};
    Histogram histogram{};
    /** From one run of a unit to its next. */
    Moments drift{};
    /** The largest change either way, and the run that it led to. */
    std::optional<Extreme> largestDrift{};
    std::vector<StationDifference> stations{};
    /** Values far from all others, at most `mostExtremes` at each end. */
    std::vector<Extreme> outliers{};
};

/** Of how many values at each end it is known whose they are. */
constexpr std::size_t mostExtremes = 5;
/** An outlier is so many interquartile ranges beyond the quartiles. */
constexpr double outlierRanges = 3.0;
/** A station differs by at least so many standard errors, and so many deviations. */
constexpr double differentErrors = 5.0;
constexpr double differentDeviations = 0.5;

struct Yield {
    std::uint64_t runs = 0;
    std::uint64_t passed = 0;
    std::uint64_t failed = 0;
    /** Of those that were judged; nothing when none was. */
    std::optional<double> part() const;
};

struct StatisticsReport {
    std::uint64_t runs = 0;
    std::uint64_t units = 0;
    Yield all;
    /** By day and station; the station is empty when nobody said. */
    std::map<std::pair<std::string, std::string>, Yield> yields;
    std::vector<MeasurandReport> measurands;
};

/** Takes runs, and says in the end what they say together. */
class Statistics {
public:
    Statistics();
    Statistics(const Statistics&) = delete;
    Statistics& operator=(const Statistics&) = delete;
    ~Statistics();

    /** Those of a unit come one after the other, in the order of their times. Throws std::length_error when
     * there is too much that is measured. */
    void add(const Run& run);
    StatisticsReport report() const;

    static constexpr std::size_t mostMeasurands = 20000;

private:
    struct Accumulator;
    std::size_t indexOf(const Run& run, std::size_t place);

    StatisticsReport m_report;
    std::vector<Accumulator> m_accumulators;
    std::map<std::string, std::size_t> m_indexes;
    /** What the last run of a kind and board had at each place: mostly the next has the same. */
    std::map<std::pair<std::string, std::string>, std::vector<std::size_t>> m_places;
    std::string m_serial;
    /** Of the unit at hand: in which run something was measured last, and its value. */
    std::map<std::size_t, std::pair<std::uint64_t, double>> m_before;
};

} // namespace Radio::Store

#endif
