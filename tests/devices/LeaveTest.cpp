#include "DevicesFixture.h"
#include "Instrument.h"

namespace {

using namespace DeviceTests;

class LeaveTest : public DevicesFixture {
protected:
    Instrument instrument{[](const std::string& line) { return Reaction{line == "E?" ? "0\n" : ""}; }};
};

TEST_F(LeaveTest, ValuesForTheEndAreWrittenInTheOrderOfTheDescription) {
    addDriver("power", "", file("power", "1\n")).onExit = 0;
    addDriver("lo", "", file("lo", "5\n"));
    addDriver("mute", "", file("mute", "0\n")).onExit = 1;
    const auto writes = up().leave();
    ASSERT_EQ(writes.size(), 2U);
    EXPECT_EQ(writes[0].driver, "power");
    EXPECT_EQ(writes[0].value, 0);
    EXPECT_EQ(writes[0].code, 0);
    EXPECT_EQ(writes[1].driver, "mute");
    EXPECT_EQ(contentOf(directory / "power"), "0\n");
    EXPECT_EQ(contentOf(directory / "lo"), "5\n");
    EXPECT_EQ(contentOf(directory / "mute"), "1\n");
}

TEST_F(LeaveTest, NothingIsWrittenWhenNobodyLeaves) {
    addDriver("power", "", file("power", "1\n")).onExit = 0;
    up();
    hardware.reset();
    EXPECT_EQ(contentOf(directory / "power"), "1\n");
}

TEST_F(LeaveTest, OneThatFailsDoesNotKeepTheOthers) {
    addDriver("power", "", "/dev/full").onExit = 0;
    addDriver("range", "", file("range", "1\n")).onExit = 9;
    description.drivers.back().highest = 8;
    addDriver("mute", "", file("mute", "0\n")).onExit = 1;
    const auto writes = up().leave();
    ASSERT_EQ(writes.size(), 3U);
    EXPECT_EQ(writes[0].code, 0x8100 + ENOSPC);
    EXPECT_EQ(writes[1].code, 0x8100 + ERANGE);
    EXPECT_EQ(writes[2].code, 0);
    EXPECT_EQ(contentOf(directory / "range"), "1\n");
}

TEST_F(LeaveTest, LostConnectionIsMadeAgainFirst) {
    description.devices.push_back({"amplifier", Devices::DeviceDescription::Kind::scpi, instrument.address(),
                                   milliseconds(1000), "E?"});
    addDriver("power", "amplifier", "OUTP {}").onExit = 0;
    up();
    EXPECT_EQ(write("power", 1), 0);
    instrument.switchOff();
    EXPECT_NE(write("power", 1), 0);
    instrument.switchOn();
    instrument.heard();
    const auto writes = hardware->leave();
    ASSERT_EQ(writes.size(), 1U);
    EXPECT_EQ(writes[0].code, 0);
    EXPECT_EQ(instrument.heard(), (Lines{"OUTP 0", "E?"}));
}

TEST_F(LeaveTest, DeviceThatStaysAwayCostsItsTimeLimitOnce) {
    description.devices.push_back(
        {"amplifier", Devices::DeviceDescription::Kind::scpi, instrument.address(), milliseconds(300)});
    addDriver("power", "amplifier", "OUTP {}").onExit = 0;
    addDriver("mute", "amplifier", "MUTE {}").onExit = 1;
    up().examine(false);
    instrument.switchOff();
    EXPECT_NE(write("power", 1), 0);
    const milliseconds time = elapsed([&] {
        for (const auto& exit : hardware->leave()) {
            EXPECT_EQ(exit.code, 0x8100 + ENOTCONN);
        }
    });
    EXPECT_LT(time, milliseconds(900));
}

} // namespace
