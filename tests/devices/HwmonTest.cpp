#include "DevicesFixture.h"

namespace {

using namespace DeviceTests;

class HwmonTest : public MockedDevices {
protected:
    HwmonTest() {
        Devices::SensorDescription sensor;
        sensor.chip = "tmp102-i2c-*-48";
        sensor.feature = "temp1";
        sensor.interval = milliseconds(20);
        description.sensor = sensor;
    }

    const std::string input = mocked() + "/class/hwmon/hwmon0/temp1_input";
};

TEST_F(HwmonTest, TemperatureIsThatOfTheChipRounded) {
    EXPECT_EQ(up().readSensor(), 42); // 41.5
    const auto found = hardware->examine(true);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].use, "temperature");
    EXPECT_EQ(found[0].value, "41.500");
    EXPECT_EQ(found[0].problem, "");
}

TEST_F(HwmonTest, ChipThatIsMissingIsToldWithThoseThatThereAre) {
    description.sensor->chip = "tmp75-i2c-1-48";
    EXPECT_EQ(up().examine(true).at(0).problem, "there is no chip tmp75-i2c-1-48; there is tmp102-i2c-1-48");
}

TEST_F(HwmonTest, FeatureThatIsMissingIsToldWithThoseThatThereAre) {
    description.sensor->feature = "temp2";
    EXPECT_EQ(up().examine(true).at(0).problem, "tmp102-i2c-1-48 has no temperature temp2; there is temp1");
}

TEST_F(HwmonTest, ChipThatGoesAndComesBackIsToldOnce) {
    up().startSensor();
    std::filesystem::rename(mocked() + "/class/hwmon/hwmon0", mocked() + "/class/hwmon0.away");
    awaitNews();
    EXPECT_EQ(listener.told().size(), 1U);
    std::filesystem::rename(mocked() + "/class/hwmon0.away", mocked() + "/class/hwmon/hwmon0");
    std::optional<int> temperature;
    for (int i = 0; i < 500 && !temperature; ++i) {
        std::this_thread::sleep_for(milliseconds(10));
        temperature = hardware->poll();
    }
    EXPECT_EQ(temperature, 42);
    EXPECT_EQ(listener.told(), Lines{});
}

} // namespace
