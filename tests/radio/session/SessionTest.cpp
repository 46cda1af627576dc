#include "tests/radio/session/SessionTest.h"

#include <gmock/gmock.h>

namespace Radio {
namespace {

using Standalone::Operation;
using testing::ElementsAre;

// The start-up.

TEST_F(SessionTest, StartUpRunsItsPhasesInOrder) {
    start();
    EXPECT_THAT(told(),
                ElementsAre("phase 11", "driver-lookup channel.1.tx.rf.frequency 0",
                            "driver-lookup channel.1.rx.rf.frequency 0", "phase 11: 1 module", "phase 5",
                            "phase 5: 1 module", "phase 20", "phase 20: 1 module", "booted"));
    const Summary summary = finish();
    EXPECT_TRUE(summary.booted);
    EXPECT_TRUE(summary.bootAccepted);
    EXPECT_EQ(summary.commands, 0U);
}

TEST_F(SessionTest, StartUpEndsWithThePhaseThatFails) {
    PlanBoards::remove(board, "channel.1.tx.rf.frequency");
    start();
    EXPECT_THAT(told(), ElementsAre("phase 11", "driver-lookup channel.1.tx.rf.frequency 0 answered 0x8001",
                                    "error: onModuleInit failed to get driver interface "
                                    "[channel.1.tx.rf.frequency] (EDriverResult = 0x8001)",
                                    "phase 11: 1 module, failed", "did not boot"));
    EXPECT_FALSE(finish().booted);
}

TEST_F(SessionTest, StartUpThatFailsUnexpectedlyIsNotAccepted) {
    PlanBoards::remove(board, "channel.1.tx.rf.frequency");
    startQuietly();
    const Summary summary = finish();
    EXPECT_FALSE(summary.bootAccepted);
    EXPECT_EQ(summary.unexpectedFailures, 0U);
}

TEST_F(SessionTest, StartUpThatFailsAsExpectedIsAccepted) {
    PlanBoards::remove(board, "channel.1.tx.rf.frequency");
    startQuietly();
    EXPECT_THAT(expect(result(failed)), ElementsAre("expect held: expected failed, found 0x8000 (failed)"));
    const Summary summary = finish();
    EXPECT_TRUE(summary.bootAccepted);
    EXPECT_FALSE(summary.booted);
    EXPECT_EQ(summary.held, 1U);
}

TEST_F(SessionTest, StartUpIsNotExpectedToFailAfterTheNextCommand) {
    PlanBoards::remove(board, "channel.1.tx.rf.frequency");
    startQuietly();
    tune(7'442'000);
    expect(result(ok));
    EXPECT_FALSE(finish().bootAccepted);
}

TEST_F(SessionTest, ExpectationsSpeakOfTheStartUpFirst) {
    startQuietly();
    EXPECT_THAT(expect(result(ok)), ElementsAre("expect held: expected ok, found ok"));
    EXPECT_THAT(expect(ExpectNoTrace{""}),
                ElementsAre("expect held: expected no trace message, found no trace message"));
    EXPECT_THAT(expect(ExpectWriteCount{0}), ElementsAre("expect held: expected 0 writes, found 0 writes"));
}

// Commands.

TEST_F(SessionTest, TuneTellsItsWriteItsNotificationAndItsResult) {
    startQuietly();
    EXPECT_THAT(tune(7'442'000),
                ElementsAre("> tune tx 1 7442000", "driver-write channel.1.tx.rf.frequency 7442000",
                            "told tx 1 7442000", "ok"));
    EXPECT_EQ(finish().commands, 1U);
}

TEST_F(SessionTest, RefusedWriteIsToldWithItsCodeAndItsTrace) {
    startQuietly();
    const Standalone::Fault fault{Operation::driverWrite, "channel.1.tx.rf.frequency", 0x8001, {}, {}};
    EXPECT_THAT(act(InjectFault{fault}, "fault"), ElementsAre("> fault", "ok"));
    EXPECT_THAT(tune(7'442'000), ElementsAre("> tune tx 1 7442000",
                                             "driver-write channel.1.tx.rf.frequency 7442000 answered 0x8001",
                                             "error: Write to driver failed for channel.1.Tx.rf.frequency "
                                             "(EDriverResult = 0x8001)",
                                             "told tx 1 7442000", "ok"));
    EXPECT_THAT(expect(ExpectWriteCount{0}), ElementsAre("expect held: expected 0 writes, found 0 writes"));
    EXPECT_THAT(act(ClearFaults{}, "clear"), ElementsAre("> clear", "ok, 1 fault cleared"));
}

TEST_F(SessionTest, ThereAreAtMostAThousandFaultsAtATime) {
    startQuietly();
    const Standalone::Fault fault{Operation::driverWrite, "channel.1.tx.rf.frequency", 0x8001, {}, {}};
    for (int count = 0; count < 1000; ++count) {
        ASSERT_THAT(act(InjectFault{fault}, "fault"), ElementsAre("> fault", "ok"));
    }
    EXPECT_THAT(act(InjectFault{fault}, "fault"),
                testing::Contains(
                    testing::HasSubstr("expected at most 1000 faults at a time; \"clear\" takes them back")));
    EXPECT_THAT(act(ClearFaults{}, "clear"), ElementsAre("> clear", "ok, 1000 faults cleared"));
    EXPECT_THAT(act(InjectFault{fault}, "fault"), ElementsAre("> fault", "ok"));
}

TEST_F(SessionTest, TemperatureTellsHowManyObserversItReached) {
    startQuietly();
    EXPECT_THAT(act(SetTemperature{40}, "temperature 40"),
                ElementsAre("> temperature 40", "ok, 1 observer told"));
    EXPECT_THAT(act(SetTemperature{40}, "temperature 40"),
                ElementsAre("> temperature 40", "ok, 0 observers told"));
}

TEST_F(SessionTest, PhaseIsRunAgain) {
    startQuietly();
    EXPECT_THAT(act(RunPhase{Standalone::phasePostFrameformatLoad}, "phase frameformat"),
                ElementsAre("> phase frameformat", "phase 20", "phase 20: 1 module", "ok"));
}

TEST_F(SessionTest, VariableGetsItsNewValues) {
    PlanBoards::set(board, "ChannelSpacing", {100});
    startQuietly();
    act(SetVariable{"ChannelSpacing", {250}});
    EXPECT_THAT(act(Show{Show::Kind::variables, ""}, "show variables"),
                ElementsAre("> show variables", "variables: variable values", "ChannelSpacing [250]", "ok"));
}

TEST_F(SessionTest, VariableThatIsCopiedSaysWhichPhaseTakesItOver) {
    board = PlanBoards::microwave(::FrequencyHandler::MicrowaveBoardHzCsOffset);
    startQuietly();
    for (const auto& [name, ending] : std::vector<std::pair<std::string, std::string>>{
             {"channel.1.rx.mixer.multiplicationfactor", "ok, taken over by the next phase storage"},
             {"channel.1.tx.rf.spectruminverted", "ok, taken over by the next phase storage"},
             {"TxIfBb", "ok, taken over by the next phase frame-format"},
             {"ChannelSpacing", "ok, taken over by the next phase frame-format"},
             {"HwCodeDsp", "ok"},
             {"channel.1.rx.rf.frequency.cs.offset.array", "ok"}}) {
        EXPECT_THAT(act(SetVariable{name, {3}}, "set"), ElementsAre("> set", ending)) << name;
    }
}

TEST_F(SessionTest, CopiedVariableCountsAfterThePhaseOfItsNoteOnly) {
    board = PlanBoards::microwave(::FrequencyHandler::MicrowaveBoardDspOffset);
    startQuietly();
    const auto lo = [this] { return act(Tune{Direction::rx, 1, 18'000'000}, "tune"); };
    const std::vector<std::string> atFirst = lo();
    act(SetVariable{"channel.1.rx.mixer.multiplicationfactor", {3}});
    act(RunPhase{Standalone::phasePostFrameformatLoad});
    EXPECT_EQ(lo(), atFirst);
    act(RunPhase{Standalone::phaseStorageObjectsRetrieved});
    const std::vector<std::string> behindStorage = lo();
    EXPECT_NE(behindStorage, atFirst);
    act(SetVariable{"ChannelSpacing", {50}});
    act(RunPhase{Standalone::phaseStorageObjectsRetrieved});
    EXPECT_EQ(lo(), behindStorage);
    act(RunPhase{Standalone::phasePostFrameformatLoad});
    EXPECT_NE(lo(), behindStorage);
}

TEST_F(SessionTest, VariableWithoutANoteCountsAtOnce) {
    board = PlanBoards::microwave(::FrequencyHandler::MicrowaveBoardHzCsOffset);
    startQuietly();
    const auto lo = [this] { return act(Tune{Direction::rx, 1, 18'000'000}, "tune"); };
    const std::vector<std::string> atFirst = lo();
    act(SetVariable{"channel.1.rx.rf.frequency.cs.offset.array", {100, 7000}});
    EXPECT_NE(lo(), atFirst);
}

TEST_F(SessionTest, QuitEndsTheSession) {
    startQuietly();
    EXPECT_FALSE(isOver());
    EXPECT_THAT(act(Quit{}, "quit"), ElementsAre("> quit", "ok"));
    EXPECT_TRUE(isOver());
}

TEST_F(SessionTest, HelpIsAskedOfTheListener) {
    startQuietly();
    EXPECT_THAT(act(Help{"tune"}, "help tune"), ElementsAre("> help tune", "help about \"tune\"", "ok"));
    EXPECT_THAT(act(Help{""}, "help"), ElementsAre("> help", "help about \"\"", "ok"));
}

TEST_F(SessionTest, ShowListsWhatThereIs) {
    startQuietly();
    tune(7'442'000);
    EXPECT_THAT(act(Show{Show::Kind::drivers, ""}, "show drivers"),
                ElementsAre("> show drivers", "drivers: driver value writes", "channel.1.rx.rf.frequency 0 0",
                            "channel.1.tx.rf.frequency 7442000 1", "ok"));
    EXPECT_THAT(act(Show{Show::Kind::observers, ""}, "show observers"),
                ElementsAre("> show observers", "observers: interface kind told last_khz",
                            "IFrequencyHandler_Tx_1 class 1 7442000", "IFrequencyHandler_Rx_1 class 0 0",
                            "ok"));
}

TEST_F(SessionTest, ShowListsWhatFitsThePattern) {
    startQuietly();
    EXPECT_THAT(act(Show{Show::Kind::drivers, "t?.rf"}, "show drivers t?.rf"),
                ElementsAre("> show drivers t?.rf", "drivers: driver value writes",
                            "channel.1.tx.rf.frequency 0 0", "ok"));
    EXPECT_THAT(act(Show{Show::Kind::tables, ""}, "show tables"),
                ElementsAre("> show tables", "tables: table nodes", "ok"));
}

TEST_F(SessionTest, OnlyCommandsToTheRadioAreCounted) {
    startQuietly();
    tune(7'442'000);
    act(SetTemperature{40});
    act(Show{Show::Kind::drivers, ""});
    act(Help{""});
    expect(ExpectNoTrace{""});
    act(Quit{});
    EXPECT_EQ(finish().commands, 2U);
}

// Traces.

TEST_F(SessionTest, TraceThatIsNotShownIsExpectedAllTheSame) {
    startQuietly(Standalone::TraceLevel::off);
    act(SetPresence{"IDriverLayer", Standalone::Presence::absent});
    EXPECT_THAT(act(RunPhase{Standalone::phaseModuleInit}, "phase init"),
                ElementsAre("> phase init", "phase 11", "phase 11: 1 module, failed", "0x8000"));
    EXPECT_THAT(
        expect(ExpectTrace{"DriverLayer"}),
        ElementsAre("expect held: expected a trace message with \"DriverLayer\", found \"Unable to get "
                    "DriverLayer Interface\""));
}

TEST_F(SessionTest, TraceThatIsShownIsNotExpectedForThat) {
    startQuietly(Standalone::TraceLevel::information);
    EXPECT_THAT(tune(7'442'000),
                ElementsAre("> tune tx 1 7442000", "information: setTxFrequency 7442000",
                            "information: Write frequency to HW 7442000 for direction Tx",
                            "driver-write channel.1.tx.rf.frequency 7442000", "told tx 1 7442000", "ok"));
    EXPECT_THAT(expect(ExpectNoTrace{""}),
                ElementsAre("expect held: expected no trace message, found no trace message"));
}

TEST_F(SessionTest, CommandChoosesWhatIsShownAndExpected) {
    startQuietly();
    act(SetTrace{Standalone::TraceLevel::information});
    tune(7'442'000);
    EXPECT_THAT(
        expect(ExpectTrace{"setTxFrequency"}),
        ElementsAre("expect held: expected a trace message with \"setTxFrequency\", found "
                    "\"setTxFrequency 7442000\", \"Write frequency to HW 7442000 for direction Tx\""));
}

// Expectations.

TEST_F(SessionTest, ExpectationThatHoldsIsCounted) {
    startQuietly();
    tune(7'442'000);
    EXPECT_THAT(expect(ExpectFrequency{Direction::tx, 1, 7'442'000}),
                ElementsAre("expect held: expected 7442000 kHz, found 7442000 kHz"));
    EXPECT_THAT(expect(ExpectNotified{Direction::tx, 1, 7'442'000}),
                ElementsAre("expect held: expected 7442000 kHz, found 7442000 kHz"));
    EXPECT_THAT(expect(ExpectDriver{"channel.1.tx.rf.frequency", 7'442'000}),
                ElementsAre("expect held: expected 7442000, found 7442000"));
    EXPECT_THAT(expect(ExpectWrites{{{"channel.1.tx.rf.frequency", 7'442'000}}}),
                ElementsAre("expect held: expected channel.1.tx.rf.frequency=7442000, found "
                            "channel.1.tx.rf.frequency=7442000"));
    const Summary summary = finish();
    EXPECT_EQ(summary.held, 4U);
    EXPECT_EQ(summary.failed, 0U);
}

TEST_F(SessionTest, ExpectationThatFailsIsCountedAndSaysWhatIsThere) {
    startQuietly();
    tune(7'442'000);
    EXPECT_THAT(expect(ExpectFrequency{Direction::tx, 1, 7'443'000}),
                ElementsAre("expect failed: expected 7443000 kHz, found 7442000 kHz"));
    EXPECT_THAT(expect(ExpectNotified{Direction::rx, 1, 7'442'000}),
                ElementsAre("expect failed: expected 7442000 kHz, found no notification"));
    EXPECT_THAT(expect(ExpectDriver{"channel.1.rx.rf.frequency", 7'442'000}),
                ElementsAre("expect failed: expected 7442000, found 0 (never written)"));
    EXPECT_THAT(expect(ExpectWriteCount{2}), ElementsAre("expect failed: expected 2 writes, found 1 write: "
                                                         "channel.1.tx.rf.frequency=7442000"));
    EXPECT_THAT(expect(result(failed)), ElementsAre("expect failed: expected failed, found ok"));
    const Summary summary = finish();
    EXPECT_EQ(summary.held, 0U);
    EXPECT_EQ(summary.failed, 5U);
    EXPECT_EQ(summary.unexpectedFailures, 0U);
}

TEST_F(SessionTest, ExpectationsSpeakOfTheLastCommandAlone) {
    startQuietly();
    tune(7'442'000);
    act(SetTemperature{40});
    EXPECT_THAT(expect(ExpectWrites{{}}), ElementsAre("expect held: expected no writes, found no writes"));
    EXPECT_THAT(expect(ExpectNotified{Direction::tx, 1, 7'442'000}),
                ElementsAre("expect failed: expected 7442000 kHz, found no notification"));
}

TEST_F(SessionTest, ShowingSomethingIsNotTheLastCommand) {
    startQuietly();
    tune(7'442'000);
    act(Show{Show::Kind::drivers, ""});
    act(Help{"tune"});
    EXPECT_THAT(expect(ExpectWriteCount{1}), ElementsAre("expect held: expected 1 write, found 1 write: "
                                                         "channel.1.tx.rf.frequency=7442000"));
}

// Failures.

TEST_F(SessionTest, FailureThatNobodyExpectsIsCounted) {
    startQuietly();
    failOnce();
    tune(7'442'000);
    expect(result(ok));
    const Summary summary = finish();
    EXPECT_EQ(summary.unexpectedFailures, 1U);
    EXPECT_TRUE(summary.bootAccepted);
}

TEST_F(SessionTest, FailureOfTheLastCommandIsCountedAtTheEnd) {
    startQuietly();
    failOnce();
    expect(ExpectTrace{"DriverLayer"});
    EXPECT_EQ(finish().unexpectedFailures, 1U);
}

TEST_F(SessionTest, FailureThatIsExpectedIsNotCounted) {
    startQuietly();
    failOnce();
    EXPECT_THAT(expect(result(ExpectResult::Kind::code, 0x8000)),
                ElementsAre("expect held: expected 0x8000, found 0x8000 (failed)"));
    EXPECT_EQ(finish().unexpectedFailures, 0U);
}

TEST_F(SessionTest, FailureIsExpectedAlsoBehindOtherExpectationsAndLists) {
    startQuietly();
    failOnce();
    expect(ExpectTrace{"DriverLayer"});
    act(Show{Show::Kind::interfaces, ""});
    expect(result(failed));
    EXPECT_EQ(finish().unexpectedFailures, 0U);
}

TEST_F(SessionTest, FailureOfWhichAnotherResultIsExpectedCountsOnce) {
    startQuietly();
    failOnce();
    EXPECT_THAT(expect(result(ok)), ElementsAre("expect failed: expected ok, found 0x8000 (failed)"));
    const Summary summary = finish();
    EXPECT_EQ(summary.failed, 1U);
    EXPECT_EQ(summary.unexpectedFailures, 0U);
}

} // namespace
} // namespace Radio
