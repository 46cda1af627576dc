#include "tests/radio/support/BoardFileFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace Radio {
namespace {

/** What [limits] allows of leakage and image; the section begins on line 5. */
class BoardLimitsTest : public BoardFileFixture {
protected:
    static Limits limits(const std::string& text) { return loadAfterChannel("[limits]\n" + text).limits; }
    static std::string refusedLimit(const std::string& text) {
        return refusedAfterChannel("[limits]\n" + text);
    }
};

TEST_F(BoardLimitsTest, LimitsOfLeakageAndImageAreKeptWithTheirFractions) {
    const Limits kept = limits("leakage = -55\nleakage_at_nodes = -70.5\nleakage_improvement = 30.25\n"
                               "image = -60\ncarrier_leakage = -62.5\n");
    EXPECT_EQ(kept.leakage, -55.0);
    EXPECT_EQ(kept.leakageAtNodes, -70.5);
    EXPECT_EQ(kept.leakageImprovement, 30.25);
    EXPECT_EQ(kept.image, -60.0);
    EXPECT_EQ(kept.carrierLeakage, -62.5);
}

TEST_F(BoardLimitsTest, LimitThatIsNotStatedIsNone) {
    const Limits kept = limits("carrier_error = 0\n");
    EXPECT_FALSE(kept.leakage || kept.leakageAtNodes || kept.leakageImprovement || kept.image ||
                 kept.carrierLeakage);
}

TEST_F(BoardLimitsTest, LevelWhoseSignWasForgottenIsRefused) {
    EXPECT_EQ(limits("leakage = 0\n").leakage, 0.0);
    EXPECT_EQ(refusedLimit("leakage = 55\n"),
              "board.toml:6: limits.leakage: expected a level in dBc that is not above 0, found 55");
    EXPECT_EQ(
        refusedLimit("leakage_at_nodes = 0.5\n"),
        "board.toml:6: limits.leakage_at_nodes: expected a level in dBc that is not above 0, found 0.5");
    EXPECT_EQ(refusedLimit("image = 1\n"),
              "board.toml:6: limits.image: expected a level in dBc that is not above 0, found 1");
    EXPECT_EQ(refusedLimit("carrier_leakage = 1\n"),
              "board.toml:6: limits.carrier_leakage: expected a level in dBc that is not above 0, found 1");
}

TEST_F(BoardLimitsTest, ImprovementBelowZeroIsRefused) {
    EXPECT_EQ(limits("leakage_improvement = 0\n").leakageImprovement, 0.0);
    EXPECT_EQ(refusedLimit("leakage_improvement = -30\n"),
              "board.toml:6: limits.leakage_improvement: expected a number of dB that is not negative, found "
              "-30");
}

TEST_F(BoardLimitsTest, WhatIsNoNumberOfTheModelsRangeIsRefused) {
    EXPECT_EQ(refusedLimit("leakage = \"-55\"\n"),
              "board.toml:6: limits.leakage: expected a number from -1000000 to 1000000, found \"-55\"");
    EXPECT_EQ(refusedLimit("leakage_improvement = 1000001\n"),
              "board.toml:6: limits.leakage_improvement: expected a number from -1000000 to 1000000, found "
              "1000001");
    EXPECT_EQ(refusedLimit("image = nan\n"),
              "board.toml:6: limits.image: expected a number from -1000000 to 1000000, found nan");
}

} // namespace
} // namespace Radio
