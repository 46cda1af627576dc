#include "ILoCancellation.h"
#include "InterfaceBroker.h"
#include "radio/board/PlatformWords.h"
#include "radio/session/BootedRadio.h"
#include "tests/radio/support/PlanBoards.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <optional>

namespace Radio {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/** How long `action` takes. */
template <typename Action>
steady_clock::duration durationOf(Action action) {
    const auto begin = steady_clock::now();
    action();
    return steady_clock::now() - begin;
}

/** A radio whose channel 1 leaks at -20 dBc at every carrier and temperature. Its tables correct nothing. */
class RadioTransmitterTest : public testing::Test {
protected:
    void start() { booted.emplace(board); }

    static Board leakingBoard() {
        Board result = PlanBoards::microwave(::FrequencyHandler::MicrowaveBoardHz);
        for (TableDescription& table : result.tables) {
            table.table.axis1.clear(); // as of a file that is not there
        }
        LeakageDescription leakage = PlanBoards::leakage(-20.0, 0.001);
        leakage.detector = {"channel.1.tx.rf.detector.v", 25.0, -95.0, -120.0, 0.0, 1, 0, 4095, 1.0};
        result.leakages = {leakage};
        return result;
    }

    /** What a calibration finds, from -200 to 200 in both branches. */
    LoCorrections calibrate(unsigned settleTime, unsigned maxIterations = 40) {
        auto* const canceller =
            InterfaceBroker::getInstance().getInterface<ILoCancellation>("ILoCancellation_1");
        LoCorrections found;
        int maxDelta = 0;
        unsigned iterations = 0;
        EXPECT_EQ(canceller->calibrateLoCancellation(-200, 200, -200, 200, 0.75, 3, maxIterations, settleTime,
                                                     &found.i, &found.q, &maxDelta, &iterations, false),
                  0);
        return found;
    }
    double leakageAfterCalibration(unsigned settleTime) {
        calibrate(settleTime);
        return booted->radio().transmitter(1)->level();
    }

    const Board board = leakingBoard();
    std::optional<BootedRadio> booted;
};

TEST_F(RadioTransmitterTest, ChannelWithoutLeakageHasNoTransmitter) {
    start();
    EXPECT_NE(booted->radio().transmitter(1), nullptr);
    EXPECT_EQ(booted->radio().transmitter(2), nullptr);
}

TEST_F(RadioTransmitterTest, RadioWithTablesThatAreNotThereStarts) {
    start();
    EXPECT_TRUE(booted->isUp());
    EXPECT_TRUE(booted->radio().platform().tables().tables().empty());
}

TEST_F(RadioTransmitterTest, CarrierIsThatOfTheTransmitHandler) {
    start();
    EXPECT_EQ(booted->radio().transmitter(1)->surroundings().carrier, 0U);
    booted->radio().tune(Direction::tx, 1, 18'100'000);
    booted->radio().tune(Direction::rx, 1, 18'200'000);
    EXPECT_EQ(booted->radio().transmitter(1)->surroundings().carrier, 18'100'000U);
}

TEST_F(RadioTransmitterTest, TemperatureIs25DegreesBeforeTheFirst) {
    start();
    EXPECT_EQ(booted->radio().transmitter(1)->surroundings().temperature, 25.0);
    booted->radio().platform().temperature().set(-33);
    EXPECT_EQ(booted->radio().transmitter(1)->surroundings().temperature, -33.0);
}

TEST_F(RadioTransmitterTest, CalibrationTakesTheTimeOfTheModel) {
    // 2 iterations of 4 probes, and 1 s for each.
    start();
    double passed = 0.0;
    booted->radio().clock().addListener([&passed](double elapsed) { passed += elapsed; });
    EXPECT_LT(durationOf([this] { calibrate(1000, 2); }), milliseconds(4000));
    EXPECT_EQ(passed, 8000.0);
}

TEST_F(RadioTransmitterTest, CalibrationFindsWhatCancels) {
    // 0.1 takes -100 of I; a range that ends 3 wide leaves 0.002 at most in each branch, -50.97 dBc.
    start();
    EXPECT_LT(leakageAfterCalibration(10), -50.0);
}

TEST_F(RadioTransmitterTest, TooShortASettleTimeSpoilsTheCalibration) {
    start();
    EXPECT_GT(leakageAfterCalibration(0), -30.0);
}

// The clock.

TEST(ModelClock, SleepsAsUsualWithoutAClock) {
    EXPECT_GE(durationOf([] { usleep(20'000); }), milliseconds(20));
}

TEST(ModelClock, TellsEachSleepAndDoesNotWait) {
    ModelClock clock;
    double passed = 0.0;
    clock.addListener([&passed](double elapsed) { passed += elapsed; });
    EXPECT_LT(durationOf([] { usleep(5'000'500); }), milliseconds(4000));
    EXPECT_EQ(passed, 5000.5);
}

TEST(ModelClock, WaitsInRealTime) {
    ModelClock clock;
    clock.setRealTime(true);
    double passed = 0.0;
    clock.addListener([&passed](double elapsed) { passed += elapsed; });
    EXPECT_GE(durationOf([] { usleep(20'000); }), milliseconds(20));
    EXPECT_EQ(passed, 20.0);
}

} // namespace
} // namespace Radio
