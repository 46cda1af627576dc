#include "DevicesFixture.h"
#include "Instrument.h"
#include "Server.h"

#include <sched.h>

namespace {

using namespace DeviceTests;

class LeaveTest : public DevicesFixture {
protected:
    void addAmplifier(milliseconds timeLimit) {
        description.devices.push_back(
            {"amplifier", Devices::DeviceDescription::Kind::scpi, instrument.address(), timeLimit, "E?"});
        addDriver("power", "amplifier", "OUTP {}").onExit = 0;
    }

    Instrument instrument{[](const std::string& line) { return Reaction{line == "E?" ? "0\n" : ""}; }};
};

/** Looks at a file whenever a write is said to have failed. */
class Onlooker : public Listener {
public:
    explicit Onlooker(std::string path) : m_path(std::move(path)) {}

    void failed(const std::string& driver, const std::string& /*attribute*/, std::int32_t /*code*/) override {
        std::string content;
        std::ifstream(m_path) >> content;
        lines.push_back(driver + " failed, and there is " + content);
    }

private:
    std::string m_path;
};

/** Has this thread, and those that it starts, share one processor as long as the object lives. */
class LastInLine {
public:
    LastInLine() {
        CPU_ZERO(&m_before);
        sched_getaffinity(0, sizeof m_before, &m_before);
        const int processor = sched_getcpu();
        if (processor >= 0) {
            cpu_set_t one;
            CPU_ZERO(&one);
            CPU_SET(static_cast<unsigned>(processor), &one);
            sched_setaffinity(0, sizeof one, &one);
        }
    }
    LastInLine(const LastInLine&) = delete;
    LastInLine& operator=(const LastInLine&) = delete;
    ~LastInLine() { sched_setaffinity(0, sizeof m_before, &m_before); }

    /** Whichever other thread can go on goes on before this one. */
    class Turn {
    public:
        Turn() { set(SCHED_IDLE); }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        ~Turn() { set(SCHED_OTHER); }

    private:
        static void set(int policy) {
            const sched_param none{};
            sched_setscheduler(0, policy, &none);
        }
    };

private:
    cpu_set_t m_before{};
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

TEST_F(LeaveTest, InstrumentThatWasOffAndOnAgainUnnoticedIsWritten) {
    addAmplifier(milliseconds(1000));
    up();
    EXPECT_EQ(write("power", 1), 0);
    instrument.switchOff();
    instrument.switchOn();
    instrument.heard();
    const auto writes = hardware->leave();
    ASSERT_EQ(writes.size(), 1U);
    EXPECT_EQ(writes[0].code, 0);
    EXPECT_EQ(instrument.heard(), (Lines{"OUTP 0", "E?"}));
    // The failure of what was written in the end is nobody's business.
    EXPECT_EQ(listener.told(),
              (Lines{"lost amplifier: connection reset by peer (ECONNRESET)", "back amplifier"}));
}

/** The thread that connects goes before the one that drives, on one processor: the connection that a write
 * found broken is there again before anything else is asked of it. */
TEST_F(LeaveTest, ConnectionThatIsThereAgainAtOnceHasTheWriteRepeated) {
    const LastInLine last;
    addAmplifier(milliseconds(1000));
    up();
    EXPECT_EQ(write("power", 1), 0);
    instrument.switchOff();
    instrument.switchOn();
    instrument.heard();
    std::vector<Devices::ExitWrite> writes;
    {
        const LastInLine::Turn turn;
        writes = hardware->leave();
    }
    ASSERT_EQ(writes.size(), 1U);
    EXPECT_EQ(writes[0].code, 0);
    EXPECT_EQ(instrument.heard(), (Lines{"OUTP 0", "E?"}));
}

/** Each time between the write and its answer: the last value may have come, or not. */
TEST_F(LeaveTest, ConnectionThatBreaksBetweenWriteAndAnswerHasTheWriteRepeated) {
    addAmplifier(milliseconds(5000));
    up();
    EXPECT_EQ(write("power", 1), 0);
    instrument.heard();
    instrument.setScript([breaks = 3](const std::string& line) mutable {
        const bool hangsUp = line == "OUTP 0" && breaks-- > 0;
        return Reaction{line == "E?" ? "0\n" : "", milliseconds(0), hangsUp};
    });
    const auto writes = hardware->leave();
    ASSERT_EQ(writes.size(), 1U);
    EXPECT_EQ(writes[0].code, 0);
    EXPECT_EQ(instrument.heard(), (Lines{"OUTP 0", "OUTP 0", "OUTP 0", "OUTP 0", "E?"}));
    EXPECT_EQ(instrument.connections(), 4);
}

TEST_F(LeaveTest, ConnectionThatAlwaysBreaksIsGivenUpAtItsTimeLimit) {
    addAmplifier(milliseconds(300));
    up();
    EXPECT_EQ(write("power", 1), 0);
    instrument.setScript([](const std::string&) { return Reaction{"", milliseconds(50), true}; });
    const auto writes = hardware->leave();
    ASSERT_EQ(writes.size(), 1U);
    EXPECT_EQ(writes[0].code, 0x8100 + ECONNRESET);
    EXPECT_GT(instrument.connections(), 2);
    EXPECT_LT(instrument.connections(), 20);
}

TEST_F(LeaveTest, WhatIsWithinReachIsWrittenBeforeAnythingIsWaitedFor) {
    description.devices.push_back({"away", Devices::DeviceDescription::Kind::scpi,
                                   "127.0.0.1:" + std::to_string(freePort()), milliseconds(600)});
    addDriver("preamplifier", "away", "OUTP {}").onExit = 0;
    addAmplifier(milliseconds(600));
    up().examine(false);
    const auto begin = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point heard;
    instrument.setScript([&heard](const std::string& line) {
        heard = std::chrono::steady_clock::now();
        return Reaction{line == "E?" ? "0\n" : ""};
    });
    const auto writes = hardware->leave();
    EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(600));
    EXPECT_LT(heard - begin, milliseconds(300));
    ASSERT_EQ(writes.size(), 2U);
    EXPECT_EQ(writes[0].driver, "preamplifier");
    EXPECT_EQ(writes[0].code, 0x8100 + ENOTCONN);
    EXPECT_EQ(writes[1].driver, "power");
    EXPECT_EQ(writes[1].code, 0);
}

TEST_F(LeaveTest, TwoDevicesThatStayAwayAreWaitedForAtTheSameTime) {
    for (const std::string name : {"first", "second"}) {
        description.devices.push_back({name, Devices::DeviceDescription::Kind::scpi,
                                       "127.0.0.1:" + std::to_string(freePort()), milliseconds(500)});
        addDriver(name, name, "OUTP {}").onExit = 0;
    }
    up();
    EXPECT_LT(elapsed([&] { hardware->leave(); }), milliseconds(900));
}

TEST_F(LeaveTest, NobodyIsToldOfAFailureBeforeEverythingIsWritten) {
    addDriver("power", "", "/dev/full").onExit = 0;
    addDriver("mute", "", file("mute", "0\n")).onExit = 1;
    Onlooker onlooker(directory / "mute");
    Devices::Hardware other(description, onlooker);
    other.leave();
    EXPECT_EQ(onlooker.told(), (Lines{"power failed, and there is 1"}));
    EXPECT_NE(other.backing("power")->write(1), 0);
    EXPECT_EQ(onlooker.told(), (Lines{"power failed, and there is 1"})); // at once again
}

} // namespace
