#include "radio/text/Words.h"

#include <gtest/gtest.h>

namespace Radio {
namespace {

TEST(Harmless, ValueOfAStringInJsonStaysWhatItWas) {
    EXPECT_EQ(harmlessJson("{\"K\xC3\xB6ln\":\"a\xC2\x9B\"}"), "{\"K\xC3\xB6ln\":\"a\\u009b\"}");
    EXPECT_EQ(harmlessJson("\xE2\x80\xAE\xD8\x9C\x7f"), "\\u202e\\u061c\\u007f");
}

TEST(Harmless, WhatWentThroughOnceIsNotChangedAnyMore) {
    const std::string once = harmless("a\x1b\xC2\x9B\xE2\x80\xAE\xFF\\x1b");
    EXPECT_EQ(once, "a\\x1b\\xc2\\x9b\\xe2\\x80\\xae\\xff\\x1b");
    EXPECT_EQ(harmless(once), once);
}

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

TEST(Harmless, TextIsLeftAsItIs) {
    EXPECT_EQ(harmless("channel.1 <- 7442000"), "channel.1 <- 7442000");
    EXPECT_EQ(harmless("K\xC3\xB6ln \xE2\x82\xAC \xF0\x9F\x93\xA1"),
              "K\xC3\xB6ln \xE2\x82\xAC \xF0\x9F\x93\xA1");
    EXPECT_EQ(harmless("\xC2\xA0 \xEF\xBF\xBD \xF4\x8F\xBF\xBF"), "\xC2\xA0 \xEF\xBF\xBD \xF4\x8F\xBF\xBF");
}

TEST(Harmless, ControlCharactersAreShownAsTheirBytes) {
    EXPECT_EQ(harmless("\x1b[31m\x7f"), "\\x1b[31m\\x7f");
    // CSI as one character, and the first and the last of its kind.
    EXPECT_EQ(harmless("\xC2\x9B"
                       "31m \xC2\x80\xC2\x9F"),
              "\\xc2\\x9b31m \\xc2\\x80\\xc2\\x9f");
}

TEST(Harmless, MarksOfDirectionAreShownAsTheirBytes) {
    EXPECT_EQ(harmless("a\xE2\x80\xAA\xE2\x80\xAE"), "a\\xe2\\x80\\xaa\\xe2\\x80\\xae"); // 202A, 202E
    EXPECT_EQ(harmless("\xE2\x81\xA6\xE2\x81\xA9"), "\\xe2\\x81\\xa6\\xe2\\x81\\xa9");   // 2066, 2069
    EXPECT_EQ(harmless("\xE2\x80\x8E\xE2\x80\x8F"), "\\xe2\\x80\\x8e\\xe2\\x80\\x8f");   // 200E, 200F
    EXPECT_EQ(harmless("\xD8\x9C"), "\\xd8\\x9c");                                       // 061C
}

TEST(Harmless, SeparatorsOfLinesAreShownAsTheirBytes) {
    EXPECT_EQ(harmless("\xE2\x80\xA8\xE2\x80\xA9"), "\\xe2\\x80\\xa8\\xe2\\x80\\xa9"); // 2028, 2029
}

TEST(Harmless, WhatIsNoUtf8IsShownAsItsBytes) {
    EXPECT_EQ(harmless("a\x9B"
                       "b"),
              "a\\x9bb");                                            // nothing before it
    EXPECT_EQ(harmless("\xC3"), "\\xc3");                            // nothing behind it
    EXPECT_EQ(harmless("\xE2\x82x"), "\\xe2\\x82x");                 // not all of it
    EXPECT_EQ(harmless("\xC0\x9B"), "\\xc0\\x9b");                   // ESC, too long
    EXPECT_EQ(harmless("\xE0\x82\x9B"), "\\xe0\\x82\\x9b");          // CSI, too long
    EXPECT_EQ(harmless("\xED\xA0\x80"), "\\xed\\xa0\\x80");          // half of a pair
    EXPECT_EQ(harmless("\xF4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80"); // 110000
    EXPECT_EQ(harmless("\xFF"), "\\xff");
}

TEST(InQuotes, LongWordIsCutBetweenTwoCharacters) {
    const std::string before(59, 'a');
    EXPECT_EQ(inQuotes(before + "\xC3\xB6"), '"' + before + "...\"");
    EXPECT_EQ(inQuotes(before + "b"), '"' + before + "b\"");
}

} // namespace
} // namespace Radio
