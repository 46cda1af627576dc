#include "tests/radioctl/program/ProgramTest.h"

#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <iterator>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/** How the program behaves towards shells, terminals and signals. */
class MannersTest : public ProgramTest {
protected:
    static Invocation consoleAtTerminal() {
        return {{"console", "board.toml"},
                {{"XDG_STATE_HOME", std::filesystem::current_path()}, {"TERM", "xterm"}},
                true};
    }

    /** What bash offers for the word with this number, counted from 0, of a line. */
    static std::string completed(const std::string& line, int word) {
        const std::string command = "bash -c 'source \"" RADIOCTL_BASH_COMPLETION "\"; COMP_WORDS=(" + line +
                                    "); COMP_CWORD=" + std::to_string(word) +
                                    "; _radioctl; printf \"%s\\n\" \"${COMPREPLY[@]}\"' > completed";
        EXPECT_EQ(std::system(command.c_str()), 0);
        return contentOf("completed");
    }

    static constexpr const char* interrupt = "\x03";
    static constexpr const char* endOfInput = "\x04";

    static std::string contentOf(const std::string& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
};

TEST_F(MannersTest, VersionIsOneLine) {
    const Ending ending = runProgram({{"--version"}});
    EXPECT_EQ(ending.output, "radioctl " RADIOCTL_VERSION "\n");
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(MannersTest, HelpHasTheExitCodes) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--help"}, {"run", "--help"}}) {
        const Ending ending = runProgram({arguments});
        EXPECT_THAT(ending.output, HasSubstr("\nExit codes:\n  0    good\n  1    an expectation failed"));
        EXPECT_EQ(ending.exitCode, 0);
    }
}

TEST_F(MannersTest, HelpFitsIntoEightyColumns) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--help"},
                                                      {"run", "--help"},
                                                      {"console", "--help"},
                                                      {"check", "--help"},
                                                      {"plan", "--help"},
                                                      {"plan", "explain", "--help"},
                                                      {"plan", "audit", "--help"},
                                                      {"thermal", "--help"},
                                                      {"tables", "--help"},
                                                      {"tables", "lint", "--help"},
                                                      {"tables", "diff", "--help"},
                                                      {"tables", "why", "--help"},
                                                      {"completion", "--help"}}) {
        EXPECT_THAT(runProgram({arguments}).output, Not(testing::ContainsRegex("[^\n]{80}")));
    }
}

TEST_F(MannersTest, PrintsTheCompletionScriptThatIsInstalled) {
    EXPECT_EQ(runProgram({{"completion", "bash"}}).output, contentOf(RADIOCTL_BASH_COMPLETION));
}

TEST_F(MannersTest, CompletionKeepsNamesWithSpacesTogether) {
    write("two words.toml", "");
    EXPECT_EQ(completed("radioctl check two", 2), "two words.toml\n");
}

TEST_F(MannersTest, CompletionKnowsTheLevelsBehindAnEqualsSign) {
    EXPECT_EQ(completed("radioctl run --trace = n", 4), "notice\n");
    EXPECT_EQ(completed("radioctl run --trace n", 3), "notice\n");
}

TEST_F(MannersTest, CompletionKnowsTheCommandsForTables) {
    EXPECT_EQ(completed("radioctl tables \"\"", 2), "lint\ndiff\nwhy\n");
    EXPECT_EQ(completed("radioctl tables why --t", 3), "--temperature\n");
}

TEST_F(MannersTest, CompletionOffersAReportToRunAlone) {
    EXPECT_EQ(completed("radioctl run --j", 2), "--json\n--junit\n");
    EXPECT_EQ(completed("radioctl console --j", 2), "--json\n");
}

TEST_F(MannersTest, CheckOfGoodBoardsIsExitCode0) {
    write("second.toml", rauBoard);
    const Ending ending = runProgram({{"check", "board.toml", "second.toml"}});
    EXPECT_EQ(ending.output, "board.toml: good\nsecond.toml: good\n");
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(MannersTest, CheckOfABrokenBoardIsExitCode1) {
    write("broken.toml", brokenBoard);
    const Ending ending = runProgram({{"check", "broken.toml", "board.toml"}});
    EXPECT_THAT(ending.output, HasSubstr(": error: "));
    EXPECT_THAT(ending.output, EndsWith("broken.toml: 1 error, 0 warnings\nboard.toml: good\n"));
    EXPECT_EQ(ending.exitCode, 1);
}

TEST_F(MannersTest, CheckGoesOnAfterABoardThatCannotBeRead) {
    const Ending ending = runProgram({{"check", "none.toml", "board.toml"}});
    EXPECT_THAT(ending.errors, StartsWith("radioctl: none.toml: cannot be read: No such file or directory"));
    EXPECT_EQ(ending.output, "board.toml: good\n");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(MannersTest, InterruptWhileCommandsAreAwaitedLeaves) {
    Process process({{"run", "board.toml", "-"}});
    process.type("tune tx 1 7442000\n");
    ASSERT_TRUE(process.waitUntilItCatches(SIGINT));
    process.signal(SIGINT);
    const Ending ending = process.finish();
    EXPECT_EQ(ending.output, "");
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, 130);
}

TEST_F(MannersTest, InterruptInARunFinishesTheCommandAndLeaves) {
    std::string script;
    for (int i = 0; i < 100000; ++i) {
        script += "tune tx 1 7442000\n";
    }
    write("script", script);
    Process process({{"run", "board.toml", "script"}});
    ASSERT_TRUE(process.waitFor("> tune tx 1 7442000\n"));
    process.signal(SIGINT);
    const Ending ending = process.finish();
    EXPECT_THAT(ending.output, HasSubstr("     tx 1 told its observer: 7442000 kHz\n\n"));
    EXPECT_THAT(ending.output, EndsWith(", 0 expectations.\nInterrupted.\n"));
    EXPECT_THAT(ending.output, Not(HasSubstr("100000 commands")));
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, 130);
}

TEST_F(MannersTest, TerminationLeavesCleanlyToo) {
    Process process({{"console", "board.toml"}});
    ASSERT_TRUE(process.waitFor("The radio is up.\n"));
    process.signal(SIGTERM);
    const Ending ending = process.finish();
    EXPECT_THAT(ending.output, EndsWith("\nInterrupted.\n"));
    EXPECT_EQ(ending.exitCode, 143);
}

TEST_F(MannersTest, ReaderThatStopsReadingEndsTheProgramQuietly) {
    Process process({{"console", "board.toml"}});
    ASSERT_TRUE(process.waitFor("The radio is up.\n"));
    process.closeOutput();
    process.type("show drivers\n");
    const Ending ending = process.finish();
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, -SIGPIPE);
}

TEST_F(MannersTest, ConsoleThroughAPipeCarriesOutEachLineAtOnce) {
    Process process({{"console", "board.toml"}});
    ASSERT_TRUE(process.waitFor("The radio is up.\n"));
    process.type("tune tx 1 7442000\n");
    ASSERT_TRUE(process.waitFor("  1  channel.1.tx.rf.frequency <- 7442000\n"));
    process.type("expect writes 1");
    process.closeInput();
    const Ending ending = process.finish();
    EXPECT_THAT(ending.output,
                EndsWith("  held    expect writes 1\n\n1 command, 1 expectation: all held.\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(MannersTest, ConsoleThroughAPipeGoesOnAfterABadLineButSaysSo) {
    const Ending ending = runProgram({{"console", "board.toml"}}, "tune\nexpect result ok\n");
    EXPECT_EQ(ending.errors,
              "radioctl: stdin:1: tune: tx|rx is missing, expected: tune tx|rx CHANNEL FREQUENCY "
              "[kHz|MHz|GHz] [force]\n");
    EXPECT_THAT(
        ending.output,
        EndsWith("  held    expect result ok\n\n0 commands, 1 expectation: all held.\n1 line refused.\n"));
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(MannersTest, PromptCompletesAndCarriesOut) {
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("expect dr\tchannel.1.t\t0\r");
    ASSERT_TRUE(process.waitFor("  held    expect driver channel.1.tx.rf.frequency 0\r\nradio> "));
    process.type(endOfInput);
    EXPECT_EQ(process.finish().exitCode, 0);
}

TEST_F(MannersTest, PromptListsWhatCanStandAtTheCursor) {
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("tune \t");
    EXPECT_TRUE(process.waitFor("\r\n  rx\r\n  tx\r\n"));
}

TEST_F(MannersTest, PromptForgivesALineThatMakesNoSense) {
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("temperature hot\r");
    ASSERT_TRUE(
        process.waitFor("radioctl: temperature: \"hot\" is no number of degrees, expected a number from "
                        "-2147483648 to 2147483647\r\nradio> "));
    process.type("quit\r");
    EXPECT_EQ(process.finish().exitCode, 0);
}

TEST_F(MannersTest, PromptIsShownAgainAfterTheProgramWasStopped) {
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("temperature 7");
    ASSERT_TRUE(process.waitFor("temperature 7"));
    process.leaveTerminalToAShell();
    process.signal(SIGCONT);
    ASSERT_TRUE(process.waitFor("radio> temperature 7"));
    process.type("\r");
    EXPECT_TRUE(process.waitFor("     1 observer told\r\nradio> "));
}

TEST_F(MannersTest, StoppedPipeGoesOn) {
    Process process({{"console", "board.toml"}});
    ASSERT_TRUE(process.waitFor("The radio is up.\n"));
    process.signal(SIGCONT);
    process.type("expect writes 0\n");
    EXPECT_TRUE(process.waitFor("  held    expect writes 0\n"));
}

TEST_F(MannersTest, InterruptAtThePromptTakesTheLineBackAndThenLeaves) {
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("tune tx 1");
    ASSERT_TRUE(process.waitFor("tune tx 1"));
    process.type(interrupt);
    ASSERT_TRUE(process.waitFor("\r\nradio> "));
    process.type("temperature 7\r");
    ASSERT_TRUE(process.waitFor("     1 observer told\r\nradio> "));
    process.type(interrupt);
    const Ending ending = process.finish();
    EXPECT_THAT(ending.output, EndsWith("1 command, 0 expectations.\r\nInterrupted.\r\n"));
    EXPECT_EQ(ending.exitCode, 130);
}

TEST_F(MannersTest, HistoryOutlivesTheProgramAndIsPrivate) {
    for (const char* const keys : {"temperature 21\r", "\x1b[A\r"}) {
        Process process(consoleAtTerminal());
        ASSERT_TRUE(process.waitFor("radio> "));
        process.type(keys);
        ASSERT_TRUE(process.waitFor("     1 observer told\r\nradio> "));
        process.type(endOfInput);
        EXPECT_EQ(process.finish().exitCode, 0);
    }
    struct stat status {};
    ASSERT_EQ(stat("radioctl/history", &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(MannersTest, OutputThatCannotBeWrittenIsNoSuccess) {
    const Ending ending = runProgram({{"check", "board.toml"}, {}, false, "/dev/full"});
    EXPECT_EQ(ending.errors, "radioctl: standard output cannot be written\n");
    EXPECT_EQ(ending.exitCode, 3);
}

} // namespace
