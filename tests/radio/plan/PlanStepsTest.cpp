#include "radio/plan/PlanSteps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace Radio::Plan {
namespace {

using testing::Optional;

/** Factor 2, LO below the carrier, IF 140 MHz, IF sideband +1. */
class PlanStepsTest : public testing::Test {
protected:
    PlanStepsTest() {
        m_parameters.factor = 2;
        m_parameters.ifSideband = 1;
        m_parameters.ifFrequency = 140'000;
        m_parameters.build.hasIfSynthesiser = true;
    }

    PlanSteps at(std::uint32_t carrier) const {
        return stepsFor(carrier, spacingShiftOf(m_parameters), m_parameters);
    }
    SpacingOffset offsetFor(std::int32_t channelSpacing) {
        m_parameters.build.hasOffsetArray = true;
        m_parameters.channelSpacing = channelSpacing;
        return *spacingShiftOf(m_parameters).offset;
    }
    SpacingShift halfSpacingFor(std::int32_t channelSpacing) {
        m_parameters.build.shiftsByHalfSpacing = true;
        m_parameters.channelSpacing = channelSpacing;
        return spacingShiftOf(m_parameters);
    }

    Parameters m_parameters;
};

TEST_F(PlanStepsTest, IfPllTakesUpWhatIsLeftOfWholeMHz) {
    const PlanSteps steps = at(18'000'250);
    EXPECT_EQ(steps.lo, 17'860'250U);
    EXPECT_EQ(steps.stepMHz, 17'860U);
    EXPECT_EQ(steps.residue, 250);
    EXPECT_THAT(steps.ifPll, Optional(140'250U));
    EXPECT_EQ(steps.rfPll, 8'930'000U);
}

TEST_F(PlanStepsTest, HalvesOfAMHzRoundUp) {
    EXPECT_EQ(at(18'000'499).residue, 499);
    EXPECT_EQ(at(18'000'500).residue, -500);
    EXPECT_THAT(at(18'000'500).ifPll, Optional(139'500U));
}

TEST_F(PlanStepsTest, LoAboveTheCarrierTurnsTheResidueOver) {
    m_parameters.rfSideband = 1;
    EXPECT_EQ(at(18'000'250).lo, 18'140'250U);
    EXPECT_THAT(at(18'000'250).ifPll, Optional(139'750U));
}

TEST_F(PlanStepsTest, CarrierBelowTheIfFoldsTheLo) {
    EXPECT_EQ(at(100'000).signedLo, -40'000);
    EXPECT_EQ(at(100'000).lo, 40'000U);
}

TEST_F(PlanStepsTest, LoWrapsAroundAt32Bits) {
    m_parameters.rfSideband = 1;
    EXPECT_EQ(at(4'294'967'295).lo, 139'999U);
}

TEST_F(PlanStepsTest, WhatTheFactorDoesNotDivideIsCutOff) {
    m_parameters.factor = 3;
    EXPECT_EQ(at(18'000'000).rfPll, 5'953'333U);
    EXPECT_EQ(at(18'000'000).remainder, 1U);
}

TEST_F(PlanStepsTest, LoInHzTakesTheCarrierItself) {
    m_parameters.build.hasLoInHz = true;
    EXPECT_EQ(at(18'000'250).rfPll, 9'000'125'000U);
}

TEST_F(PlanStepsTest, OffsetOfAnArrayEntryHasTheSignOfTheSideband) {
    m_parameters.offsetArray = {50, 2000, 100, -4000};
    const SpacingOffset offset = offsetFor(100);
    EXPECT_EQ(offset.source, SpacingOffset::Source::arrayEntry);
    EXPECT_EQ(offset.kHz, -4000);
    EXPECT_EQ(offset.dspWord, 4000);
    EXPECT_EQ(offsetFor(50).kHz, -2000);
}

TEST_F(PlanStepsTest, ChannelSpacingWithoutAnEntryHasTheDefault) {
    const SpacingOffset offset = offsetFor(28000);
    EXPECT_EQ(offset.source, SpacingOffset::Source::byDefault);
    EXPECT_EQ(offset.kHz, 3000);
    EXPECT_EQ(offset.dspWord, 0);
}

TEST_F(PlanStepsTest, EntryOf3000HasTheDspToldNothingEither) {
    m_parameters.offsetArray = {50, 3000};
    m_parameters.rfSideband = 1;
    EXPECT_EQ(offsetFor(50).kHz, 3000);
    EXPECT_EQ(offsetFor(50).dspWord, 0);
    m_parameters.rfSideband = -1;
    EXPECT_EQ(offsetFor(50).kHz, -3000);
    EXPECT_EQ(offsetFor(50).dspWord, 3000);
}

TEST_F(PlanStepsTest, DspHardware3HasHalfTheSpacingStandIn) {
    m_parameters.hwCodeDsp = 3;
    const std::map<std::int32_t, std::int32_t> expected = {
        {125, -62'500}, {250, -125'000}, {500, -250'000}, {50, 3000}};
    for (const auto& [spacing, offset] : expected) {
        EXPECT_EQ(offsetFor(spacing).kHz, offset) << spacing;
    }
    EXPECT_EQ(offsetFor(250).source, SpacingOffset::Source::halfSpacing);
    EXPECT_EQ(offsetFor(250).dspWord, 125'000);
}

TEST_F(PlanStepsTest, EntryOf0CountsAsNone) {
    m_parameters.offsetArray = {250, 0, 250, 5000};
    m_parameters.hwCodeDsp = 3;
    EXPECT_EQ(offsetFor(250).kHz, -125'000);
}

TEST_F(PlanStepsTest, HalfSpacingsOfTheDsp) {
    const std::map<std::int32_t, std::int32_t> expected = {
        {50, 25'000},  {100, 50'000}, {150, 75'000}, {200, 100'000}, {250, 125'000},
        {300, 25'000}, {350, 50'000}, {400, 75'000}, {450, 100'000}, {600, 125'000}};
    for (const auto& [spacing, half] : expected) {
        EXPECT_THAT(halfSpacingFor(spacing).half, Optional(half)) << spacing;
    }
}

TEST_F(PlanStepsTest, HalfSpacingLowersTheLoButNotTheChargePump) {
    m_parameters.build.hasIfSynthesiser = false;
    m_parameters.ifFrequency = 0;
    const PlanSteps steps = stepsFor(18'000'000, halfSpacingFor(50), m_parameters);
    EXPECT_EQ(steps.lo, 17'975'000U);
    EXPECT_EQ(steps.adjusted, 18'000'000U);
}

TEST_F(PlanStepsTest, OtherChannelSpacingsAreNotHandled) {
    EXPECT_TRUE(halfSpacingFor(500).isUnhandled);
    EXPECT_TRUE(halfSpacingFor(550).isUnhandled);
    EXPECT_FALSE(halfSpacingFor(600).isUnhandled);
}

class PlanChargePumpTest : public testing::Test {
protected:
    ChargePumpStep at(std::uint32_t carrier) const { return chargePumpAt(m_table, carrier); }

    CalibrationTable m_table{"table", {100, 104, 200}, {}, {-10, -8, 88}};
};

TEST_F(PlanChargePumpTest, NodeHasItsOwnCell) {
    EXPECT_EQ(at(104).setting, -8);
    EXPECT_EQ(at(104).low, at(104).high);
    EXPECT_FALSE(at(104).isClamped);
}

TEST_F(PlanChargePumpTest, BetweenNodesBothCellsAreWeighed) {
    const ChargePumpStep step = at(152);
    EXPECT_EQ(step.low, 1U);
    EXPECT_EQ(step.high, 2U);
    EXPECT_EQ(step.offset, 48U);
    EXPECT_EQ(step.width, 96U);
    EXPECT_EQ(step.setting, 40);
}

TEST_F(PlanChargePumpTest, HalvesRoundAwayFromZero) {
    EXPECT_EQ(at(101).setting, -10); // -9.5
    EXPECT_EQ(at(103).setting, -9);  // -8.5
    m_table.values = {10, 8, 88};
    EXPECT_EQ(at(101).setting, 10); // 9.5
    EXPECT_EQ(at(103).setting, 9);  // 8.5
}

TEST_F(PlanChargePumpTest, OutsideTheAxisTheNearestCellHolds) {
    EXPECT_EQ(at(99).setting, -10);
    EXPECT_TRUE(at(99).isClamped);
    EXPECT_EQ(at(201).setting, 88);
    EXPECT_TRUE(at(201).isClamped);
    EXPECT_FALSE(at(100).isClamped);
    EXPECT_FALSE(at(200).isClamped);
}

} // namespace
} // namespace Radio::Plan
