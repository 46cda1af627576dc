#include "radio/session/LeakingTransmitter.h"

#include "standalone/Platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

namespace Radio {
namespace {

using testing::Ne;

/**
 * Leaks at -20 dBc, and at -40 dBc with I at -90. The detector reads 25 for each dB above -100 dBc, 2000 and
 * 1500, and follows with a time constant of 10 ms; that of the high range, where there is one, reads 10 for
 * each dB above -60, 400 and 200, and follows at once.
 */
class LeakingTransmitterTest : public testing::Test {
protected:
    LeakingTransmitterTest() {
        description.channel = 1;
        description.reference = 18'000'000;
        description.paths.emplace_back().level = -20.0;
        description.i = {"i", 0.001, 1, -1000, 1000};
        description.q = {"q", 0.001, 1, -1000, 1000};
        description.detector = {"low", 25.0, -100.0, -120.0, 0.0, 1, 0, 4095, 10.0};
        for (const char* const name : {"i", "q", "low", "high"}) {
            platform.drivers().add(name);
        }
    }

    void start() {
        transmitter.reset();
        transmitter = std::make_unique<LeakingTransmitter>(description, platform.drivers(),
                                                           [this] { return surroundings; });
    }
    void startWithHighDetector() {
        description.highDetector = {"high", 10.0, -60.0, -120.0, 0.0, 1, 0, 4095, 0.0};
        start();
    }
    void startWithNoise(double noise) {
        description.detector.noise = noise;
        start();
    }

    void setI(int value) { write("i", value); }
    int read(const std::string& name = "low") {
        DriverInterface& record = *platform.drivers().find(name)->record();
        int value = -1;
        record.read(record.context, &value);
        return value;
    }
    std::vector<int> readings(int count) {
        std::vector<int> result;
        for (int n = 0; n < count; ++n) {
            result.push_back(read());
        }
        return result;
    }
    /** The first readings after a rest: what tells one noise from another. */
    std::vector<int> readingsAfterRest() {
        transmitter->rest();
        return readings(10);
    }

    Standalone::Platform platform;
    LeakageDescription description;
    Surroundings surroundings{18'000'000, 25.0};
    std::unique_ptr<LeakingTransmitter> transmitter;

private:
    void write(const std::string& name, int value) {
        DriverInterface& record = *platform.drivers().find(name)->record();
        record.write(record.context, value);
    }
};

TEST_F(LeakingTransmitterTest, LevelIsThatOfWhatItsDriversHave) {
    start();
    EXPECT_NEAR(transmitter->level(), -20.0, 1e-9);
    setI(-90);
    EXPECT_NEAR(transmitter->level(), -40.0, 1e-9);
    EXPECT_EQ(transmitter->corrections().i, -90);
}

TEST_F(LeakingTransmitterTest, BeginsAtRest) {
    start();
    EXPECT_EQ(read(), 2000);
}

// Settling.

TEST_F(LeakingTransmitterTest, WithoutTimeToSettleReadsTheProbeBefore) {
    start();
    setI(-90);
    EXPECT_EQ(read(), 2000);
    transmitter->elapse(0.0);
    EXPECT_EQ(read(), 2000);
}

TEST_F(LeakingTransmitterTest, AfterATimeConstantAThirdOfTheWayIsLeft) {
    // 1500 + 500 e^-1 = 1683.94.
    start();
    setI(-90);
    transmitter->elapse(10.0);
    EXPECT_EQ(read(), 1684);
}

TEST_F(LeakingTransmitterTest, TimeAddsUp) {
    start();
    setI(-90);
    transmitter->elapse(4.0);
    transmitter->elapse(6.0);
    EXPECT_EQ(read(), 1684);
}

TEST_F(LeakingTransmitterTest, AfterALongTimeReadsWhatLeaks) {
    // 1500 + 500 e^-10 = 1500.02.
    start();
    setI(-90);
    transmitter->elapse(100.0);
    EXPECT_EQ(read(), 1500);
}

TEST_F(LeakingTransmitterTest, RestSettlesTheDetectorsAsWithoutCorrections) {
    startWithHighDetector();
    setI(-90);
    transmitter->elapse(100.0);
    EXPECT_EQ(read("low"), 1500);
    transmitter->rest();
    EXPECT_EQ(read("low"), 2000);
    EXPECT_EQ(read("high"), 200); // follows at once, with the corrections that the drivers have
}

TEST_F(LeakingTransmitterTest, DetectorWithoutTimeConstantFollowsAtOnce) {
    startWithHighDetector();
    EXPECT_EQ(read("high"), 400);
    setI(-90);
    EXPECT_EQ(read("high"), 200);
    EXPECT_EQ(read("low"), 2000);
}

TEST_F(LeakingTransmitterTest, SaturatedDetectorReadsTheEndOfItsRange) {
    description.detector.high = 1800;
    start();
    EXPECT_EQ(read(), 1800);
    // Behind the converter the output goes on: 1500 + 500 e^-0.5 = 1803.27, and with e^-0.6 1774.41.
    setI(-90);
    transmitter->elapse(5.0);
    EXPECT_EQ(read(), 1800);
    transmitter->elapse(1.0);
    EXPECT_EQ(read(), 1774);
}

TEST_F(LeakingTransmitterTest, ReadingIsAStepOfTheConverter) {
    description.detector.step = 64; // 31.25 steps
    start();
    EXPECT_EQ(read(), 1984);
}

// Noise.

TEST_F(LeakingTransmitterTest, NoiseHasTheStatedSize) {
    // Of 10000 readings the mean has an error of 0.1 and the deviation one of 0.07, one standard deviation
    // each.
    startWithNoise(10.0);
    double sum = 0.0;
    double squares = 0.0;
    for (const int reading : readings(10000)) {
        sum += reading - 2000;
        squares += (reading - 2000.0) * (reading - 2000.0);
    }
    EXPECT_NEAR(sum / 10000, 0.0, 0.4);
    EXPECT_NEAR(std::sqrt(squares / 10000), 10.0, 0.3);
}

TEST_F(LeakingTransmitterTest, RestBeginsTheNoiseAgain) {
    startWithNoise(10.0);
    const std::vector<int> first = readings(10);
    EXPECT_THAT(readings(10), Ne(first));
    EXPECT_EQ(readingsAfterRest(), first);
}

TEST_F(LeakingTransmitterTest, NoiseDependsOnCarrierAndTemperature) {
    startWithNoise(10.0);
    const std::vector<int> before = readingsAfterRest();
    surroundings.carrier = 18'000'001;
    const std::vector<int> otherCarrier = readingsAfterRest();
    EXPECT_THAT(otherCarrier, Ne(before));
    surroundings.temperature = -25.0;
    EXPECT_THAT(readingsAfterRest(), Ne(otherCarrier));
}

TEST_F(LeakingTransmitterTest, NoiseDependsOnChannelAndSeed) {
    startWithNoise(10.0);
    const std::vector<int> before = readings(10);
    description.channel = 2;
    start();
    const std::vector<int> otherChannel = readings(10);
    EXPECT_THAT(otherChannel, Ne(before));
    description.seed = 1;
    start();
    EXPECT_THAT(readings(10), Ne(otherChannel));
}

TEST_F(LeakingTransmitterTest, DetectorWithoutNoiseDrawsNone) {
    description.detector.noise = 10.0;
    startWithHighDetector();
    const std::vector<int> first = readings(10);
    transmitter->rest();
    read("high");
    EXPECT_EQ(readings(10), first);
}

TEST_F(LeakingTransmitterTest, ReadThatFailsDrawsNoNoise) {
    startWithNoise(10.0);
    const std::vector<int> first = readings(10);
    transmitter->rest();
    platform.calls().inject({Standalone::Operation::driverRead, "low", 0x8001, 1U, std::nullopt});
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(readings(10), first);
}

TEST_F(LeakingTransmitterTest, DriversReadTheirOwnValuesAgainOnceItIsGone) {
    startWithHighDetector();
    transmitter.reset();
    platform.drivers().find("low")->setValue(7);
    platform.drivers().find("high")->setValue(8);
    EXPECT_EQ(read("low"), 7);
    EXPECT_EQ(read("high"), 8);
}

} // namespace
} // namespace Radio
