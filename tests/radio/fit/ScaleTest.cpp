#include "radio/fit/Scale.h"

#include <gtest/gtest.h>

#include <vector>

namespace Radio::Fit {
namespace {

TEST(ScaleTest, ReadingIsALevelAndAPower) {
    const Scale scale{25.0, -95.0};
    EXPECT_DOUBLE_EQ(scale.level(375), -80.0);
    EXPECT_NEAR(scale.power(375), 1e-8, 1e-20);
    // ln 10 / 10 / 25
    EXPECT_NEAR(scale.relativeError(), 0.0092103, 1e-7);
}

TEST(ScaleTest, EndsOfADetectorSayNothing) {
    const Detector detector{25.0, -95.0, 0, 1000};
    EXPECT_FALSE(isInside(detector, 0));
    EXPECT_TRUE(isInside(detector, 1));
    EXPECT_TRUE(isInside(detector, 999));
    EXPECT_FALSE(isInside(detector, 1000));
    EXPECT_TRUE(isInside(Detector{}, 1000));
}

/** Levels of i^2 + q^2 with 25 units for each dB, which is 500 for each factor of ten in distance. */
std::vector<Reading> rings() {
    return {{{1000, 0}, 1500}, {{0, 1000}, 1500}, {{-1000, 0}, 1500}, {{0, -1000}, 1500},
            {{100, 0}, 1000},  {{0, 100}, 1000},  {{-100, 0}, 1000},  {{0, -100}, 1000},
            {{10, 0}, 500},    {{0, 10}, 500},    {{-10, 0}, 500},    {{0, -10}, 500}};
}

TEST(ScaleTest, RingsOfSeveralSizesTellTheSlope) {
    const auto estimate = estimateSlope(rings());
    ASSERT_TRUE(estimate);
    EXPECT_NEAR(estimate->slope, 25.0, 0.05);
    EXPECT_LT(estimate->misfit, 1.0);
}

TEST(ScaleTest, AnotherSlopeMissesTheBowl) {
    const auto right = misfitWith(25.0, rings());
    const auto wrong = misfitWith(20.0, rings());
    ASSERT_TRUE(right);
    EXPECT_LT(*right, 0.01);
    EXPECT_TRUE(!wrong || *wrong > 20.0);
}

TEST(ScaleTest, ReadingsThatAreAllTheSameTellNoSlope) {
    std::vector<Reading> readings = rings();
    for (Reading& reading : readings) {
        reading.reading = 700;
    }
    EXPECT_FALSE(estimateSlope(readings));
    EXPECT_FALSE(estimateSlope({}));
}

} // namespace
} // namespace Radio::Fit
