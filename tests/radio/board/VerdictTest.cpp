#include "radio/board/Verdict.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string_view>

namespace Radio {
namespace {

using testing::ElementsAre;

JudgedLimit judged(std::string_view name, double limit, std::optional<double> found) {
    JudgedLimit result{name, limit};
    result.found = found;
    result.frequency = 18000000;
    result.temperature = -22;
    return result;
}

TEST(Verdict, PassesWhenEachLimitIsHeld) {
    const Verdict verdict{{judged("leakage_at_nodes", -70, -77.28), judged("leakage_improvement", 30, 51.1)}};
    EXPECT_EQ(verdict.kind(), VerdictKind::pass);
    EXPECT_THAT(linesOf(verdict),
                ElementsAre("PASS: leakage at the nodes -77.28 dBc (limit -70), improvement "
                            "51.10 dB (limit 30)"));
}

TEST(Verdict, FailsWhenOneLimitIsNotAndNamesCarrierAndTemperature) {
    const Verdict verdict{{judged("leakage", -74, -55.56), judged("leakage_at_nodes", -70, -77.28)}};
    EXPECT_EQ(verdict.kind(), VerdictKind::fail);
    EXPECT_THAT(linesOf(verdict),
                ElementsAre("FAIL: leakage anywhere -55.56 dBc at 18000000 kHz, -22 degrees, limit -74",
                            "Held: leakage at the nodes -77.28 dBc (limit -70)"));
}

TEST(Verdict, EachLimitThatIsNotHeldHasALine) {
    JudgedLimit image = judged("image", -70.5, -60.0);
    image.channel = 2;
    const Verdict verdict{{image, judged("carrier_leakage", -75, -74.99)}};
    EXPECT_THAT(linesOf(verdict),
                ElementsAre("FAIL: image -60.00 dBc of channel 2 at 18000000 kHz, -22 degrees, limit -70.5",
                            "FAIL: carrier leakage -74.99 dBc at 18000000 kHz, -22 degrees, limit -75"));
}

TEST(Verdict, WhatIsNotKnownIsNotPassed) {
    JudgedLimit unknown{"leakage", -74};
    unknown.whyUnknown = "nobody knows in dBc what leaks";
    EXPECT_FALSE(unknown.isHeld());
    EXPECT_THAT(linesOf({{unknown}}),
                ElementsAre("FAIL: leakage anywhere unknown, limit -74: nobody knows in dBc what leaks"));
}

TEST(Verdict, ClaimsNothingWithoutLimits) {
    const Verdict verdict{{}, "the board states no leakage in its [limits]"};
    EXPECT_EQ(verdict.kind(), VerdictKind::none);
    EXPECT_THAT(linesOf(verdict), ElementsAre("NO VERDICT: the board states no leakage in its [limits]"));
}

TEST(Verdict, ALimitIsHeldByWhatMeetsItExactly) {
    EXPECT_TRUE(judged("leakage", -70, -70.0).isHeld());
    EXPECT_FALSE(judged("leakage", -70, -69.99).isHeld());
    EXPECT_TRUE(judged("leakage_improvement", 30, 30.0).isHeld());
    EXPECT_FALSE(judged("leakage_improvement", 30, 29.99).isHeld());
}

TEST(Verdict, LevelsAreJudgedAsTheyAreShown) {
    EXPECT_EQ(toHundredth(-69.996), -70.0);
    EXPECT_EQ(toHundredth(29.994), 29.99);
}

} // namespace
} // namespace Radio
