#include "radio/fit/Bowl.h"

#include <gtest/gtest.h>

#include <vector>

namespace Radio::Fit {
namespace {

/** 2 (i - 30)^2 + 2 (i - 30) (q + 10) + 4 (q + 10)^2 + 5, in millionths of the signal's power. */
class BowlTest : public testing::Test {
protected:
    static PowerProbe at(std::int32_t i, std::int32_t q) {
        const double x = i - 30.0;
        const double y = q + 10.0;
        return {{i, q}, 1e-6 * (2.0 * x * x + 2.0 * x * y + 4.0 * y * y + 5.0)};
    }

    /** Six probes on a circle alone would not do: of all bowls, they do not tell that circle. */
    const std::vector<PowerProbe> ring{at(100, 0),  at(50, 87),   at(-50, 87),
                                       at(-100, 0), at(-50, -87), at(0, 0)};
    const Curvature curvature{2e-6, 1e-6, 4e-6};
};

TEST_F(BowlTest, SixProbesTellTheWholeBowl) {
    const auto bowl = fitBowl(ring);
    ASSERT_TRUE(bowl);
    EXPECT_NEAR(bowl->bottom.i, 30.0, 1e-6);
    EXPECT_NEAR(bowl->bottom.q, -10.0, 1e-6);
    EXPECT_NEAR(bowl->curvature.ii, 2e-6, 1e-12);
    EXPECT_NEAR(bowl->curvature.iq, 1e-6, 1e-12);
    EXPECT_NEAR(bowl->curvature.qq, 4e-6, 1e-12);
    EXPECT_NEAR(bowl->floor, 5e-6, 1e-9);
    EXPECT_EQ(bowl->freedom, 0);
}

TEST_F(BowlTest, FiveProbesAreTooFewForAWholeBowl) {
    EXPECT_FALSE(fitBowl({ring.begin(), ring.end() - 1}));
}

TEST_F(BowlTest, ThreeProbesTellTheBottomWhenTheCurvatureIsKnown) {
    const auto bowl = fitBottom({at(100, 0), at(-50, 87), at(-50, -87)}, curvature);
    ASSERT_TRUE(bowl);
    EXPECT_NEAR(bowl->bottom.i, 30.0, 1e-6);
    EXPECT_NEAR(bowl->bottom.q, -10.0, 1e-6);
    EXPECT_NEAR(bowl->floor, 5e-6, 1e-9);
}

TEST_F(BowlTest, ProbesInALineDoNotTellTheBottom) {
    EXPECT_FALSE(fitBottom({at(-100, 0), at(0, 0), at(100, 0)}, curvature));
}

TEST_F(BowlTest, EveryReadingTheSameIsNoBowl) {
    std::vector<PowerProbe> flat = ring;
    for (PowerProbe& probe : flat) {
        probe.power = 1e-6;
    }
    EXPECT_FALSE(fitBowl(flat));
}

TEST_F(BowlTest, PlacesTogetherTellTheCurvature) {
    // Five probes each: two more than the place needs for its own bottom and floor, so that two places tell
    // three numbers.
    const std::vector<PowerProbe> first{at(40, 0), at(30, 10), at(20, 0), at(30, -10), at(30, 0)};
    const std::vector<PowerProbe> second{at(60, 27), at(37, 50), at(-10, 27), at(37, 4), at(47, 37)};
    const auto fitted = fitCurvature({first, second});
    ASSERT_TRUE(fitted);
    EXPECT_NEAR(fitted->ii, 2e-6, 1e-12);
    EXPECT_NEAR(fitted->iq, 1e-6, 1e-12);
    EXPECT_NEAR(fitted->qq, 4e-6, 1e-12);
}

TEST_F(BowlTest, RingOfFourFindsItsMiddleToAThirdOfTheErrorTimesItsRadius) {
    // Powers r^2 on a ring of radius 10: the difference of two is 40 times what the middle is off, so that
    // relative errors e of each make 100 e sqrt 2 / 40 = 3.54 e.
    const Curvature round{1e-6, 0.0, 1e-6};
    const auto bowl =
        fitBottom({{{10, 0}, 1e-4}, {{0, 10}, 1e-4}, {{-10, 0}, 1e-4}, {{0, -10}, 1e-4}}, round);
    ASSERT_TRUE(bowl);
    EXPECT_NEAR(bowl->spread, 3.54, 0.01);
    EXPECT_NEAR(bowl->bottom.i, 0.0, 1e-9);
}

TEST_F(BowlTest, AmplitudeIsTheMeanOfBothDirections) {
    // The root of (2 + 4) / 2 millionths.
    EXPECT_NEAR(curvature.amplitude(), 1.7320508e-3, 1e-9);
    // (30, 10) off: 1800 + 600 + 400.
    EXPECT_NEAR(curvature.power({30.0, 10.0}), 2800e-6, 1e-12);
}

TEST_F(BowlTest, WhatNoModulatorHasIsNoBowl) {
    EXPECT_TRUE((Curvature{1.0, 0.0, 1.0}).isBowl());
    EXPECT_FALSE((Curvature{1.0, 0.0, -1.0}).isBowl());
    EXPECT_FALSE((Curvature{1.0, 1.0, 1.0}).isBowl());
    EXPECT_FALSE((Curvature{1.0, 0.0, 0.005}).isBowl());
}

} // namespace
} // namespace Radio::Fit
