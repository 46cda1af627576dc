#include "radio/calibration/Surface.h"
#include "tests/radio/support/MadeUpCalibration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Radio::Calibration {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::Optional;

/** A hundredth of a dB. */
constexpr double tolerance = 0.005;

MATCHER_P3(IsWorst, level, frequency, temperature, "") {
    return std::abs(arg.level - level) < tolerance && arg.frequency == frequency &&
           arg.temperature == temperature;
}

TEST(CalibrationSurface, WorstIsTheHighestLevelWithItsPlace) {
    Result result = madeUpResult({18000000u, 18100000u}, {-10, 30});
    result.points[1].before = -18.5;
    result.points[2].after = -31.0;
    const LeakageSummary summary = summarise(result, madeUpLeakage());
    EXPECT_THAT(summary.before, Optional(IsWorst(-18.5, 18100000u, -10)));
    EXPECT_THAT(summary.after, Optional(IsWorst(-31.0, 18000000u, 30)));
}

TEST(CalibrationSurface, FailedPointsDoNotCountForTheWorst) {
    Result result = madeUpResult({18000000u, 18100000u}, {25});
    result.points[0].before = -10.0;
    makeFail(result.points[0]);
    const LeakageSummary summary = summarise(result, madeUpLeakage());
    EXPECT_THAT(summary.before, Optional(IsWorst(-20.0, 18100000u, 25)));
    EXPECT_THAT(summary.after, Optional(IsWorst(-40.0, 18100000u, 25)));
}

TEST(CalibrationSurface, NothingIsWorstWhenAllPointsFailed) {
    Result result = madeUpResult({18000000u}, {25});
    makeFail(result.points[0]);
    const LeakageSummary summary = summarise(result, madeUpLeakage());
    EXPECT_EQ(summary.before, std::nullopt);
    EXPECT_EQ(summary.after, std::nullopt);
    EXPECT_EQ(summary.between, std::nullopt);
}

TEST(CalibrationSurface, PointsAreCountedByTheirState) {
    Result result = madeUpResult({1000u, 2000u, 3000u, 4000u, 5000u, 6000u}, {25});
    makeFail(result.points[0]);
    result.points[1].state = PointState::edge;
    result.points[2].state = PointState::edge;
    const LeakageSummary summary = summarise(result, madeUpLeakage());
    EXPECT_EQ(summary.good, 3u);
    EXPECT_EQ(summary.edge, 2u);
    EXPECT_EQ(summary.failed, 1u);
}

TEST(CalibrationSurface, EdgePointsHaveCorrections) {
    Result result = madeUpResult({18000000u}, {25});
    result.points[0].state = PointState::edge;
    EXPECT_THAT(summarise(result, madeUpLeakage()).between, Optional(IsWorst(-40.0, 18000000u, 25)));
}

/** From 8 kHz to the next a correction of -100, which leaves nothing, goes to one of -92. */
TEST(CalibrationSurface, CorrectionsBetweenThePointsAreInterpolated) {
    Result result = madeUpResult({18000000u, 18000008u}, {25});
    result.points[0].i = -100;
    result.points[1].i = -92;
    const auto surface = leakageBetween(result, madeUpLeakage());
    ASSERT_TRUE(surface);
    EXPECT_EQ(surface->frequencies.size(), 9u);
    EXPECT_THAT(surface->levels[1], Optional(DoubleNear(-60.0, tolerance)));  // -99 leaves 0.001
    EXPECT_THAT(surface->levels[4], Optional(DoubleNear(-47.96, tolerance))); // -96 leaves 0.004
    EXPECT_THAT(surface->levels[8], Optional(DoubleNear(-41.94, tolerance))); // -92 leaves 0.008
}

/** The same over temperature: the platform's tables have the temperature on their second axis. */
TEST(CalibrationSurface, CorrectionsBetweenTheTemperaturesAreInterpolated) {
    Result result = madeUpResult({18000000u, 18000008u}, {0, 8});
    result.points = {madeUpPoint(18000000, 0, -100, -120.0), madeUpPoint(18000008, 0, -100, -120.0),
                     madeUpPoint(18000000, 8, -92, -41.94), madeUpPoint(18000008, 8, -92, -41.94)};
    const auto surface = leakageBetween(result, madeUpLeakage());
    ASSERT_TRUE(surface);
    ASSERT_EQ(surface->levels.size(), 81u);
    EXPECT_THAT(surface->levels[4 * 9], Optional(DoubleNear(-47.96, tolerance)));
    EXPECT_THAT(surface->levels[4 * 9 + 8], Optional(DoubleNear(-47.96, tolerance)));
}

/** Halfway between the points the leakage has turned to the other side: 0.1 from there, 0.1 from I. */
TEST(CalibrationSurface, LeakageBetweenThePointsCanBeWorseThanAtThem) {
    Result result = madeUpResult({18000000u, 19000000u}, {25});
    result.points[0].i = -100;
    result.points[1].i = -100;
    EXPECT_THAT(summarise(result, madeUpLeakage(1.0)).between, Optional(IsWorst(-13.98, 18500000u, 25)));
}

TEST(CalibrationSurface, TemperaturesBetweenThePointsAreWholeDegrees) {
    const auto surface = leakageBetween(madeUpResult({18000000u}, {-2, 1, 2}), madeUpLeakage());
    ASSERT_TRUE(surface);
    EXPECT_THAT(surface->temperatures, ElementsAre(-2, -1, 0, 1, 2));
}

TEST(CalibrationSurface, AFailedPointLeavesNothingToInterpolate) {
    Result result = madeUpResult({18000000u, 18100000u}, {25});
    makeFail(result.points[1]);
    EXPECT_FALSE(leakageBetween(result, madeUpLeakage()));
}

TEST(CalibrationSurface, APointThatWasNotReachedLeavesNothingToInterpolate) {
    Result result = madeUpResult({18000000u, 18100000u}, {25});
    result.points.pop_back();
    EXPECT_FALSE(leakageBetween(result, madeUpLeakage()));
}

TEST(CalibrationSurface, AHoleKeepsItsPlaceInTheGrid) {
    Result result = madeUpResult({18000000u, 18100000u}, {0, 25});
    makeFail(result.points[2]);
    EXPECT_THAT(leakageAfter(result).levels,
                ElementsAre(Optional(-40.0), Optional(-40.0), std::nullopt, Optional(-40.0)));
}

TEST(CalibrationSurface, EvenStepsReachBothEnds) {
    EXPECT_THAT(evenSteps(-3, 7, 4), ElementsAre(-3, -1, 2, 4, 7));
}

TEST(CalibrationSurface, EvenStepsAreDistinct) {
    EXPECT_THAT(evenSteps(5, 7, 8), ElementsAre(5, 6, 7));
    EXPECT_THAT(evenSteps(5, 5, 8), ElementsAre(5));
}

} // namespace
} // namespace Radio::Calibration
