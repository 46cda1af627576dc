#include "radio/plan/TuneCheck.h"

#include "radio/session/BootedRadio.h"
#include "tests/radio/support/BoardFileFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace Radio::Plan {
namespace {

using testing::HasSubstr;

/** What a board forbids, before it is written. */
class TuneCheckTest : public BoardFileFixture {
protected:
    /**
     * A radio set in Hz, three times its synthesiser: 21000000 kHz are 7000000000 Hz. It has carriers every
     * 28 MHz from 21000 to 21280 MHz to transmit, and no raster to receive.
     */
    static Board board(const std::string& more = "") {
        std::string text = "name = \"Radio\"\n[[channel]]\nnumber = 1\ntype = \"microwave-hz\"\n[drivers]\n";
        for (const std::string direction : {"tx", "rx"}) {
            for (const std::string driver : {"frequency", "frequency.in.hz", "config"}) {
                text += "\"channel.1." + direction + ".rf.lo." + driver + "\" = {}\n";
            }
        }
        text += "\"channel.1.tx.rf.mixer.i\" = {}\n\"channel.1.tx.rf.mixer.q\" = "
                "{}\n\"channel.1.tx.rf.detector.v\" = "
                "{}\n[variables]\nTxIfBb = 0\nRxIfBb = 0\n";
        for (const std::string direction : {"tx", "rx"}) {
            text += "\"channel.1." + direction + ".mixer.multiplicationfactor\" = 3\n\"channel.1." +
                    direction + ".rf.spectruminverted\" = 0\n\"channel.1." + direction +
                    ".baseband.spectruminverted\" = 0\n";
        }
        text +=
            "[[raster]]\nname = \"R\"\ndirection = \"tx\"\nfirst = 21000000\nlast = 21280000\nstep = 28000\n";
        return load(text + more);
    }
    static std::string whyNot(const Board& board, Direction direction, std::uint32_t carrier) {
        BootedRadio booted(board);
        booted.requireUp();
        return whyNotTune(board, booted.radio().platform(), direction, 1, carrier);
    }
};

TEST_F(TuneCheckTest, CarriersFromTheFirstToTheLastOfARasterAreAllowed) {
    const Board radio = board();
    EXPECT_EQ(whyNot(radio, Direction::tx, 21000000), "");
    EXPECT_EQ(whyNot(radio, Direction::tx, 21014001), "");
    EXPECT_EQ(whyNot(radio, Direction::tx, 21280000), "");
}

TEST_F(TuneCheckTest, CarriersOutsideTheRastersAreNot) {
    const Board radio = board();
    for (const std::string carrier : {"20999999", "21280001", "4294967295"}) {
        EXPECT_EQ(whyNot(radio, Direction::tx, static_cast<std::uint32_t>(std::stoul(carrier))),
                  carrier + " kHz is outside the rasters of the board for tx 1: 21000000 to 21280000 kHz");
    }
}

TEST_F(TuneCheckTest, CarrierBetweenTwoRastersIsInNone) {
    const Board radio =
        board("[[raster]]\nname = \"S\"\ndirection = \"tx\"\nfirst = 22000000\nlast = 22280000\n"
              "step = 28000\n");
    EXPECT_EQ(whyNot(radio, Direction::tx, 22028000), "");
    EXPECT_EQ(
        whyNot(radio, Direction::tx, 21500000),
        "21500000 kHz is outside the rasters of the board for tx 1: 21000000 to 21280000 and 22000000 to "
        "22280000 kHz");
}

TEST_F(TuneCheckTest, CarrierInAnotherUnitIsGuessed) {
    const Board radio = board();
    EXPECT_EQ(whyNot(radio, Direction::tx, 21028),
              "21028 kHz is outside the rasters of the board for tx 1 (did you mean 21028 MHz?): 21000000 to "
              "21280000 kHz");
    EXPECT_EQ(
        whyNot(radio, Direction::tx, 21),
        "21 kHz is outside the rasters of the board for tx 1 (did you mean 21 GHz?): 21000000 to 21280000 "
        "kHz");
}

TEST_F(TuneCheckTest, DirectionWithoutARasterIsNotLimitedByOne) {
    EXPECT_EQ(whyNot(board(), Direction::rx, 22442001), "");
}

TEST_F(TuneCheckTest, SynthesiserBeyondTheLimitsIsForbidden) {
    const Board radio = board("[limits]\nrf_pll = [7000000, 7050000]\ncarrier_error = 3\n");
    EXPECT_EQ(whyNot(radio, Direction::tx, 21140000), "");
    // 21168000000 / 3 = 7056000000
    EXPECT_EQ(whyNot(radio, Direction::tx, 21168000),
              "21168000 kHz: RF PLL 7056000000 Hz is outside 7000000000 to 7050000000 Hz");
    EXPECT_EQ(whyNot(radio, Direction::rx, 20999997),
              "20999997 kHz: RF PLL 6999999000 Hz is outside 7000000000 to 7050000000 Hz");
}

TEST_F(TuneCheckTest, CarrierThatComesOutTooFarOffIsForbidden) {
    // 21028000000 / 3 = 7009333333 and a third: 1 Hz is lost.
    EXPECT_EQ(whyNot(board("[limits]\ncarrier_error = 1\n"), Direction::tx, 21028000), "");
    EXPECT_EQ(whyNot(board("[limits]\ncarrier_error = 0\n"), Direction::tx, 21028000),
              "21028000 kHz: carrier off by -1 Hz, allowed are 0 Hz");
}

TEST_F(TuneCheckTest, WithoutALimitACarrierMayComeOutOff) {
    // Through a synthesiser of 65536 Hz a step, as it were: a factor of 65536 leaves thousands of Hz.
    const Board radio = board();
    BootedRadio booted(radio);
    booted.radio().platform().variables().find("channel.1.rx.mixer.multiplicationfactor")->set({65536});
    EXPECT_EQ(whyNotTune(radio, booted.radio().platform(), Direction::rx, 1, 21028001), "");
}

TEST_F(TuneCheckTest, WordOutsideTheRangeOfItsDriverIsForbidden) {
    const Board radio = board("[hardware.\"channel.1.tx.rf.lo.frequency.in.hz\"]\nwrite = \"/f\"\n"
                              "range = [7000000000, 7009333333]\n");
    EXPECT_EQ(whyNot(radio, Direction::tx, 21028000), "");
    EXPECT_EQ(whyNot(radio, Direction::tx, 21056000), "21056000 kHz: \"channel.1.tx.rf.lo.frequency.in.hz\" "
                                                      "takes 7000000000 to 7009333333, not 7018666666");
}

TEST_F(TuneCheckTest, TemperatureOutsideTheLimitsIsForbidden) {
    const Board radio = board("[limits]\ntemperature = [-33, 55]\n");
    EXPECT_EQ(whyNotTemperature(radio, -33), "");
    EXPECT_EQ(whyNotTemperature(radio, 55), "");
    EXPECT_EQ(whyNotTemperature(radio, 56), "56 degrees are outside the board's -33 to 55");
    EXPECT_EQ(whyNotTemperature(board(), 1000), "");
}

TEST_F(TuneCheckTest, FactorOfZeroIsLeftToTheRadio) {
    const Board radio = board();
    BootedRadio booted(radio);
    booted.radio().platform().variables().find("channel.1.tx.mixer.multiplicationfactor")->set({0});
    EXPECT_EQ(whyNotTune(radio, booted.radio().platform(), Direction::tx, 1, 21028000), "");
}

} // namespace
} // namespace Radio::Plan
