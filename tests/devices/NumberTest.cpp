#include "DevicesFixture.h"

namespace {

using Devices::Conversion;
using Devices::textFor;
using Devices::valueOf;
using Rounding = Conversion::Rounding;

struct TextCase {
    std::int64_t value;
    Conversion conversion;
    std::string text;
};

void PrintTo(const TextCase& tried, std::ostream* out) {
    static constexpr const char* words[] = {"to the nearest", "down", "up"};
    *out << tried.value << ' ' << words[static_cast<int>(tried.conversion.rounding)] << " gives "
         << tried.text;
}

class TextForTest : public ::testing::TestWithParam<TextCase> {};

TEST_P(TextForTest, IsTheAttributesNumber) {
    EXPECT_EQ(textFor(GetParam().value, GetParam().conversion), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Scales, TextForTest,
                         ::testing::Values(TextCase{0, {}, "0"}, TextCase{-5, {}, "-5"},
                                           TextCase{6300000, {1000}, "6300000000"},
                                           TextCase{80'000'000, {1000}, "80000000000"},
                                           TextCase{7, {1, -10}, "-3"}, TextCase{25, {0.5, 100}, "113"},
                                           TextCase{3, {-2}, "-6"},
                                           TextCase{9007199254740992, {}, "9007199254740992"}));

INSTANTIATE_TEST_SUITE_P(Decimals, TextForTest,
                         ::testing::Values(TextCase{6300000, {0.001, 0, Rounding::nearest, 3}, "6300.000"},
                                           TextCase{6300001, {0.001, 0, Rounding::nearest, 3}, "6300.001"},
                                           TextCase{5, {0.001, 0, Rounding::nearest, 3}, "0.005"},
                                           TextCase{-5, {0.001, 0, Rounding::nearest, 2}, "-0.01"},
                                           TextCase{-4, {0.001, 0, Rounding::nearest, 2}, "0.00"},
                                           TextCase{
                                               6300000, {1e-6, 0, Rounding::nearest, 9}, "6.300000000"}));

// The value times 0.05, with one decimal: 0.05, 0.15, 0.25, 0.35 have halves of a tenth that no binary
// fraction has.
INSTANTIATE_TEST_SUITE_P(HalvesGoAwayFromZero, TextForTest,
                         ::testing::Values(TextCase{1, {0.05, 0, Rounding::nearest, 1}, "0.1"},
                                           TextCase{3, {0.05, 0, Rounding::nearest, 1}, "0.2"},
                                           TextCase{5, {0.05, 0, Rounding::nearest, 1}, "0.3"},
                                           TextCase{7, {0.05, 0, Rounding::nearest, 1}, "0.4"},
                                           TextCase{-3, {0.05, 0, Rounding::nearest, 1}, "-0.2"},
                                           TextCase{201, {0.005, 0, Rounding::nearest, 2}, "1.01"}, // 1.005
                                           TextCase{1, {0.5}, "1"}, TextCase{-1, {0.5}, "-1"},
                                           TextCase{5, {0.25}, "1"}, TextCase{7, {0.25}, "2"}));

INSTANTIATE_TEST_SUITE_P(
    DownIsTowardsMinusInfinityAndUpTheOtherWay, TextForTest,
    ::testing::Values(TextCase{7, {0.25, 0, Rounding::down}, "1"}, TextCase{5, {0.25, 0, Rounding::up}, "2"},
                      TextCase{-5, {0.25, 0, Rounding::down}, "-2"},
                      TextCase{-7, {0.25, 0, Rounding::up}, "-1"}, TextCase{8, {0.25, 0, Rounding::up}, "2"},
                      // 0.3, which is no binary fraction, is no more and no less than three tenths.
                      TextCase{3, {0.1, 0, Rounding::up, 1}, "0.3"},
                      TextCase{3, {0.1, 0, Rounding::down, 1}, "0.3"}));

TEST(NumberTest, NothingBeyond53BitsIsSaid) {
    EXPECT_EQ(textFor(9007199254740993, {}), std::nullopt);
    EXPECT_EQ(textFor(-9007199254740993, {}), std::nullopt);
    EXPECT_EQ(textFor(9007199254741, {1000}), std::nullopt); // 9007199254741000
    EXPECT_EQ(textFor(9007199254740, {1000}), "9007199254740000");
    EXPECT_EQ(textFor(9007200, {1, 0, Rounding::nearest, 9}), std::nullopt);
    EXPECT_EQ(textFor(INT64_MIN, {}), std::nullopt);
}

TEST(NumberTest, ValueIsWhatGaveTheAttributesNumberRoundedToTheNearest) {
    EXPECT_EQ(valueOf("6300000000\n", {1000}), 6300000);
    EXPECT_EQ(valueOf("6300000499\n", {1000}), 6300000);
    EXPECT_EQ(valueOf("6300000500\n", {1000}), 6300001);
    EXPECT_EQ(valueOf("-6300000500\n", {1000}), -6300001);
    EXPECT_EQ(valueOf("113", {0.5, 100}), 26);
    EXPECT_EQ(valueOf("0.3", {0.1}), 3);
}

TEST(NumberTest, DecimalsAndExponentsAreNumbers) {
    EXPECT_EQ(valueOf("6.3000000000E+09\n", {1000}), 6300000);
    EXPECT_EQ(valueOf("+6.3E9\r\n", {}), 6300000000);
    EXPECT_EQ(valueOf("  -2.5e1 \n", {}), -25);
    EXPECT_EQ(valueOf("71.000000 dB\n", {}), 71);
    EXPECT_EQ(valueOf(std::string("12\0", 3), {}), 12);
}

TEST(NumberTest, AnythingElseIsNone) {
    for (const char* const text : {"", "\n", "abc", "12 abc", "12 13", "0x10", "nan", "inf", "+-5", "1e400",
                                   "--1", "5,0", "9.91E+37"}) {
        EXPECT_EQ(valueOf(text, {}), std::nullopt) << text;
    }
}

} // namespace
