#include "radioctl/options/Values.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Radio {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/** The words behind the name of a program that is called with `words`. */
std::vector<std::string> wordsOf(const std::vector<const char*>& words) {
    std::vector<const char*> arguments{"radioctl"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    return withUnitsJoined(static_cast<int>(arguments.size()), arguments.data());
}

TEST(UnitsJoined, NameOfTheProgramIsLeftOut) {
    EXPECT_THAT(wordsOf({}), IsEmpty());
    EXPECT_THAT(wordsOf({"run", "radio.toml"}), ElementsAre("run", "radio.toml"));
}

TEST(UnitsJoined, FrequencyAndItsUnitAreOneWord) {
    EXPECT_THAT(wordsOf({"plan", "--tx", "18", "GHz", "radio.toml"}),
                ElementsAre("plan", "--tx", "18GHz", "radio.toml"));
    EXPECT_THAT(wordsOf({"--tx", "18.5", "ghz", "--rx", "17300", "MHz"}),
                ElementsAre("--tx", "18.5ghz", "--rx", "17300MHz"));
}

TEST(UnitsJoined, EachOptionThatTakesAFrequencyHasItsUnit) {
    EXPECT_THAT(wordsOf({"--rx", "1", "kHz"}), ElementsAre("--rx", "1kHz"));
    EXPECT_THAT(wordsOf({"--carrier", "1", "kHz"}), ElementsAre("--carrier", "1kHz"));
    EXPECT_THAT(wordsOf({"--frequency", "1", "kHz"}), ElementsAre("--frequency", "1kHz"));
}

TEST(UnitsJoined, BandHasTwoFrequenciesEachWithItsUnit) {
    EXPECT_THAT(wordsOf({"--band", "17.7", "GHz", "19.7", "GHz", "--step", "28", "MHz", "radio.toml"}),
                ElementsAre("--band", "17.7GHz", "19.7GHz", "--step", "28MHz", "radio.toml"));
    EXPECT_THAT(wordsOf({"--band", "17700000", "19.7", "GHz", "MHz"}),
                ElementsAre("--band", "17700000", "19.7GHz", "MHz"));
    EXPECT_THAT(wordsOf({"--band", "17.7GHz", "--channel", "1", "GHz"}),
                ElementsAre("--band", "17.7GHz", "--channel", "1", "GHz"));
}

TEST(UnitsJoined, FrequencyBehindAnEqualsSignHasItsUnitToo) {
    EXPECT_THAT(wordsOf({"--tx=18", "GHz", "GHz"}), ElementsAre("--tx=18GHz", "GHz"));
    EXPECT_THAT(wordsOf({"--band=17.7", "GHz", "19.7", "GHz", "GHz"}),
                ElementsAre("--band=17.7GHz", "19.7GHz", "GHz"));
}

TEST(UnitsJoined, WordBehindAnotherOptionStaysAlone) {
    EXPECT_THAT(wordsOf({"--channel", "1", "MHz"}), ElementsAre("--channel", "1", "MHz"));
    EXPECT_THAT(wordsOf({"18", "GHz"}), ElementsAre("18", "GHz"));
}

TEST(UnitsJoined, WordThatIsNoUnitStaysAlone) {
    EXPECT_THAT(wordsOf({"--tx", "18", "THz"}), ElementsAre("--tx", "18", "THz"));
    EXPECT_THAT(wordsOf({"--tx", "18000000", "radio.toml"}), ElementsAre("--tx", "18000000", "radio.toml"));
}

TEST(UnitsJoined, UnitWithoutANumberStaysAlone) {
    EXPECT_THAT(wordsOf({"--tx", "GHz"}), ElementsAre("--tx", "GHz"));
    EXPECT_THAT(wordsOf({"GHz"}), ElementsAre("GHz"));
}

TEST(FrequencyWord, KiloHertzOrAUnitBehindTheNumber) {
    EXPECT_EQ(whyNoFrequency("7442000"), "");
    EXPECT_EQ(whyNoFrequency("18GHz"), "");
    EXPECT_EQ(whyNoFrequency("7442.5mhz"), "");
    EXPECT_EQ(whyNoFrequency("4294967295"), "");
}

TEST(FrequencyWord, SaysWhatIsExpected) {
    const std::string expected =
        " is not a frequency, expected a decimal number of kHz, or with kHz, MHz or GHz";
    EXPECT_EQ(whyNoFrequency("fast"), "\"fast\"" + expected);
    EXPECT_EQ(whyNoFrequency("18THz"), "\"18THz\"" + expected);
    EXPECT_EQ(whyNoFrequency("-18GHz"), "\"-18GHz\"" + expected);
    EXPECT_EQ(whyNoFrequency(""), "\"\"" + expected);
}

TEST(FrequencyWord, WholeKiloHertzOf32Bits) {
    EXPECT_EQ(whyNoFrequency("0.0005MHz"), "\"0.0005MHz\" has a fraction of a kHz, expected whole kHz");
    EXPECT_EQ(whyNoFrequency("4294967296"), "\"4294967296\" is too high, expected at most 4294967295 kHz");
}

} // namespace
} // namespace Radio
