#include "radio/laboratory/Population.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace Radio::Laboratory {
namespace {

using testing::ElementsAre;

// The first draw for the quantity "skew" of transmitter 0 with the seed 1 is 0x778F5B40151750A4 / 2^64, which
// is 0.46703119577895547.
const Draws first(1, 0, "skew");

TEST(DrawsTest, AreThoseOfSplitMixBegunFromSeedTransmitterAndQuantity) {
    Draws draws(1, 0, "skew");
    const std::vector<std::uint64_t> drawn{draws.bits(), draws.bits(), draws.bits()};
    EXPECT_THAT(drawn, ElementsAre(0x778F5B40151750A4U, 0xA2BB072A23FEDC95U, 0x77AFEA833977E72FU));
}

TEST(DrawsTest, DifferByTransmitterBySeedAndByQuantity) {
    EXPECT_EQ(Draws(1, 1, "skew").bits(), 0x897512AC6BEEA6ADU);
    EXPECT_EQ(Draws(2, 0, "skew").bits(), 0xD18D78289E9179C2U);
    EXPECT_EQ(Draws(1, 0, "i.gain").bits(), 0x621104015E7F5100U);
}

TEST(DrawsTest, NormalIsTheSumOfTwelveUniformOnesLessSix) {
    EXPECT_DOUBLE_EQ(Draws(1, 0, "skew").normal(), -0.7409368940100185);
}

TEST(DrawsTest, NormalHasMeanZeroAndVarianceOne) {
    double sum = 0.0;
    double squares = 0.0;
    Draws draws(7, 0, "anything");
    constexpr int count = 10000;
    for (int n = 0; n < count; ++n) {
        const double drawn = draws.normal();
        sum += drawn;
        squares += drawn * drawn;
    }
    // Four standard errors of each.
    EXPECT_NEAR(sum / count, 0.0, 0.04);
    EXPECT_NEAR(squares / count, 1.0, 0.06);
}

TEST(DistributionTest, FixedIsTheSameForAll) {
    EXPECT_EQ(Distribution::fixed(-24.5).draw(first), -24.5);
    EXPECT_EQ(Distribution::fixed(-24.5).draw(Draws(3, 99, "level")), -24.5);
}

TEST(DistributionTest, UniformGoesFromTheLowestToTheHighest) {
    // -6 + 12 x 0.467031...
    EXPECT_DOUBLE_EQ(Distribution::uniform(-6.0, 6.0).draw(first), -0.3956256506525344);
}

TEST(DistributionTest, NormalIsMeanAndDeviations) {
    // 10 + 2 x -0.740936...
    EXPECT_DOUBLE_EQ(Distribution::normal(10.0, 2.0).draw(first), 8.518126211979963);
    EXPECT_EQ(Distribution::normal(10.0, 2.0).lowest(), -2.0);
    EXPECT_EQ(Distribution::normal(10.0, 2.0).highest(), 22.0);
}

TEST(DistributionTest, NormalWithinARangeDrawsAgainWhatFallsOutside) {
    const Distribution positive = Distribution::normal(1.0, 1.0, std::pair(1.0, 2.0));
    EXPECT_EQ(positive.lowest(), 1.0);
    EXPECT_EQ(positive.highest(), 2.0);
    double least = 2.0;
    double most = 1.0;
    unsigned ends = 0;
    for (std::uint32_t n = 0; n < 1000; ++n) {
        const double drawn = positive.draw(Draws(1, n, "noise"));
        least = std::min(least, drawn);
        most = std::max(most, drawn);
        ends += drawn == 1.0 || drawn == 2.0 ? 1 : 0;
    }
    EXPECT_GE(least, 1.0);
    EXPECT_LE(most, 2.0);
    // Cut off, a half and a sixth of them would lie at the ends.
    EXPECT_EQ(ends, 0U);
}

TEST(DistributionTest, ListIsDrawnFromAlike) {
    // 3 x 0.467... is 1.4: the second of three.
    EXPECT_EQ(Distribution::oneOf({5.0, 7.0, 9.0}).draw(first), 7.0);
    EXPECT_EQ(Distribution::oneOf({9.0, 5.0, 7.0}).lowest(), 5.0);
    EXPECT_EQ(Distribution::oneOf({9.0, 5.0, 7.0}).highest(), 9.0);
}

TEST(DistributionTest, BetweenQuantilesAreStraightLines) {
    // 2 x 0.467... is 0.934 of the way from 0 to 1, on which half of them lie.
    EXPECT_DOUBLE_EQ(Distribution::quantiles({0.0, 1.0, 10.0}).draw(first), 0.9340623915579109);
    // 1 x 0.467... of the way from 10 to 20.
    EXPECT_DOUBLE_EQ(Distribution::quantiles({10.0, 20.0}).draw(first), 14.670311957789555);
}

LeakageDescription base() {
    LeakageDescription leakage;
    leakage.paths = {{-24.0}, {-37.0}};
    leakage.skew = 3.0;
    leakage.seed = 1;
    return leakage;
}

double& skewOf(LeakageDescription& leakage) {
    return leakage.skew;
}

TEST(PopulationTest, WhatIsSaidOfNothingIsAsInTheBase) {
    const LeakageDescription drawn = Population(base()).draw(1, 5);
    EXPECT_EQ(drawn.skew, 3.0);
    ASSERT_EQ(drawn.paths.size(), 2U);
    EXPECT_EQ(drawn.paths[1].level, -37.0);
}

TEST(PopulationTest, EachTransmitterHasANoiseOfItsOwn) {
    const Population population(base());
    EXPECT_NE(population.draw(1, 0).seed, population.draw(1, 1).seed);
    EXPECT_EQ(population.draw(1, 1).seed, population.draw(1, 1).seed);
}

TEST(PopulationTest, TransmitterDependsOnSeedAndNumberAloneAndNotOnOtherQuantities) {
    Population alone(base());
    alone.add({"skew", Distribution::uniform(-6.0, 6.0), skewOf});
    Population more(base());
    more.add({"detector.noise", Distribution::uniform(0.5, 3.0),
              [](LeakageDescription& leakage) -> double& { return leakage.detector.noise; }});
    more.add({"skew", Distribution::uniform(-6.0, 6.0), skewOf});
    EXPECT_DOUBLE_EQ(alone.draw(1, 0).skew, -0.3956256506525344);
    static_cast<void>(more.draw(1, 17));
    EXPECT_DOUBLE_EQ(more.draw(1, 0).skew, -0.3956256506525344);
}

TEST(PopulationTest, PathWithAChanceIsThereInThatPart) {
    Population population(base());
    population.addChance(1, 0.25);
    unsigned count = 0;
    for (std::uint32_t n = 0; n < 1000; ++n) {
        count += population.draw(3, n).paths.size() == 2 ? 1 : 0;
    }
    // Within four standard deviations of 13.7.
    EXPECT_NEAR(count, 250.0, 55.0);
}

TEST(PopulationTest, TransmitterWithoutAnyPathLeaksOnTheFirst) {
    Population population(base());
    population.addChance(0, 0.0);
    population.addChance(1, 0.0);
    const LeakageDescription drawn = population.draw(1, 0);
    ASSERT_EQ(drawn.paths.size(), 1U);
    EXPECT_EQ(drawn.paths[0].level, -24.0);
}

} // namespace
} // namespace Radio::Laboratory
