#include "radio/laboratory/Study.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace Radio::Laboratory {
namespace {

using testing::ElementsAre;
using testing::Optional;

/** Two sets of settings, "a" and "b". */
Heading heading(std::uint32_t count, double mostFailures) {
    Heading result;
    result.version = "0.2.0";
    result.fingerprint = "0123456789abcdef";
    result.name = "Test radio";
    result.channel = 1;
    result.count = count;
    result.seed = 1;
    result.mostFailures = mostFailures;
    result.settings = {{"a", "fit", "{}"}, {"b", "search", "{}"}};
    return result;
}

Trial trial(std::uint32_t transmitter, std::uint32_t settings, std::uint64_t probes, double seconds,
            TrialEnd end = TrialEnd::held) {
    Trial result;
    result.task = {transmitter, settings};
    result.end = end;
    result.probes = probes;
    result.seconds = seconds;
    if (end == TrialEnd::held || end == TrialEnd::missed) {
        result.worst = -70.0 - transmitter;
    }
    return result;
}

TEST(QuantilesTest, AreTheValuesAtTheirRanksRoundedUp) {
    std::vector<std::optional<double>> values;
    for (int n = 10; n >= 1; --n) {
        values.emplace_back(n);
    }
    // Of ten values the 5th, the 9th, and for 99 % the 10th.
    EXPECT_THAT(quantilesOf(values),
                ElementsAre(Optional(5.0), Optional(9.0), Optional(10.0), Optional(10.0)));
    values.clear();
    for (int n = 1; n <= 201; ++n) {
        values.emplace_back(n);
    }
    // 100.5, 180.9, 198.99 and 201, rounded up.
    EXPECT_THAT(quantilesOf(values),
                ElementsAre(Optional(101.0), Optional(181.0), Optional(199.0), Optional(201.0)));
}

TEST(QuantilesTest, WhatIsNotKnownIsAboveAllOthers) {
    EXPECT_THAT(quantilesOf({std::nullopt, -80.0}),
                ElementsAre(Optional(-80.0), std::nullopt, std::nullopt, std::nullopt));
    EXPECT_THAT(quantilesOf({}), ElementsAre(std::nullopt, std::nullopt, std::nullopt, std::nullopt));
}

TEST(TallyTest, FailuresAreAllThatAreNotHeldWithTheRangeOfWilson) {
    Tally tally;
    tally.transmitters = 100;
    tally.ends = {{TrialEnd::held, 90}, {TrialEnd::missed, 6}, {TrialEnd::refused, 4}};
    EXPECT_EQ(tally.failures(), 10U);
    EXPECT_DOUBLE_EQ(tally.failurePart(), 0.1);
    // (0.1 + 3.84146/200 -+ 1.96 sqrt(0.09/100 + 3.84146/40000)) / (1 + 0.0384146)
    EXPECT_NEAR(tally.failureRange().first, 0.05523, 5e-5);
    EXPECT_NEAR(tally.failureRange().second, 0.17437, 5e-5);
}

TEST(StudyOfALaboratoryTest, RecommendsTheQuickestOfThoseThatFailSeldomEnough) {
    Results results{heading(2, 0.0), {}, {}};
    results.trials = {trial(0, 0, 300, 3.0), trial(0, 1, 2700, 14.0), trial(1, 0, 310, 3.5),
                      trial(1, 1, 2700, 14.5)};
    const Study study = studyOf(results);
    EXPECT_EQ(study.recommended, 0U);
    EXPECT_FALSE(study.isNoneGood);
    EXPECT_EQ(study.reason,
              "0 of 2 transmitters (0.00 %) fail, where 0.00 % may, and nine of ten are done in 3.50 s; "
              "b: 14.5 s");
    EXPECT_EQ(study.tallies[0].allProbes, 610U);
    EXPECT_THAT(study.tallies[0].worst,
                ElementsAre(Optional(-71.0), Optional(-70.0), Optional(-70.0), Optional(-70.0)));
}

TEST(StudyOfALaboratoryTest, PassesOverQuickOnesThatFailTooOften) {
    Results results{heading(2, 0.25), {}, {}};
    results.trials = {trial(0, 0, 300, 3.0), trial(0, 1, 2700, 14.0), trial(1, 0, 310, 3.5, TrialEnd::failed),
                      trial(1, 1, 2700, 14.5)};
    const Study study = studyOf(results);
    EXPECT_EQ(study.recommended, 1U);
    EXPECT_EQ(study.reason, "0 of 2 transmitters (0.00 %) fail, where 25.00 % may, and nine of ten are done "
                            "in 14.5 s; a: 1 of 2 transmitters (50.00 %) fail");
    EXPECT_THAT(study.tallies[0].worst,
                ElementsAre(Optional(-70.0), std::nullopt, std::nullopt, std::nullopt));
}

TEST(StudyOfALaboratoryTest, WhereAllFailTooOftenTheFewestFailuresAreBest) {
    Results results{heading(2, 0.0), {}, {}};
    results.trials = {trial(0, 0, 300, 3.0, TrialEnd::missed), trial(0, 1, 2700, 14.0),
                      trial(1, 0, 310, 3.5, TrialEnd::edge), trial(1, 1, 2700, 14.5, TrialEnd::refused)};
    const Study study = studyOf(results);
    EXPECT_TRUE(study.isNoneGood);
    EXPECT_EQ(study.recommended, 1U);
    EXPECT_EQ(study.reason, "more than 0.00 % fail with all settings; with these it is fewest, 1 of 2 "
                            "transmitters (50.00 %)");
}

TEST(StudyOfALaboratoryTest, OfEqualTimesFewerProbesAreBetterAndOfEqualOnesTheFirst) {
    Results results{heading(1, 0.0), {}, {}};
    results.trials = {trial(0, 0, 300, 3.0), trial(0, 1, 299, 3.0)};
    EXPECT_EQ(studyOf(results).recommended, 1U);
    results.trials = {trial(0, 0, 300, 3.0), trial(0, 1, 300, 3.0)};
    EXPECT_EQ(studyOf(results).recommended, 0U);
}

TEST(DurationTest, IsInTheUnitThatFits) {
    EXPECT_EQ(durationText(1.234), "1.23 s");
    EXPECT_EQ(durationText(14.52), "14.5 s");
    EXPECT_EQ(durationText(185.2), "3 min 5 s");
    EXPECT_EQ(durationText(7440.0), "2 h 4 min");
}

} // namespace
} // namespace Radio::Laboratory
