#include "tests/radioctl/program/ProgramTest.h"

#include <sstream>

using testing::HasSubstr;
using testing::Not;

namespace {

class RunTest : public ProgramTest {};

TEST_F(RunTest, BootsAndTunesStepByStep) {
    const Ending ending = runScript("tune tx 1 7442 MHz\n");
    EXPECT_EQ(ending.output, R"(SIMULATION: nothing reaches hardware.
Test radio (board.toml)
  channel 1: rf-module
phase 11: module initialisation
  FrequencyHandler, channel 1: ok
phase 5: storage objects retrieved
  FrequencyHandler, channel 1: ok
phase 20: post frame-format load
  FrequencyHandler, channel 1: ok
The radio is up.

> tune tx 1 7442 MHz
  1  channel.1.tx.rf.frequency <- 7442000
     tx 1 told its observer: 7442000 kHz

1 command, 0 expectations.
)");
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(RunTest, PassesTheCarrierToTheRemoteRadioUnit) {
    write("board.toml", rauBoard);
    const Ending ending = runScript("tune rx 2 18.7375 GHz\nexpect rau rx 2 18737500\n");
    EXPECT_THAT(ending.output, HasSubstr("\n> tune rx 2 18.7375 GHz\n"
                                         "  1  IRauHandler_2.rx <- 18737500\n"
                                         "     rx 2 told its observer: 18737500 kHz\n"
                                         "  held    expect rau rx 2 18737500\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(RunTest, SaysWhatWasExpectedAndWhatWasFound) {
    const Ending ending =
        runScript("tune tx 1 7442 MHz\n\nexpect driver channel.1.tx.rf.frequency 7443000\n");
    EXPECT_THAT(ending.output,
                HasSubstr("  FAILED  expect driver channel.1.tx.rf.frequency 7443000  (script:3)\n"
                          "          expected 7443000, found 7442000\n"
                          "\n"
                          "1 command, 1 expectation: 1 FAILED.\n"));
    EXPECT_EQ(ending.exitCode, 1);
}

TEST_F(RunTest, SaysThatADriverWasNeverWritten) {
    const Ending ending = runScript("expect driver channel.1.tx.rf.frequency 5\n");
    EXPECT_THAT(ending.output, HasSubstr("expected 5, found 0 (never written)\n"));
}

TEST_F(RunTest, ShowsAFaultThatStruck) {
    const Ending ending = runScript("fault driver-write channel.1.tx.rf.frequency 0x8001 once\n"
                                    "tune tx 1 7442 MHz\n"
                                    "expect trace \"Write to driver failed\"\n"
                                    "expect writes 0\n"
                                    "tune tx 1 7442 MHz\n"
                                    "expect writes channel.1.tx.rf.frequency=7442000\n");
    EXPECT_THAT(
        ending.output,
        HasSubstr(
            "> tune tx 1 7442 MHz\n"
            "  -  channel.1.tx.rf.frequency <- 7442000  FAILED 0x8001\n"
            "     error: Write to driver failed for channel.1.Tx.rf.frequency (EDriverResult = 0x8001)\n"
            "     tx 1 told its observer: 7442000 kHz\n"
            "  held    expect trace \"Write to driver failed\"\n"
            "  held    expect writes 0\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(RunTest, FailedWriteStillStoresTheFrequencyAndTellsObservers) {
    const Ending ending = runScript("fault driver-write 0x8000\n"
                                    "tune rx 1 7603 MHz\n"
                                    "expect result ok\n"
                                    "expect frequency rx 1 7603 MHz\n"
                                    "expect notified rx 1 7603 MHz\n"
                                    "expect driver channel.1.rx.rf.frequency 0\n");
    EXPECT_THAT(ending.output, HasSubstr("2 commands, 4 expectations: all held.\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(RunTest, CodeBelow0x8000IsASuccessAndCarriedOut) {
    const Ending ending = runScript("fault driver-write 0x7FFF\n"
                                    "tune tx 1 7442000\n"
                                    "expect no trace\n"
                                    "expect writes channel.1.tx.rf.frequency=7442000\n"
                                    "fault driver-write 0xFFFFFFFF\n"
                                    "tune tx 1 7443000\n"
                                    "expect no trace\n");
    EXPECT_THAT(ending.output, HasSubstr("  1  channel.1.tx.rf.frequency <- 7442000  (answered 0x7fff)\n"));
    EXPECT_THAT(ending.output,
                HasSubstr("  1  channel.1.tx.rf.frequency <- 7443000  (answered 0xffffffff)\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(RunTest, HighestCarrierReachesADriverAs32BitsWithSign) {
    const Ending ending = runScript("tune tx 1 4294967295\n"
                                    "expect frequency tx 1 4294967295\n"
                                    "expect writes channel.1.tx.rf.frequency=-1\n");
    EXPECT_THAT(ending.output, HasSubstr("     tx 1 told its observer: 4294967295 kHz\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(RunTest, ObserversThroughCAreToldAfterThoseBeforeThem) {
    const Ending ending = runScript("observe tx 1\nobserve tx 1\ntune tx 1 7442000\n");
    EXPECT_THAT(ending.output, HasSubstr("     tx 1 told its observer: 7442000 kHz\n"
                                         "     tx 1 told its C observer: 7442000 kHz\n"
                                         "     tx 1 told its C observer: 7442000 kHz\n"));
}

TEST_F(RunTest, InterfaceThatIsNotThereStopsThePhase) {
    for (const char* const presence : {"absent", "null", "foreign", "null-record"}) {
        const Ending ending = runScript("interface IDriverLayer " + std::string(presence) +
                                        "\n"
                                        "phase init\n"
                                        "expect result 0x8000\n"
                                        "expect trace \"Unable to get DriverLayer Interface\"\n"
                                        "interface IDriverLayer present\n"
                                        "phase init\n"
                                        "expect result ok\n");
        EXPECT_THAT(ending.output, HasSubstr("  FrequencyHandler, channel 1: FAILED 0x8000\n"));
        EXPECT_EQ(ending.exitCode, 0) << presence;
    }
}

TEST_F(RunTest, CommandThatFailsUnexpectedlyFailsTheRun) {
    const Ending ending = runScript("interface IDriverLayer absent\nphase init\ntune tx 1 7442000\n");
    EXPECT_THAT(ending.output, HasSubstr("1 command FAILED without an \"expect result\".\n"));
    EXPECT_EQ(ending.exitCode, 1);
}

TEST_F(RunTest, RadioThatDoesNotBootIsExitCode4) {
    write("board.toml", brokenBoard);
    const Ending ending = runScript("tune rx 1 7603 MHz\n");
    EXPECT_EQ(ending.output, R"(SIMULATION: nothing reaches hardware.
Broken radio (board.toml)
  channel 1: rf-module
phase 11: module initialisation
     error: onModuleInit failed to get driver interface [channel.1.tx.rf.frequency] (EDriverResult = 0x8001)
  FrequencyHandler, channel 1: FAILED 0x8000
The radio did not boot. "radioctl check board.toml" may say why.

> tune rx 1 7603 MHz
     rx 1 told its observer: 7603000 kHz

1 command, 0 expectations.
The radio did not boot, and no "expect result" came first.
)");
    EXPECT_EQ(ending.exitCode, 4);
}

TEST_F(RunTest, ScriptCanExpectThatTheRadioDoesNotBoot) {
    write("board.toml", brokenBoard);
    const Ending accepted =
        runScript("expect trace \"failed to get driver interface\"\nexpect result failed\n");
    EXPECT_EQ(accepted.exitCode, 0);
    EXPECT_EQ(runScript("expect result ok\n").exitCode, 1);
    EXPECT_EQ(runScript("").exitCode, 4);
}

TEST_F(RunTest, TraceLevelOnTheCommandLineDoesNotChangeTheVerdict) {
    const std::string script = "tune tx 1 7442000\n"
                               "expect no trace\n"
                               "fault driver-write 0x8001\n"
                               "tune tx 1 7442000\n"
                               "expect trace \"Write to driver failed\"\n";
    const Ending quiet = runScript(script, {"--trace", "off"});
    EXPECT_THAT(quiet.output, Not(HasSubstr("error:")));
    EXPECT_EQ(quiet.exitCode, 0);
    const Ending chatty = runScript(script, {"--trace", "information"});
    EXPECT_THAT(chatty.output, HasSubstr("     information: setTxFrequency 7442000\n"));
    EXPECT_EQ(chatty.exitCode, 0);
}

TEST_F(RunTest, TraceCommandLetsExpectationsSeeInformation) {
    const Ending ending = runScript("trace information\n"
                                    "tune tx 1 7442000\n"
                                    "expect trace \"Write frequency to HW 7442000 for direction Tx\"\n"
                                    "expect no trace\n");
    EXPECT_THAT(ending.output,
                HasSubstr("          expected no trace message, found \"setTxFrequency 7442000\", "
                          "\"Write frequency to HW 7442000 for direction Tx\"\n"));
    EXPECT_EQ(ending.exitCode, 1);
}

TEST_F(RunTest, VerboseShowsEveryCallAndWhereMessagesComeFrom) {
    const Ending ending = runScript("", {"-v", "--trace", "information"});
    EXPECT_THAT(ending.output, HasSubstr("     driver-lookup channel.1.tx.rf.frequency\n"));
    EXPECT_THAT(ending.output,
                testing::ContainsRegex("information: onModuleInit \\[FrequencyHandler.cpp:[0-9]+\\]\n"));
}

TEST_F(RunTest, ShowListsDriversByPattern) {
    const Ending ending = runScript("tune tx 1 7442000\nshow drivers .tx.\nshow drivers nothing\n");
    EXPECT_THAT(ending.output, HasSubstr("> show drivers .tx.\n"
                                         "     driver                     value    writes\n"
                                         "     channel.1.tx.rf.frequency  7442000  1\n"
                                         "\n"
                                         "> show drivers nothing\n"
                                         "     no drivers\n"));
}

TEST_F(RunTest, ShowListsFaultsWithTheTurnsTheyHaveLeft) {
    const Ending ending = runScript("fault driver-write 0x8001 3 times\n"
                                    "fault driver-read channel.1.tx.rf.frequency 5\n"
                                    "tune tx 1 7442000\n"
                                    "show faults\n"
                                    "clear driver-write\n"
                                    "clear all\n");
    EXPECT_THAT(ending.output, HasSubstr("     operation     object                     code    turns\n"
                                         "     driver-write  (all)                      0x8001  2\n"
                                         "     driver-read   channel.1.tx.rf.frequency  0x5     always\n"));
    EXPECT_THAT(ending.output, HasSubstr("> clear driver-write\n     1 fault cleared\n"));
}

TEST_F(RunTest, QuitEndsTheScript) {
    const Ending ending = runScript("quit\nexpect result failed\n");
    EXPECT_THAT(ending.output, HasSubstr("0 commands, 0 expectations.\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(RunTest, HelpAndListsAreNotCountedAsCommands) {
    const Ending ending = runScript("help\nshow drivers\ntune tx 1 7442000\n");
    EXPECT_THAT(ending.output, HasSubstr("\n1 command, 0 expectations.\n"));
}

TEST_F(RunTest, HealthyBootShowsNoFailedLookup) {
    const std::string board = std::string(RADIOCTL_BOARDS) + "/microwave-if-8ghz.toml";
    EXPECT_THAT(runProgram({{"run", board}}).output, Not(HasSubstr("FAILED")));
    EXPECT_THAT(runProgram({{"run", board, "-v"}}).output,
                HasSubstr("     driver-lookup channel.1.tx.rf.lo.config  FAILED 0x8001\n"));
}

TEST_F(RunTest, ShowListsTheNodesOfEachAxis) {
    write("board.toml", std::string(rfModuleBoard) + R"(
[tables]
"One" = { axis = [1, 2, 3], values = [0, 0, 0] }
"Two" = { axes = [[1, 2], [1]], values = [[0], [0]] }
)");
    EXPECT_THAT(runScript("show tables\n").output, HasSubstr("     table  nodes\n"
                                                             "     One    3\n"
                                                             "     Two    2,1\n"));
}

TEST_F(RunTest, PassesOverAByteOrderMark) {
    EXPECT_EQ(runScript("\xEF\xBB\xBF"
                        "tune tx 1 7442000\nexpect writes 1\n")
                  .exitCode,
              0);
}

TEST_F(RunTest, ReadsCommandsFromAPipe) {
    const Ending ending = runProgram({{"run", "board.toml"}}, "tune tx 1 7442000\nexpect writes 2");
    EXPECT_THAT(ending.output, HasSubstr("  FAILED  expect writes 2  (stdin:2)\n"
                                         "          expected 2 writes, found 1 write: "
                                         "channel.1.tx.rf.frequency=7442000\n"));
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_EQ(runProgram({{"run", "board.toml", "-"}}, "expect writes 0\n").exitCode, 0);
}

TEST_F(RunTest, TakesScriptsWithTheLineEndsOfOtherSystems) {
    EXPECT_EQ(runScript("tune tx 1 7442000\r\nexpect writes 1\r\n").exitCode, 0);
}

TEST_F(RunTest, ColoursNothingInAPipe) {
    write("board.toml", brokenBoard);
    EXPECT_THAT(runScript("").output, Not(HasSubstr("\033")));
}

TEST_F(RunTest, ColoursFailuresAtATerminal) {
    write("board.toml", brokenBoard);
    const Ending ending = runProgram({{"run", "board.toml"}, {{"NO_COLOR", ""}, {"TERM", "xterm"}}, true});
    EXPECT_THAT(ending.output, HasSubstr("\033[1;31merror: onModuleInit failed to get driver interface"));
    EXPECT_EQ(ending.exitCode, 4);
}

TEST_F(RunTest, ColoursNothingAtATerminalOfUnknownType) {
    write("board.toml", brokenBoard);
    Invocation invocation{{"run", "board.toml"}, {{"NO_COLOR", ""}}, true};
    invocation.environmentWithout = "TERM";
    EXPECT_THAT(runProgram(invocation).output, Not(HasSubstr("\033")));
}

TEST_F(RunTest, HonoursNoColor) {
    write("board.toml", brokenBoard);
    const Ending ending = runProgram({{"run", "board.toml"}, {{"NO_COLOR", "1"}, {"TERM", "xterm"}}, true});
    EXPECT_THAT(ending.output, HasSubstr("error: onModuleInit failed to get driver interface"));
    EXPECT_THAT(ending.output, Not(HasSubstr("\033")));
}

TEST_F(RunTest, BoardsOfTheProjectPassTheirOwnScripts) {
    std::size_t boards = 0;
    for (const auto& entry : std::filesystem::directory_iterator(RADIOCTL_BOARDS)) {
        if (entry.path().extension() != ".toml") {
            continue;
        }
        ++boards;
        std::filesystem::path script = entry.path();
        script.replace_extension(".script");
        const Ending ending = runProgram({{"run", entry.path().string(), script.string()}});
        EXPECT_THAT(ending.output, HasSubstr(" expectations: all held.\n"));
        EXPECT_EQ(ending.exitCode, 0) << script;
    }
    EXPECT_GE(boards, 6U);
}

TEST_F(RunTest, SixtyFourChannelsBootAndTune) {
    std::ostringstream channels;
    std::ostringstream drivers;
    std::ostringstream script;
    for (int channel = 1; channel <= 64; ++channel) {
        channels << "[[channel]]\nnumber = " << channel << "\ntype = \"rf-module\"\n";
        for (const char* const direction : {"tx", "rx"}) {
            drivers << "\"channel." << channel << "." << direction << ".rf.frequency\" = {}\n";
            script << "tune " << direction << " " << channel << " " << 7420000 + channel << "\n"
                   << "expect writes channel." << channel << "." << direction
                   << ".rf.frequency=" << 7420000 + channel << "\n";
        }
    }
    write("board.toml", "name = \"Large radio\"\n" + channels.str() + "[drivers]\n" + drivers.str());
    const Ending ending = runScript(script.str());
    EXPECT_THAT(ending.output, HasSubstr("  FrequencyHandler, channels 1 to 64: ok\n"));
    EXPECT_THAT(ending.output, HasSubstr("\n128 commands, 128 expectations: all held.\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

} // namespace
