#include "tests/devices/Instrument.h"
#include "tests/radio/support/HardwareBoard.h"
#include "tests/radio/support/LeakageBoard.h"
#include "tests/radioctl/program/HardwareTest.h"
#include "tests/radioctl/program/ProgramTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace {

using testing::HasSubstr;
using testing::Values;

std::string nameOf(const std::string& what, int signal) {
    return what + (signal == SIGINT ? "AtSigint" : signal == SIGTERM ? "AtSigterm" : "AtSighup");
}

/** The program while it waits for something else than input: files that nobody writes, and a program for
 * plots. */
class WaitingProgramTest : public ProgramTest {
protected:
    WaitingProgramTest() {
        write("log.csv", "seconds,degrees\n0,0\n60,5\n");
        write("board.toml", compensatedBoard);
        std::filesystem::create_directory("tools");
    }
    /** A gnuplot that does what a script of the shell says. */
    static Invocation withGnuplot(std::vector<std::string> arguments, const std::string& script) {
        write("tools/gnuplot", "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions("tools/gnuplot", std::filesystem::perms::owner_all);
        const char* const path = std::getenv("PATH");
        return {
            std::move(arguments),
            {{"PATH", std::filesystem::absolute("tools").string() + ":" + (path == nullptr ? "" : path)}}};
    }
    static std::vector<std::string> thermal() {
        return {"thermal", "board.toml", "log.csv", "--html", "page.html"};
    }
    static std::string contentOf(const std::string& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /** Waits until a file has something in it; its content, or nothing after 10 s. */
    static std::string waitForContentOf(const std::string& file) {
        for (int turn = 0; turn < 1000 && contentOf(file).empty(); ++turn) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return contentOf(file);
    }
    static bool waitUntilGone(pid_t pid) {
        for (int turn = 0; turn < 1000; ++turn) {
            const std::string state = contentOf("/proc/" + std::to_string(pid) + "/stat");
            if (state.empty() || state.find(") Z ") != std::string::npos) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }
};

TEST_F(WaitingProgramTest, WhatGnuplotStartedGoesWithIt) {
    Process radioctl(withGnuplot(thermal(), "sleep 300 & echo $! > started\nwait"));
    const std::string started = waitForContentOf("started");
    ASSERT_NE(started, "");
    radioctl.signal(SIGTERM);
    EXPECT_EQ(radioctl.finish().exitCode, 143);
    EXPECT_TRUE(waitUntilGone(std::stoi(started)));
}

/** A pipe called "pipe" whose other end nobody opens, wherever the command line or a file names one. */
struct APipe {
    const char* name;
    std::vector<std::string> arguments;
};

void PrintTo(const APipe& pipe, std::ostream* out) {
    *out << pipe.name;
}

class PipeThatNobodyServesTest : public WaitingProgramTest,
                                 public testing::WithParamInterface<std::tuple<APipe, int>> {
protected:
    PipeThatNobodyServesTest() {
        write("model.toml", leakageBoard());
        write("script", "tune tx 1 7442000\n");
        write("including", "include pipe\n");
        write("tables.toml", std::string(rfModuleBoard) +
                                 "[tables]\n\"Some.Table\" = { file = \"pipe\", column = \"i\" }\n");
    }
};

TEST_P(PipeThatNobodyServesTest, IsLeftAtASignal) {
    const auto& [pipe, signal] = GetParam();
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    Process radioctl(Invocation{pipe.arguments});
    // It holds the signal back by now, or takes it as any program does.
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const auto begin = std::chrono::steady_clock::now();
    radioctl.signal(signal);
    const Ending ending = radioctl.finish();
    const auto took = std::chrono::steady_clock::now() - begin;
    EXPECT_TRUE(ending.exitCode == 128 + signal || ending.exitCode == -signal)
        << ending.exitCode << ending.output << ending.errors;
    // A second, and what a busy computer adds.
    EXPECT_LT(std::chrono::duration_cast<std::chrono::milliseconds>(took).count(), 4000);
}

const std::vector<APipe> everyPipe{
    {"boardOfARun", {"run", "pipe", "script"}},
    {"boardOfAConsole", {"console", "pipe"}},
    {"boardThatIsChecked", {"check", "pipe"}},
    {"boardThatIsAudited", {"plan", "audit", "pipe"}},
    {"boardThatIsExplained", {"plan", "explain", "pipe", "--channel", "1", "--tx", "18GHz"}},
    {"boardWhoseTablesAreLookedAt", {"tables", "lint", "pipe"}},
    {"boardWhoseTablesAreExplained",
     {"tables", "why", "pipe", "--channel", "1", "--frequency", "18GHz", "--temperature", "20"}},
    {"tablesThatAreCompared", {"tables", "diff", "pipe", "model.toml"}},
    {"boardOfAReplay", {"thermal", "pipe", "log.csv"}},
    {"boardThatIsCalibrated", {"calibrate", "pipe", "--channel", "1"}},
    {"boardThatIsQualified", {"qualify", "pipe", "--channel", "1"}},
    {"tableOfABoard", {"check", "tables.toml"}},
    {"script", {"run", "board.toml", "pipe"}},
    {"scriptThatIsIncluded", {"run", "board.toml", "including"}},
    {"logOfTemperatures", {"thermal", "board.toml", "pipe"}},
    {"linesOfAnAudit", {"plan", "audit", "board.toml", "--csv", "pipe"}},
    {"linesOfAReplay", {"thermal", "board.toml", "log.csv", "--csv", "pipe"}},
    {"pageOfAReplay", {"thermal", "board.toml", "log.csv", "--html", "pipe"}},
    {"pageOfACalibration",
     {"calibrate", "model.toml", "--channel", "1", "--out", "tables.csv", "--html", "pipe"}},
    {"tablesOfACalibration", {"calibrate", "model.toml", "--channel", "1", "--out", "pipe"}},
    {"reportOfARun", {"run", "board.toml", "script", "--junit", "pipe"}}};

INSTANTIATE_TEST_SUITE_P(Of, PipeThatNobodyServesTest,
                         testing::Combine(testing::ValuesIn(everyPipe), Values(SIGINT, SIGTERM, SIGHUP)),
                         [](const auto& test) {
                             return nameOf(std::get<0>(test.param).name, std::get<1>(test.param));
                         });

TEST_F(WaitingProgramTest, PipeIsNoJournalAndNotWaitedFor) {
    write("model.toml", leakageBoard());
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    const Ending ending =
        runProgram({{"calibrate", "model.toml", "--channel", "1", "--out", "t.csv", "--journal", "pipe"}});
    EXPECT_EQ(ending.errors, "radioctl: pipe: no ordinary file, expected a calibration journal\n");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(WaitingProgramTest, InterruptAtThePromptEndsAnIncludeThatIsWaitedFor) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    Process radioctl(Invocation{{"console", "board.toml"}, {}, true});
    ASSERT_TRUE(radioctl.waitFor("radio> "));
    radioctl.type("include pipe\n");
    ASSERT_TRUE(radioctl.waitFor("include pipe"));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    radioctl.signal(SIGINT);
    ASSERT_TRUE(radioctl.waitFor("radio> "));
    radioctl.type("quit\n");
    EXPECT_EQ(radioctl.finish().exitCode, 0);
}

TEST_F(WaitingProgramTest, PipeThatIsReadGetsTheLines) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    Process radioctl(Invocation{{"thermal", "board.toml", "log.csv", "--csv", "pipe"}});
    EXPECT_THAT(contentOf("pipe"), testing::StartsWith("second"));
    EXPECT_EQ(radioctl.finish().exitCode, 0);
}

/** Standard output and that of errors are pipes that are full, and nobody reads them. */
class UnreadOutputTest : public WaitingProgramTest, public testing::WithParamInterface<int> {
protected:
    UnreadOutputTest() {
        std::string script;
        for (int n = 0; n < 20000; ++n) {
            script += "tune tx 1 7442000\n";
        }
        write("script", script);
    }
};

TEST_P(UnreadOutputTest, OfASimulationIsLeftAtASignal) {
    Process radioctl(Invocation{{"run", "board.toml", "script"}});
    ASSERT_TRUE(radioctl.waitUntilItCatches(GetParam()));
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    radioctl.signal(GetParam());
    // It ends before anybody reads what was left in the pipe.
    EXPECT_TRUE(radioctl.waitUntilItEnded());
    EXPECT_EQ(radioctl.finish().exitCode, 128 + GetParam());
}

INSTANTIATE_TEST_SUITE_P(At, UnreadOutputTest, Values(SIGINT, SIGTERM, SIGHUP),
                         [](const auto& test) { return nameOf("output", test.param); });

TEST_F(WaitingProgramTest, PipeIsNoRecordingAndNotWaitedFor) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    for (const std::vector<std::string>& verb :
         {std::vector<std::string>{"record", "show"}, {"describe"}, {"replay"}}) {
        std::vector<std::string> arguments = verb;
        arguments.emplace_back("pipe");
        const Ending ending = runProgram({arguments});
        EXPECT_EQ(ending.errors, "radioctl: pipe: is no file, expected a recording\n");
        EXPECT_EQ(ending.exitCode, 3);
    }
}

TEST_F(WaitingProgramTest, PipeThatIsWrittenIsRead) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    Process radioctl(Invocation{{"run", "board.toml", "pipe"}});
    std::ofstream("pipe") << "tune tx 1 7442000\n";
    EXPECT_THAT(radioctl.finish().output, HasSubstr("channel.1.tx.rf.frequency <- 7442000"));
}

TEST_F(WaitingProgramTest, HangingGnuplotIsLeftAtSigtermAndGoesToo) {
    Process radioctl(withGnuplot(thermal(), "echo $$ > pid; exec sleep 1000"));
    const std::string pid = waitForContentOf("pid");
    ASSERT_NE(pid, "");
    radioctl.signal(SIGTERM);
    EXPECT_EQ(radioctl.finish().exitCode, 128 + SIGTERM);
    EXPECT_TRUE(waitUntilGone(std::stoi(pid)));
}

TEST_F(WaitingProgramTest, HangingGnuplotGoesWithItsParent) {
    Process radioctl(withGnuplot(thermal(), "echo $$ > pid; exec sleep 1000"));
    const std::string pid = waitForContentOf("pid");
    ASSERT_NE(pid, "");
    radioctl.signal(SIGKILL);
    EXPECT_EQ(radioctl.finish().exitCode, -SIGKILL);
    EXPECT_TRUE(waitUntilGone(std::stoi(pid)));
}

TEST_F(WaitingProgramTest, FailureOfGnuplotIsSeenWhereSigchldIsIgnored) {
    write("page.html", "good page");
    static_cast<void>(std::signal(SIGCHLD, SIG_IGN));
    Process radioctl(withGnuplot(thermal(), "echo no terminal >&2; exit 1"));
    static_cast<void>(std::signal(SIGCHLD, SIG_DFL));
    const Ending ending = radioctl.finish();
    EXPECT_EQ(ending.errors, "radioctl: --html: the plots need gnuplot, which failed: no terminal\n");
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_EQ(contentOf("page.html"), "good page");
}

TEST_F(WaitingProgramTest, GnuplotThatDrawsNothingIsSaid) {
    write("page.html", "good page");
    const Ending ending = runProgram(withGnuplot(thermal(), "exit 0"));
    EXPECT_THAT(ending.errors, HasSubstr("radioctl: --html: the plots need gnuplot, which drew nothing\n"));
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_EQ(contentOf("page.html"), "good page");
}

/** Every wait that a person can meet, and each signal that asks the program to leave. */
struct AWait {
    const char* name;
    std::vector<std::string> arguments;
    /** On standard output, once it waits or is about to; empty: nothing is. */
    std::string shown;
    /** How long it may take from there. */
    std::chrono::milliseconds more{0};
};

void PrintTo(const AWait& wait, std::ostream* out) {
    *out << wait.name;
}

class EveryWaitTest : public HardwareTest, public testing::WithParamInterface<std::tuple<AWait, int>> {
protected:
    EveryWaitTest() {
        for (const char* const file : {"lo", "i", "q"}) {
            write(file, "0\n");
        }
        write("detector", "500\n");
        write("temperature", "21\n");
        write("files.toml", hardwareBoard(folder()));
        write("attended.toml", hardwareBoardWithoutSensor(folder()));
        write("silent.toml", onInstrument());
        write("model.toml", leakageBoard());
        write("model-files.toml", boardOnFiles());
        // What is shown of the first command says that the second one is about to begin.
        const std::string first = "tune tx 1 7442000\n";
        write("wait", first + "wait 60 min\n");
        write("sweep", first + "sweep tx 1 7442000 7443000 1 60 s\n");
        write("repeat", first + "repeat 1000 wait 60 min\n");
        write("watch", first + "watch amplifier for 60 min\n");
        write("read", "tune tx 1 18 GHz\nread channel.1.tx.rf.detector.v\n");
    }
    /** The same radio, whose detector is read of an instrument that says nothing, and may take an hour. */
    std::string onInstrument() const {
        std::string board = hardwareBoardWithoutSensor(folder());
        const std::size_t begin = board.find("[hardware.\"channel.1.tx.rf.detector.v\"]");
        return board.substr(0, begin) +
               "[hardware.\"channel.1.tx.rf.detector.v\"]\ndevice = \"meter\"\nread = "
               "\"DET?\"\n[devices]\nmeter = { scpi = \"" +
               m_silent.address() + "\", time_limit = 600000 }\n";
    }

    DeviceTests::Instrument m_silent{[](const std::string&) { return DeviceTests::Reaction{}; }};
};

TEST_P(EveryWaitTest, EndsSoonAfterASignal) {
    const auto& [wait, signal] = GetParam();
    Process process(invoke(wait.arguments));
    ASSERT_TRUE(process.waitUntilItCatches(signal));
    ASSERT_TRUE(wait.shown.empty() || process.waitFor(wait.shown));
    std::this_thread::sleep_for(std::chrono::milliseconds(300) + wait.more);
    const auto begin = std::chrono::steady_clock::now();
    process.signal(signal);
    const Ending ending = process.finish();
    const auto took = std::chrono::steady_clock::now() - begin;
    EXPECT_EQ(ending.exitCode, 128 + signal) << ending.output << ending.errors;
    // A second, and what a busy computer adds.
    EXPECT_LT(std::chrono::duration_cast<std::chrono::milliseconds>(took).count(), 4000)
        << ending.output << ending.errors;
}

const std::vector<AWait> everyWait{
    {"temperatureOfAChamber",
     {"calibrate", "--hardware", "files.toml", "--channel", "1", "--temperatures", "25", "--no-qualify"},
     "waiting for 25 degrees, now "},
    {"personWhoSaysTheTemperature",
     {"calibrate", "--hardware", "attended.toml", "--channel", "1", "--temperatures", "25", "--attended",
      "--no-qualify"},
     "Bring the radio to 25 degrees"},
    {"silentInstrumentOfACalibration",
     {"calibrate", "--hardware", "silent.toml", "--channel", "1", "--temperatures", "25", "--no-qualify",
      "--method", "search"},
     "\nChannel 1: "},
    {"silentInstrumentOfAQualification",
     {"qualify", "--hardware", "silent.toml", "--channel", "1"},
     "HARDWARE"},
    {"silentInstrumentOfARun", {"run", "--hardware", "silent.toml", "read"}, "told its observer"},
    {"settleTimeOnHardware",
     {"calibrate", "--hardware", "attended.toml", "--channel", "1", "--temperatures", "25", "--no-qualify",
      "--method", "search", "--settle-time", "60000"},
     "\nChannel 1: "},
    {"settleTimeOfTheModel",
     {"calibrate", "model.toml", "--channel", "1", "--real-time", "--no-qualify", "--settle-time", "60000"},
     "\nChannel 1: "},
    {"waitOnHardware", {"run", "--hardware", "model-files.toml", "wait"}, "told its observer"},
    {"sweepOnHardware", {"run", "--hardware", "model-files.toml", "sweep"}, "told its observer"},
    {"repetitionOnHardware", {"run", "--hardware", "model-files.toml", "repeat"}, "told its observer"},
    {"watchOnHardware", {"run", "--hardware", "model-files.toml", "watch"}, "told its observer"},
    {"scriptOnStandardInput", {"run", "model-files.toml", "-"}, ""},
    {"linesOnStandardInput", {"console", "model-files.toml"}, "The radio is up.\n"},
    {"linesOnStandardInputOnHardware", {"console", "--hardware", "model-files.toml"}, "The radio is up.\n"}};

INSTANTIATE_TEST_SUITE_P(Of, EveryWaitTest,
                         testing::Combine(testing::ValuesIn(everyWait), Values(SIGINT, SIGTERM, SIGHUP)),
                         [](const auto& test) {
                             return nameOf(std::get<0>(test.param).name, std::get<1>(test.param));
                         });

} // namespace
