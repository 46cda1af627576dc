#include "radio/text/Words.h"

#include <gtest/gtest.h>

namespace Radio {
namespace {

TEST(Decimals, AreAsManyAsAreAskedFor) {
    EXPECT_EQ(inDecimals(-71.236, 1), "-71.2");
    EXPECT_EQ(inDecimals(3.0, 3), "3.000");
    EXPECT_EQ(inTwoDecimals(-71.236), "-71.24");
}

TEST(Decimals, WhatIsRoundedTo0HasNoSign) {
    EXPECT_EQ(inTwoDecimals(-0.004), "0.00");
    EXPECT_EQ(inTwoDecimals(-0.0), "0.00");
    EXPECT_EQ(inTwoDecimals(-0.006), "-0.01");
    EXPECT_EQ(inDecimals(-0.4, 0), "0");
}

TEST(Decimals, LargestNumberHasThemToo) {
    const std::string text = inTwoDecimals(1e308);
    EXPECT_EQ(text.size(), 312U);
    EXPECT_EQ(text.substr(309), ".00");
}

TEST(Level, HasItsUnit) {
    EXPECT_EQ(levelText(-71.236), "-71.24 dBc");
}

} // namespace
} // namespace Radio
