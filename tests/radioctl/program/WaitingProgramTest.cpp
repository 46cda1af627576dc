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
#include <vector>

namespace {

using testing::HasSubstr;
using testing::Values;

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

/** What is read, and never comes. */
class PipeWithoutAWriterTest : public WaitingProgramTest,
                               public testing::WithParamInterface<std::vector<const char*>> {};

TEST_P(PipeWithoutAWriterTest, IsLeftAtSigterm) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    Process radioctl(Invocation{{GetParam().begin(), GetParam().end()}});
    // It holds the signal back by now, or takes it as any program does.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    radioctl.signal(SIGTERM);
    const int exitCode = radioctl.finish().exitCode;
    EXPECT_TRUE(exitCode == 128 + SIGTERM || exitCode == -SIGTERM) << exitCode;
}

INSTANTIATE_TEST_SUITE_P(Of, PipeWithoutAWriterTest,
                         Values(std::vector<const char*>{"run", "pipe", "script"},
                                std::vector<const char*>{"run", "board.toml", "pipe"},
                                std::vector<const char*>{"check", "pipe"},
                                std::vector<const char*>{"thermal", "board.toml", "pipe"},
                                std::vector<const char*>{"plan", "audit", "pipe"},
                                std::vector<const char*>{"tables", "lint", "pipe"},
                                std::vector<const char*>{"calibrate", "pipe", "--channel", "1"}),
                         [](const testing::TestParamInfo<std::vector<const char*>>& test) {
                             const std::string verb = test.param.front();
                             return verb == "run"
                                        ? std::string(test.param.back()) == "pipe" ? "runScript" : "runBoard"
                                        : verb;
                         });

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
    EXPECT_EQ(ending.errors, "radioctl: --html: the plots need gnuplot, which failed: no terminal\n\n");
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

} // namespace
