#include "radio/calibration/Qualification.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace Radio::Calibration {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/** A made-up transmitter and detector: least leaks at I -480 and Q 120, and a floor is below it. */
class MadeUpChain {
public:
    /** Time constant in ms; 0: at once. */
    double settling = 0.0;
    /** Root mean square, in units. */
    double noise = 0.0;
    double slope = 25.0;
    double offset = 0.0;
    /** What the detector sees besides, as the power of so many units of correction. */
    double floor = 10.0;
    double lowest = 0;
    double highest = 100000;
    bool isLinear = false;
    double effectOfI = 1.0;
    /** Readings take so long, in ms. */
    double readingTime = 0.0;
    /** From this reading on nobody goes on. */
    unsigned endsAt = 1000;
    bool hasOther = false;

    unsigned reads = 0;
    std::int32_t leastI = 0;
    std::int32_t mostI = 0;

    Qualification qualify(const ChainDescription& description = standard()) {
        MeasuringChain chain;
        chain.set = [this](const LoCorrections& corrections) {
            m_corrections = corrections;
            leastI = std::min(leastI, corrections.i);
            mostI = std::max(mostI, corrections.i);
        };
        chain.wait = [this](double time) { elapse(time); };
        chain.now = [this] { return m_now; };
        chain.read = [this] { return read(); };
        if (hasOther) {
            chain.readOther = [this] { return static_cast<std::int32_t>(std::lround(25 * level())); };
        }
        m_output = target();
        return Calibration::qualify(chain, description);
    }

    static ChainDescription standard() { return {{-1000, 1000}, {-1000, 1000}}; }

private:
    /** In dB. */
    double level() const {
        const double i = effectOfI * (m_corrections.i + 480);
        const double q = m_corrections.q - 120;
        return 10 * std::log10(i * i + q * q + floor * floor);
    }
    double target() const { return isLinear ? std::pow(10.0, level() / 20) : slope * level() + offset; }
    void elapse(double time) {
        m_now += time;
        m_output += (target() - m_output) * (settling > 0 ? -std::expm1(-time / settling) : 1.0);
    }
    std::int32_t read() {
        if (++reads >= endsAt) {
            throw ChainFailure("interrupted", true);
        }
        elapse(readingTime);
        double sum = -6;
        for (int n = 0; n < 12; ++n) {
            sum += static_cast<double>(m_random() % 65536) / 65536;
        }
        return static_cast<std::int32_t>(std::lround(std::clamp(m_output + noise * sum, lowest, highest)));
    }

    LoCorrections m_corrections;
    double m_now = 0.0;
    double m_output = 0.0;
    std::minstd_rand m_random{1};
};

class QualificationTest : public testing::Test {
protected:
    MadeUpChain m_chain;
    ChainDescription m_description = MadeUpChain::standard();
};

TEST_F(QualificationTest, GoodDetectorIsQualifiedInFewReadings) {
    const Qualification found = m_chain.qualify();
    EXPECT_TRUE(found.isGood()) << found.refusal;
    EXPECT_THAT(found.warnings, IsEmpty());
    EXPECT_EQ(found.taken, 31U);
    EXPECT_EQ(m_chain.reads, found.taken);
    EXPECT_EQ(found.readings, 1U);
    EXPECT_EQ(found.noise, 0.0);
    EXPECT_EQ(found.settled, 1.0); // the first moment
    EXPECT_EQ(found.settleTime, 2U);
}

TEST_F(QualificationTest, SlopeIsFoundToAFewPercent) {
    ASSERT_TRUE(m_chain.qualify().slope);
    EXPECT_NEAR(*m_chain.qualify().slope, 25.0, 1.0);
    m_chain.noise = 1.5;
    m_chain.slope = 40.0;
    ASSERT_TRUE(m_chain.qualify().slope);
    EXPECT_NEAR(*m_chain.qualify().slope, 40.0, 2.0);
}

TEST_F(QualificationTest, DetectorThatIsNotLogarithmicHasNoSlope) {
    m_chain.isLinear = true;
    const Qualification found = m_chain.qualify();
    EXPECT_TRUE(found.isGood()) << found.refusal;
    EXPECT_EQ(found.slope, std::nullopt);
}

TEST_F(QualificationTest, SettleTimeIsFourTimeConstantsAndAQuarter) {
    // Of a step 2 % is left after 3.9 time constants.
    for (const double constant : {0.9, 3.0, 10.0, 40.0, 200.0}) {
        MadeUpChain chain;
        chain.settling = constant;
        const Qualification found = chain.qualify();
        EXPECT_TRUE(found.isGood()) << found.refusal;
        ASSERT_TRUE(found.settled);
        EXPECT_NEAR(*found.settled / constant, 3.9, 0.3); // between the moments it is estimated
        EXPECT_EQ(found.settleTime, std::ceil(*found.settled * 1.25));
        EXPECT_LE(found.taken, 38U);
    }
}

TEST_F(QualificationTest, StatedSettleTimeThatLeavesMoreThanHalfOfAStepIsRefused) {
    m_chain.settling = 20;
    m_description.settleTime = 5; // e^-0.25 of a step is left then
    EXPECT_THAT(
        m_chain.qualify(m_description).refusal,
        testing::MatchesRegex("the settle time of 5 ms is too short: 78 % of a step of the detector is left "
                              "then, and 2 % after [78][0-9].[0-9] ms"));
    MadeUpChain chain;
    chain.settling = 20;
    m_description.settleTime = 20; // e^-1: 37 %
    const Qualification warned = chain.qualify(m_description);
    EXPECT_TRUE(warned.isGood()) << warned.refusal;
    EXPECT_THAT(warned.warnings, testing::Contains(testing::HasSubstr(": 37 % of a step ")));
}

TEST_F(QualificationTest, SlopeOfLessThanHalfOfTheStatedOneIsRefused) {
    m_chain.slope = 10.0;
    m_description.slope = 25.0;
    EXPECT_THAT(m_chain.qualify(m_description).refusal,
                testing::MatchesRegex(
                    "the detector shows (9|10).[0-9] units for each dB, not the 25.0 that the board "
                    "states: it is too slow, or sees something else"));
}

TEST_F(QualificationTest, NoiseOfMoreThanADecibelHidesTheSlope) {
    m_chain.noise = 60.0;
    m_description.slope = 25.0;
    const Qualification found = m_chain.qualify(m_description);
    EXPECT_EQ(found.slope, std::nullopt);
    for (const std::string& warning : found.warnings) {
        EXPECT_THAT(warning, testing::Not(testing::HasSubstr("units for each dB")));
    }
}

TEST_F(QualificationTest, TimeThatReadingsTakeCounts) {
    m_chain.settling = 10;
    m_chain.readingTime = 7;
    const Qualification found = m_chain.qualify();
    EXPECT_TRUE(found.isGood()) << found.refusal;
    ASSERT_TRUE(found.settled);
    EXPECT_NEAR(*found.settled, 39 - 7, 3); // a reading shows what is at its end
}

TEST_F(QualificationTest, DetectorThatNeverSettlesIsRefused) {
    m_chain.settling = 2000;
    m_description.slope = 25;
    EXPECT_THAT(
        m_chain.qualify().refusal,
        testing::MatchesRegex("the detector does not settle: after a step of the corrections it reads "
                              "[0-9]+ after 2048 ms and [0-9]+ after 4096 ms"));
}

TEST_F(QualificationTest, StatedSettleTimeIsUsedAndWarnedOfWhenItIsTooShort) {
    m_chain.settling = 10;
    m_description.settleTime = 20;
    const Qualification tooShort = m_chain.qualify(m_description);
    EXPECT_EQ(tooShort.settleTime, 20U);
    // exp(-2) is left.
    EXPECT_THAT(tooShort.warnings, ElementsAre(testing::MatchesRegex(
                                       "the settle time of 20 ms is too short: 1[34] % of a step of "
                                       "the detector is left then, and 2 % after 41.[0-9] ms")));
    m_description.settleTime = 35;
    EXPECT_THAT(m_chain.qualify(m_description).warnings, IsEmpty());
    m_description.settleTime = 100;
    EXPECT_THAT(m_chain.qualify(m_description).warnings, IsEmpty());
}

TEST_F(QualificationTest, NoiseIsAveragedAwayToATenthOfADecibel) {
    // 2.5 units: for a noise of 6 it takes (6 / 2.5)^2 = 5.8 readings, if eight tell the noise exactly.
    m_chain.noise = 6;
    const Qualification found = m_chain.qualify();
    EXPECT_NEAR(found.noise, 6.0, 2.5);
    const double ratio = found.noise / (0.1 * found.slope.value_or(25.0));
    EXPECT_NEAR(found.readings, ratio * ratio, 1.0);
    EXPECT_THAT(found.warnings, IsEmpty());
}

TEST_F(QualificationTest, NoiseThatSixteenReadingsDoNotTakeAwayIsWarnedOf) {
    m_chain.noise = 50;
    m_description.slope = 25;
    const Qualification found = m_chain.qualify(m_description);
    EXPECT_EQ(found.readings, 16U);
    EXPECT_THAT(found.warnings,
                testing::Contains(testing::MatchesRegex("the detector is noisy: of [0-9.]+ units [0-9.]+ are "
                                                        "left in the mean of 16 readings")));
}

TEST_F(QualificationTest, StuckDetectorIsRefused) {
    m_chain.slope = 0;
    m_chain.offset = 500;
    const Qualification found = m_chain.qualify();
    EXPECT_EQ(found.refusal, "every reading is 500, whatever the corrections are: the detector is stuck");
    m_chain.noise = 2;
    EXPECT_THAT(
        m_chain.qualify().refusal,
        testing::MatchesRegex("readings are [0-9]+ to [0-9]+ whatever the corrections are, with a noise "
                              "of [0-9.]+: the detector is stuck, or sees nothing of them"));
}

TEST_F(QualificationTest, OtherDetectorThatSeesIsNamed) {
    m_chain.slope = 0;
    m_chain.offset = 7;
    m_chain.hasOther = true;
    m_description.isHighDetector = true;
    // 1000 dB: 480 and 120 away at the middle, 520 and 1120 at the low end.
    EXPECT_EQ(
        m_chain.qualify(m_description).refusal,
        "every reading is 7, whatever the corrections are: the high-range detector is stuck, but that of "
        "the low range does, 1546 and 1347");
}

TEST_F(QualificationTest, SaturatedDetectorIsRefused) {
    m_chain.highest = 600;
    m_description.highest = 600;
    EXPECT_EQ(m_chain.qualify(m_description).refusal,
              "every reading is 600, the highest there is: the detector is saturated");
    // At most corrections, but not near the best.
    m_chain.highest = 1300;
    EXPECT_THAT(
        m_chain.qualify().refusal,
        testing::MatchesRegex("[0-9]+ of 14 readings with different corrections are 1300, and none is "
                              "more: the detector is saturated"));
}

TEST_F(QualificationTest, DetectorThatIsSaturatedAtTheEndsOnlyIsWarnedOf) {
    m_chain.highest = 1490;
    m_description.highest = 1490;
    EXPECT_THAT(m_chain.qualify(m_description).warnings,
                ElementsAre("the detector is saturated, at 1490, at both ends of the ranges: narrower ones "
                            "serve better"));
}

TEST_F(QualificationTest, DetectorThatDoesNotSeeLowLevelsIsRefused) {
    // What is less than 1153 units away: all but one end along I, and along Q at the first of the lowest.
    m_chain.lowest = 1532;
    EXPECT_EQ(
        m_chain.qualify().refusal,
        "10 of 14 readings with different corrections are about 1532, and none is less: the detector does "
        "not see so little; it may be one for a high range");
}

TEST_F(QualificationTest, DetectorThatReadsLessWhereMoreLeaksIsRefused) {
    m_chain.slope = -25;
    m_chain.offset = 3000;
    EXPECT_THAT(m_chain.qualify().refusal,
                testing::MatchesRegex("readings along I rise to [0-9]+ at -334, between [0-9]+ at -1000 and "
                                      "[0-9]+ at 1000: they do not rise with the leakage"));
}

TEST_F(QualificationTest, CorrectionThatChangesNothingIsRefused) {
    m_chain.effectOfI = 0;
    EXPECT_EQ(m_chain.qualify().refusal,
              "I changes nothing: with it from -1000 to 1000 readings stay at 1040 but for 0");
}

TEST_F(QualificationTest, SlopeOtherThanTheBoardsIsWarnedOf) {
    m_description.slope = 40;
    EXPECT_THAT(m_chain.qualify(m_description).warnings,
                ElementsAre(testing::MatchesRegex("the detector shows 2[45].[0-9] units for each dB, not the "
                                                  "40.0 that the board states")));
}

TEST_F(QualificationTest, StaysWithinTheRanges) {
    m_description.i = {-700, -200};
    EXPECT_TRUE(m_chain.qualify(m_description).isGood());
    EXPECT_EQ(m_chain.leastI, -700);
    EXPECT_EQ(m_chain.mostI, 0); // where it began
    m_description.i = {100, 900};
    MadeUpChain chain;
    EXPECT_TRUE(chain.qualify(m_description).isGood());
    EXPECT_EQ(chain.mostI, 900);
    EXPECT_EQ(chain.leastI, 0);
}

TEST_F(QualificationTest, CanBeInterruptedAtAnyReading) {
    for (unsigned reading = 1; reading <= 31; ++reading) {
        MadeUpChain chain;
        chain.endsAt = reading;
        const Qualification found = chain.qualify();
        EXPECT_TRUE(found.isInterrupted);
        EXPECT_FALSE(found.isGood());
        EXPECT_EQ(found.refusal, "");
    }
}

TEST_F(QualificationTest, SameChainGivesTheSame) {
    m_chain.noise = 3;
    m_chain.settling = 2;
    MadeUpChain again = m_chain;
    const Qualification first = m_chain.qualify();
    const Qualification second = again.qualify();
    EXPECT_EQ(first.noise, second.noise);
    EXPECT_EQ(first.settled, second.settled);
    EXPECT_EQ(first.slope, second.slope);
}

} // namespace
} // namespace Radio::Calibration
