// Devices that keep whoever asks waiting, once he does not want to wait any longer.

#include "DevicesFixture.h"
#include "Instrument.h"
#include "Server.h"

#include <atomic>

namespace {

using namespace DeviceTests;

std::atomic<bool> isWanted{true};

/** Says, from then on, that nobody wants to wait. */
class Impatience {
public:
    explicit Impatience(milliseconds time)
        : m_thread([time] {
              std::this_thread::sleep_for(time);
              isWanted = false;
          }) {}
    Impatience(const Impatience&) = delete;
    Impatience& operator=(const Impatience&) = delete;
    ~Impatience() { m_thread.join(); }

private:
    std::thread m_thread;
};

/** Devices with all the time in the world. */
constexpr milliseconds aMinute{60000};
/** Until nobody wants to wait, half a second more, and what a busy computer adds. */
constexpr milliseconds soon{3000};

class PatienceTest : public DevicesFixture {
protected:
    PatienceTest() {
        isWanted = true;
        Devices::setPatience([] { return isWanted.load(); });
    }
    ~PatienceTest() override {
        hardware.reset();
        Devices::setPatience(nullptr);
    }
    void describeInstrument(const std::string& errorQuery = "") {
        description.devices.push_back(
            {"generator", Devices::DeviceDescription::Kind::scpi, instrument.address(), aMinute, errorQuery});
        addDriver("lo", "generator", "FREQ {}").read = Devices::AttributeName{"generator", "FREQ?"};
    }
    void answer(const Reaction& reaction) {
        instrument.setScript(
            [reaction](const std::string& line) { return line.back() == '?' ? reaction : Reaction{}; });
    }

    Instrument instrument{[](const std::string&) { return Reaction{}; }};
};

TEST_F(PatienceTest, SilentInstrumentIsNotWaitedForAnyLonger) {
    describeInstrument();
    up();
    const Impatience impatience(milliseconds(200));
    EXPECT_LT(elapsed([&] { EXPECT_EQ(read("lo"), std::nullopt); }), soon);
    EXPECT_EQ(code, 0x8100 + ETIMEDOUT);
}

TEST_F(PatienceTest, AnswerThatIsOnItsWayIsTaken) {
    describeInstrument();
    answer({"7\n", milliseconds(150)});
    up();
    EXPECT_EQ(read("lo"), 7);
    isWanted = false;
    EXPECT_EQ(read("lo"), 7);
    EXPECT_EQ(listener.told(), Lines{});
}

TEST_F(PatienceTest, WhatIsWrittenInTheEndIsWaitedForAllTheSame) {
    describeInstrument("ERR?");
    answer({"0\n", milliseconds(1200)});
    description.drivers[0].onExit = 0;
    up();
    isWanted = false;
    const auto writes = hardware->leave();
    ASSERT_EQ(writes.size(), 1U);
    EXPECT_EQ(writes[0].code, 0);
}

TEST_F(PatienceTest, ConnectionThatDoesNotComeAboutIsNotWaitedForAnyLonger) {
    description.devices.push_back(
        {"remote", Devices::DeviceDescription::Kind::iio, "ip:" + instrument.address(), aMinute});
    addDriver("lo", "remote", "adf4371/altvoltage0/frequency");
    up();
    const Impatience impatience(milliseconds(200));
    EXPECT_LT(elapsed([&] { EXPECT_NE(hardware->examine(false).at(0).problem, ""); }), soon);
    EXPECT_LT(elapsed([&] { hardware.reset(); }), soon);
}

TEST_F(PatienceTest, SilentSensorIsNotWaitedForAnyLonger) {
    describeInstrument();
    description.sensor.emplace();
    description.sensor->attribute = Devices::AttributeName{"generator", "TEMP?"};
    up();
    const Impatience impatience(milliseconds(200));
    EXPECT_LT(elapsed([&] { EXPECT_EQ(hardware->readSensor(), std::nullopt); }), soon);
    EXPECT_LT(elapsed([&] { hardware.reset(); }), soon);
}

TEST_F(PatienceTest, WhoWantsToWaitAgainDoes) {
    describeInstrument();
    up();
    isWanted = false;
    EXPECT_EQ(read("lo"), std::nullopt);
    isWanted = true;
    answer({"7\n", milliseconds(700)});
    std::optional<std::int64_t> found;
    for (int turn = 0; turn < 100 && !found; ++turn) {
        found = read("lo");
        std::this_thread::sleep_for(milliseconds(50));
    }
    EXPECT_EQ(found, 7);
}

/** A real server that hangs in the middle of a conversation. */
class FrozenServerTest : public MockedDevices {
protected:
    FrozenServerTest() {
        isWanted = true;
        Devices::setPatience([] { return isWanted.load(); });
        description.devices.push_back(
            {"remote", Devices::DeviceDescription::Kind::iio, server.uri(), aMinute});
        addDriver("mux", "remote", "adf4371/muxout");
    }
    ~FrozenServerTest() override {
        hardware.reset();
        Devices::setPatience(nullptr);
    }
    void SetUp() override {
        MockedDevices::SetUp();
        if (!IsSkipped()) {
            server.start();
        }
    }
    Server server;
};

TEST_F(FrozenServerTest, IsNotWaitedForAnyLonger) {
    up();
    EXPECT_NE(read("mux"), std::nullopt);
    server.freeze();
    const Impatience impatience(milliseconds(200));
    EXPECT_LT(elapsed([&] { EXPECT_EQ(read("mux"), std::nullopt); }), soon);
    EXPECT_EQ(code, 0x8100 + ETIMEDOUT);
    EXPECT_LT(elapsed([&] { hardware.reset(); }), soon);
    server.thaw();
}

} // namespace
