#include "radio/board/HardwareRanges.h"
#include "tests/radio/support/BoardFileFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace Radio {
namespace {

using Devices::Conversion;
using Devices::DeviceDescription;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using namespace std::chrono_literals;

/** Boards that say what their drivers are in hardware. */
class BoardHardwareTest : public BoardFileFixture {
protected:
    /** A board with the drivers "a" and "b" and the devices "rf" (line 8) and "rack" (line 9); `text` begins
     * on line 10. */
    static Board loadAfterDevices(const std::string& text) {
        return loadAfterChannel("[drivers]\n\"a\" = {}\n\"b\" = {}\n[devices]\n"
                                "rf = { uri = \"ip:192.168.2.1\" }\n"
                                "rack = { scpi = \"10.0.0.5\" }\n" +
                                text);
    }
    static Devices::DriverHardware hardwareOf(const std::string& keys) {
        const Board board = loadAfterDevices("[hardware.a]\n" + keys);
        return board.hardware.description.drivers.at(0);
    }
    static std::string refusedDevices(const std::string& text) {
        return refusedAfterChannel("[devices]\n" + text);
    }
    static std::string refusedHardware(const std::string& keys) {
        return refusal([&] { loadAfterDevices("[hardware.a]\n" + keys); });
    }
};

// Devices.

TEST_F(BoardHardwareTest, WithoutSectionsThereIsNoHardware) {
    EXPECT_TRUE(loadAfterChannel("").hardware.description.isEmpty());
}

TEST_F(BoardHardwareTest, DeviceHasAUriAndOneSecondUnlessItSaysOtherwise) {
    const Board board = loadAfterChannel("[devices]\nrf = { uri = \"ip:192.168.2.1\" }\n"
                                         "lo = { uri = \"local:\", time_limit = 250 }\n");
    const std::vector<DeviceDescription>& devices = board.hardware.description.devices;
    ASSERT_THAT(devices, SizeIs(2));
    EXPECT_EQ(devices[0].name, "rf");
    EXPECT_EQ(devices[0].kind, DeviceDescription::Kind::iio);
    EXPECT_EQ(devices[0].address, "ip:192.168.2.1");
    EXPECT_EQ(devices[0].timeLimit, 1000ms);
    EXPECT_EQ(devices[1].timeLimit, 250ms);
}

TEST_F(BoardHardwareTest, InstrumentListensOnPort5025UnlessItSaysOtherwise) {
    const Board board =
        loadAfterChannel("[devices]\na = { scpi = \"10.0.0.5\" }\nb = { scpi = \"rack:4000\" }\n"
                         "c = { scpi = \"[fe80::1]\", error_query = \"SYST:ERR?\" }\n");
    const std::vector<DeviceDescription>& devices = board.hardware.description.devices;
    ASSERT_THAT(devices, SizeIs(3));
    EXPECT_EQ(devices[0].kind, DeviceDescription::Kind::scpi);
    EXPECT_EQ(devices[0].address, "10.0.0.5:5025");
    EXPECT_EQ(devices[1].address, "rack:4000");
    EXPECT_EQ(devices[2].address, "[fe80::1]:5025");
    EXPECT_EQ(devices[2].errorQuery, "SYST:ERR?");
}

TEST_F(BoardHardwareTest, DevicesThatCannotBeAreRefused) {
    EXPECT_EQ(refusedDevices("rf = {}\n"), "board.toml:6: devices.rf: expected either uri, of IIO devices, "
                                           "or scpi, of an instrument, found neither");
    EXPECT_EQ(refusedDevices("rf = { uri = \"local:\", scpi = \"10.0.0.5\" }\n"),
              "board.toml:6: devices.rf: expected either uri, of IIO devices, or scpi, of an instrument, "
              "found both");
    EXPECT_EQ(refusedDevices("rf = { uri = \"192.168.2.1\" }\n"),
              "board.toml:6: devices.rf.uri: expected a URI that begins with local:, ip:, usb:, serial: or "
              "xml:, found "
              "\"192.168.2.1\"");
    EXPECT_EQ(
        refusedDevices("rack = { scpi = \"10.0.0.5:port\" }\n"),
        "board.toml:6: devices.rack.scpi: expected a host and its port, such as \"192.168.2.9:5025\", found "
        "\"10.0.0.5:port\"");
    EXPECT_EQ(
        refusedDevices("rack = { scpi = \"10.0.0.5:65536\" }\n"),
        "board.toml:6: devices.rack.scpi: expected a host and its port, such as \"192.168.2.9:5025\", found "
        "\"10.0.0.5:65536\"");
    EXPECT_EQ(refusedDevices("rf = { uri = \"local:\", time_limit = 600001 }\n"),
              "board.toml:6: devices.rf.time_limit: expected a time from 1 to 600000 ms, found 600001");
    EXPECT_EQ(refusedDevices("rf = { uri = \"local:\", error_query = \"SYST:ERR?\" }\n"),
              "board.toml:6: devices.rf.error_query: only instruments are asked for errors");
    EXPECT_THAT(refusedDevices("rf = { url = \"local:\" }\n"), HasSubstr("devices.rf.url: unknown key"));
}

// What drivers are.

TEST_F(BoardHardwareTest, DriverIsAnAttributeAsItIsUnlessItSaysOtherwise) {
    const Devices::DriverHardware hardware = hardwareOf("device = \"rf\"\nwrite = \"adf4371/frequency\"\n");
    EXPECT_EQ(hardware.driver, "a");
    ASSERT_TRUE(hardware.write);
    EXPECT_EQ(hardware.write->device, "rf");
    EXPECT_EQ(hardware.write->attribute, "adf4371/frequency");
    EXPECT_FALSE(hardware.negative);
    EXPECT_FALSE(hardware.read);
    EXPECT_EQ(hardware.conversion.scale, 1);
    EXPECT_EQ(hardware.conversion.offset, 0);
    EXPECT_EQ(hardware.conversion.rounding, Conversion::Rounding::nearest);
    EXPECT_EQ(hardware.conversion.decimals, 0);
    EXPECT_FALSE(hardware.lowest);
    EXPECT_FALSE(hardware.highest);
    EXPECT_FALSE(hardware.onExit);
}

TEST_F(BoardHardwareTest, DriverHasAllThatItSays) {
    const Devices::DriverHardware hardware =
        hardwareOf("device = \"rf\"\nwrite = \"m/p/calibbias\"\n"
                   "read_device = \"rack\"\nread = \"MEAS?\"\nscale = 0.5\noffset = -3\nrounding = \"down\"\n"
                   "decimals = 2\nrange = [-7135333333, 7135333333]\non_exit = -7135333333\n");
    EXPECT_EQ(hardware.write->attribute, "m/p/calibbias");
    EXPECT_EQ(hardware.read->device, "rack");
    EXPECT_EQ(hardware.read->attribute, "MEAS?");
    EXPECT_EQ(hardware.conversion.scale, 0.5);
    EXPECT_EQ(hardware.conversion.offset, -3);
    EXPECT_EQ(hardware.conversion.rounding, Conversion::Rounding::down);
    EXPECT_EQ(hardware.conversion.decimals, 2);
    EXPECT_EQ(hardware.lowest, -7135333333);
    EXPECT_EQ(hardware.highest, 7135333333);
    EXPECT_EQ(hardware.onExit, -7135333333);
}

TEST_F(BoardHardwareTest, DriverMayBeTheOffsetBetweenTwoAttributes) {
    const Devices::DriverHardware hardware =
        hardwareOf("device = \"rf\"\nwrite = \"m/p/calibbias\"\nnegative = \"m/n/calibbias\"\n");
    EXPECT_EQ(hardware.negative->device, "rf");
    EXPECT_EQ(hardware.negative->attribute, "m/n/calibbias");
}

TEST_F(BoardHardwareTest, DriverWithoutADeviceIsAFile) {
    const Devices::DriverHardware hardware = hardwareOf("write = \"/sys/class/pwm/duty_cycle\"\n");
    EXPECT_EQ(hardware.write->device, "");
    EXPECT_EQ(hardware.write->attribute, "/sys/class/pwm/duty_cycle");
    EXPECT_EQ(refusedHardware("write = \"duty_cycle\"\n"),
              "board.toml:12: hardware.a.write: expected the path of a file from the root on, or a device "
              "beside it, "
              "found \"duty_cycle\"");
}

TEST_F(BoardHardwareTest, DriversThatCannotBeAreRefused) {
    EXPECT_EQ(refusal([] { loadAfterDevices("[hardware.c]\nwrite = \"/f\"\n"); }),
              "board.toml:11: hardware.c: the board has no driver \"c\" (did you mean \"a\"?), expected one "
              "of [drivers]");
    EXPECT_EQ(refusedHardware("device = \"rf\"\n"),
              "board.toml:11: hardware.a: expected write, read or both, found neither");
    EXPECT_EQ(refusedHardware("read = \"/f\"\nnegative = \"/g\"\n"),
              "board.toml:11: hardware.a: expected write for the values above 0 beside negative");
    EXPECT_EQ(
        refusedHardware("device = \"fr\"\nwrite = \"adf4371/frequency\"\n"),
        "board.toml:12: hardware.a.device: no device \"fr\" (did you mean \"rf\"?), expected rf or rack");
    EXPECT_EQ(refusedHardware("write = \"/f\"\nscale = 0\n"),
              "board.toml:13: hardware.a.scale: expected a number other than 0, found 0");
    EXPECT_EQ(refusedHardware("write = \"/f\"\ndecimals = 10\n"),
              "board.toml:13: hardware.a.decimals: expected 0 to 9 decimals, found 10");
    EXPECT_THAT(refusedHardware("write = \"/f\"\nrounding = \"sideways\"\n"),
                HasSubstr("board.toml:13: hardware.a.rounding: unknown word \"sideways\""));
}

TEST_F(BoardHardwareTest, AttributesHaveTheFormOfTheirDevice) {
    for (const std::string name : {"frequency", "/frequency", "adf4371/", "a/b/c/d", "a//b"}) {
        EXPECT_EQ(
            refusedHardware("device = \"rf\"\nwrite = \"" + name + "\"\n"),
            "board.toml:13: hardware.a.write: expected \"DEVICE/ATTRIBUTE\" or \"DEVICE/CHANNEL/ATTRIBUTE\", "
            "found \"" +
                name + "\"");
    }
    EXPECT_EQ(refusedHardware("device = \"rack\"\nwrite = \"FREQ 5\"\n"),
              "board.toml:13: hardware.a.write: expected a command with \"{}\" where the value stands, found "
              "\"FREQ "
              "5\"");
    EXPECT_EQ(refusedHardware("device = \"rack\"\nread = \"FREQ\"\n"),
              "board.toml:13: hardware.a.read: expected a query that ends with \"?\", found \"FREQ\"");
    EXPECT_EQ(refusedHardware("device = \"rack\"\nread = \"FREQ {}?\"\n"),
              "board.toml:13: hardware.a.read: expected a query that ends with \"?\", found \"FREQ {}?\"");
}

TEST_F(BoardHardwareTest, RangesAndExitValuesFitTogether) {
    EXPECT_EQ(refusedHardware("write = \"/f\"\nrange = [5, -5]\n"),
              "board.toml:13: hardware.a.range: expected the lowest value first, found -5 after 5");
    EXPECT_EQ(refusedHardware("write = \"/f\"\nrange = [5]\n"),
              "board.toml:13: hardware.a.range: expected the lowest and the highest value: 2, found 1");
    EXPECT_EQ(refusedHardware("write = \"/f\"\nrange = [0, 1.5]\n"),
              "board.toml:13: hardware.a.range: expected a whole number, found 1.5");
    EXPECT_EQ(refusedHardware("write = \"/f\"\nrange = [0, 5]\non_exit = 6\n"),
              "board.toml:14: hardware.a.on_exit: expected a value within the range, found 6");
    EXPECT_EQ(refusedHardware("read = \"/f\"\non_exit = 6\n"),
              "board.toml:13: hardware.a.on_exit: a driver that is only read cannot be written");
}

TEST_F(BoardHardwareTest, AttributeIsWrittenByOneDriver) {
    EXPECT_EQ(refusal([] {
                  loadAfterDevices(
                      "[hardware.a]\nwrite = \"/f\"\n[hardware.b]\nwrite = \"/g\"\nnegative = \"/f\"\n");
              }),
              "board.toml:13: hardware.b: writes what \"a\" writes, expected an attribute of its own");
    EXPECT_EQ(
        refusal([] { loadAfterDevices("[hardware.a]\nwrite = \"/f\"\n[hardware.b]\nread = \"/f\"\n"); }),
        "accepted");
}

TEST_F(BoardHardwareTest, OffsetOfTwoSidesIsNone) {
    EXPECT_EQ(
        refusedHardware("write = \"/f\"\nnegative = \"/g\"\noffset = 1\n"),
        "board.toml:14: hardware.a.offset: 0 of the driver has to be 0 on both sides, expected no offset");
}

// The sensor.

TEST_F(BoardHardwareTest, SensorIsAnAttributeOrAChip) {
    const Board attribute = loadAfterDevices("[sensor]\ndevice = \"rf\"\nread = \"tmp102/temp0/input\"\n"
                                             "scale = 0.001\ninterval = 200\n");
    ASSERT_TRUE(attribute.hardware.description.sensor);
    EXPECT_EQ(attribute.hardware.description.sensor->attribute->attribute, "tmp102/temp0/input");
    EXPECT_EQ(attribute.hardware.description.sensor->scale, 0.001);
    EXPECT_EQ(attribute.hardware.description.sensor->interval, 200ms);
    const Board chip = loadAfterDevices("[sensor]\nchip = \"tmp102-*\"\nfeature = \"temp1\"\n");
    EXPECT_EQ(chip.hardware.description.sensor->chip, "tmp102-*");
    EXPECT_EQ(chip.hardware.description.sensor->feature, "temp1");
    EXPECT_EQ(chip.hardware.description.sensor->interval, 1000ms);
}

TEST_F(BoardHardwareTest, SensorsThatCannotBeAreRefused) {
    EXPECT_EQ(
        refusal([] { loadAfterDevices("[sensor]\nscale = 1\n"); }),
        "board.toml:11: sensor: expected either read, an attribute, or chip and feature, found neither");
    EXPECT_EQ(refusal([] { loadAfterDevices("[sensor]\nchip = \"tmp102-*\"\nread = \"/f\"\n"); }),
              "board.toml:11: sensor: expected either read, an attribute, or chip and feature, found both");
    EXPECT_EQ(refusal([] { loadAfterDevices("[sensor]\nchip = \"tmp102-*\"\n"); }),
              "board.toml:11: sensor.feature: missing, expected a feature of the chip, such as \"temp1\"");
}

// Values that go to hardware.

TEST_F(BoardHardwareTest, ValueOutsideTheRangeOfItsDriverIsForbidden) {
    const Board board =
        load("name = \"Radio\"\n[[channel]]\nnumber = 1\ntype = \"rf-module\"\n"
             "[drivers]\n\"i\" = {}\n\"q\" = {}\n"
             "[hardware.i]\nwrite = \"/i\"\nrange = [-127, 127]\n[hardware.q]\nwrite = \"/q\"\n");
    EXPECT_EQ(whyNotWrite(board, "i", -127), "");
    EXPECT_EQ(whyNotWrite(board, "i", 127), "");
    EXPECT_EQ(whyNotWrite(board, "i", 128), "\"i\" takes -127 to 127, not 128");
    EXPECT_EQ(whyNotWrite(board, "i", -128), "\"i\" takes -127 to 127, not -128");
    EXPECT_EQ(whyNotWrite(board, "q", 128), "");
    EXPECT_EQ(whyNotWrite(board, "else", 128), "");
}

TEST_F(BoardHardwareTest, TableWithAValueOutsideTheRangeOfItsDriverIsAnError) {
    const Board board =
        load("name = \"Radio\"\n[[channel]]\nnumber = 1\ntype = \"microwave-hz\"\n[drivers]\n"
             "\"channel.1.tx.rf.mixer.i\" = {}\n\"channel.1.tx.rf.mixer.q\" = {}\n[tables]\n"
             "\"Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I\" = { axes = [[1], [0]], "
             "values = [[-127]] }\n"
             "\"Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q\" = { axes = [[1], [0]], "
             "values = [[128]] }\n"
             "[hardware.\"channel.1.tx.rf.mixer.i\"]\nwrite = \"/i\"\nrange = [-127, 127]\n"
             "[hardware.\"channel.1.tx.rf.mixer.q\"]\nwrite = \"/q\"\nrange = [-127, 127]\n");
    const std::vector<Finding> findings = checkHardwareRanges(board);
    ASSERT_THAT(findings, SizeIs(1));
    EXPECT_EQ(findings[0].severity, Severity::error);
    EXPECT_EQ(findings[0].place.line, 10U);
    EXPECT_EQ(findings[0].text, "table \"Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q\" has "
                                "the value 128, outside the "
                                "range of driver \"channel.1.tx.rf.mixer.q\", -127 to 127");
}

TEST_F(BoardHardwareTest, FirstChannelsChargePumpTableGoesToTheOthersToo) {
    const Board board = load(
        "name = \"Radio\"\n[[channel]]\nnumber = 2\ntype = \"microwave-if\"\n[drivers]\n"
        "\"channel.2.rx.rf.pll.config\" = {}\n[tables]\n"
        "\"Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb\" = { axis = [1, 2], values = [3, 16] }\n"
        "[hardware.\"channel.2.rx.rf.pll.config\"]\nwrite = \"/cp\"\nrange = [0, 15]\n");
    const std::vector<Finding> findings = checkHardwareRanges(board);
    ASSERT_THAT(findings, SizeIs(1));
    EXPECT_THAT(findings[0].text, HasSubstr("has the value 16, outside the range of driver"));
}

} // namespace
} // namespace Radio
