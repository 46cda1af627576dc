#include "radio/model/LeakageModel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace Radio {
namespace {

constexpr double tolerance = 0.005;
constexpr double nothing = -120.0;
constexpr double million = 1000000.0;
constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();

/**
 * One path with a tenth of the signal's amplitude and no phase, at 18 GHz and 25 degrees. A unit of either
 * correction is a thousandth of the signal's amplitude.
 */
class LeakageModelTest : public testing::Test {
protected:
    LeakageModelTest() {
        leakage.reference = 18'000'000;
        leakage.paths.emplace_back().level = -20.0;
        for (CorrectionBranch* const branch : {&leakage.i, &leakage.q}) {
            branch->gain = 0.001;
            branch->low = -1000;
            branch->high = 1000;
        }
    }

    LeakagePath& path() { return leakage.paths.front(); }
    void addPath(double level, double phase) {
        LeakagePath& added = leakage.paths.emplace_back();
        added.level = level;
        added.phase = phase;
    }
    double level(std::int32_t i = 0, std::int32_t q = 0) const {
        return leakageLevel(leakage, surroundings, {i, q});
    }
    void expectResidual(double real, double imaginary, const LoCorrections& corrections = {}) const {
        const std::complex<double> residual = residualOf(leakage, surroundings, corrections);
        EXPECT_NEAR(residual.real(), real, 1e-6);
        EXPECT_NEAR(residual.imag(), imaginary, 1e-6);
    }
    void expectIdeal(std::int32_t i, std::int32_t q) const {
        const LoCorrections ideal = idealLoCorrections(leakage, surroundings);
        EXPECT_EQ(ideal.i, i);
        EXPECT_EQ(ideal.q, q);
    }

    LeakageDescription leakage;
    Surroundings surroundings{18'000'000, 25.0};
};

// What leaks.

TEST_F(LeakageModelTest, PathAloneHasItsLevel) {
    EXPECT_NEAR(level(), -20.0, tolerance);
    expectResidual(0.1, 0.0);
}

TEST_F(LeakageModelTest, PathsAddWithTheirPhases) {
    // 0.1 + 0.1 j: 20 log10 0.141421.
    addPath(-20.0, 90.0);
    expectResidual(0.1, 0.1);
    EXPECT_NEAR(level(), -16.99, tolerance);
}

TEST_F(LeakageModelTest, PathsInOppositionCancelDownToTheLowestLevel) {
    addPath(-20.0, 180.0);
    EXPECT_EQ(level(), nothing);
}

TEST_F(LeakageModelTest, LevelFollowsTheTemperature) {
    path().levelPerDegree = 0.1;
    surroundings.temperature = 35.0;
    EXPECT_NEAR(level(), -19.0, tolerance);
    surroundings.temperature = -5.0;
    EXPECT_NEAR(level(), -23.0, tolerance);
}

TEST_F(LeakageModelTest, LevelFollowsTheCarrierInGigahertz) {
    path().levelPerGHz = 2.0;
    surroundings.carrier = 18'500'000;
    EXPECT_NEAR(level(), -19.0, tolerance);
    surroundings.carrier = 17'000'000;
    EXPECT_NEAR(level(), -22.0, tolerance);
}

TEST_F(LeakageModelTest, PhaseFollowsTheTemperature) {
    path().phasePerDegree = 3.0;
    surroundings.temperature = 55.0;
    expectResidual(0.0, 0.1);
}

TEST_F(LeakageModelTest, DelayTurnsAPathBackByAFullTurnForEachGigahertzAndNanosecond) {
    // -360 x 0.5 ns x 0.5 GHz = -90 degrees.
    path().delay = 0.5;
    surroundings.carrier = 18'500'000;
    expectResidual(0.0, -0.1);
}

// Corrections.

TEST_F(LeakageModelTest, CorrectionOfIAddsItsGain) {
    EXPECT_NEAR(level(-90), -40.0, tolerance);
    EXPECT_EQ(level(-100), nothing);
}

TEST_F(LeakageModelTest, CorrectionOfQActsAtARightAngle) {
    expectResidual(0.1, 0.05, {0, 50});
}

TEST_F(LeakageModelTest, SkewTurnsTheEffectOfQ) {
    // 0.1 at 120 degrees is -0.05 + 0.086603 j.
    leakage.skew = 30.0;
    expectResidual(0.05, 0.086603, {0, 100});
}

TEST_F(LeakageModelTest, DacGivesTheNearestOfItsStepsCountedFromTheLowest) {
    // 909 and 911 above -1000 are 45.45 and 45.55 steps: -100 and -80.
    leakage.i.step = 20;
    expectResidual(0.0, 0.0, {-91, 0});
    expectResidual(0.02, 0.0, {-89, 0});
}

TEST_F(LeakageModelTest, DacGivesTheHigherOfTwoStepsThatAreAsNear) {
    leakage.i.step = 20;
    expectResidual(0.02, 0.0, {-90, 0});
}

TEST_F(LeakageModelTest, DacCutsOffWhatIsBeyondItsRange) {
    leakage.i.low = -50;
    leakage.q.high = 30;
    expectResidual(0.05, 0.03, {-100, 1000});
    expectResidual(0.05, 0.03, {least, most});
}

TEST_F(LeakageModelTest, DacHasNoValueBetweenItsLastStepAndTheHighest) {
    leakage.i.low = 0;
    leakage.i.high = 25;
    leakage.i.step = 10;
    expectResidual(0.12, 0.0, {25, 0});
}

// The best corrections.

TEST_F(LeakageModelTest, IdealCorrectionsCancelUpToRounding) {
    // -100 cos 30 = -86.60 and -100 sin 30 = -50; 0.0003975 is left, 20 log10 of which is -68.01.
    path().phase = 30.0;
    expectIdeal(-87, -50);
    EXPECT_NEAR(level(-87, -50), -68.01, tolerance);
}

TEST_F(LeakageModelTest, IdealCorrectionsKnowGainsAndSkew) {
    // 0.1 j. Q: -0.1 / (0.002 cos 60) = -100; it adds 0.173205 - 0.1 j, which takes -173.2 of I.
    path().phase = 90.0;
    leakage.skew = 60.0;
    leakage.q.gain = 0.002;
    expectIdeal(-173, -100);
}

TEST_F(LeakageModelTest, IdealCorrectionsAreTheBestOfTheNeighbours) {
    // 0.1 j. Exactly -57.74 and -115.47; Q of -115 leaves 0.0575 + 0.00041 j to I, and 0.00065 whatever I
    // does; Q of -116 leaves 0.058 - 0.00046 j, and 0.00046.
    path().phase = 90.0;
    leakage.skew = 30.0;
    expectIdeal(-58, -116);
}

TEST_F(LeakageModelTest, IdealCorrectionsNeedNotBeNextToWhatCancelsEverything) {
    // 0.1 j, and of Q 0.0031 at 150 degrees: -0.0026847 + 0.00155 j. Exactly -173.21 and -64.52. Q of -65
    // leaves 0.174504 - 0.00075 j, and 0.0009 whatever I does; Q of -64 leaves 0.171819 + 0.0008 j, and
    // 0.00082.
    path().phase = 90.0;
    leakage.skew = 60.0;
    leakage.q.gain = 0.0031;
    expectIdeal(-172, -64);
    path().phase = -90.0;
    expectIdeal(172, 64);
}

TEST_F(LeakageModelTest, IdealCorrectionsMakeTheBestOfARangeThatIsTooSmall) {
    // -0.1. I would have to be 100. With 50, -0.05 is left, of which 0.001 at 120 degrees takes off most with
    // -25: the part of -0.05 in this direction is 0.025.
    path().phase = 180.0;
    leakage.skew = 30.0;
    leakage.i.high = 50;
    expectIdeal(50, -25);
}

TEST_F(LeakageModelTest, IdealCorrectionsAreValuesOfTheirDacs) {
    // -86.60 and -50 in steps of 7 from -1000: -90 or -83, and -55 or -48.
    path().phase = 30.0;
    leakage.i.step = 7;
    leakage.q.step = 7;
    expectIdeal(-90, -48);
}

// Extremes.

TEST_F(LeakageModelTest, LevelKeepsWithinItsLimits) {
    path() = {million, million, million, million, million, million};
    surroundings = {std::numeric_limits<std::uint32_t>::max(), most};
    EXPECT_EQ(level(), 120.0);
    surroundings.temperature = least;
    EXPECT_EQ(level(), nothing);
}

TEST_F(LeakageModelTest, LargestGainsAndRangesGiveLevelsAndCorrections) {
    leakage.skew = 60.0;
    path().level = million;
    for (CorrectionBranch* const branch : {&leakage.i, &leakage.q}) {
        *branch = {"", million, most, least, most};
    }
    EXPECT_EQ(level(most, most), 120.0);
    // A million times the signal against steps of 2147483647 millions: -1 and 2147483646 are all there is
    // besides -2147483648.
    expectIdeal(-1, -1);
}

/** 25 units for each dB above -95 dBc, and a floor far away. */
class DetectorModelTest : public testing::Test {
protected:
    DetectorModelTest() {
        detector.slope = 25.0;
        detector.zero = -95.0;
        detector.floor = nothing;
        detector.high = 4095;
    }

    DetectorDescription detector;
};

TEST_F(DetectorModelTest, OutputIsTheDistanceFromTheZero) {
    EXPECT_NEAR(detectorOutput(detector, -55.0), 1000.0, tolerance);
    EXPECT_NEAR(detectorOutput(detector, -20.0), 1875.0, tolerance);
}

TEST_F(DetectorModelTest, LevelAtTheFloorIsSeenThreeDecibelsAboveIt) {
    // 25 x (-85 + 3.0103 + 95).
    detector.floor = -85.0;
    EXPECT_NEAR(detectorOutput(detector, -85.0), 325.26, tolerance);
}

TEST_F(DetectorModelTest, LevelFarBelowTheFloorDrownsInIt) {
    // 25 x 10, and 10 log10 (1 + 10^-3.5) = 0.00137 dB.
    detector.floor = -85.0;
    EXPECT_NEAR(detectorOutput(detector, nothing), 250.03, tolerance);
}

TEST_F(DetectorModelTest, DetectorWithoutSlopeIsStuckAt0) {
    detector.slope = 0.0;
    EXPECT_EQ(detectorOutput(detector, -20.0), 0.0);
}

TEST_F(DetectorModelTest, ReadingIsRoundedToTheNearest) {
    EXPECT_EQ(detectorReading(detector, 100.4), 100);
    EXPECT_EQ(detectorReading(detector, 100.5), 101);
}

TEST_F(DetectorModelTest, ReadingIsAStepOfTheConverterCountedFromTheLowest) {
    detector.low = -5;
    detector.step = 8;
    EXPECT_EQ(detectorReading(detector, 98.0), 99);
    EXPECT_EQ(detectorReading(detector, 94.0), 91);
}

TEST_F(DetectorModelTest, ReadingSaturatesAtBothEnds) {
    detector.low = 10;
    EXPECT_EQ(detectorReading(detector, -3.0), 10);
    EXPECT_EQ(detectorReading(detector, 4096.0), 4095);
    detector.step = 8;
    EXPECT_EQ(detectorReading(detector, 4096.0), 4090);
}

TEST_F(DetectorModelTest, LargestNumbersGiveAReading) {
    detector = {"", million, -million, million, million, most, least, most, million};
    EXPECT_EQ(detectorReading(detector, detectorOutput(detector, 120.0)), 2147483646);
    detector.slope = -million;
    EXPECT_EQ(detectorReading(detector, detectorOutput(detector, nothing)), -2147483647 - 1);
    detector.floor = -million;
    detector.zero = million;
    EXPECT_TRUE(std::isfinite(detectorOutput(detector, nothing)));
}

} // namespace
} // namespace Radio
