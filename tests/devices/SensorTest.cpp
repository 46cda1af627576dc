#include "DevicesFixture.h"
#include "Instrument.h"
#include "Server.h"

#include <sys/stat.h>

namespace {

using namespace DeviceTests;

class SensorTest : public DevicesFixture {
protected:
    void describe(const std::string& device, const std::string& attribute, double scale = 0.001) {
        Devices::SensorDescription sensor;
        sensor.attribute = Devices::AttributeName{device, attribute};
        sensor.scale = scale;
        sensor.interval = milliseconds(20);
        description.sensor = sensor;
    }
    /** The next temperature that a poll gives. */
    std::optional<int> awaitTemperature() const {
        std::optional<int> temperature;
        for (int i = 0; i < 500 && !temperature; ++i) {
            std::this_thread::sleep_for(milliseconds(10));
            temperature = hardware->poll();
        }
        return temperature;
    }
};

TEST_F(SensorTest, WithoutASensorThereIsNoTemperature) {
    up().startSensor();
    EXPECT_EQ(hardware->readSensor(), std::nullopt);
    EXPECT_EQ(hardware->poll(), std::nullopt);
    EXPECT_EQ(listener.told(), Lines{});
}

TEST_F(SensorTest, FileIsReadAndRoundedToTheNearestDegree) {
    const std::string path = file("temp", "41499\n");
    describe("", path);
    EXPECT_EQ(up().readSensor(), 41);
    file("temp", "-20500\n");
    EXPECT_EQ(hardware->readSensor(), -21);
}

TEST_F(SensorTest, OffsetIsOfDegrees) {
    describe("", file("temp", "300\n"), 0.5);
    description.sensor->offset = -100;
    EXPECT_EQ(up().readSensor(), 50);
}

TEST_F(SensorTest, TemperatureIsGivenByPollOnceForEachReading) {
    description.sensor = Devices::SensorDescription{};
    describe("", file("temp", "41000\n"));
    description.sensor->interval = milliseconds(60000);
    up();
    EXPECT_EQ(hardware->poll(), std::nullopt); // nobody started it
    hardware->startSensor();
    EXPECT_EQ(awaitTemperature(), 41);
    EXPECT_EQ(hardware->poll(), std::nullopt);
}

TEST_F(SensorTest, NewTemperaturesArriveAtTheInterval) {
    describe("", file("temp", "41000\n"));
    up().startSensor();
    EXPECT_EQ(awaitTemperature(), 41);
    file("temp", "42000\n");
    std::optional<int> last;
    for (int i = 0; i < 500 && last != 42; ++i) {
        last = awaitTemperature();
    }
    EXPECT_EQ(last, 42);
}

TEST_F(SensorTest, FailureIsToldOnceUntilThereIsATemperatureAgain) {
    const std::string path = file("temp", "warm\n");
    describe("", path);
    up().startSensor();
    awaitNews();
    std::this_thread::sleep_for(milliseconds(100));
    EXPECT_EQ(hardware->poll(), std::nullopt);
    EXPECT_EQ(hardware->readSensor(), std::nullopt);
    EXPECT_EQ(listener.told(), (Lines{"sensor: " + path + " gives no number"}));
    file("temp", "41000\n");
    EXPECT_EQ(awaitTemperature(), 41);
    std::filesystem::remove(path);
    awaitNews();
    EXPECT_EQ(listener.told(), (Lines{"sensor: " + path + ": no such file or directory (ENOENT)"}));
}

TEST_F(SensorTest, InstrumentIsAskedOnAConnectionOfTheSensorsOwn) {
    Instrument instrument([](const std::string& line) { return Reaction{line == "T?" ? "3.65E1\n" : ""}; });
    description.devices.push_back(
        {"meter", Devices::DeviceDescription::Kind::scpi, instrument.address(), milliseconds(300)});
    describe("meter", "T?", 1);
    addDriver("lo", "meter", "F {}");
    up();
    EXPECT_EQ(write("lo", 1), 0);
    EXPECT_EQ(hardware->readSensor(), 37);
    EXPECT_EQ(instrument.connections(), 2);
}

TEST_F(SensorTest, SlowSensorDelaysNoWriteAndNoPoll) {
    Instrument instrument([](const std::string& line) {
        return line == "T?" ? Reaction{"1\n", milliseconds(500)} : Reaction{};
    });
    description.devices.push_back(
        {"meter", Devices::DeviceDescription::Kind::scpi, instrument.address(), milliseconds(1000)});
    describe("meter", "T?", 1);
    addDriver("lo", "", file("lo", "0\n"));
    up().startSensor();
    for (int i = 0; i < 10; ++i) {
        EXPECT_LT(elapsed([&] {
                      hardware->poll();
                      EXPECT_EQ(write("lo", i), 0);
                  }),
                  milliseconds(300));
        std::this_thread::sleep_for(milliseconds(20));
    }
}

TEST_F(SensorTest, InstrumentThatComesBackIsReadAgain) {
    Instrument instrument([](const std::string&) { return Reaction{"25\n"}; });
    description.devices.push_back(
        {"meter", Devices::DeviceDescription::Kind::scpi, instrument.address(), milliseconds(300)});
    describe("meter", "T?", 1);
    up();
    EXPECT_EQ(hardware->readSensor(), 25);
    instrument.switchOff();
    EXPECT_EQ(hardware->readSensor(), std::nullopt);
    EXPECT_EQ(listener.told().size(), 1U);
    instrument.switchOn();
    EXPECT_EQ(hardware->readSensor(), 25);
}

TEST_F(SensorTest, ExaminationTellsOfTheSensorLast) {
    addDriver("lo", "", file("lo", "5\n"));
    describe("", file("temp", "41000\n"));
    const auto found = up().examine(true);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[1].driver, "");
    EXPECT_EQ(found[1].use, "temperature");
    EXPECT_EQ(found[1].value, "41000");
}

class IioSensorTest : public MockedDevices {};

TEST_F(IioSensorTest, AttributeOfADeviceGivesTheTemperature) {
    description.devices.push_back({"board", Devices::DeviceDescription::Kind::iio, "local:"});
    description.sensor = Devices::SensorDescription{};
    description.sensor->attribute = Devices::AttributeName{"board", "adf4371/temperature"};
    description.sensor->scale = 0.01;
    EXPECT_EQ(up().readSensor(), 25);
}

} // namespace
