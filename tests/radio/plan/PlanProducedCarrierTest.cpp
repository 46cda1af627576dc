#include "radio/plan/ProducedCarrier.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>

namespace Radio::Plan {
namespace {

using testing::Optional;

/** A board with an IF synthesiser: factor 2, LO below the carrier, IF sideband +1, no baseband offset. */
class PlanProducedCarrierTest : public testing::Test {
protected:
    PlanProducedCarrierTest() {
        m_parameters.build.hasIfSynthesiser = true;
        m_parameters.factor = 2;
        m_parameters.rfSideband = -1;
        m_parameters.ifSideband = 1;
    }

    void writeIfPll(std::int64_t kHz) { m_words[Word::ifPll] = kHz; }
    void writeRfPll(std::int64_t word) { m_words[Word::rfPll] = word; }
    /** Makes it a board whose LO is written in Hz and is the carrier. */
    void takeHz() {
        m_parameters.build.hasIfSynthesiser = false;
        m_parameters.build.hasLoInHz = true;
    }

    /** In Hz. */
    std::optional<std::int64_t> carrier() const {
        const std::optional<ProducedCarrier> produced = producedCarrier(m_words, m_parameters);
        return produced ? std::optional(produced->carrier) : std::nullopt;
    }

    Parameters m_parameters;
    HardwareWords m_words;
};

TEST_F(PlanProducedCarrierTest, LoBelowTheCarrierHasTheIfAdded) {
    writeRfPll(8'930'000);
    writeIfPll(140'250);
    EXPECT_THAT(carrier(), Optional(18'000'250'000));
}

TEST_F(PlanProducedCarrierTest, LoAboveTheCarrierHasTheIfTakenAway) {
    m_parameters.rfSideband = 1;
    writeRfPll(9'070'000);
    writeIfPll(139'750);
    EXPECT_THAT(carrier(), Optional(18'000'250'000));
}

TEST_F(PlanProducedCarrierTest, BasebandOffsetIsNoPartOfTheIf) {
    m_parameters.ifBb = 30;
    writeRfPll(8'930'000);
    writeIfPll(170'250);
    EXPECT_THAT(carrier(), Optional(18'000'250'000));
}

TEST_F(PlanProducedCarrierTest, BasebandOffsetHasTheSignOfTheIfSideband) {
    m_parameters.ifBb = 30;
    m_parameters.ifSideband = -1;
    writeRfPll(8'930'000);
    writeIfPll(110'250);
    EXPECT_THAT(carrier(), Optional(18'000'250'000));
}

TEST_F(PlanProducedCarrierTest, LoIsTheWordTimesTheFactor) {
    m_parameters.factor = 3;
    writeRfPll(5'953'333);
    writeIfPll(140'000);
    EXPECT_EQ(producedCarrier(m_words, m_parameters)->lo, 17'859'999'000);
    EXPECT_THAT(carrier(), Optional(17'999'999'000));
}

TEST_F(PlanProducedCarrierTest, WithoutAnIfSynthesiserTheLoIsTheCarrier) {
    m_parameters.build.hasIfSynthesiser = false;
    writeRfPll(9'000'000);
    EXPECT_THAT(carrier(), Optional(18'000'000'000));
}

TEST_F(PlanProducedCarrierTest, WithoutAnIfSynthesiserABasebandOffsetDoesNotCount) {
    m_parameters.build.hasIfSynthesiser = false;
    m_parameters.ifBb = 30;
    writeRfPll(9'000'000);
    EXPECT_THAT(carrier(), Optional(18'000'000'000));
}

TEST_F(PlanProducedCarrierTest, WordInHzIsTakenAsItIs) {
    takeHz();
    writeRfPll(9'000'125'000);
    EXPECT_THAT(carrier(), Optional(18'000'250'000));
}

TEST_F(PlanProducedCarrierTest, DspShiftIsAdded) {
    takeHz();
    writeRfPll(8'999'125'000);
    m_words[Word::dspOffset] = 2000;
    EXPECT_THAT(carrier(), Optional(18'000'250'000));
}

TEST_F(PlanProducedCarrierTest, NegativeDspShiftIsTakenAway) {
    takeHz();
    writeRfPll(9'062'625'000);
    m_words[Word::dspOffset] = -125'000;
    EXPECT_THAT(carrier(), Optional(18'000'250'000));
}

TEST_F(PlanProducedCarrierTest, NoRfPllNoCarrier) {
    writeIfPll(140'250);
    EXPECT_EQ(carrier(), std::nullopt);
}

TEST_F(PlanProducedCarrierTest, NoWordForTheIfSynthesiserNoCarrier) {
    writeRfPll(8'930'000);
    EXPECT_EQ(carrier(), std::nullopt);
}

TEST_F(PlanProducedCarrierTest, WordInKHzHasNoSign) {
    m_parameters.build.hasIfSynthesiser = false;
    m_parameters.factor = 1;
    writeRfPll(-2'147'483'296);
    EXPECT_THAT(carrier(), Optional(2'147'484'000'000));
}

TEST_F(PlanProducedCarrierTest, CarrierBeyond64BitsIsNone) {
    takeHz();
    writeRfPll(std::int64_t{1} << 62U);
    EXPECT_EQ(carrier(), std::nullopt);
}

TEST_F(PlanProducedCarrierTest, CarrierThatIsPassedOnIsTheWord) {
    m_words[Word::carrier] = 7'442'000;
    EXPECT_EQ(passedOnCarrier(m_words)->carrier, 7'442'000'000);
}

TEST_F(PlanProducedCarrierTest, NothingPassedOnNoCarrier) {
    EXPECT_EQ(passedOnCarrier(m_words), std::nullopt);
}

} // namespace
} // namespace Radio::Plan
