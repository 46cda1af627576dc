#include "radio/fit/Fit.h"

#include "tests/radio/fit/PlayedTransmitter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <stdexcept>
#include <utility>

namespace Radio::Fit {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/** A transmitter with two paths, a detector of 25 units for each dB, and DACs of 0.01 % of the signal. */
class FitTest : public testing::Test {
protected:
    FitTest() {
        leakage.channel = 1;
        leakage.reference = 18'195'000;
        leakage.seed = 1;
        LeakagePath& strong = leakage.paths.emplace_back();
        strong.level = -25.0;
        strong.phase = 35.0;
        strong.phasePerDegree = 0.3;
        strong.delay = 0.2;
        LeakagePath& weak = leakage.paths.emplace_back();
        weak.level = -38.0;
        weak.delay = 0.6;
        for (CorrectionBranch* const branch : {&leakage.i, &leakage.q}) {
            branch->gain = 1e-4;
            branch->low = -1000;
            branch->high = 1000;
        }
        leakage.skew = 3.0;
        leakage.detector.slope = 25.0;
        leakage.detector.zero = -95.0;
        leakage.detector.floor = -85.0;
        leakage.detector.noise = 1.0;
        leakage.detector.high = 4095;
        leakage.detector.settling = 1.0;
    }

    Order order() const { return orderFor(leakage, -74.0, 400); }
    static Outcome run(const Order& order, PlayedTransmitter& played) { return calibrate(order, played); }
    Outcome run() const {
        PlayedTransmitter played(leakage);
        return calibrate(order(), played);
    }

    LeakageDescription leakage;
};

TEST_F(FitTest, TableIsBelowItsClaimEverywhere) {
    PlayedTransmitter played(leakage);
    const Outcome outcome = run(order(), played);
    EXPECT_EQ(outcome.verdict, Verdict::held) << outcome.reason;
    EXPECT_THAT(outcome.reason, IsEmpty());
    ASSERT_TRUE(outcome.claim);
    EXPECT_LE(outcome.claim->level, -74.0);
    EXPECT_LT(played.worst(order(), outcome.table, 200), outcome.claim->level);
    EXPECT_THAT(outcome.table.carriers, SizeIs(81));
    EXPECT_THAT(outcome.table.i, SizeIs(outcome.table.carriers.size() * outcome.table.temperatures.size()));
    EXPECT_EQ(outcome.probes, played.probes().size());
    EXPECT_LE(outcome.probes, 400U);
}

TEST_F(FitTest, PlaceIsGoneToOnce) {
    PlayedTransmitter played(leakage);
    run(order(), played);
    std::set<std::pair<std::uint32_t, std::int32_t>> places;
    for (const Place& place : played.places()) {
        EXPECT_TRUE(places.emplace(place.carrier, place.temperature).second);
    }
}

TEST_F(FitTest, EachTemperatureIsVisitedOnce) {
    PlayedTransmitter played(leakage);
    const Outcome outcome = run(order(), played);
    std::set<std::int32_t> temperatures;
    for (const Place& place : played.places()) {
        temperatures.insert(place.temperature);
    }
    EXPECT_EQ(outcome.temperatureChanges, temperatures.size());
    EXPECT_EQ(played.places().front().temperature, 55);
}

TEST_F(FitTest, SameAnswersMeanSameQuestions) {
    PlayedTransmitter once(leakage);
    PlayedTransmitter again(leakage);
    run(order(), once);
    run(order(), again);
    ASSERT_EQ(once.probes().size(), again.probes().size());
    for (std::size_t n = 0; n < once.probes().size(); ++n) {
        EXPECT_EQ(once.probes()[n].i, again.probes()[n].i);
        EXPECT_EQ(once.probes()[n].q, again.probes()[n].q);
    }
}

TEST_F(FitTest, ProbesStayWithinWhatCanBeSet) {
    leakage.i.low = -300;
    leakage.q.step = 4;
    PlayedTransmitter played(leakage);
    run(order(), played);
    for (const Corrections& probe : played.probes()) {
        EXPECT_GE(probe.i, -300);
        EXPECT_LE(probe.i, 1000);
        EXPECT_EQ((probe.q + 1000) % 4, 0);
    }
}

TEST_F(FitTest, WithoutDescriptionOfTheDetectorLevelsAreRelative) {
    Order wanted = order();
    wanted.detector = {};
    wanted.limit = std::nullopt;
    PlayedTransmitter played(leakage);
    const Outcome outcome = run(wanted, played);
    EXPECT_EQ(outcome.verdict, Verdict::held) << outcome.reason;
    EXPECT_TRUE(outcome.isRelative);
    EXPECT_NEAR(outcome.slope, 25.0, 0.5);
    ASSERT_TRUE(outcome.claim);
    // Uncorrected it leaks at about -25 dBc.
    EXPECT_LT(played.worst(wanted, outcome.table, 200), outcome.claim->level - 25.0 + 3.0);
    EXPECT_LT(outcome.claim->level, -44.0);
}

TEST_F(FitTest, LimitCannotBeHeldAgainstRelativeLevels) {
    Order wanted = order();
    wanted.detector = {};
    PlayedTransmitter played(leakage);
    const Outcome outcome = run(wanted, played);
    EXPECT_EQ(outcome.verdict, Verdict::missed);
    EXPECT_EQ(outcome.reason, "the limit is in dBc, and the detector's zero is not known");
}

TEST_F(FitTest, InterruptedWhenTheCallerDoesNotGoOn) {
    PlayedTransmitter played(leakage);
    played.patience = 50;
    const Outcome outcome = run(order(), played);
    EXPECT_EQ(outcome.verdict, Verdict::interrupted);
    EXPECT_EQ(outcome.probes, 50U);
    EXPECT_THAT(outcome.table.i, IsEmpty());
}

TEST_F(FitTest, InterruptedAtAnyProbeOfTheFirstPoint) {
    for (std::size_t patience = 1; patience <= 40; ++patience) {
        PlayedTransmitter played(leakage);
        played.patience = patience;
        const Outcome outcome = run(order(), played);
        EXPECT_EQ(outcome.verdict, Verdict::interrupted);
        EXPECT_EQ(outcome.probes, patience);
    }
}

TEST_F(FitTest, BudgetIsKept) {
    Order wanted = order();
    wanted.budget = 60;
    PlayedTransmitter played(leakage);
    const Outcome outcome = run(wanted, played);
    EXPECT_EQ(outcome.verdict, Verdict::missed);
    EXPECT_EQ(outcome.reason, "the budget of probes was spent before all was tried");
    EXPECT_LE(played.probes().size(), 60U);
}

TEST_F(FitTest, AnyBudgetEndsWithAReason) {
    for (std::uint32_t budget = 1; budget <= 60; ++budget) {
        Order wanted = order();
        wanted.budget = budget;
        PlayedTransmitter played(leakage);
        const Outcome outcome = run(wanted, played);
        EXPECT_NE(outcome.verdict, Verdict::held);
        EXPECT_FALSE(outcome.reason.empty());
        EXPECT_LE(played.probes().size(), budget);
    }
}

TEST_F(FitTest, BudgetTooSmallForTheFirstPointIsSaid) {
    Order wanted = order();
    wanted.budget = 5;
    PlayedTransmitter played(leakage);
    const Outcome outcome = run(wanted, played);
    EXPECT_EQ(outcome.verdict, Verdict::failed);
    EXPECT_EQ(outcome.reason, "the budget of probes was spent at the first point");
    EXPECT_THAT(played.probes(), SizeIs(5));
}

TEST_F(FitTest, DetectorThatCannotBeReadFailsByName) {
    PlayedTransmitter played(leakage);
    played.readable = 0;
    EXPECT_EQ(run(order(), played).reason, "the detector could not be read");
}

TEST_F(FitTest, DetectorThatFailsLaterFailsItsPoint) {
    PlayedTransmitter played(leakage);
    played.readable = 40;
    const Outcome outcome = run(order(), played);
    EXPECT_EQ(outcome.verdict, Verdict::missed);
    EXPECT_THAT(outcome.reason, HasSubstr("failed: the detector could not be read"));
    EXPECT_LT(played.probes().size(), 60U);
}

TEST_F(FitTest, PlaceThatCannotBeHadFailsByName) {
    PlayedTransmitter played(leakage);
    played.unreachable = 17'727'500;
    const Outcome outcome = run(order(), played);
    EXPECT_EQ(outcome.verdict, Verdict::missed);
    EXPECT_EQ(outcome.reason, "the point at 17727500 kHz, 55 degrees failed: the place cannot be had");
}

TEST_F(FitTest, StuckDetectorFailsByName) {
    leakage.detector.slope = 0.0;
    leakage.detector.noise = 0.0;
    Order wanted = order();
    wanted.detector.slope = 25.0;
    wanted.detector.lowest = std::nullopt;
    PlayedTransmitter played(leakage);
    const Outcome outcome = run(wanted, played);
    EXPECT_EQ(outcome.verdict, Verdict::failed);
    EXPECT_THAT(outcome.reason, HasSubstr("the detector is stuck or saturated"));
    EXPECT_LT(outcome.probes, 60U);
}

TEST_F(FitTest, StuckDetectorWithNoiseFailsByName) {
    leakage.detector.slope = 0.0;
    leakage.detector.noise = 20.0;
    leakage.detector.zero = 2000.0;
    Order wanted = order();
    wanted.detector.slope = 25.0;
    PlayedTransmitter played(leakage);
    const Outcome outcome = run(wanted, played);
    EXPECT_EQ(outcome.verdict, Verdict::failed);
    EXPECT_THAT(outcome.reason, HasSubstr(": the detector is stuck, noisy, or not settled"));
    EXPECT_LT(outcome.probes, 70U);
}

TEST_F(FitTest, SaturatedDetectorIsGivenBackToTheCaller) {
    // 40 dB above its zero, -55 dBc: as far as five units from the bottom.
    leakage.detector.high = 1000;
    PlayedTransmitter played(leakage);
    const Outcome outcome = run(order(), played);
    EXPECT_EQ(outcome.reason, "every reading is 1000: the detector is stuck or saturated");
    EXPECT_EQ(played.searches, 1);
}

TEST_F(FitTest, DetectorThatFreezesIsNeverPassed) {
    const std::uint32_t whole = run().probes;
    for (const std::int32_t frozen : {150, 200, 300, 500}) {
        for (const std::uint32_t after : {40U, 70U, 100U, 140U, whole - 20, whole - 5}) {
            PlayedTransmitter played(leakage);
            played.freezesAfter = after;
            played.frozenAt = frozen;
            const Outcome outcome = run(order(), played);
            EXPECT_NE(outcome.verdict, Verdict::held) << frozen << " after " << after;
        }
    }
}

TEST_F(FitTest, SearchThatFindsNothingThatCanBeSeenIsNoPoint) {
    leakage.detector.high = 1000;
    PlayedTransmitter played(leakage);
    played.freezesAfter = 60;
    played.frozenAt = 900;
    played.knows = true;
    for (const Point& point : run(order(), played).points) {
        EXPECT_EQ(point.remark.find("found by a search"), std::string::npos) << point.remark;
    }
}

TEST_F(FitTest, LastProbeOfAPointThatASearchFoundIsWithItsCorrections) {
    PlayedTransmitter found(leakage);
    run(order(), found);
    PlayedTransmitter played(leakage);
    // Six rings of four read what no bottom has; then the search finds one.
    played.deafAt = found.places().at(1).carrier;
    played.deafFor = 24;
    played.frozenAt = 150;
    played.knows = true;
    played.probesOfSearch = 10;
    Order wanted = order();
    wanted.probesOfSearch = 10;
    const Outcome outcome = run(wanted, played);
    const Point& point = outcome.points.at(1);
    EXPECT_EQ(point.remark, "found by a search, since its probes are no bowl");
    const Corrections& last = played.probes().at(played.starts().at(2) - 1);
    EXPECT_EQ(last.i, point.corrections.i);
    EXPECT_EQ(last.q, point.corrections.q);
    EXPECT_EQ(point.probes, 24U + 10U + 2U);
}

TEST_F(FitTest, SearchIsNotBegunWithoutProbesForIt) {
    leakage.detector.high = 1000;
    Order wanted = order();
    wanted.probesOfSearch = 160;
    // 19 are spent until it is clear that nothing is seen.
    wanted.budget = 178;
    PlayedTransmitter played(leakage);
    run(wanted, played);
    EXPECT_EQ(played.searches, 0);
    wanted.budget = 179;
    PlayedTransmitter enough(leakage);
    run(wanted, enough);
    EXPECT_EQ(enough.searches, 1);
}

TEST_F(FitTest, ProbesOfASearchCount) {
    leakage.detector.high = 1000;
    Order wanted = order();
    PlayedTransmitter played(leakage);
    played.knows = true;
    played.probesOfSearch = 160;
    const Outcome outcome = run(wanted, played);
    EXPECT_GE(played.searches, 1);
    EXPECT_EQ(outcome.probes, played.probes().size() + 160U * static_cast<unsigned>(played.searches));
    EXPECT_LE(outcome.probes, 400U);
}

TEST_F(FitTest, WhatCannotBeCancelledBelongsToTheClaim) {
    // Nobody knows whether -72 dBc at the bottoms leak, or whether the detector shows them by itself.
    leakage.detector.floor = -72.0;
    Order wanted = order();
    wanted.detector.floor = std::nullopt;
    PlayedTransmitter played(leakage);
    const Outcome outcome = run(wanted, played);
    EXPECT_EQ(outcome.verdict, Verdict::missed);
    ASSERT_TRUE(outcome.claim);
    EXPECT_GT(outcome.claim->level, -72.0);
    EXPECT_LT(outcome.claim->level, -69.0);
}

TEST_F(FitTest, PlaceThatCannotBeTriedIsNotPassed) {
    PlayedTransmitter found(leakage);
    const Outcome whole = run(order(), found);
    ASSERT_EQ(whole.verdict, Verdict::held);
    const Place tried = whole.verifications.front().place;
    PlayedTransmitter played(leakage);
    played.unreachable = tried.carrier;
    const Outcome outcome = run(order(), played);
    EXPECT_EQ(outcome.verdict, Verdict::missed);
    EXPECT_EQ(outcome.reason, "the point at " + std::to_string(tried.carrier) + " kHz, " +
                                  std::to_string(tried.temperature) +
                                  " degrees failed: the place cannot be had");
}

TEST_F(FitTest, ReadingThatFailsWhileTheTableIsTriedIsNotPassed) {
    const Outcome whole = run();
    PlayedTransmitter played(leakage);
    played.readable = whole.probes - 1;
    const Outcome outcome = run(order(), played);
    EXPECT_EQ(outcome.verdict, Verdict::missed);
    EXPECT_THAT(outcome.reason, HasSubstr("failed: the detector could not be read"));
}

TEST_F(FitTest, WhatIsInterruptedIsNoFailedPoint) {
    PlayedTransmitter played(leakage);
    played.patience = 50;
    for (const Point& point : run(order(), played).points) {
        EXPECT_EQ(point.state, PointState::good);
    }
}

TEST_F(FitTest, FirstPointThatFailsIsAmongThePoints) {
    PlayedTransmitter played(leakage);
    played.readable = 0;
    const Outcome outcome = run(order(), played);
    ASSERT_THAT(outcome.points, SizeIs(1));
    EXPECT_EQ(outcome.points[0].state, PointState::failed);
    EXPECT_EQ(outcome.points[0].place.carrier, 18'195'000U);
    EXPECT_EQ(outcome.points[0].remark, "the detector could not be read");
}

TEST_F(FitTest, NothingIsClaimedThatIsMoreThanThereIsToCancel) {
    Order wanted = order();
    wanted.budget = 45;
    PlayedTransmitter played(leakage);
    const Outcome outcome = run(wanted, played);
    // One point at one end of the range, which leaks -25 dBc: of the other end nothing is known.
    EXPECT_EQ(outcome.verdict, Verdict::missed);
    EXPECT_NEAR(outcome.points.at(0).uncorrected.value_or(0.0), -25.0, 3.0);
    EXPECT_FALSE(outcome.claim);
}

TEST_F(FitTest, WrongSlopeFailsByName) {
    Order wanted = order();
    wanted.detector.slope = 20.0;
    PlayedTransmitter played(leakage);
    const Outcome outcome = run(wanted, played);
    EXPECT_EQ(outcome.verdict, Verdict::failed);
    EXPECT_THAT(outcome.reason, HasSubstr("units for each dB, not the 20.0 described"));
}

TEST_F(FitTest, BottomBeyondARangeIsSaid) {
    leakage.i.low = -400;
    leakage.i.high = 400;
    PlayedTransmitter played(leakage);
    const Outcome outcome = run(order(), played);
    EXPECT_NE(outcome.verdict, Verdict::held);
    EXPECT_THAT(outcome.reason, HasSubstr("beyond what can be set"));
}

TEST_F(FitTest, RangeThatEndsUnseenIsNotPassed) {
    Nastiness nastiness;
    nastiness.hiddenLow = -100;
    nastiness.hiddenHigh = 100;
    PlayedTransmitter played(leakage, nastiness);
    const Outcome outcome = run(order(), played);
    EXPECT_NE(outcome.verdict, Verdict::held);
    EXPECT_FALSE(outcome.reason.empty());
}

TEST_F(FitTest, OneTemperatureWillDo) {
    Order wanted = order();
    wanted.lowTemperature = wanted.highTemperature = wanted.startTemperature = 25;
    PlayedTransmitter played(leakage);
    const Outcome outcome = run(wanted, played);
    EXPECT_EQ(outcome.verdict, Verdict::held) << outcome.reason;
    EXPECT_EQ(outcome.temperatureChanges, 1U);
    EXPECT_LT(outcome.probes, 120U);
    EXPECT_LT(played.worst(wanted, outcome.table, 500), outcome.claim->level);
}

TEST_F(FitTest, VerificationsAreAtPlacesThatWereNotFitted) {
    const Outcome outcome = run();
    EXPECT_GE(outcome.verifications.size(), 16U);
    for (const Verification& tried : outcome.verifications) {
        EXPECT_TRUE(tried.isAsForetold);
        EXPECT_LT(tried.level, -74.0);
        for (const Point& point : outcome.points) {
            EXPECT_FALSE(point.place.carrier == tried.place.carrier &&
                         point.place.temperature == tried.place.temperature);
        }
    }
}

TEST_F(FitTest, OrderThatMakesNoSenseIsRefused) {
    PlayedTransmitter played(leakage);
    Order wrong = order();
    wrong.lowCarrier = 0;
    EXPECT_THROW(run(wrong, played), std::invalid_argument);
    wrong = order();
    wrong.lowTemperature = 56;
    EXPECT_THROW(run(wrong, played), std::invalid_argument);
    wrong = order();
    wrong.i.step = 0;
    EXPECT_THROW(run(wrong, played), std::invalid_argument);
    wrong = order();
    wrong.detector.slope = 0.0;
    EXPECT_THROW(run(wrong, played), std::invalid_argument);
    wrong = order();
    wrong.mostTemperatures = 1;
    EXPECT_THROW(run(wrong, played), std::invalid_argument);
    EXPECT_THAT(played.probes(), IsEmpty());
}

} // namespace
} // namespace Radio::Fit
