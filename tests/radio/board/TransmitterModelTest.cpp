#include "radio/model/TransmitterModel.h"

#include "radio/board/Board.h"
#include "radio/board/BoardFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace Radio {
namespace {

/** A hundredth of a dB. */
constexpr double tolerance = 0.005;

using testing::ElementsAre;

/** The words of the demonstration board's tables at their nodes, and what the model makes of them. */
class DemonstrationBoardTest : public testing::Test {
protected:
    /** A correction of the transmitter `index` at a node of its temperature table, counted from the coldest.
     */
    std::int32_t word(std::size_t index, const std::string& quantity, std::size_t node) const {
        const std::string name = "Channel." + std::to_string(m_board.transmitters.at(index).channel) +
                                 ".Tx.Dsp.Temperature.To." + quantity + ".Compensation";
        const auto table =
            std::find_if(m_board.tables.begin(), m_board.tables.end(),
                         [&](const TableDescription& entry) { return entry.table.name == name; });
        return table->table.values.at(node);
    }
    IqCorrections words(std::size_t index, std::size_t node) const {
        return {word(index, "Dc.I", node), word(index, "Dc.Q", node), word(index, "Gain.Offset", node),
                word(index, "Phase.Offset", node)};
    }
    static std::vector<std::int32_t> list(const IqCorrections& words) {
        return {words.dcI, words.dcQ, words.gain, words.phase};
    }

    const Board m_board = loadBoard(RADIO_BOARDS "/iq-compensation-18ghz.toml");
    const std::vector<double> m_nodes = {-33, -25, -15, -5, 5, 15, 25, 35, 45, 55};
};

TEST_F(DemonstrationBoardTest, WordsOfOneNodeAreThoseWorkedOutByHand) {
    EXPECT_THAT(list(words(0, 3)), ElementsAre(-131, 99, -99, -149));
    EXPECT_THAT(list(idealCorrections(m_board.transmitters[0], -5.0)), ElementsAre(-131, 99, -99, -149));
}

TEST_F(DemonstrationBoardTest, TablesHoldTheIdealWordsOfEveryNode) {
    for (std::size_t index = 0; index < 2; ++index) {
        for (std::size_t node = 0; node < m_nodes.size(); ++node) {
            EXPECT_EQ(list(words(index, node)),
                      list(idealCorrections(m_board.transmitters.at(index), m_nodes[node])))
                << "transmitter " << index << ", " << m_nodes[node] << " degrees";
        }
    }
}

/** A transmitter with nothing wrong, for a test to spoil. One step is 1 %, or half a degree. */
class TransmitterModelTest : public testing::Test {
protected:
    TransmitterModelTest() {
        m_transmitter.gainStep = 0.01;
        m_transmitter.phaseStep = 0.5;
        m_transmitter.dcStep = 0.01;
    }
    double image(const IqCorrections& corrections = {}, double temperature = 25.0) const {
        return cleanlinessOf(m_transmitter, temperature, corrections).image;
    }
    double leakage(const IqCorrections& corrections = {}, double temperature = 25.0) const {
        return cleanlinessOf(m_transmitter, temperature, corrections).carrierLeakage;
    }
    IqCorrections ideal(double temperature = 25.0) const {
        return idealCorrections(m_transmitter, temperature);
    }

    TransmitterDescription m_transmitter;
};

TEST_F(TransmitterModelTest, CurveIsAParabolaAround25Degrees) {
    const ThermalCurve curve{2.0, 0.5, 0.125};
    EXPECT_EQ(curve.at(25.0), 2.0);
    EXPECT_EQ(curve.at(33.0), 2.0 + 4.0 + 8.0);
    EXPECT_EQ(curve.at(17.0), 2.0 - 4.0 + 8.0);
    EXPECT_EQ(curve.at(-15.0), 2.0 - 20.0 + 200.0);
}

// The image.

TEST_F(TransmitterModelTest, GainErrorAloneGivesItsShareOfTheSumAsImage) {
    // 20 log10 (g / (2 + g)): 0.01 / 2.01, and 2 / 4 = 1/2.
    m_transmitter.gainImbalance.at25 = 0.01;
    EXPECT_NEAR(image(), -46.06, tolerance);
    m_transmitter.gainImbalance.at25 = 2.0;
    EXPECT_NEAR(image(), -6.02, tolerance);
}

TEST_F(TransmitterModelTest, PhaseErrorAloneGivesTheTangentOfItsHalfAsImage) {
    // 20 log10 tan(phi / 2): tan 0.5 degrees = 0.0087269, tan 45 degrees = 1.
    m_transmitter.phaseImbalance.at25 = 1.0;
    EXPECT_NEAR(image(), -41.18, tolerance);
    m_transmitter.phaseImbalance.at25 = -90.0;
    EXPECT_NEAR(image(), 0.0, tolerance);
}

TEST_F(TransmitterModelTest, GainAndPhaseErrorMakeOneImage) {
    // G = 2, phi = 60 degrees: |K2 / K1|^2 = (1 + 4 - 2) / (1 + 4 + 2) = 3 / 7.
    m_transmitter.gainImbalance.at25 = 1.0;
    m_transmitter.phaseImbalance.at25 = 60.0;
    EXPECT_NEAR(image(), -3.68, tolerance);
}

TEST_F(TransmitterModelTest, GainWordMultipliesTheGain) {
    // 1.25 * (1 - 0.2) = 1; 1.25 * (1 - 0.19) = 1.0125, 20 log10 (0.0125 / 2.0125).
    m_transmitter.gainImbalance.at25 = 0.25;
    EXPECT_EQ(image({0, 0, -20, 0}), -120.0);
    EXPECT_NEAR(image({0, 0, -19, 0}), -44.14, tolerance);
}

TEST_F(TransmitterModelTest, PhaseWordAddsItsStepsToThePhase) {
    // 3 - 4 * 0.5 = 1 degree.
    m_transmitter.phaseImbalance.at25 = 3.0;
    EXPECT_NEAR(image({0, 0, 0, -4}), -41.18, tolerance);
    EXPECT_EQ(image({0, 0, 0, -6}), -120.0);
}

TEST_F(TransmitterModelTest, DcOffsetMakesNoImage) {
    m_transmitter.dcOffsetI.at25 = 0.1;
    EXPECT_EQ(image({5, 7, 0, 0}), -120.0);
}

TEST_F(TransmitterModelTest, ImageWithoutASignalStaysFinite) {
    // G = 1, phi = 180 degrees: the signal is all in the image.
    m_transmitter.phaseImbalance.at25 = 180.0;
    EXPECT_EQ(image(), 120.0);
}

// The leaking carrier.

TEST_F(TransmitterModelTest, CarrierLeaksByTheLengthOfTheDcOffset) {
    // |0.03 + 0.04 j| = 0.05: 20 log10 0.05.
    m_transmitter.dcOffsetI.at25 = 0.03;
    m_transmitter.dcOffsetQ.at25 = -0.04;
    EXPECT_NEAR(leakage(), -26.02, tolerance);
}

TEST_F(TransmitterModelTest, EachDcWordMovesItsOwnBranch) {
    // |0.03 + 0.01 j|^2 = 0.001; |0.01 + 0.03 j|^2 = 0.001; |0.04 + 0.03 j| = 0.05.
    m_transmitter.dcOffsetI.at25 = 0.03;
    m_transmitter.dcOffsetQ.at25 = 0.03;
    EXPECT_NEAR(leakage({0, -2, 0, 0}), -30.0, tolerance);
    EXPECT_NEAR(leakage({-2, 0, 0, 0}), -30.0, tolerance);
    EXPECT_NEAR(leakage({1, 0, 0, 0}), -26.02, tolerance);
}

TEST_F(TransmitterModelTest, GainAndPhaseLeaveTheLeakageAlone) {
    m_transmitter.gainImbalance.at25 = 0.5;
    m_transmitter.dcOffsetQ.at25 = 0.1;
    EXPECT_NEAR(leakage({0, 0, 30, -8}), -20.0, tolerance);
}

TEST_F(TransmitterModelTest, FaultlessTransmitterIsAtTheFloor) {
    EXPECT_EQ(image(), -120.0);
    EXPECT_EQ(leakage(), -120.0);
}

TEST_F(TransmitterModelTest, EverythingFollowsTheTemperature) {
    // At 35 degrees: gain 0.01, DC 0.1.
    m_transmitter.gainImbalance.perDegree = 0.001;
    m_transmitter.dcOffsetI.perDegree2 = 0.001;
    EXPECT_NEAR(image({}, 35.0), -46.06, tolerance);
    EXPECT_NEAR(leakage({}, 35.0), -20.0, tolerance);
}

// The words that serve best.

TEST_F(TransmitterModelTest, IdealWordsCancelToTheNearestStep) {
    // -1.23 and 2.7 steps; 1 / 1.25 = 0.8, 20 steps; -2.52 steps.
    m_transmitter.dcOffsetI.at25 = 0.0123;
    m_transmitter.dcOffsetQ.at25 = -0.027;
    m_transmitter.gainImbalance.at25 = 0.25;
    m_transmitter.phaseImbalance.at25 = 1.26;
    EXPECT_EQ(ideal().dcI, -1);
    EXPECT_EQ(ideal().dcQ, 3);
    EXPECT_EQ(ideal().gain, -20);
    EXPECT_EQ(ideal().phase, -3);
}

TEST_F(TransmitterModelTest, IdealWordsFollowTheTemperature) {
    // 5 degrees above 25: 0.1 = 10 steps, 2 degrees = 4 steps.
    m_transmitter.dcOffsetI.perDegree = 0.02;
    m_transmitter.phaseImbalance.perDegree = -0.4;
    EXPECT_EQ(ideal(30.0).dcI, -10);
    EXPECT_EQ(ideal(30.0).phase, 4);
    EXPECT_EQ(ideal(20.0).dcI, 10);
}

TEST_F(TransmitterModelTest, NegativeStepTurnsTheWordRound) {
    m_transmitter.dcOffsetI.at25 = 0.05;
    m_transmitter.dcStep = -0.01;
    EXPECT_EQ(ideal().dcI, 5);
    EXPECT_EQ(leakage(ideal()), -120.0);
}

TEST_F(TransmitterModelTest, WordBeyond32BitsStopsAtTheirEnd) {
    // A gain of 0 cannot be mended.
    m_transmitter.gainImbalance.at25 = -1.0;
    m_transmitter.dcOffsetI.at25 = 1.0;
    m_transmitter.dcStep = 1e-300;
    EXPECT_EQ(ideal().gain, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(ideal().dcI, std::numeric_limits<std::int32_t>::min());
}

} // namespace
} // namespace Radio
