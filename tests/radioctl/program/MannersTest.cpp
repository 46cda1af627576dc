#include "tests/radioctl/program/ProgramTest.h"
#include "tests/support/Sanitized.h"

#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <regex>
#include <sstream>

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

    /** Behind a board: what an audit tunes to. */
    static constexpr const char* twoCarriers =
        "[[raster]]\nname = \"7 GHz\"\ndirection = \"tx\"\nfirst = 7442000\nstep = 1\nlast = 7442001\n";
    static constexpr const char* interrupt = "\x03";
    static constexpr const char* endOfInput = "\x04";

    static std::string contentOf(const std::string& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    using Words = std::vector<std::string>;

    /** What completion is told of the last of these words, without what each of them means. */
    Words offered(Words words) {
        words.insert(words.begin(), "completion-words");
        std::istringstream lines(runProgram({words}).output);
        Words offers;
        for (std::string line; std::getline(lines, line);) {
            offers.push_back(line.substr(0, line.find('\t')));
        }
        return offers;
    }
};

TEST_F(MannersTest, VersionIsOneLine) {
    const Ending ending = runProgram({{"--version"}});
    EXPECT_EQ(ending.output, "radioctl " RADIOCTL_VERSION "\n");
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(MannersTest, HelpHasTheExitCodes) {
    const Ending all = runProgram({{"--help"}});
    EXPECT_THAT(all.output,
                HasSubstr("\nExit codes:\n  0    good\n  1    run, console: an expectation failed"));
    EXPECT_THAT(all.output, HasSubstr("tables diff, record diff: there are differences\n"));
    EXPECT_EQ(all.exitCode, 0);
}

TEST_F(MannersTest, HelpOfACommandHasItsOwnExitCodes) {
    EXPECT_THAT(runProgram({{"run", "--help"}}).output,
                HasSubstr("\nExit codes:\n  0    good\n  1    an expectation failed"));
    EXPECT_THAT(runProgram({{"tables", "diff", "--help"}}).output,
                EndsWith("\nExit codes:\n"
                         "  0    good\n"
                         "  1    there are differences\n"
                         "  2    wrong command line\n"
                         "  3    a board cannot be used\n"
                         "       a table cannot be used, or there are none to look at\n"
                         "       output cannot be written\n\n"));
}

TEST_F(MannersTest, UnknownCommandsAndOptionsHaveTheNearestOne) {
    for (const auto& [words, complaint] : std::vector<std::pair<std::vector<std::string>, std::string>>{
             {{"calibrat", "board.toml"},
              "unknown command \"calibrat\" (did you mean \"calibrate\"?), expected one of "
              "run, console, new, check, plan, thermal, qualify, calibrate, laboratory, serve, tables, "
              "record, "
              "replay, describe, store, completion"},
             {{"plan", "explian"},
              "unknown command \"explian\" (did you mean \"explain\"?), expected one of explain, "
              "audit"},
             {{"tables", "dif"},
              "unknown command \"dif\" (did you mean \"diff\"?), expected one of lint, diff, why"},
             {{"run", "--jsn"}, "unknown option \"--jsn\" (did you mean \"--json\"?)"}}) {
        const Ending ending = runProgram({words});
        EXPECT_EQ(ending.errors, "radioctl: " + complaint + "\nRun with --help for more information.\n");
        EXPECT_EQ(ending.exitCode, 2);
    }
}

TEST_F(MannersTest, HelpFitsIntoEightyColumns) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--help"},
                                                      {"run", "--help"},
                                                      {"console", "--help"},
                                                      {"new", "--help"},
                                                      {"check", "--help"},
                                                      {"plan", "--help"},
                                                      {"plan", "explain", "--help"},
                                                      {"plan", "audit", "--help"},
                                                      {"thermal", "--help"},
                                                      {"serve", "--help"},
                                                      {"tables", "--help"},
                                                      {"tables", "lint", "--help"},
                                                      {"tables", "diff", "--help"},
                                                      {"tables", "why", "--help"},
                                                      {"record", "--help"},
                                                      {"record", "show", "--help"},
                                                      {"record", "diff", "--help"},
                                                      {"replay", "--help"},
                                                      {"describe", "--help"},
                                                      {"store", "--help"},
                                                      {"store", "list", "--help"},
                                                      {"store", "show", "--help"},
                                                      {"store", "tables", "--help"},
                                                      {"store", "compare", "--help"},
                                                      {"store", "report", "--help"},
                                                      {"store", "export", "--help"},
                                                      {"store", "import", "--help"},
                                                      {"store", "check", "--help"},
                                                      {"store", "push", "--help"},
                                                      {"store", "grant", "--help"},
                                                      {"completion", "--help"}}) {
        EXPECT_THAT(runProgram({arguments}).output, Not(testing::ContainsRegex("[^\n]{80}")));
    }
}

TEST_F(MannersTest, PrintsTheCompletionScriptThatIsInstalled) {
    for (const std::string shell : {"bash", "zsh", "fish"}) {
        const std::string installed = contentOf(RADIOCTL_COMPLETIONS "/radioctl." + shell);
        EXPECT_THAT(installed, HasSubstr(" completion-words ")) << shell;
        EXPECT_EQ(runProgram({{"completion", shell}}).output, installed);
    }
}

TEST_F(MannersTest, CompletionWordsAreWhatCanStandThere) {
    EXPECT_EQ(runProgram({{"completion-words", "tables", ""}}).output,
              "lint\tLook for holes, outliers and whatever else is not as it should be\n"
              "diff\tShow where corrections moved, and what that does to the leakage\n"
              "why\tShow how one carrier at one temperature comes to its corrections\n");
    EXPECT_EQ(runProgram({{"completion-words", "thermal", "board.toml", ""}}).output, ":files .csv\n");
    EXPECT_EQ(runProgram({{"completion-words", "tables", "diff", ""}}).output, ":files .toml .csv\n");
    EXPECT_EQ(runProgram({{"completion-words", "describe", "--script", ""}}).output, ":files\n");
    EXPECT_EQ(runProgram({{"completion-words", "nonsense", ""}}).exitCode, 0);
}

TEST_F(MannersTest, CompletionTellsCommandsOfTheStoreFromOthersOfTheirName) {
    EXPECT_EQ(offered({"store", ""}), (Words{"list", "show", "tables", "compare", "report", "export",
                                             "import", "check", "push", "grant"}));
    EXPECT_EQ(offered({"store", "check", "--s"}), (Words{"--store"}));
    EXPECT_EQ(offered({"check", "--s"}), (Words{"--strict"}));
    EXPECT_EQ(offered({"store", "show", "--s"}), (Words{"--store"}));
    EXPECT_EQ(offered({"record", "show", "--f"}), (Words{"--from"}));
    EXPECT_EQ(offered({"store", "export", "--format", "j"}), (Words{"json", "junit"}));
    EXPECT_EQ(offered({"store", "report", "--kind", "a"}), (Words{"audit", "acceptance"}));
    EXPECT_EQ(offered({"store", "tables", "--out", ""}), (Words{":files"}));
    EXPECT_EQ(offered({"store", "show", ""}), (Words{}));
}

TEST_F(MannersTest, CompletionOffersAReportToRunAlone) {
    EXPECT_EQ(runProgram({{"completion-words", "run", "--j"}}).output,
              "--json\tOne JSON object per event and line\n"
              "--junit\tWrite what came of the expectations, as JUnit's XML\n");
    EXPECT_EQ(runProgram({{"completion-words", "console", "--j"}}).output,
              "--json\tOne JSON object per event and line\n");
}

TEST_F(MannersTest, NothingTellsPeopleOfCompletionWords) {
    EXPECT_THAT(runProgram({{"--help"}}).output, Not(HasSubstr("completion-words")));
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

TEST_F(MannersTest, StrictCheckCountsWarningsAsErrors) {
    write("board.toml", std::string(rfModuleBoard) + "\"channel.1.tx.rf.frequancy\" = {}\n");
    EXPECT_EQ(runProgram({{"check", "board.toml"}}).exitCode, 0);
    const Ending ending = runProgram({{"check", "--strict", "board.toml"}});
    EXPECT_THAT(ending.output, EndsWith("board.toml: 0 errors, 1 warning\n"));
    EXPECT_EQ(ending.exitCode, 1);
}

TEST_F(MannersTest, CheckOfAllSaysWhatThereIsNothingFor) {
    const Ending ending = runProgram({{"check", "--all", "--strict", "board.toml"}});
    EXPECT_EQ(ending.output, "board.toml: good\n"
                             "board.toml: tables passed over: it has no tables of the LO cancellation\n"
                             "board.toml: audit passed over: it has no raster\n");
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_EQ(runProgram({{"check", "--all", "--json", "board.toml"}}).output,
              R"({"schema":1,"event":"checked","file":"board.toml","errors":0,"warnings":0}
{"schema":1,"event":"skipped","file":"board.toml","part":"tables","why":"it has no tables of the LO cancellation"}
{"schema":1,"event":"skipped","file":"board.toml","part":"audit","why":"it has no raster"}
)");
}

TEST_F(MannersTest, CheckOfAllLintsTablesAndAuditsCarriers) {
    std::filesystem::current_path(RADIOCTL_BOARDS);
    const Ending good = runProgram({{"check", "--all", "--strict", "lo-leakage-18ghz.toml"}});
    EXPECT_THAT(
        good.output,
        StartsWith("lo-leakage-18ghz.toml: good\nSIMULATION: nothing reaches hardware.\nTwo-channel "));
    EXPECT_THAT(good.output, EndsWith(" s: all within limits.\n"));
    EXPECT_EQ(good.exitCode, 0);
    // The lint has warnings about this one, which it states to be deliberate.
    const Ending lax = runProgram({{"check", "--all", "microwave-hz-23ghz.toml"}});
    EXPECT_THAT(lax.output, HasSubstr("carriers begin at 21238000 kHz"));
    EXPECT_EQ(lax.exitCode, 0);
    EXPECT_EQ(runProgram({{"check", "--all", "--strict", "microwave-hz-23ghz.toml"}}).exitCode, 1);
}

TEST_F(MannersTest, CheckOfAllDoesNotBootABoardWithErrors) {
    write("broken.toml", std::string(brokenBoard) + twoCarriers);
    const Ending ending = runProgram({{"check", "--all", "broken.toml"}});
    EXPECT_THAT(ending.output, EndsWith("broken.toml: audit passed over: it has errors\n")) << ending.errors;
    EXPECT_EQ(ending.exitCode, 1);
}

TEST_F(MannersTest, CheckOfAllHasTheExitCodeOfTheAudit) {
    write("board.toml", std::string(rfModuleBoard) + twoCarriers);
    const Ending good = runProgram({{"check", "--all", "board.toml"}});
    EXPECT_THAT(good.output, HasSubstr("\n2 carriers in ")) << good.errors;
    EXPECT_EQ(good.exitCode, 0);
    const std::string described = contentOf(RADIOCTL_BOARDS "/microwave-if-8ghz.toml");
    write("board.toml", std::regex_replace(described, std::regex("\nrf_pll = .*"), "\nrf_pll = [1, 2]"));
    const Ending bad = runProgram({{"check", "--all", "board.toml"}});
    EXPECT_THAT(bad.output, HasSubstr("board.toml: good\n"));
    EXPECT_THAT(bad.output, HasSubstr("RF PLL "));
    EXPECT_EQ(bad.exitCode, 1);
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
                        "-100 to 200\r\nradio> "));
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

TEST_F(MannersTest, InterruptAtThePromptTakesTheLineBack) {
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("tune tx 1");
    ASSERT_TRUE(process.waitFor("tune tx 1"));
    process.type(interrupt);
    ASSERT_TRUE(process.waitFor("\r\nradio> "));
    process.type("temperature 7\r");
    ASSERT_TRUE(process.waitFor("     1 observer told\r\nradio> "));
    process.type(endOfInput);
    const Ending ending = process.finish();
    EXPECT_THAT(ending.output, EndsWith("1 command, 0 expectations.\r\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(MannersTest, InterruptAtAnEmptyPromptSaysThatASecondOneLeaves) {
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type(interrupt);
    ASSERT_TRUE(process.waitFor("\r\nCtrl-C again leaves, as quit and Ctrl-D do.\r\nradio> "));
    process.type(interrupt);
    const Ending ending = process.finish();
    EXPECT_THAT(ending.output, EndsWith("0 commands, 0 expectations.\r\nInterrupted.\r\n"));
    EXPECT_EQ(ending.exitCode, 130);
}

TEST_F(MannersTest, WhateverIsTypedAfterAnInterruptHasItsSayAgain) {
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type(interrupt);
    ASSERT_TRUE(process.waitFor("Ctrl-C again leaves, as quit and Ctrl-D do.\r\nradio> "));
    process.type("temperature 7\r");
    ASSERT_TRUE(process.waitFor("     1 observer told\r\nradio> "));
    process.type(interrupt);
    ASSERT_TRUE(process.waitFor("Ctrl-C again leaves, as quit and Ctrl-D do.\r\nradio> "));
    process.type("tune");
    ASSERT_TRUE(process.waitFor("tune"));
    process.type(interrupt);
    ASSERT_TRUE(process.waitFor("\r\nradio> "));
    process.type(interrupt);
    ASSERT_TRUE(process.waitFor("Ctrl-C again leaves, as quit and Ctrl-D do.\r\nradio> "));
    process.type("quit\r");
    EXPECT_EQ(process.finish().exitCode, 0);
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

TEST_F(MannersTest, HistoryIsPutInThePlaceOfALinkAndNotWrittenThroughIt) {
    std::filesystem::create_directory("radioctl");
    write("other", "precious");
    std::filesystem::create_symlink("../other", "radioctl/history");
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("temperature 21\r");
    ASSERT_TRUE(process.waitFor("\r\nradio> "));
    process.type(endOfInput);
    EXPECT_EQ(process.finish().exitCode, 0);
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status("radioctl/history")));
    std::ifstream other("other");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(other), {}), "precious");
}

TEST_F(MannersTest, HistoryThatIsAPipeIsNotWaitedFor) {
    std::filesystem::create_directory("radioctl");
    ASSERT_EQ(mkfifo("radioctl/history", 0600), 0);
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type(endOfInput);
    EXPECT_EQ(process.finish().exitCode, 0);
}

TEST_F(MannersTest, FolderOfTheHistoryIsTheUsersAlone) {
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type(endOfInput);
    EXPECT_EQ(process.finish().exitCode, 0);
    struct stat status {};
    ASSERT_EQ(stat("radioctl", &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

/** Signals that end the program at once, and leave no time for more than the terminal. */
class CrashAtTheTerminalTest : public MannersTest, public testing::WithParamInterface<int> {};

TEST_P(CrashAtTheTerminalTest, LeavesItAsItWas) {
    if (isSanitized && GetParam() == SIGBUS) {
        GTEST_SKIP() << "a sanitizer looks after that signal itself";
    }
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    ASSERT_FALSE(process.showsWhatIsTyped());
    process.signal(GetParam());
    static_cast<void>(process.waitFor("never shown"));
    EXPECT_TRUE(process.showsWhatIsTyped());
}

INSTANTIATE_TEST_SUITE_P(By, CrashAtTheTerminalTest,
                         testing::Values(SIGBUS, SIGABRT, SIGQUIT, SIGSYS, SIGTRAP, SIGXCPU, SIGPIPE, SIGALRM,
                                         SIGVTALRM, SIGPROF, SIGUSR1, SIGUSR2),
                         [](const testing::TestParamInfo<int>& test) {
                             return std::string("SIG") + sigabbrev_np(test.param);
                         });

TEST_F(MannersTest, MessageIsNotWrittenIntoAFileThatWasOpenedInThePlaceOfStandardError) {
    write("script", "bogus\n");
    Invocation invocation{{"run", "board.toml", "script", "--junit", "report.xml"}};
    invocation.hasNoErrors = true;
    EXPECT_EQ(runProgram(invocation).exitCode, 3);
    std::ifstream report("report.xml");
    EXPECT_THAT(std::string(std::istreambuf_iterator<char>(report), {}), testing::StartsWith("<?xml"));
}

TEST_F(MannersTest, OutputThatCannotBeWrittenIsNoSuccess) {
    const Ending ending = runProgram({{"check", "board.toml"}, {}, false, "/dev/full"});
    EXPECT_EQ(ending.errors, "radioctl: standard output cannot be written\n");
    EXPECT_EQ(ending.exitCode, 3);
}

} // namespace
