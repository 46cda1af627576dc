// The arithmetic of the microwave board's frequency plan: every expected number is worked out by hand.

#include "FrequencyPlan.h"

#include <gtest/gtest.h>

namespace Plan = RL::FrequencyHandler::FrequencyPlan;
using Plan::Parameters;

namespace {

constexpr std::uint32_t highestCarrier = 4'294'967'295U;

/** IF 140 MHz, LO below the carrier, baseband not turned round, factor 2. */
Parameters receiver() {
    return {1, -1, 140'000, 2, 0};
}

/** No IF and factor 1: the LO is the carrier. */
Parameters straight() {
    return {1, -1, 0, 1, 0};
}

Parameters withFactor(std::int32_t factor) {
    Parameters parameters = receiver();
    parameters.mixerMultiplicationFactor = factor;
    return parameters;
}

Parameters withBaseband(std::int32_t ifBb, std::int32_t ifSideband) {
    Parameters parameters = receiver();
    parameters.ifBb = ifBb;
    parameters.ifSideband = ifSideband;
    return parameters;
}

} // namespace

TEST(FrequencyPlanTest, ReceiverAt18GHz) {
    EXPECT_EQ(Plan::rfLoFrequency(18'000'250, receiver()), 17'860'250U);
    EXPECT_EQ(Plan::frequencyStep(17'860'250), 17'860U);
    EXPECT_EQ(Plan::ifPllFrequency(18'000'250, receiver()), 140'250U);
    EXPECT_EQ(Plan::rfPllFrequency(18'000'250, receiver()), 8'930'000U);
}

// The LO

TEST(FrequencyPlanTest, LoLiesBelowTheCarrierWithSidebandMinusOne) {
    EXPECT_EQ(Plan::rfLoFrequency(7'442'000, receiver()), 7'302'000U);
}

TEST(FrequencyPlanTest, LoLiesAboveTheCarrierWithSidebandPlusOne) {
    EXPECT_EQ(Plan::rfLoFrequency(7'442'000, {1, 1, 140'000, 2, 0}), 7'582'000U);
}

TEST(FrequencyPlanTest, CarrierBelowTheIfFoldsTheLo) {
    EXPECT_EQ(Plan::rfLoFrequency(40'000, receiver()), 100'000U);
}

TEST(FrequencyPlanTest, CarrierAtTheIfLeavesNoLo) {
    EXPECT_EQ(Plan::rfLoFrequency(140'000, receiver()), 0U);
}

TEST(FrequencyPlanTest, CarrierZeroMakesTheLoTheIf) {
    EXPECT_EQ(Plan::rfLoFrequency(0, receiver()), 140'000U);
    EXPECT_EQ(Plan::rfLoFrequency(0, {1, 1, 140'000, 2, 0}), 140'000U);
}

TEST(FrequencyPlanTest, HighestCarrierCountsAsMinusOne) {
    EXPECT_EQ(Plan::rfLoFrequency(highestCarrier, receiver()), 140'001U);
    EXPECT_EQ(Plan::rfLoFrequency(highestCarrier, {1, 1, 140'000, 2, 0}), 139'999U);
}

TEST(FrequencyPlanTest, CarrierBeyondTheSignedRangeFolds) {
    EXPECT_EQ(Plan::rfLoFrequency(2'147'483'649U, straight()), 2'147'483'647U);
}

TEST(FrequencyPlanTest, LowestSignedSumIsItsOwnMagnitude) {
    EXPECT_EQ(Plan::rfLoFrequency(2'147'483'647U, {1, 1, 1, 1, 0}), 2'147'483'648U);
}

TEST(FrequencyPlanTest, NegativeIfTurnsTheSidebandRound) {
    EXPECT_EQ(Plan::rfLoFrequency(18'000'250, {1, -1, -140'000, 2, 0}), 18'140'250U);
}

// Rounding to whole MHz

TEST(FrequencyPlanTest, HalvesRoundUp) {
    EXPECT_EQ(Plan::frequencyStep(0), 0U);
    EXPECT_EQ(Plan::frequencyStep(499), 0U);
    EXPECT_EQ(Plan::frequencyStep(500), 1U);
    EXPECT_EQ(Plan::frequencyStep(1499), 1U);
    EXPECT_EQ(Plan::frequencyStep(1500), 2U);
}

TEST(FrequencyPlanTest, RoundingWrapsAroundNearTheTop) {
    EXPECT_EQ(Plan::frequencyStep(4'294'966'795U), 4'294'967U);
    EXPECT_EQ(Plan::frequencyStep(4'294'966'796U), 0U);
    EXPECT_EQ(Plan::frequencyStep(highestCarrier), 0U);
}

// The IF PLL

TEST(FrequencyPlanTest, IfPllTakesUpWhatTheRfPllLeaves) {
    EXPECT_EQ(Plan::ifPllFrequency(18'000'499, receiver()), 140'499U);
    EXPECT_EQ(Plan::ifPllFrequency(18'000'500, receiver()), 139'500U);
    EXPECT_EQ(Plan::ifPllFrequency(18'001'000, receiver()), 140'000U);
}

TEST(FrequencyPlanTest, RfSidebandDecidesTheSignOfTheRemainder) {
    EXPECT_EQ(Plan::ifPllFrequency(18'000'250, {1, 1, 140'000, 2, 0}), 139'750U);
}

TEST(FrequencyPlanTest, IfSidebandDecidesTheSignOfTheBasebandOffset) {
    EXPECT_EQ(Plan::ifPllFrequency(18'000'250, withBaseband(5, 1)), 145'250U);
    EXPECT_EQ(Plan::ifPllFrequency(18'000'250, withBaseband(5, -1)), 135'250U);
    EXPECT_EQ(Plan::ifPllFrequency(18'000'250, withBaseband(-5, -1)), 145'250U);
}

TEST(FrequencyPlanTest, NegativeIfPllFolds) {
    EXPECT_EQ(Plan::ifPllFrequency(18'001'000, {-1, -1, 1000, 1, 5}), 4000U);
}

TEST(FrequencyPlanTest, BasebandOffsetInKiloHertzWrapsAround) {
    // 4294968 MHz are 4294968000 kHz, 704 more than 32 bits hold.
    EXPECT_EQ(Plan::ifPllFrequency(18'000'000, {1, -1, 0, 1, 4'294'968}), 704U);
}

TEST(FrequencyPlanTest, IfPllForCarrierZeroIsTheIfAndItsOwnRemainder) {
    EXPECT_EQ(Plan::ifPllFrequency(0, receiver()), 140'000U);
    EXPECT_EQ(Plan::ifPllFrequency(0, {1, -1, 140'250, 2, 0}), 140'500U);
}

TEST(FrequencyPlanTest, IfPllForTheHighestCarrier) {
    EXPECT_EQ(Plan::ifPllFrequency(highestCarrier, receiver()), 140'001U);
}

// The RF PLL

TEST(FrequencyPlanTest, WithFactorOneTheRfPllIsInWholeMegaHertz) {
    EXPECT_EQ(Plan::rfPllFrequency(18'000'250, straight()), 18'000'000U);
    EXPECT_EQ(Plan::rfPllFrequency(18'000'500, straight()), 18'001'000U);
    EXPECT_EQ(Plan::rfPllFrequency(499, straight()), 0U);
}

TEST(FrequencyPlanTest, DivisionByTheFactorTruncates) {
    EXPECT_EQ(Plan::rfPllFrequency(18'000'250, withFactor(3)), 5'953'333U);
    EXPECT_EQ(Plan::exactRfPllFrequency(2, withFactor(3)), 666U);
}

TEST(FrequencyPlanTest, HighestLoInMegaHertz) {
    EXPECT_EQ(Plan::rfPllFrequency(2'147'483'648U, straight()), 2'147'484'000U);
}

TEST(FrequencyPlanTest, NegativeFactorDividesByAHugeNumber) {
    EXPECT_EQ(Plan::rfPllFrequency(18'000'250, withFactor(-1)), 0U);
    EXPECT_EQ(Plan::exactRfPllFrequency(highestCarrier, withFactor(-2)), 0U);
}

TEST(FrequencyPlanTest, DivisionByANegativeFactorLeavesNoQuotient) {
    // A quotient of 1 would be 1 kHz here, and 1000 Hz there.
    EXPECT_EQ(Plan::rfPllFrequency(18'000'250, withFactor(-1)), 0U);
    EXPECT_EQ(Plan::exactRfPllFrequency(18'000'250, withFactor(-1)), 0U);
    EXPECT_EQ(Plan::Detail::divide(18'000'250, withFactor(-1)).quotient, 0U);
}

TEST(FrequencyPlanTest, DivisionByANegativeFactorLeavesNoRest) {
    // A rest of 1 would be 1000 / 1 Hz.
    EXPECT_EQ(Plan::exactRfPllFrequency(18'000'250, withFactor(-1)), 0U);
    EXPECT_EQ(Plan::exactRfPllFrequency(1, withFactor(-2'147'483'648)), 0U);
    EXPECT_EQ(Plan::Detail::divide(18'000'250, withFactor(-1)).rest, 0U);
}

TEST(FrequencyPlanTest, RestOfANegativeFactorIsDividedByOne) {
    EXPECT_EQ(Plan::Detail::divide(18'000'250, withFactor(-1)).divisor, 1U);
}

TEST(FrequencyPlanTest, FactorOfZeroDividesToZeroToo) {
    EXPECT_EQ(Plan::rfPllFrequency(18'000'250, withFactor(0)), 0U);
    EXPECT_EQ(Plan::exactRfPllFrequency(18'000'250, withFactor(0)), 0U);
}

TEST(FrequencyPlanTest, ExactRfPllIsInHertz) {
    EXPECT_EQ(Plan::exactRfPllFrequency(18'000'250, receiver()), 9'000'125'000U);
}

TEST(FrequencyPlanTest, ExactRfPllDependsOnNeitherIfNorSidebands) {
    EXPECT_EQ(Plan::exactRfPllFrequency(18'000'250, {1, 1, 70'000, 2, 9}), 9'000'125'000U);
    EXPECT_EQ(Plan::exactRfPllFrequency(18'000'250, {-1, -1, 0, 2, 0}), 9'000'125'000U);
}

TEST(FrequencyPlanTest, ExactRfPllHas64Bits) {
    EXPECT_EQ(Plan::exactRfPllFrequency(highestCarrier, straight()), 4'294'967'295'000U);
}

// The baseband

TEST(FrequencyPlanTest, BasebandIsGivenInKiloHertz) {
    EXPECT_EQ(Plan::bbFrequency(withBaseband(5, 1)), 5000U);
    EXPECT_EQ(Plan::bbFrequency(withBaseband(5, -1)), 5000U);
    EXPECT_EQ(Plan::bbFrequency(withBaseband(-5, 1)), 4'294'962'296U);
}
