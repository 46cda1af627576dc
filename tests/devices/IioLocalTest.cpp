#include "DevicesFixture.h"

namespace {

using namespace DeviceTests;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class IioLocalTest : public MockedDevices {
protected:
    IioLocalTest() {
        description.devices.push_back({"board", Devices::DeviceDescription::Kind::iio, "local:"});
    }

    /** Of one attribute that a driver is to write. */
    Devices::AttributeFinding examineOne(const std::string& attribute, bool reads = true) {
        description.drivers.clear();
        addDriver("driver", "board", attribute);
        return up().examine(reads).at(0);
    }

    const std::string frequency = attributePath("iio:device0", "out_altvoltage0_frequency");
};

TEST_F(IioLocalTest, DriverIsAnAttributeOfAChannel) {
    addDriver("lo", "board", "adf4371/altvoltage0/frequency").conversion.scale = 1000;
    up();
    EXPECT_EQ(write("lo", 6300000), 0);
    EXPECT_EQ(contentOf(frequency), "6300000000\n");
    EXPECT_EQ(read("lo"), 6300000);
    restore(frequency, "8000000000\n");
}

TEST_F(IioLocalTest, DriverIsAnAttributeOfADevice) {
    addDriver("mux", "board", "adf4371/muxout");
    up();
    EXPECT_EQ(read("mux"), 3);
    EXPECT_EQ(write("mux", 5), 0);
    EXPECT_EQ(contentOf(attributePath("iio:device0", "muxout")), "5\n");
    restore(attributePath("iio:device0", "muxout"), "3\n");
}

TEST_F(IioLocalTest, DeviceIsFoundByNameLabelAndIdentifier) {
    EXPECT_EQ(examineOne("adf4371/muxout").value, "3");
    EXPECT_EQ(examineOne("tx-lo/muxout").value, "3");
    EXPECT_EQ(examineOne("iio:device0/muxout").value, "3");
    EXPECT_EQ(examineOne("right/voltage0/raw").value, "2");
}

TEST_F(IioLocalTest, NameOfTwoDevicesIsAProblem) {
    EXPECT_EQ(examineOne("dac/voltage0/raw").problem,
              "dac is the name of iio:device2 and of iio:device3: say which");
}

TEST_F(IioLocalTest, InputAndOutputAreToldApartByTheWordBeforeThem) {
    EXPECT_EQ(examineOne("ad9361-phy/in:voltage0/hardwaregain").value, "71.000000 dB");
    EXPECT_EQ(examineOne("ad9361-phy/out:voltage0/hardwaregain").value, "-10.000000 dB");
    EXPECT_EQ(examineOne("ad9361-phy/voltage0/hardwaregain").problem,
              "voltage0 of ad9361-phy is an input and an output: say in: or out: before it");
    EXPECT_EQ(examineOne("ad9361-phy/voltage0/rssi").value, "110.75 dB"); // which only the input has
}

TEST_F(IioLocalTest, WhatIsMissingIsToldWithWhatThereIsTheNearestFirst) {
    EXPECT_THAT(examineOne("adf4372/muxout").problem,
                StartsWith("there is no device adf4372; there are adf4371, "));
    EXPECT_THAT(examineOne("adf4371/altvoltage1/frequency").problem,
                StartsWith("adf4371 has no channel altvoltage1; there is out:altvoltage0"));
    EXPECT_EQ(examineOne("adf4371/altvoltage0/frequncy").problem,
              "adf4371/altvoltage0 has no attribute frequncy; there are frequency and powerdown");
    EXPECT_THAT(examineOne("adf4371/muxot").problem,
                StartsWith("adf4371 has no attribute muxot; there are muxout"));
    EXPECT_THAT(examineOne("adf4371").problem, HasSubstr("is not of the form DEVICE/ATTRIBUTE"));
}

TEST_F(IioLocalTest, WriteToWhatIsMissingFails) {
    addDriver("lo", "board", "adf4371/altvoltage0/frequncy");
    up();
    EXPECT_EQ(write("lo", 1), 0x8100 + ENOENT);
}

TEST_F(IioLocalTest, AttributeThatCameLaterIsFoundByTheNextExamination) {
    addDriver("lo", "board", "adf4371/altvoltage0/frequency");
    addDriver("late", "board", "adf4371/late");
    EXPECT_THAT(up().examine(false).at(1).problem, StartsWith("adf4371 has no attribute late"));
    const std::string path = attributePath("iio:device0", "late");
    set(path, "1\n");
    EXPECT_EQ(write("late", 2), 0x8100 + ENOENT);
    EXPECT_EQ(hardware->examine(false).at(1).problem, "");
    EXPECT_EQ(write("late", 2), 0);
    EXPECT_EQ(contentOf(path), "2\n");
    EXPECT_EQ(write("lo", 8000000000), 0);
    std::filesystem::remove(path);
    listener.told();
    hardware->poll();
    EXPECT_EQ(listener.told(), Lines{});
}

TEST_F(IioLocalTest, AttributeThatHasNoWriterIsKnownBeforeItIsWritten) {
    std::filesystem::permissions(frequency, std::filesystem::perms(0444));
    const Devices::AttributeFinding found = examineOne("adf4371/altvoltage0/frequency");
    std::filesystem::permissions(frequency, std::filesystem::perms(0644));
    EXPECT_EQ(found.isReadable, true);
    EXPECT_EQ(found.isWritable, false);
    EXPECT_EQ(found.problem, "cannot be written");
}

TEST_F(IioLocalTest, ExaminationWritesNothing) {
    const Devices::AttributeFinding found = examineOne("adf4371/altvoltage0/frequency");
    EXPECT_EQ(found.attribute, "board: adf4371/altvoltage0/frequency");
    EXPECT_EQ(found.isReadable, true);
    EXPECT_EQ(found.isWritable, true);
    EXPECT_EQ(found.value, "8000000000");
    EXPECT_EQ(contentOf(frequency), "8000000000\n");
}

TEST_F(IioLocalTest, RefusalIsToldWithTheKernelsErrorNumberAndLosesNoConnection) {
    addDriver("lo", "board", "adf4371/altvoltage0/frequency");
    up().examine(false);
    replaceByLink(frequency, "/dev/full");
    EXPECT_EQ(write("lo", 1), 0x8100 + ENOSPC);
    EXPECT_EQ(listener.told(), (Lines{"failed lo at board: adf4371/altvoltage0/frequency: no space left on "
                                      "device (ENOSPC)"}));
    restore(frequency, "8000000000\n");
    EXPECT_EQ(write("lo", 8000000000), 0);
}

TEST_F(IioLocalTest, UnreachableDeviceIsToldApartFromAMissingAttribute) {
    description.devices[0].address = "no-such-backend:";
    EXPECT_EQ(examineOne("adf4371/muxout").problem,
              "board cannot be reached at no-such-backend:: libiio knows no such URI");
}

TEST_F(IioLocalTest, DescribedContextIsExaminedWithoutDevices) {
    description.devices[0].address = "xml:" + file("context.xml", R"(<?xml version="1.0"?>
<!DOCTYPE context [<!ELEMENT context (device)*>]>
<context name="x" description="y"><device id="iio:device0" name="synth">
<attribute name="muxout"/></device></context>)");
    EXPECT_EQ(examineOne("synth/muxout", false).problem, "");
    EXPECT_EQ(examineOne("synth/mux", false).problem, "synth has no attribute mux; there is muxout");
}

} // namespace
