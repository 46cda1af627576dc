#include "tests/radio/session/SessionTest.h"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>

namespace Radio {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* txDriver = "channel.1.tx.rf.frequency";
constexpr const char* rxDriver = "channel.1.rx.rf.frequency";

/** The commands that read and write drivers, take time or have several steps. */
class SessionCoursesTest : public SessionTest {
protected:
    SessionCoursesTest() {
        startQuietly();
        ModelClock::current()->addListener([this](double length) { elapsed += length; });
    }

    /** Has somebody want to leave when they were asked so often. */
    void leaveAfter(int questions) {
        session().setGoOn([questions]() mutable { return questions-- > 0; });
    }
    void failWrites() { act(InjectFault{{Operation::driverWrite, txDriver, 0x8001, {}, {}}}); }
    std::vector<std::string> repeat(std::uint32_t count, const Command& command) {
        const auto line = std::make_shared<ScriptLine>(ScriptLine{{}, "turn", command});
        return act(Repeat{count, line}, "repeat");
    }
    static Sweep sweep(std::uint32_t from, std::uint32_t to, std::uint32_t step) {
        return {Direction::tx, 1, from, to, step, {}, false};
    }
    static Standalone::Driver& driver(const char* name) {
        return *Standalone::Platform::current()->drivers().find(name);
    }

    using Operation = Standalone::Operation;

    /** How much time has passed in the model, in ms. */
    double elapsed = 0.0;
};

// Drivers.

TEST_F(SessionCoursesTest, ReadTellsTheValue) {
    tune(7'442'000);
    EXPECT_THAT(act(ReadDriver{txDriver}, "read"),
                ElementsAre("> read", "channel.1.tx.rf.frequency = 7442000", "ok"));
    EXPECT_EQ(finish().commands, 2U);
}

TEST_F(SessionCoursesTest, ReadThatFailsHasTheCodeOfTheDriver) {
    act(InjectFault{{Operation::driverRead, txDriver, 0x8001, {}, {}}});
    EXPECT_THAT(act(ReadDriver{txDriver}, "read"),
                ElementsAre("> read", "driver-read channel.1.tx.rf.frequency 0 answered 0x8001", "0x8001"));
    EXPECT_THAT(expect(result(ExpectResult::Kind::code, 0x8001)),
                ElementsAre("expect held: expected 0x8001, found 0x8001 (failed)"));
}

TEST_F(SessionCoursesTest, WriteIsACommandWhoseWriteCounts) {
    EXPECT_THAT(act(WriteDriver{txDriver, 5}, "write"),
                ElementsAre("> write", "driver-write channel.1.tx.rf.frequency 5", "ok"));
    EXPECT_THAT(expect(ExpectWrites{{{txDriver, 5}}}),
                ElementsAre("expect held: expected channel.1.tx.rf.frequency=5, found "
                            "channel.1.tx.rf.frequency=5"));
    failWrites();
    act(WriteDriver{txDriver, 6});
    EXPECT_EQ(finish().unexpectedFailures, 1U);
}

TEST_F(SessionCoursesTest, MissingWordIsSaidBesideTheResult) {
    driver(txDriver).setMissingWords(Standalone::wordWrite | Standalone::wordRead);
    EXPECT_THAT(act(WriteDriver{txDriver, 5}, "write"),
                ElementsAre("> write", "0x8000, the driver's record has no write"));
    EXPECT_THAT(act(ReadDriver{txDriver}, "read"),
                ElementsAre("> read", "0x8000, the driver's record has no read"));
}

// Time.

TEST_F(SessionCoursesTest, WaitLetsTheModelledTimeGoOnAndTakesNone) {
    const auto before = std::chrono::steady_clock::now();
    EXPECT_THAT(act(Wait{microseconds(3'600'000'000)}, "wait"), ElementsAre("> wait", "ok"));
    EXPECT_EQ(elapsed, 3'600'000.0);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::minutes(1));
}

TEST_F(SessionCoursesTest, WaitInRealTimeTakesAsLongAsItSays) {
    ModelClock::current()->setRealTime(true);
    const auto before = std::chrono::steady_clock::now();
    act(Wait{milliseconds(150)});
    EXPECT_GE(std::chrono::steady_clock::now() - before, milliseconds(150));
    EXPECT_EQ(elapsed, 150.0);
}

TEST_F(SessionCoursesTest, WaitEndsWhenSomebodyWantsToLeave) {
    leaveAfter(3);
    EXPECT_THAT(act(Wait{milliseconds(2000)}, "wait"), ElementsAre("> wait", "ok, stopped after 0.3 s"));
    EXPECT_EQ(elapsed, 300.0);
}

TEST_F(SessionCoursesTest, ExpectationsBehindAWaitSpeakOfTheCommandBefore) {
    tune(7'442'000);
    act(Wait{milliseconds(100)});
    act(Watch{{txDriver}, milliseconds(100)});
    EXPECT_THAT(expect(ExpectWriteCount{1}), ElementsAre("expect held: expected 1 write, found 1 write: "
                                                         "channel.1.tx.rf.frequency=7442000"));
    EXPECT_EQ(finish().commands, 1U);
}

TEST_F(SessionCoursesTest, IdleIsCalledBeforeEachActionAndEvery100Milliseconds) {
    int calls = 0;
    session().setIdle([&calls] { ++calls; });
    tune(7'442'000);
    EXPECT_EQ(calls, 1);
    expect(result(ok));
    EXPECT_EQ(calls, 1);
    act(Wait{milliseconds(250)});
    EXPECT_EQ(calls, 1 + 1 + 3);
    act(Watch{{txDriver}, milliseconds(250)});
    EXPECT_EQ(calls, 5 + 1 + 3);
}

// Sweeps.

TEST_F(SessionCoursesTest, SweepTunesToOneCarrierAfterTheOther) {
    EXPECT_THAT(act(sweep(7'442'000, 7'500'000, 28'000), "sweep"),
                ElementsAre("> sweep", "driver-write channel.1.tx.rf.frequency 7442000", "told tx 1 7442000",
                            "driver-write channel.1.tx.rf.frequency 7470000", "told tx 1 7470000",
                            "driver-write channel.1.tx.rf.frequency 7498000", "told tx 1 7498000",
                            "ok, 3 carriers"));
    EXPECT_THAT(act(sweep(7'470'000, 7'442'000, 28'000), "sweep"),
                ElementsAre("> sweep", "driver-write channel.1.tx.rf.frequency 7470000", "told tx 1 7470000",
                            "driver-write channel.1.tx.rf.frequency 7442000", "told tx 1 7442000",
                            "ok, 2 carriers"));
}

TEST_F(SessionCoursesTest, SweepIsOneCommandWithAllItsWrites) {
    act(sweep(1000, 3000, 1000));
    EXPECT_THAT(expect(ExpectWriteCount{3}),
                ElementsAre(HasSubstr("expect held: expected 3 writes, found 3 writes")));
    EXPECT_EQ(finish().commands, 1U);
}

TEST_F(SessionCoursesTest, SweepOverAllFrequenciesDoesNotWrapAround) {
    act(sweep(0, 4'294'967'295, 4'294'967'295));
    EXPECT_THAT(expect(ExpectFrequency{Direction::tx, 1, 4'294'967'295}), ElementsAre(HasSubstr("held")));
}

TEST_F(SessionCoursesTest, SweepStaysAtEachCarrier) {
    Sweep command = sweep(1000, 3000, 1000);
    command.dwell = milliseconds(150);
    act(command);
    EXPECT_EQ(elapsed, 450.0);
}

TEST_F(SessionCoursesTest, SweepStopsAtTheFirstCarrierThatFails) {
    // A module of no known type has no handlers, and sets no carrier.
    board.channels.front().type = static_cast<::FrequencyHandler::FrequencyHandlerType>(6);
    startQuietly();
    EXPECT_EQ(act(sweep(1000, 3000, 1000)).back(), "0x8000, 1 of 3 carriers");
    EXPECT_THAT(expect(result(ExpectResult::Kind::code, 0x8000)), ElementsAre(HasSubstr("held")));
}

TEST_F(SessionCoursesTest, SweepGoesOnWhereTheHardwareRefusesACarrier) {
    failWrites();
    EXPECT_EQ(act(sweep(1000, 3000, 1000)).back(), "ok, 3 carriers");
}

TEST_F(SessionCoursesTest, SweepEndsBetweenTwoCarriersWhenSomebodyWantsToLeave) {
    leaveAfter(2);
    EXPECT_EQ(act(sweep(1000, 10'000, 1000)).back(), "ok, stopped after 2 of 10 carriers");
}

// Repetitions.

TEST_F(SessionCoursesTest, RepeatCarriesACommandOutSeveralTimes) {
    EXPECT_THAT(repeat(2, Action(WriteDriver{txDriver, 5})),
                ElementsAre("> repeat", "> turn", "driver-write channel.1.tx.rf.frequency 5", "ok", "> turn",
                            "driver-write channel.1.tx.rf.frequency 5", "ok", "ok, 2 turns"));
    EXPECT_THAT(expect(ExpectWriteCount{1}), ElementsAre(HasSubstr("held")));
    EXPECT_EQ(finish().commands, 2U);
}

TEST_F(SessionCoursesTest, RepeatGoesOnWhenATurnFails) {
    failWrites();
    EXPECT_EQ(repeat(3, Action(WriteDriver{txDriver, 5})).back(), "ok, 3 turns");
    EXPECT_EQ(finish().unexpectedFailures, 3U);
}

TEST_F(SessionCoursesTest, LastTurnOfARepetitionMayBeExpectedToFail) {
    failWrites();
    repeat(1, Action(WriteDriver{txDriver, 5}));
    expect(result(failed));
    EXPECT_EQ(finish().unexpectedFailures, 0U);
}

TEST_F(SessionCoursesTest, ExpectationsAreRepeatedToo) {
    tune(1000);
    EXPECT_EQ(repeat(3, Expectation(ExpectWriteCount{1})).size(), 5U);
    EXPECT_EQ(finish().held, 3U);
}

TEST_F(SessionCoursesTest, RepeatEndsBetweenTwoTurnsWhenSomebodyWantsToLeave) {
    leaveAfter(2);
    EXPECT_EQ(repeat(5, Action(WriteDriver{txDriver, 5})).back(), "ok, stopped after 2 of 5 turns");
}

// Watching.

TEST_F(SessionCoursesTest, WatchTellsAllValuesFirstAndThenThoseThatChange) {
    int calls = 0;
    session().setIdle([&calls] {
        // The first one is that before the command.
        if (++calls == 4) {
            driver(rxDriver).setValue(7);
        }
    });
    EXPECT_THAT(act(Watch{{txDriver, rxDriver}, milliseconds(1000)}, "watch"),
                ElementsAre("> watch", "channel.1.tx.rf.frequency = 0 after 0.0 s",
                            "channel.1.rx.rf.frequency = 0 after 0.0 s",
                            "channel.1.rx.rf.frequency = 7 after 0.4 s", "ok"));
    EXPECT_EQ(elapsed, 1000.0);
}

TEST_F(SessionCoursesTest, WatchTellsAFailureOnceAsLongAsItLasts) {
    act(InjectFault{{Operation::driverRead, txDriver, 0x8001, 3, {}}});
    EXPECT_THAT(act(Watch{{txDriver}, milliseconds(1000)}, "watch"),
                ElementsAre("> watch", "driver-read channel.1.tx.rf.frequency 0 answered 0x8001",
                            "channel.1.tx.rf.frequency = 0 after 0.6 s", "ok"));
}

TEST_F(SessionCoursesTest, WatchWarnsOfADriverThatCannotBeRead) {
    driver(txDriver).setMissingWords(Standalone::wordRead);
    EXPECT_THAT(
        act(Watch{{txDriver}, milliseconds(400)}, "watch"),
        ElementsAre("> watch", "warning: channel.1.tx.rf.frequency: the driver's record has no read", "ok"));
}

TEST_F(SessionCoursesTest, WatchWithoutATimeNeedsSomebodyWhoWatches) {
    EXPECT_THAT(act(Watch{{txDriver}, {}}, "watch"),
                ElementsAre("> watch", "0x8000, nothing would end it, expected \"for TIME\" at the end"));
}

TEST_F(SessionCoursesTest, WatchEndsWhenWhoeverWatchesHasSeenEnough) {
    int questions = 0;
    bool isOver = false;
    session().setWatching([&]() -> Watching {
        const std::shared_ptr<bool> end(&isOver, [](bool* over) { *over = true; });
        return [&questions, end](milliseconds time) {
            EXPECT_EQ(time, milliseconds(100));
            return ++questions < 5;
        };
    });
    EXPECT_EQ(act(Watch{{txDriver}, {}}).back(), "ok");
    EXPECT_EQ(questions, 5);
    EXPECT_TRUE(isOver);
}

TEST_F(SessionCoursesTest, WatchForATimeInTheModelKeepsNobodyWaiting) {
    session().setWatching([]() -> Watching {
        return [](milliseconds time) {
            EXPECT_EQ(time, milliseconds(0));
            return true;
        };
    });
    act(Watch{{txDriver}, milliseconds(1000)});
    EXPECT_EQ(elapsed, 1000.0);
}

TEST_F(SessionCoursesTest, WatchEndsWhenSomebodyWantsToLeave) {
    leaveAfter(3);
    act(Watch{{txDriver}, milliseconds(1000)});
    EXPECT_EQ(elapsed, 300.0);
}

// The guard.

TEST_F(SessionCoursesTest, GuardWarnsBeforeTheActionIsCarriedOut) {
    session().setGuard([](const Action& action) {
        return std::holds_alternative<Tune>(action) ? std::string("not here") : std::string();
    });
    EXPECT_THAT(tune(1000),
                ElementsAre("> tune tx 1 1000", "warning: not here",
                            "driver-write channel.1.tx.rf.frequency 1000", "told tx 1 1000", "ok"));
    EXPECT_THAT(act(SetTemperature{40}, "temperature"), ElementsAre("> temperature", "ok, 1 observer told"));
}

TEST_F(SessionCoursesTest, GuardRefusesWhatIsNotForced) {
    session().setGuard([](const Action& /*action*/) { return "not here"; });
    session().setRefusing(true);
    EXPECT_THAT(tune(1000),
                ElementsAre("> tune tx 1 1000", "warning: not here",
                            "0x8000, refused; \"force\" at the end of the line does it all the same"));
    EXPECT_THAT(expect(ExpectWriteCount{0}), ElementsAre(HasSubstr("held")));
    EXPECT_THAT(act(Tune{Direction::tx, 1, 1000, true}, "tune"),
                ElementsAre("> tune", "warning: not here", "driver-write channel.1.tx.rf.frequency 1000",
                            "told tx 1 1000", "ok"));
    EXPECT_THAT(
        act(WriteDriver{txDriver, 5, true}, "write"),
        ElementsAre("> write", "warning: not here", "driver-write channel.1.tx.rf.frequency 5", "ok"));
    EXPECT_EQ(finish().unexpectedFailures, 1U);
}

TEST_F(SessionCoursesTest, GuardIsAskedAboutEachCarrierOfASweep) {
    session().setGuard([](const Action& action) {
        const auto* const tuning = std::get_if<Tune>(&action);
        return tuning != nullptr && tuning->frequency > 1000 ? std::string("too high") : std::string();
    });
    session().setRefusing(true);
    EXPECT_THAT(
        act(sweep(1000, 3000, 1000), "sweep"),
        ElementsAre("> sweep", "driver-write channel.1.tx.rf.frequency 1000", "told tx 1 1000",
                    "warning: too high",
                    "0x8000, 1 of 3 carriers, the next refused; \"force\" at the end of the line does "
                    "it all the same"));
    Sweep forced = sweep(1000, 3000, 1000);
    forced.isForced = true;
    EXPECT_EQ(act(forced).back(), "ok, 3 carriers");
}

TEST_F(SessionCoursesTest, SimulationWarnsOfWritesOutsideTheRangeOfTheirHardware) {
    Devices::DriverHardware hardware;
    hardware.driver = txDriver;
    hardware.lowest = 2000;
    hardware.highest = 3000;
    board.hardware.description.drivers.push_back(hardware);
    EXPECT_THAT(tune(3000), ElementsAre("> tune tx 1 3000", "driver-write channel.1.tx.rf.frequency 3000",
                                        "told tx 1 3000", "ok"));
    EXPECT_THAT(tune(3001),
                ElementsAre("> tune tx 1 3001",
                            "warning: \"channel.1.tx.rf.frequency\" takes 2000 to 3000, not 3001",
                            "driver-write channel.1.tx.rf.frequency 3001", "told tx 1 3001", "ok"));
}

TEST_F(SessionCoursesTest, WarningOfTheGuardIsNotToldAgainAtTheWrite) {
    Devices::DriverHardware hardware;
    hardware.driver = txDriver;
    hardware.lowest = 2000;
    hardware.highest = 3000;
    board.hardware.description.drivers.push_back(hardware);
    session().setGuard([](const Action& /*action*/) {
        return "3001 kHz: \"channel.1.tx.rf.frequency\" takes 2000 to 3000, not 3001";
    });
    EXPECT_THAT(tune(3001),
                ElementsAre("> tune tx 1 3001",
                            "warning: 3001 kHz: \"channel.1.tx.rf.frequency\" takes 2000 to 3000, not 3001",
                            "driver-write channel.1.tx.rf.frequency 3001", "told tx 1 3001", "ok"));
}

// Channels.

TEST_F(SessionCoursesTest, ShowChannelsListsCarriersAndTheLastFailure) {
    EXPECT_THAT(act(Show{Show::Kind::channels, ""}, "show"),
                ElementsAre("> show", "channels: channel tx_khz rx_khz degrees corrections last_failure",
                            "1 - - - - -", "ok"));
    act(SetTemperature{40});
    failWrites();
    tune(7'442'000);
    EXPECT_THAT(act(Show{Show::Kind::channels, "1"}, "show"),
                ElementsAre("> show", "channels: channel tx_khz rx_khz degrees corrections last_failure",
                            "1 7442000 - 40 - Write to driver failed for channel.1.Tx.rf.frequency "
                            "(EDriverResult = 0x8001)",
                            "ok"));
    act(WriteDriver{txDriver, 5});
    EXPECT_EQ(act(Show{Show::Kind::channels, ""})[2],
              "1 7442000 - 40 - channel.1.tx.rf.frequency <- 5 failed with 0x8001");
}

TEST_F(SessionCoursesTest, LastFailureIsKnownAlsoWhereNoTraceIsShown) {
    act(SetTrace{Standalone::TraceLevel::off});
    failWrites();
    EXPECT_EQ(tune(7'442'000).size(), 4U);
    EXPECT_THAT(act(Show{Show::Kind::channels, ""})[2], HasSubstr("Write to driver failed for channel.1."));
    EXPECT_EQ(finish().held, 0U);
}

TEST_F(SessionCoursesTest, ShowChannelsListsTheCorrectionsThatAChannelHas) {
    PlanBoards::addDrivers(board, {"tx.rf.mixer.i", "tx.bb.iq.coarse.dc.q.v.adjust"});
    startQuietly();
    act(WriteDriver{"channel.1.tx.rf.mixer.i", -7});
    EXPECT_EQ(act(Show{Show::Kind::channels, ""})[2], "1 - - - mixer.i=-7 coarse.dc.q=0 -");
}

TEST(ChannelFailures, TextsNameChannelsByTheirWholeNumbers) {
    EXPECT_TRUE(namesChannel("channel.1.tx.rf.mixer.i", 1));
    EXPECT_TRUE(namesChannel("Unable to write to driver Channel.1.tx", 1));
    EXPECT_TRUE(namesChannel("Failed to set I and Q [for RadioChannel 12]", 12));
    EXPECT_FALSE(namesChannel("channel.12.tx", 1));
    EXPECT_FALSE(namesChannel("channel.2.tx.1", 1));
    EXPECT_FALSE(namesChannel("channel", 1));
    EXPECT_FALSE(namesChannel("channel.", 1));
}

} // namespace
} // namespace Radio
