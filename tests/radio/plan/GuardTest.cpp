#include "radio/plan/Guard.h"

#include "radio/session/BootedRadio.h"
#include "tests/radio/support/BoardFileFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace Radio::Plan {
namespace {

using testing::HasSubstr;

/** What speaks against commands before they are carried out. */
class GuardTest : public BoardFileFixture {
protected:
    static Board board() {
        return load(
            "name = \"Radio\"\n[[channel]]\nnumber = 1\ntype = \"rf-module\"\n[drivers]\n"
            "\"channel.1.tx.rf.frequency\" = {}\n\"channel.1.rx.rf.frequency\" = {}\n"
            "[limits]\ntemperature = [-33, 55]\n"
            "[[raster]]\nname = \"R\"\ndirection = \"tx\"\nfirst = 7000000\nlast = 7000100\nstep = 10\n");
    }
    std::string whyNot(const Action& action, bool hasSensor = false) {
        const Board radio = board();
        BootedRadio booted(radio);
        booted.requireUp();
        return Guard(radio, hasSensor).whyNot(action, booted.radio().platform());
    }
};

TEST_F(GuardTest, CarrierOutsideTheRastersIsSpokenAgainst) {
    EXPECT_EQ(whyNot(Tune{Direction::tx, 1, 7000050}), "");
    EXPECT_THAT(whyNot(Tune{Direction::tx, 1, 7000101}), HasSubstr("7000101 kHz is outside the rasters"));
}

TEST_F(GuardTest, TemperatureIsHeldAgainstTheLimitsOrIsTheSensors) {
    EXPECT_EQ(whyNot(SetTemperature{55, false}), "");
    EXPECT_THAT(whyNot(SetTemperature{56, false}), HasSubstr("56"));
    EXPECT_EQ(whyNot(SetTemperature{55, false}, true),
              "the temperature is that of the sensor, which is told again as soon as it changes");
}

TEST_F(GuardTest, OtherCommandsAreNotSpokenAgainst) {
    EXPECT_EQ(whyNot(Wait{}), "");
    EXPECT_EQ(whyNot(WriteDriver{"channel.1.tx.rf.frequency", 1, false}), "");
}

} // namespace
} // namespace Radio::Plan
