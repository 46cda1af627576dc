#include "radio/text/Frequency.h"

#include "radio/text/WordError.h"

#include <gtest/gtest.h>

#include <string>

namespace Radio {
namespace {

std::string complaintAboutFrequency(const std::string& number, const std::string& unit = "") {
    try {
        parseFrequency(number, unit);
    } catch (const WordError& error) {
        return error.what();
    }
    return "";
}

TEST(Frequency, IsInKhzWithoutUnit) {
    EXPECT_EQ(parseFrequency("7442000", ""), 7442000U);
}

TEST(Frequency, TakesUnitsInAnyCase) {
    EXPECT_EQ(parseFrequency("7442000", "kHz"), 7442000U);
    EXPECT_EQ(parseFrequency("7442", "mhz"), 7442000U);
    EXPECT_EQ(parseFrequency("7", "GHZ"), 7000000U);
}

TEST(Frequency, TakesUnitBehindNumberWithoutSpace) {
    EXPECT_EQ(parseFrequency("7442.5MHz", ""), 7442500U);
}

TEST(Frequency, KeepsDecimalFractionsExactlyToTheKhz) {
    EXPECT_EQ(parseFrequency("7442.001", "MHz"), 7442001U);
    EXPECT_EQ(parseFrequency("0.000001", "GHz"), 1U);
}

TEST(Frequency, ReachesTheLargestNumberOf32Bits) {
    EXPECT_EQ(parseFrequency("4294967295", ""), 4294967295U);
    EXPECT_EQ(parseFrequency("4294967.295", "MHz"), 4294967295U);
}

TEST(Frequency, IgnoresZerosBehindTheLastPlace) {
    EXPECT_EQ(parseFrequency("7442000.000", ""), 7442000U);
    EXPECT_EQ(parseFrequency("7442.50000", "MHz"), 7442500U);
}

TEST(Frequency, RefusesFractionOfAKhz) {
    EXPECT_EQ(complaintAboutFrequency("7442000.5"),
              "\"7442000.5\" has a fraction of a kHz, expected whole kHz");
    EXPECT_EQ(complaintAboutFrequency("7442.0005", "MHz"),
              "\"7442.0005 MHz\" has a fraction of a kHz, expected whole kHz");
}

TEST(Frequency, RefusesMoreThan32Bits) {
    EXPECT_EQ(complaintAboutFrequency("4294967296"),
              "\"4294967296\" is too high, expected at most 4294967295 kHz");
    EXPECT_EQ(complaintAboutFrequency("99999999999999999999", "GHz"),
              "\"99999999999999999999 GHz\" is too high, expected at most 4294967295 kHz");
}

TEST(Frequency, RefusesWhatIsNoNumber) {
    const std::string expected =
        " is not a frequency, expected a decimal number of kHz, or with kHz, MHz or GHz";
    for (const char* const word :
         {"high", "-7442", "7442.", ".5", "7.4.4", "", "7,442", "+5", "0xFFFFFFFF", "1e6", "7THz"}) {
        EXPECT_EQ(complaintAboutFrequency(word), "\"" + std::string(word) + "\"" + expected);
    }
}

TEST(Frequency, RefusesUnknownUnit) {
    EXPECT_EQ(complaintAboutFrequency("7", "THz"), "unknown unit \"THz\", expected kHz, MHz or GHz");
}

} // namespace
} // namespace Radio
