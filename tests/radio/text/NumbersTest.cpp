#include "radio/text/Numbers.h"

#include <gtest/gtest.h>

#include <string>

namespace Radio {
namespace {

TEST(Numbers, IsAllOfTheText) {
    EXPECT_EQ(parseNumber<int>("-15"), -15);
    EXPECT_EQ(parseNumber<double>("-.75"), -0.75);
    for (const char* const text : {"", "-", "--5", "+5", " 5", "5 ", "5\r", "0x5", "5,", "five"}) {
        EXPECT_EQ(parseNumber<int>(text), std::nullopt) << text;
        EXPECT_EQ(parseNumber<double>(text), std::nullopt) << text;
    }
    EXPECT_EQ(parseNumber<int>(std::string_view("5\0", 2)), std::nullopt);
    EXPECT_EQ(parseNumber<int>("5.0"), std::nullopt);
}

TEST(Numbers, IsWithinTheRangeOfItsType) {
    EXPECT_EQ(parseNumber<std::int32_t>("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(parseNumber<std::int32_t>("2147483648"), std::nullopt);
    EXPECT_EQ(parseNumber<std::uint32_t>("0000000000004294967295"), 4294967295U);
    EXPECT_EQ(parseNumber<std::uint32_t>("4294967296"), std::nullopt);
    EXPECT_EQ(parseNumber<std::uint32_t>("-0"), std::nullopt);
    EXPECT_EQ(parseNumber<double>("1e999"), std::nullopt);
}

TEST(Numbers, IsWithinLimits) {
    EXPECT_EQ(parseNumber("7", 7, 9), 7);
    EXPECT_EQ(parseNumber("9", 7, 9), 9);
    EXPECT_EQ(parseNumber("6", 7, 9), std::nullopt);
    EXPECT_EQ(parseNumber("10", 7, 9), std::nullopt);
    EXPECT_EQ(parseNumber("-0.5", -0.5, 0.5), -0.5);
    EXPECT_EQ(parseNumber("0.51", -0.5, 0.5), std::nullopt);
}

TEST(Numbers, WhatIsNoNumberOrHasNoEndIsNotWithinAnyLimits) {
    for (const char* const text : {"nan", "-nan", "inf", "-inf", "infinity"}) {
        EXPECT_EQ(parseNumber<double>(text), std::nullopt) << text;
    }
}

TEST(Numbers, FormatSaysWhetherThereMayBeAnExponent) {
    EXPECT_EQ(parseNumber<double>("5e-1"), 0.5);
    EXPECT_EQ(parseNumber("0.5", -1.0, 1.0, std::chars_format::fixed), 0.5);
    EXPECT_EQ(parseNumber("5e-1", -1.0, 1.0, std::chars_format::fixed), std::nullopt);
}

TEST(Numbers, PlusIsTakenFromTheFrontOnce) {
    EXPECT_EQ(withoutPlus("+5"), "5");
    EXPECT_EQ(withoutPlus("5"), "5");
    EXPECT_EQ(withoutPlus("++5"), "+5");
    EXPECT_EQ(withoutPlus("+"), "");
    EXPECT_EQ(withoutPlus("+-5"), "+-5");
}

TEST(Numbers, IntegerMayBeHexadecimal) {
    EXPECT_EQ(parseInteger("-15"), -15);
    EXPECT_EQ(parseInteger("0x1F"), 31);
    EXPECT_EQ(parseInteger("0X1f"), 31);
    EXPECT_EQ(parseInteger("-0x10"), -16);
    for (const char* const word :
         {"", "-", "0x", "-0x", "x1F", "1F", "0x-1", "0x0x1", "--0x1", "+0x1", "0xG"}) {
        EXPECT_EQ(parseInteger(word), std::nullopt) << word;
    }
}

TEST(Numbers, HexadecimalIntegerReachesBothEnds) {
    EXPECT_EQ(parseInteger("0x7FFFFFFFFFFFFFFF"), 9223372036854775807);
    EXPECT_EQ(parseInteger("0x8000000000000000"), std::nullopt);
    EXPECT_EQ(parseInteger("-0x8000000000000000"), -9223372036854775807 - 1);
    EXPECT_EQ(parseInteger("-0x8000000000000001"), std::nullopt);
    EXPECT_EQ(parseInteger("-9223372036854775808"), -9223372036854775807 - 1);
    EXPECT_EQ(parseInteger("9223372036854775808"), std::nullopt);
}

TEST(Numbers, OptionMayHaveBlanksAPlusOrABaseInFront) {
    for (const char* const word : {"0.75", " \t0.75", "+0.75", "7.5e-1", "0x.C", "0x3p-2"}) {
        EXPECT_EQ(parseOption(word), 0.75) << word;
    }
    for (const char* const word : {"", " ", "0.75 ", "0,75", "+ 0.75", "+-0.75", "0x", "three"}) {
        EXPECT_EQ(parseOption(word), std::nullopt) << word;
    }
}

} // namespace
} // namespace Radio
