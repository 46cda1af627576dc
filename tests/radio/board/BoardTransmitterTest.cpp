#include "tests/radio/support/BoardFileFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace Radio {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

const std::string curves = "gain_imbalance = [0.02, 1e-4, -2e-6]\n"
                           "phase_imbalance = [-1.5, 0.01, 0]\n"
                           "dc_offset_i = [1, 2, 3]\n"
                           "dc_offset_q = [4, 5, 6]\n";
const std::string steps = "gain_step = 0.0002\nphase_step = -0.01\ndc_step = 1\n";

class BoardTransmitterTest : public BoardFileFixture {
protected:
    /** The message about the transmitter of channel 1, which starts on line 5; `text` begins on line 7. */
    static std::string refusedTransmitter(const std::string& text) {
        return refusedAfterChannel("[[transmitter]]\nchannel = 1\n" + text);
    }
    /** The same with a gain_imbalance of `value`, on line 7. */
    static std::string refusedGainImbalance(const std::string& value) {
        return refusedTransmitter("gain_imbalance = " + value + "\n");
    }
};

// Channels with compensation.

TEST_F(BoardTransmitterTest, ChannelHasNoIqCompensationUnlessItSaysSo) {
    EXPECT_FALSE(loadAfterChannel("").channels.at(0).iqCompensation);
    EXPECT_FALSE(loadAfterChannel("iq_compensation = false\n").channels.at(0).iqCompensation);
    EXPECT_TRUE(loadAfterChannel("iq_compensation = true\n").channels.at(0).iqCompensation);
}

TEST_F(BoardTransmitterTest, IqCompensationIsTrueOrFalse) {
    EXPECT_EQ(refusedAfterChannel("iq_compensation = 1\n"),
              "board.toml:5: channel.iq_compensation: expected true or false, found 1");
    EXPECT_EQ(refusedAfterChannel("iq_compensation = \"yes\"\n"),
              "board.toml:5: channel.iq_compensation: expected true or false, found \"yes\"");
}

// Transmitters.

TEST_F(BoardTransmitterTest, BoardWithoutTransmittersHasNone) {
    EXPECT_THAT(loadAfterChannel("").transmitters, IsEmpty());
}

TEST_F(BoardTransmitterTest, TransmitterIsKept) {
    const Board board = loadAfterChannel("[[transmitter]]\nchannel = 1\n" + curves + steps);
    ASSERT_THAT(board.transmitters, SizeIs(1));
    const TransmitterDescription& transmitter = board.transmitters[0];
    EXPECT_EQ(transmitter.channel, 1);
    EXPECT_EQ(transmitter.gainImbalance.at25, 0.02);
    EXPECT_EQ(transmitter.gainImbalance.perDegree, 1e-4);
    EXPECT_EQ(transmitter.gainImbalance.perDegree2, -2e-6);
    EXPECT_EQ(transmitter.phaseImbalance.at25, -1.5);
    EXPECT_EQ(transmitter.gainStep, 0.0002);
    EXPECT_EQ(transmitter.phaseStep, -0.01);
}

TEST_F(BoardTransmitterTest, WholeNumbersWillDo) {
    const TransmitterDescription transmitter =
        loadAfterChannel("[[transmitter]]\nchannel = 1\n" + curves + steps).transmitters.at(0);
    EXPECT_EQ(transmitter.phaseImbalance.perDegree2, 0.0);
    EXPECT_EQ(transmitter.dcOffsetI.at25, 1.0);
    EXPECT_EQ(transmitter.dcOffsetI.perDegree, 2.0);
    EXPECT_EQ(transmitter.dcOffsetQ.perDegree2, 6.0);
    EXPECT_EQ(transmitter.dcStep, 1.0);
}

TEST_F(BoardTransmitterTest, TransmittersComeInTheOrderOfTheFile) {
    const Board board = loadAfterChannel("[[channel]]\nnumber = 0\ntype = 1\n"
                                         "[[transmitter]]\nchannel = 1\n" +
                                         curves + steps + "[[transmitter]]\nchannel = 0\n" + curves + steps);
    ASSERT_THAT(board.transmitters, SizeIs(2));
    EXPECT_EQ(board.transmitters[0].channel, 1);
    EXPECT_EQ(board.transmitters[1].channel, 0);
}

TEST_F(BoardTransmitterTest, TransmitterInSingleBracketsIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[transmitter]\nchannel = 1\n"),
              "board.toml:5: transmitter: expected [[transmitter]] tables, one for each transmitter, found a "
              "table");
}

TEST_F(BoardTransmitterTest, UnknownKeyIsRefusedAndTheNearestOffered) {
    EXPECT_EQ(
        refusedTransmitter("gain_imbalence = [0, 0, 0]\n"),
        "board.toml:7: transmitter.gain_imbalence: unknown key (did you mean \"gain_imbalance\"?), "
        "expected one of channel, gain_imbalance, phase_imbalance, dc_offset_i, dc_offset_q, gain_step, "
        "phase_step, dc_step");
}

TEST_F(BoardTransmitterTest, ChannelIsRequired) {
    EXPECT_EQ(
        refusedAfterChannel("[[transmitter]]\n" + curves + steps),
        "board.toml:5: transmitter.channel: missing, expected the number of one of the board's channels");
}

TEST_F(BoardTransmitterTest, ChannelIsOneOfTheBoards) {
    EXPECT_EQ(
        refusedAfterChannel("[[transmitter]]\nchannel = 2\n"),
        "board.toml:6: transmitter.channel: expected the number of one of the board's channels, found 2");
}

TEST_F(BoardTransmitterTest, ChannelHasOneTransmitter) {
    EXPECT_EQ(refusedTransmitter(curves + steps + "[[transmitter]]\nchannel = 1\n"),
              "board.toml:15: transmitter.channel: 1 has the transmitter on line 6, expected one for each "
              "channel");
}

TEST_F(BoardTransmitterTest, EveryCurveIsRequired) {
    EXPECT_EQ(
        refusedTransmitter(steps),
        "board.toml:5: transmitter.gain_imbalance: missing, expected the value at 25 degrees, its change "
        "per degree, and per degree squared");
}

TEST_F(BoardTransmitterTest, EveryStepIsRequired) {
    EXPECT_EQ(refusedTransmitter(curves + "gain_step = 1\nphase_step = 1\n"),
              "board.toml:5: transmitter.dc_step: missing, expected what one step of the correction changes");
}

TEST_F(BoardTransmitterTest, CurveHasThreeNumbers) {
    EXPECT_EQ(refusedGainImbalance("[1, 2]"),
              "board.toml:7: transmitter.gain_imbalance: expected the value at 25 degrees, its change per "
              "degree, and per degree squared: 3, found 2");
    EXPECT_EQ(refusedGainImbalance("[1, 2, 3, 4]"),
              "board.toml:7: transmitter.gain_imbalance: expected the value at 25 degrees, its change per "
              "degree, and per degree squared: 3, found 4");
    EXPECT_EQ(refusedGainImbalance("0.02"),
              "board.toml:7: transmitter.gain_imbalance: expected an array of at least one element, found "
              "0.02");
}

TEST_F(BoardTransmitterTest, NumbersLieWithinAMillion) {
    const std::string expected =
        "board.toml:7: transmitter.gain_imbalance: expected a number from -1000000 to 1000000, found ";
    EXPECT_EQ(refusedGainImbalance("[\"1\", 0, 0]"), expected + "\"1\"");
    EXPECT_EQ(refusedGainImbalance("[0, true, 0]"), expected + "true");
    EXPECT_EQ(refusedGainImbalance("[0, 0, nan]"), expected + "nan");
    EXPECT_EQ(refusedGainImbalance("[0, -inf, 0]"), expected + "-inf");
    EXPECT_EQ(refusedGainImbalance("[0, 0, 1000001]"), expected + "1000001");
    EXPECT_EQ(refusedGainImbalance("[-1e300, 0, 0]"), expected + "-1e+300");
}

TEST_F(BoardTransmitterTest, MillionIsAccepted) {
    EXPECT_EQ(refusedTransmitter("gain_imbalance = [1000000, -1e6, 1e6]\nphase_imbalance = [0, 0, 0]\n"
                                 "dc_offset_i = [0, 0, 0]\ndc_offset_q = [0, 0, 0]\n" +
                                 steps),
              "accepted");
}

TEST_F(BoardTransmitterTest, StepIsNotZero) {
    EXPECT_EQ(refusedTransmitter(curves + "gain_step = 0\n"),
              "board.toml:11: transmitter.gain_step: expected a number other than 0, found 0");
    EXPECT_EQ(refusedTransmitter(curves + "gain_step = 1\nphase_step = -0.0\n"),
              "board.toml:12: transmitter.phase_step: expected a number other than 0, found -0");
}

} // namespace
} // namespace Radio
