#include "radio/calibration/LeakageVerdict.h"

#include "tests/radio/support/MadeUpCalibration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Radio::Calibration {
namespace {

using testing::ElementsAre;

/** Two carriers at two temperatures: -20 dBc without corrections, -40 dBc with them. */
class LeakageVerdict : public testing::Test {
protected:
    LeakageVerdict() { limits.leakageAtNodes = -35.0; }

    Verdict verdict() const { return verdictOn(result, summarise(result, madeUpLeakage()), limits); }
    std::vector<std::string> lines() const { return linesOf(verdict()); }

    Limits limits;
    Result result = madeUpResult({18000000u, 18100000u}, {-10, 30});
};

TEST_F(LeakageVerdict, NoneWithoutLimitsOfTheLeakage) {
    limits.leakageAtNodes.reset();
    limits.temperature = Range{-10, 30};
    limits.image = -60.0;
    EXPECT_EQ(verdict().kind(), VerdictKind::none);
    EXPECT_THAT(lines(), ElementsAre("NO VERDICT: the board states no leakage in its [limits]"));
}

TEST_F(LeakageVerdict, NoneAsLongAsPointsAreMissing) {
    result.points.pop_back();
    EXPECT_THAT(lines(), ElementsAre("NO VERDICT: not all points were calibrated"));
}

TEST_F(LeakageVerdict, WorstOfTheNodesCounts) {
    EXPECT_THAT(lines(), ElementsAre("PASS: leakage at the nodes -40.00 dBc (limit -35)"));
    result.points[3].after = -34.99;
    EXPECT_THAT(lines(),
                ElementsAre("FAIL: leakage at the nodes -34.99 dBc at 18100000 kHz, 30 degrees, limit -35"));
}

TEST_F(LeakageVerdict, LeastImprovementCounts) {
    limits.leakageAtNodes.reset();
    limits.leakageImprovement = 20.0;
    EXPECT_THAT(lines(), ElementsAre("PASS: improvement 20.00 dB (limit 20)"));
    result.points[1].before = -39.7; // -40 dBc is 0.3 dB less
    EXPECT_THAT(lines(), ElementsAre("FAIL: improvement 0.30 dB at 18100000 kHz, -10 degrees, limit 20"));
}

TEST_F(LeakageVerdict, AnywhereIsBetweenTheNodesAsWell) {
    limits.leakageAtNodes.reset();
    limits.leakage = -40.0;
    EXPECT_THAT(lines(), ElementsAre("PASS: leakage anywhere -40.00 dBc (limit -40)"));
    limits.leakage = -40.01;
    EXPECT_THAT(lines(),
                ElementsAre("FAIL: leakage anywhere -40.00 dBc at 18000000 kHz, -10 degrees, limit -40.01"));
}

TEST_F(LeakageVerdict, PointWithoutCorrectionsPassesNoLimit) {
    limits.leakage = -35.0;
    limits.leakageImprovement = 10.0;
    makeFail(result.points[2]);
    EXPECT_THAT(lines(), ElementsAre("FAIL: leakage anywhere unknown at 18000000 kHz, 30 degrees, limit -35: "
                                     "the point has no corrections",
                                     "FAIL: leakage at the nodes unknown at 18000000 kHz, 30 degrees, limit "
                                     "-35: the point has no corrections",
                                     "FAIL: improvement unknown at 18000000 kHz, 30 degrees, limit 10: the "
                                     "point has no corrections"));
}

TEST_F(LeakageVerdict, WhatIsMissedIsToldBeforeWhatIsNotKnown) {
    makeFail(result.points[2]);
    result.points[0].after = -30.0;
    EXPECT_THAT(lines(),
                ElementsAre("FAIL: leakage at the nodes -30.00 dBc at 18000000 kHz, -10 degrees, limit -35"));
}

TEST_F(LeakageVerdict, NobodyPassesOnHardwareWhoseLevelsAreNotKnown) {
    limits.leakage = -30.0;
    limits.leakageImprovement = 1.0;
    for (Point& point : result.points) {
        point.before.reset();
        point.after.reset();
    }
    EXPECT_THAT(linesOf(verdictOn(result, summarise(result), limits)),
                ElementsAre("FAIL: leakage anywhere unknown, limit -30: nobody knows in dBc what leaks",
                            "FAIL: leakage at the nodes unknown, limit -35: nobody knows in dBc what leaks",
                            "FAIL: improvement unknown, limit 1: nobody knows what the corrections gain"));
}

TEST_F(LeakageVerdict, MeasuredNodesSayNothingOfWhatLiesBetween) {
    limits.leakage = -30.0;
    EXPECT_THAT(linesOf(verdictOn(result, summarise(result), limits)),
                ElementsAre("FAIL: leakage anywhere unknown, limit -30: nobody knows what leaks between the "
                            "points",
                            "Held: leakage at the nodes -40.00 dBc (limit -35)"));
}

/** One point, held against the limits. */
class LimitedPoint : public testing::Test {
protected:
    Point hold() {
        Point held = point;
        holdToLimits(held, limits);
        return held;
    }

    Limits limits;
    Point point = madeUpPoint(18000000, 25, -90, -40.0);
};

TEST_F(LimitedPoint, IsGoodWhenItsLevelMetTheLimits) {
    limits.leakage = -30.0;
    limits.leakageAtNodes = -40.0;
    limits.leakageImprovement = 20.0;
    EXPECT_EQ(hold().state, PointState::good);
    EXPECT_EQ(hold().remark, "");
}

TEST_F(LimitedPoint, MissedALimitNamesItAndTheLevel) {
    limits.leakageAtNodes = -70.0;
    EXPECT_EQ(hold().state, PointState::missed);
    EXPECT_EQ(hold().remark, "it leaks -40.00 dBc, and leakage_at_nodes allows -70");
    limits.leakageAtNodes.reset();
    limits.leakageImprovement = 30.0;
    EXPECT_EQ(hold().state, PointState::missed);
    EXPECT_EQ(hold().remark, "its corrections gain 20.00 dB, and leakage_improvement asks for 30");
}

TEST_F(LimitedPoint, IsHeldToTheLimitForAnywhereToo) {
    limits.leakage = -40.5;
    EXPECT_EQ(hold().remark, "it leaks -40.00 dBc, and leakage allows -40.5");
}

TEST_F(LimitedPoint, IsNotGoodWhenNobodyKnowsItsLevel) {
    point.after.reset();
    limits.leakageAtNodes = -70.0;
    EXPECT_EQ(hold().state, PointState::missed);
    EXPECT_EQ(hold().remark, "nobody knows in dBc what leaks, and leakage_at_nodes allows -70");
}

TEST_F(LimitedPoint, AtAnEdgeStaysThereAndSaysBoth) {
    point.state = PointState::edge;
    point.remark = "I ended at the low edge of its range, -90";
    limits.leakageAtNodes = -70.0;
    EXPECT_EQ(hold().state, PointState::edge);
    EXPECT_EQ(hold().remark, "I ended at the low edge of its range, -90; it leaks -40.00 dBc, and "
                             "leakage_at_nodes allows -70");
}

TEST_F(LimitedPoint, ThatFailedHasNoLevelToBeHeldTo) {
    makeFail(point);
    limits.leakageAtNodes = -70.0;
    EXPECT_EQ(hold().state, PointState::failed);
    EXPECT_EQ(hold().remark, "the detector could not be read");
}

} // namespace
} // namespace Radio::Calibration
