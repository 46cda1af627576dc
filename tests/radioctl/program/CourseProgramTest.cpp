#include "tests/radioctl/program/ProgramTest.h"

#include <csignal>
#include <cstdlib>
#include <iterator>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

/** Commands that take time or stand for others, as their user meets them. */
class CourseProgramTest : public ProgramTest {
protected:
    static Invocation consoleAtTerminal() {
        return {{"console", "board.toml"},
                {{"XDG_STATE_HOME", std::filesystem::current_path()}, {"TERM", "xterm"}},
                true};
    }

    static std::string contentOf(const std::string& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    static void expectWellFormed(const char* file) {
        if (std::system("xmllint --version > /dev/null 2>&1") != 0) { // NOLINT(cert-env33-c): a fixed command
            GTEST_SKIP() << "xmllint is missing: it was not tested whether the report is well-formed";
        }
        EXPECT_EQ(std::system(("xmllint --noout " + std::string(file)).c_str()), 0); // NOLINT(cert-env33-c)
    }

    static constexpr const char* interrupt = "\x03";
};

TEST_F(CourseProgramTest, ReadsWritesAndShowsChannels) {
    const Ending ending = runScript("tune tx 1 7442 MHz\n"
                                    "write channel.1.rx.rf.frequency 0x10\n"
                                    "read channel.1.rx.rf.frequency\n"
                                    "show channels\n");
    EXPECT_THAT(ending.output, HasSubstr("\n> write channel.1.rx.rf.frequency 0x10\n"
                                         "  1  channel.1.rx.rf.frequency <- 16\n"
                                         "\n"
                                         "> read channel.1.rx.rf.frequency\n"
                                         "     channel.1.rx.rf.frequency = 16\n"
                                         "\n"
                                         "> show channels\n"
                                         "     channel  tx_khz   rx_khz  degrees  corrections  last_failure\n"
                                         "     1        7442000  -       -        -            -\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(CourseProgramTest, TellsValuesToMachines) {
    const Ending ending = runScript("read channel.1.tx.rf.frequency\n"
                                    "watch channel.1.tx.rf.frequency for 1 s\n",
                                    {"--json"});
    EXPECT_THAT(ending.output,
                HasSubstr(R"({"schema":1,"event":"value","driver":"channel.1.tx.rf.frequency","value":0})"
                          "\n"));
    EXPECT_THAT(
        ending.output,
        HasSubstr(
            R"({"schema":1,"event":"value","driver":"channel.1.tx.rf.frequency","value":0,"seconds":0.0})"
            "\n"));
}

TEST_F(CourseProgramTest, WatchWithoutATimeIsRefusedWhereThereIsNoPrompt) {
    const Ending ending = runScript("watch channel.1.tx.rf.frequency\n");
    EXPECT_EQ(ending.errors, "radioctl: script:1: a watch is ended by a key at the prompt alone, expected "
                             "\"for TIME\" at the end\n");
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_EQ(runProgram({{"console", "board.toml"}}, "watch channel.1.tx.rf.frequency\n").exitCode, 3);
}

TEST_F(CourseProgramTest, ScriptIncludesOthersBesideIt) {
    std::filesystem::create_directory("parts");
    write("parts/main", "include check\nexpect writes 2\n");
    write("parts/check", "tune tx 1 7442000\nexpect writes 1\n");
    const Ending ending = runProgram({{"run", "board.toml", "parts/main"}});
    EXPECT_THAT(ending.output, HasSubstr("\n> tune tx 1 7442000\n"));
    EXPECT_THAT(ending.output, HasSubstr("  held    expect writes 1\n"
                                         "  FAILED  expect writes 2  (parts/main:2)\n"));
}

TEST_F(CourseProgramTest, IncludedScriptIsCheckedBeforeTheRadioBoots) {
    write("part", "tune tx 1 7442000\ntune up\n");
    const Ending ending = runScript("include part\n");
    EXPECT_EQ(ending.output, "");
    EXPECT_EQ(ending.errors, "radioctl: part:2: tune: \"up\" is out of place, expected tx or rx\n");
    EXPECT_EQ(ending.exitCode, 3);
    write("part", "include script\n");
    EXPECT_EQ(runScript("include part\n").errors, "radioctl: script:1: include: \"part\" includes itself\n");
    EXPECT_EQ(runScript("\ninclude none\n").errors,
              "radioctl: script:2: include: none: cannot be read: No such file or directory\n");
}

TEST_F(CourseProgramTest, PromptIncludesAScriptWithItsLines) {
    write("part", "temperature 7\nexpect writes 0\n");
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("include pa\t\r");
    ASSERT_TRUE(
        process.waitFor("\r\n> temperature 7\r\n     1 observer told\r\n  held    expect writes 0\r\n"));
    write("part", "temperature hot\n");
    process.type("include part\r");
    ASSERT_TRUE(process.waitFor("radioctl: part:1: temperature: \"hot\" is no number of degrees"));
    process.type("include none\r");
    ASSERT_TRUE(process.waitFor("radioctl: include: none: cannot be read: No such file or directory"));
    process.type("exit\r");
    EXPECT_EQ(process.finish().exitCode, 0);
}

TEST_F(CourseProgramTest, PipeIncludesAScriptToo) {
    write("part", "exit\n");
    const Ending ending =
        runProgram({{"console", "board.toml"}}, "include none\ninclude part\nexpect writes 1\n");
    EXPECT_EQ(ending.errors, "radioctl: stdin:1: include: none: cannot be read: No such file or directory\n");
    EXPECT_THAT(ending.output, EndsWith("\n> exit\n\n0 commands, 0 expectations.\n1 line refused.\n"));
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(CourseProgramTest, KeyEndsAWatchAndIsSwallowed) {
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("watch channel.1.tx.rf.frequency\r");
    ASSERT_TRUE(process.waitFor("0.0 s  channel.1.tx.rf.frequency = 0\r\n"));
    process.type("x");
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("temperature 7\r");
    ASSERT_TRUE(process.waitFor("     1 observer told\r\nradio> "));
    process.type("quit\r");
    const Ending ending = process.finish();
    EXPECT_THAT(ending.output, Not(HasSubstr("x\r\n")));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(CourseProgramTest, InterruptEndsAWatchAndNotTheProgram) {
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("watch channel.1.tx.rf.frequency\r");
    ASSERT_TRUE(process.waitFor("0.0 s  channel.1.tx.rf.frequency = 0\r\n"));
    process.type(interrupt);
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("quit\r");
    EXPECT_EQ(process.finish().exitCode, 0);
}

TEST_F(CourseProgramTest, TerminationEndsAWatchAndTheProgram) {
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("watch channel.1.tx.rf.frequency\r");
    ASSERT_TRUE(process.waitFor("0.0 s  channel.1.tx.rf.frequency = 0\r\n"));
    process.signal(SIGTERM);
    EXPECT_EQ(process.finish().exitCode, 143);
}

TEST_F(CourseProgramTest, InterruptAtThePromptEndsARepetitionAndNotTheProgram) {
    Process process(consoleAtTerminal());
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("repeat 1000000 temperature 7\r");
    ASSERT_TRUE(process.waitFor("0 observers told\r\n"));
    process.type(interrupt);
    ASSERT_TRUE(process.waitFor(" of 1000000 turns\r\nradio> "));
    process.type("quit\r");
    EXPECT_EQ(process.finish().exitCode, 0);
}

TEST_F(CourseProgramTest, InterruptEndsRunsInTheMiddleOfWhatTakesTime) {
    for (const std::string command :
         {"sweep tx 1 1000000 1999999 1", "repeat 1000000 tune tx 1 1000000", "repeat 1000000 wait 1 min"}) {
        write("script", "tune tx 1 1000000\n" + command + "\ntemperature 7\n");
        Process process({{"run", "board.toml", "script", "--junit", "out.xml"}});
        ASSERT_TRUE(process.waitFor("\n> " + command + "\n")) << command;
        process.signal(SIGINT);
        const Ending ending = process.finish();
        EXPECT_THAT(ending.output, HasSubstr("     stopped after ")) << command;
        EXPECT_THAT(ending.output, Not(HasSubstr("temperature 7"))) << command;
        EXPECT_THAT(ending.output, EndsWith("\nInterrupted.\n")) << command;
        EXPECT_EQ(ending.exitCode, 130) << command;
        EXPECT_THAT(contentOf("out.xml"), HasSubstr("<error message=\"interrupted by signal 2\">"));
        expectWellFormed("out.xml");
    }
}

// Reports.

TEST_F(CourseProgramTest, WritesAReportBesideEverythingElse) {
    const Ending ending = runScript("tune tx 1 7442000\nexpect writes 2\nexpect trace \"<\x1b&\"\n",
                                    {"--json", "--junit", "out.xml"});
    EXPECT_THAT(ending.output, HasSubstr("\"event\":\"summary\""));
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(contentOf("out.xml"), HasSubstr("name=\"expect trace &quot;&lt;\\x1b&amp;&quot;\""));
    EXPECT_THAT(contentOf("out.xml"), HasSubstr("tests=\"3\" failures=\"2\" errors=\"0\""));
    expectWellFormed("out.xml");
}

TEST_F(CourseProgramTest, ReportSaysWhyTheScriptCannotBeUsed) {
    EXPECT_EQ(runScript("tune up\n", {"--junit", "out.xml"}).exitCode, 3);
    EXPECT_THAT(contentOf("out.xml"), HasSubstr("<error message=\"script:1: tune: &quot;up&quot; is out of "
                                                "place, expected tx or rx\">"));
    expectWellFormed("out.xml");
}

TEST_F(CourseProgramTest, ReportThatCannotBeWrittenIsSaidBeforeTheRadioBoots) {
    const Ending ending = runScript("tune tx 1 7442000\n", {"--junit", "none/out.xml"});
    EXPECT_EQ(ending.output, "");
    EXPECT_EQ(ending.errors, "radioctl: none/out.xml: cannot be written: No such file or directory\n");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(CourseProgramTest, ReportReplacesNothingThatTheRunReads) {
    for (const std::string file : {"script", "board.toml"}) {
        const Ending ending = runScript("tune tx 1 7442000\n", {"--junit", file});
        EXPECT_EQ(ending.errors,
                  "radioctl: " + file + ": is read by the same run, expected another file for the report\n");
        EXPECT_EQ(ending.exitCode, 3);
    }
    EXPECT_EQ(contentOf("script"), "tune tx 1 7442000\n");
}

TEST_F(CourseProgramTest, ConsoleHasNoReport) {
    EXPECT_EQ(runProgram({{"console", "board.toml", "--junit", "out.xml"}}).exitCode, 2);
}

} // namespace
