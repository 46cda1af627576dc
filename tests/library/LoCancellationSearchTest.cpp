// The shrinking search, number by number: every expected value is worked out by hand.

#include "LoCancellationSearch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <ostream>
#include <utility>
#include <vector>

using RL::FrequencyHandler::LoCancellationSearch;

namespace {

using Pair = std::pair<std::int32_t, std::int32_t>;
using Readings = std::array<std::int32_t, 4>;

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

/** Readings of which the probe named is the best. */
constexpr Readings best0{1, 5, 5, 5};
constexpr Readings best1{5, 1, 5, 5};
constexpr Readings best2{5, 5, 1, 5};
constexpr Readings best3{5, 5, 5, 1};

/** Enters four readings and ends the iteration. */
std::int32_t narrow(LoCancellationSearch& search, const Readings& readings) {
    for (std::size_t index = 0; index < readings.size(); ++index) {
        search.reading(index) = readings[index];
    }
    return search.narrow();
}

/** All four probes, as I and Q. */
std::vector<Pair> probes(const LoCancellationSearch& search) {
    std::vector<Pair> found;
    for (std::size_t index = 0; index < LoCancellationSearch::probeCount; ++index) {
        found.emplace_back(search.probe(index).i, search.probe(index).q);
    }
    return found;
}

Pair midpoint(const LoCancellationSearch& search) {
    return {search.midpoint().i, search.midpoint().q};
}

/** Which probe a search over 0 to 100 takes for the best: the side of each range that it keeps shows it. */
int bestOf(const Readings& readings) {
    LoCancellationSearch search(0, 100, 0, 100, 0.5);
    narrow(search, readings);
    const auto [i, q] = midpoint(search);
    return (i == 75 ? 1 : 0) + (q == 75 ? 2 : 0);
}

/** What one iteration makes of a range, the same for I and Q. */
struct Outcome {
    std::int32_t widest;
    std::int32_t middle;
    std::int32_t firstProbe;
    std::int32_t lastProbe;

    bool operator==(const Outcome& other) const {
        return widest == other.widest && middle == other.middle && firstProbe == other.firstProbe &&
               lastProbe == other.lastProbe;
    }
};
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
    return stream << "widest " << outcome.widest << ", middle " << outcome.middle << ", probes "
                  << outcome.firstProbe << " and " << outcome.lastProbe;
}

Outcome afterOne(std::int32_t low, std::int32_t high, double shrinkFactor, const Readings& readings) {
    LoCancellationSearch search(low, high, low, high, shrinkFactor);
    const std::int32_t widest = narrow(search, readings);
    return {widest, search.midpoint().i, search.probe(0).i, search.probe(3).i};
}

} // namespace

// Probes

TEST(LoCancellationSearchTest, FirstProbesAreTheCornersWithIRunningFaster) {
    const LoCancellationSearch search(-10, 20, 30, 40, 0.75);
    EXPECT_EQ(probes(search), (std::vector<Pair>{{-10, 30}, {20, 30}, {-10, 40}, {20, 40}}));
}

TEST(LoCancellationSearchTest, LaterProbesLieInsideTheRange) {
    LoCancellationSearch search(0, 100, 0, 100, 0.75);
    narrow(search, best0); // 0..75: a quarter is 18.75, three quarters are 56.25
    EXPECT_EQ(probes(search), (std::vector<Pair>{{18, 18}, {56, 18}, {18, 56}, {56, 56}}));
}

TEST(LoCancellationSearchTest, TwoIterationsTowardTheLowerCorner) {
    LoCancellationSearch search(0, 100, 0, 100, 0.75);
    EXPECT_EQ(narrow(search, best0), 75);
    EXPECT_EQ(narrow(search, best0), 56); // 56.25, cut
    EXPECT_EQ(midpoint(search), Pair(28, 28));
}

// Which side of each range is kept

TEST(LoCancellationSearchTest, ProbeZeroKeepsLowIAndLowQ) {
    LoCancellationSearch search(0, 100, 0, 1000, 0.75);
    EXPECT_EQ(narrow(search, best0), 750);
    EXPECT_EQ(midpoint(search), Pair(37, 375));
}

TEST(LoCancellationSearchTest, ProbeOneKeepsHighIAndLowQ) {
    LoCancellationSearch search(0, 100, 0, 1000, 0.75);
    EXPECT_EQ(narrow(search, best1), 750);
    EXPECT_EQ(midpoint(search), Pair(62, 375));
    EXPECT_EQ(search.probe(1).i, 81); // 25 + 56.25
    EXPECT_EQ(search.probe(0).i, 43); // 25 + 18.75
}

TEST(LoCancellationSearchTest, ProbeTwoKeepsLowIAndHighQ) {
    LoCancellationSearch search(0, 100, 0, 1000, 0.75);
    EXPECT_EQ(narrow(search, best2), 750);
    EXPECT_EQ(midpoint(search), Pair(37, 625));
}

TEST(LoCancellationSearchTest, ProbeThreeKeepsHighIAndHighQ) {
    LoCancellationSearch search(0, 100, 0, 1000, 0.75);
    EXPECT_EQ(narrow(search, best3), 750);
    EXPECT_EQ(midpoint(search), Pair(62, 625));
}

TEST(LoCancellationSearchTest, WiderRangeIsReportedWhicheverItIs) {
    LoCancellationSearch wideI(0, 1000, 0, 100, 0.75);
    EXPECT_EQ(narrow(wideI, best0), 750);
    LoCancellationSearch wideQ(0, 100, 0, 1000, 0.75);
    EXPECT_EQ(narrow(wideQ, best0), 750);
}

// Readings

TEST(LoCancellationSearchTest, LeastReadingWins) {
    EXPECT_EQ(bestOf(best0), 0);
    EXPECT_EQ(bestOf(best1), 1);
    EXPECT_EQ(bestOf(best2), 2);
    EXPECT_EQ(bestOf(best3), 3);
}

TEST(LoCancellationSearchTest, ReadingsCompareSigned) {
    EXPECT_EQ(bestOf({-5, 3, 4, 7}), 0);
    EXPECT_EQ(bestOf({highest, lowest, highest, highest}), 1);
    EXPECT_EQ(bestOf({-1, 0, -2, -1}), 2);
}

TEST(LoCancellationSearchTest, OnATieTheLaterProbeWins) {
    EXPECT_EQ(bestOf({5, 5, 9, 9}), 1);
    EXPECT_EQ(bestOf({5, 9, 5, 9}), 2);
    EXPECT_EQ(bestOf({5, 9, 9, 5}), 3);
    EXPECT_EQ(bestOf({9, 5, 5, 9}), 2);
    EXPECT_EQ(bestOf({9, 5, 9, 5}), 3);
    EXPECT_EQ(bestOf({9, 9, 5, 5}), 3);
    EXPECT_EQ(bestOf({5, 5, 5, 5}), 3);
}

TEST(LoCancellationSearchTest, ReadingsStartAtZero) {
    LoCancellationSearch search(0, 100, 0, 100, 0.5);
    search.reading(0) = -1; // less than three that were never entered
    search.narrow();
    EXPECT_EQ(midpoint(search), Pair(25, 25));
}

TEST(LoCancellationSearchTest, ReadingThatIsNotEnteredKeepsItsValue) {
    LoCancellationSearch search(0, 100, 0, 100, 0.5);
    narrow(search, best0);
    search.narrow();
    EXPECT_EQ(midpoint(search), Pair(12, 12)); // 0..25: probe 0 was the best once more
}

// Rounding and signs

TEST(LoCancellationSearchTest, BoundsAreCutTowardZero) {
    EXPECT_EQ(afterOne(-10, -3, 0.5, best0), (Outcome{4, -8, -8, -8})); // -6.5 becomes -6: -10..-6
    EXPECT_EQ(afterOne(-10, -3, 0.5, best3), (Outcome{3, -4, -4, -4})); // -6.5 becomes -6: -6..-3
    EXPECT_EQ(afterOne(3, 10, 0.5, best0), (Outcome{3, 4, 4, 4}));      // 6.5 becomes 6: 3..6
}

// Rounded once, after the sum, each of the next four would come out one further on: 0.7 is a little less than
// seven tenths, 0.1 and 0.2 are a little more than theirs, and 1 less 0.2 is a little more than 0.8.

TEST(LoCancellationSearchTest, ProductIsRoundedBeforeItIsAddedToTheLowBound) {
    // 10 times 0.7 is 7 once rounded; added to -6 before rounding it would stay below 1.
    EXPECT_EQ(afterOne(-6, 4, 0.7, best0).widest, 7);
}

TEST(LoCancellationSearchTest, ProductIsRoundedBeforeItIsTakenFromTheHighBound) {
    // 30 times 0.1 is 3 once rounded: 1..4. Taken from 4 before rounding it would leave less than 1: 0..4.
    EXPECT_EQ(afterOne(-26, 4, 0.1, best3).widest, 3);
}

TEST(LoCancellationSearchTest, ProductIsRoundedBeforeItIsAddedForTheLowerProbe) {
    // 46 times 0.2 is 9.2: -12..-2. Eight tenths of 10 are 8 once rounded, else a little more.
    EXPECT_EQ(afterOne(-12, 34, 0.2, best0), (Outcome{10, -7, -4, -10}));
}

TEST(LoCancellationSearchTest, ProductIsRoundedBeforeItIsAddedForTheUpperProbe) {
    // 50 times 0.2 is 10: -3..7. Two tenths of 10 are 2 once rounded, else a little more.
    EXPECT_EQ(afterOne(-3, 47, 0.2, best0), (Outcome{10, 2, 5, -1}));
}

TEST(LoCancellationSearchTest, LowerProbeLiesAtOneLessTheFactor) {
    // 1 less 0.9 is a little less than 0.1, ten times of which is cut to 0; 10 less ten times 0.9 would be 1.
    EXPECT_EQ(afterOne(0, 12, 0.9, best0), (Outcome{10, 5, 0, 9}));
}

TEST(LoCancellationSearchTest, InvertedRangeHasANegativeWidth) {
    LoCancellationSearch search(100, 0, 100, 0, 0.75);
    EXPECT_EQ(narrow(search, best0), -75); // 100..25
    EXPECT_EQ(probes(search), (std::vector<Pair>{{81, 81}, {43, 81}, {81, 43}, {43, 43}}));
}

TEST(LoCancellationSearchTest, InvertedRangeKeepsTheHighBoundForProbeThree) {
    LoCancellationSearch search(100, 0, 100, 0, 0.75);
    EXPECT_EQ(narrow(search, best3), -75); // 75..0
    EXPECT_EQ(midpoint(search), Pair(37, 37));
}

TEST(LoCancellationSearchTest, WidestOfAnInvertedAndAnUprightRangeIsTheUprightOne) {
    LoCancellationSearch search(1000, 0, 0, 100, 0.75);
    EXPECT_EQ(narrow(search, best0), 75);
}

TEST(LoCancellationSearchTest, MidpointIsCutTowardZero) {
    EXPECT_EQ(midpoint(LoCancellationSearch(3, 4, -3, -2, 0.5)), Pair(3, -2));
    EXPECT_EQ(midpoint(LoCancellationSearch(-1, 0, 0, 1, 0.5)), Pair(0, 0));
}

TEST(LoCancellationSearchTest, EmptyRangeStaysWhereItIs) {
    EXPECT_EQ(afterOne(42, 42, 0.75, best0), (Outcome{0, 42, 42, 42}));
}

TEST(LoCancellationSearchTest, FactorOneKeepsTheRangeAndProbesItsCornersCrosswise) {
    EXPECT_EQ(afterOne(10, 20, 1.0, best0), (Outcome{10, 15, 10, 20}));
}

TEST(LoCancellationSearchTest, FactorZeroCollapsesTheRangeOntoTheBestBound) {
    EXPECT_EQ(afterOne(10, 20, 0.0, best0), (Outcome{0, 10, 10, 10}));
    EXPECT_EQ(afterOne(10, 20, 0.0, best3), (Outcome{0, 20, 20, 20}));
}

// The edges of the int range

TEST(LoCancellationSearchTest, WidthWrapsAround) {
    // From the lowest to the highest int it is -1; half of that below the lowest saturates to it.
    EXPECT_EQ(afterOne(lowest, highest, 0.5, best0).widest, 0);
}

TEST(LoCancellationSearchTest, SumOfTheMidpointWrapsAround) {
    EXPECT_EQ(midpoint(LoCancellationSearch(highest - 1, highest, lowest, lowest, 0.5)), Pair(-1, 0));
}

TEST(LoCancellationSearchTest, HugeFactorSaturates) {
    // 10..2147483647, 2147483637 wide, probed far below and far above; the sum of the bounds wraps around.
    EXPECT_EQ(afterOne(10, 20, 1e300, best0), (Outcome{2'147'483'637, -1'073'741'819, lowest, highest}));
}

TEST(LoCancellationSearchTest, HugeNegativeFactorSaturates) {
    // 10..-2147483648; the width wraps around to 2147483638.
    EXPECT_EQ(afterOne(10, 20, -1e300, best0), (Outcome{2'147'483'638, -1'073'741'819, highest, lowest}));
}

TEST(LoCancellationSearchTest, InfiniteFactorSaturates) {
    EXPECT_EQ(afterOne(10, 20, std::numeric_limits<double>::infinity(), best0).widest, 2'147'483'637);
}

TEST(LoCancellationSearchTest, FactorThatIsNotANumberGivesZero) {
    EXPECT_EQ(afterOne(10, 100, std::nan(""), best3), (Outcome{100, 50, 0, 0})); // 0..100
    EXPECT_EQ(afterOne(10, 100, std::nan(""), best0), (Outcome{-10, 5, 0, 0}));  // 10..0
}
