#ifndef RADIO_LABORATORY_STUDY_H
#define RADIO_LABORATORY_STUDY_H

#include "radio/laboratory/Results.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Radio::Laboratory {

/** In percent: so much of a population lies at or below; 100 is the most. */
constexpr std::array<unsigned, 4> quantileRanks{50, 90, 99, 100};

/** Values at these ranks: of n values in ascending order, that of rank p is number n p / 100, rounded up. A
 * value that is not known counts as above all others. */
using Quantiles = std::array<std::optional<double>, quantileRanks.size()>;

Quantiles quantilesOf(std::vector<std::optional<double>> values);

/** What came of one set of settings. */
struct Tally {
    std::uint64_t transmitters = 0;
    std::map<TrialEnd, std::uint64_t> ends{};
    Quantiles probes{};
    Quantiles seconds{};
    /** In dBc; one without tables leaks more than all others. */
    Quantiles worst{};
    std::uint64_t allProbes = 0;

    std::uint64_t failures() const;
    double failurePart() const;
    /** Where the part of failures of all such transmitters lies, with a certainty of 95 % (Wilson). */
    std::pair<double, double> failureRange() const;
};

/** The results of a laboratory, all of them, in figures. */
struct Study {
    /** In the order of the settings. */
    std::vector<Tally> tallies;
    /** Which settings are recommended, and why. */
    std::size_t recommended = 0;
    /** Nothing that was tried holds what the file asks for. */
    bool isNoneGood = false;
    std::string reason;
};

/**
 * Recommended are, of the settings with which no more transmitters fail than the file allows, those with
 * which nine of ten are done in the least time; of equal ones those with fewer probes, then those that leave
 * least, then the first. When too many fail with all of them, those with the fewest failures.
 */
Study studyOf(const Results& results);

/** "1.2 s", "3 min 5 s", "2 h 4 min". */
std::string durationText(double seconds);
/** "0.60 %". */
std::string percentText(double part);

} // namespace Radio::Laboratory

#endif
