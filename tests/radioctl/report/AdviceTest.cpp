#include "radioctl/report/Output.h"

#include <gtest/gtest.h>

#include <string>

namespace Radio {
namespace {

std::string advice(const std::string& choice, const std::string& among = {}) {
    return adviceOf(ChoiceError({"x", 0}, "wrong", choice, among));
}

TEST(AdviceTest, WhatTheBoardLacksCanBeAnOption) {
    EXPECT_EQ(advice("band"), ", or --band");
    EXPECT_EQ(advice("step"), ", or --step");
    EXPECT_EQ(advice("temperatures"), ", or --temperatures");
}

TEST(AdviceTest, TablesCanGoElsewhere) {
    EXPECT_EQ(advice("tables"), ", or --out");
}

TEST(AdviceTest, ValuesToChooseFromAreNamed) {
    EXPECT_EQ(advice("channel", "one of those of b: 1, 2"), ", or --channel with one of those of b: 1, 2");
}

TEST(AdviceTest, JournalOfAnotherCalibrationCanBePutAway) {
    EXPECT_EQ(advice("restart"), "; --restart begins anew");
}

TEST(AdviceTest, JournalOfHardwareGoesOnThere) {
    EXPECT_EQ(advice("hardware or restart"), "; --hardware goes on with it, --restart begins anew");
}

TEST(AdviceTest, UnfinishedJournalCanGoOnOrBePutAway) {
    EXPECT_EQ(advice("resume or restart"),
              "; --resume goes on with it, --restart keeps it as a backup and begins anew");
}

TEST(AdviceTest, WhatIsNoJournalCanBePutAway) {
    EXPECT_EQ(advice("put away"), "; --restart keeps it as a backup and begins anew");
}

TEST(AdviceTest, StandsBehindTheMessage) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(refusing(false, []() -> int { throw ChoiceError({"x", 3}, "no band", "band"); }), 3);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "radioctl: x:3: no band, or --band\n");
}

} // namespace
} // namespace Radio
