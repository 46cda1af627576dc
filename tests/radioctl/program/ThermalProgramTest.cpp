#include "tests/radioctl/program/ProgramTest.h"

#include <csignal>
#include <cstdlib>
#include <iterator>
#include <regex>
#include <set>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/**
 * "radioctl thermal" as its user meets it, on a radio of one channel.
 *
 * DC I is off by 0.1, which -10 steps of 0.01 take away; the table has -9 at 10 degrees, which leaves 0.01.
 * The gain is off by 2/9, so that the image is at (2/9) / (2 + 2/9) = 1/10; -18 steps leave
 * 1.22222 * 0.82 - 1 = 0.00222, and -9 steps 1.22222 * 0.91 - 1 = 0.11222.
 */
class ThermalProgramTest : public ProgramTest {
protected:
    ThermalProgramTest() {
        write("board.toml", board);
        write("log.csv", "seconds,degrees\n0,0\n60,0\n120,5\n180,10\n");
    }
    static Ending thermal(std::vector<std::string> arguments,
                          const std::map<std::string, std::string>& environment = {}) {
        arguments.insert(arguments.begin(), {"thermal", "board.toml", "log.csv"});
        return runProgram({arguments, environment});
    }
    static std::string contentOf(const std::string& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /** A log with a change in every second. */
    static void writeLongLog(int samples) {
        std::string log = "seconds,degrees\n";
        for (int second = 0; second < samples; ++second) {
            log += std::to_string(second) + (second % 2 == 0 ? ",0\n" : ",10\n");
        }
        write("log.csv", log);
    }

    static constexpr const char* board = compensatedBoard;

    static constexpr const char* timeline =
        "seconds,degrees,channel,dc_i,dc_q,gain,phase,lo_i,lo_q,writes,unchanged,"
        "image_without_dbc,image_dbc,leakage_without_dbc,leakage_dbc\n"
        "0,0,1,-10,0,-18,0,,,4,0,-20.00,-59.09,-20.00,-120.00\n"
        "120,5,1,-10,0,-9,0,,,4,3,-20.00,-25.49,-20.00,-120.00\n"
        "180,10,1,-9,0,0,0,,,4,2,-20.00,-20.00,-20.00,-40.00\n";
};

TEST_F(ThermalProgramTest, TellsWhatCameOfEachChannel) {
    const Ending ending = thermal({});
    EXPECT_THAT(ending.output, StartsWith(R"(Test radio (board.toml)
log.csv: 4 samples in 180 s, 0 to 10 degrees

NO VERDICT: the board states no image and no carrier leakage in its [limits]

Channel 1, not tuned
  driver                                                 writes  unchanged  largest step
  channel.1.dsp.tx.dc.compensation.i                          3          1             1  at 180 s, 10 degrees
  channel.1.dsp.tx.dc.compensation.q                          3          2             0
  channel.1.dsp.tx.quadrature.gain.offset.compensation        3          0             9  at 120 s, 5 degrees
  channel.1.dsp.tx.quadrature.phase.offset.compensation       3          2             0
  worst               without                     compensated
  image            -20.00 dBc  at 0 s, 0 degrees   -20.00 dBc  at 180 s, 10 degrees
  carrier leakage  -20.00 dBc  at 0 s, 0 degrees   -40.00 dBc  at 180 s, 10 degrees

4 samples in )"));
    EXPECT_THAT(ending.output, EndsWith(" s: 3 notifications, 12 writes, 5 of them without change.\n"));
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(ThermalProgramTest, WritesTheTimelineAsCsv) {
    EXPECT_EQ(thermal({"--csv", "out.csv"}).exitCode, 0);
    EXPECT_EQ(contentOf("out.csv"), timeline);
}

TEST_F(ThermalProgramTest, CsvOnStandardOutputStandsThereAlone) {
    const Ending ending = thermal({"--csv", "-"});
    EXPECT_EQ(ending.output, timeline);
    EXPECT_THAT(ending.errors, StartsWith("Test radio (board.toml)\n"));
}

TEST_F(ThermalProgramTest, SpeaksJson) {
    write("log.csv", "seconds,degrees\n7,10\n");
    const Ending ending = thermal({"--json", "--carrier", "1=7442", "MHz"});
    EXPECT_THAT(
        ending.output,
        StartsWith(
            R"({"schema":1,"event":"told","channel":1,"seconds":7,"degrees":10,"writes":[)"
            R"({"driver":"channel.1.dsp.tx.dc.compensation.i","value":-9,"step":null},)"
            R"({"driver":"channel.1.dsp.tx.dc.compensation.q","value":0,"step":null},)"
            R"({"driver":"channel.1.dsp.tx.quadrature.gain.offset.compensation","value":0,"step":null},)"
            R"({"driver":"channel.1.dsp.tx.quadrature.phase.offset.compensation","value":0,"step":null}],)"
            R"("image_without_dbc":-20.0,"image_dbc":-20.0,"leakage_without_dbc":-20.0,"leakage_dbc":-40.0})"
            "\n"
            R"({"schema":1,"event":"thermal_channel","file":"board.toml","channel":1,"khz":7442000,"writes":4,)"
            R"("unchanged":0,"drivers":[{"driver":"channel.1.dsp.tx.dc.compensation.i","correction":"dc_i",)"
            R"("writes":1,"unchanged":0,"largest_step":null},)"));
    EXPECT_THAT(ending.output,
                HasSubstr(R"("worst":{"image_without":{"dbc":-20.0,"seconds":7,"degrees":10},)"));
    EXPECT_THAT(ending.output,
                HasSubstr(R"({"schema":1,"event":"replayed","file":"board.toml","log":"log.csv","samples":1,)"
                          R"("notifications":1,"complaints":0,"first_complaint":null,)"));
    EXPECT_THAT(ending.output, EndsWith(R"("interrupted":false,"exit_code":0})"
                                        "\n"));
}

TEST_F(ThermalProgramTest, PageIsWellFormedAndHasEachPlot) {
    EXPECT_EQ(thermal({"--html", "out.html"}).exitCode, 0);
    const std::string page = contentOf("out.html");
    for (const char* const id : {"temperature", "channel-1-image", "channel-1-leakage", "channel-1-words"}) {
        EXPECT_THAT(page, HasSubstr("<svg role=\"img\" id=\"" + std::string(id) + "\""));
    }
    EXPECT_THAT(page, HasSubstr("<td>carrier leakage</td><td class=\"number\">-20.00 dBc</td>"
                                "<td>at 0 seconds, 0 °C</td><td class=\"number\">-40.00 dBc</td>"));
    EXPECT_EQ(std::system("xmllint --noout out.html"), 0); // NOLINT(cert-env33-c): a fixed command
}

TEST_F(ThermalProgramTest, PageAsksNobodyForAnything) {
    thermal({"--html", "out.html"});
    const std::string page = contentOf("out.html");
    const std::regex address("https?://[^\"' ]*");
    std::set<std::string> addresses;
    for (std::sregex_iterator found(page.begin(), page.end(), address), end; found != end; ++found) {
        addresses.insert(found->str());
    }
    EXPECT_THAT(addresses,
                testing::ElementsAre("http://www.w3.org/1999/xhtml", "http://www.w3.org/1999/xlink",
                                     "http://www.w3.org/2000/svg"));
    EXPECT_THAT(page, Not(HasSubstr("<script")));
}

TEST_F(ThermalProgramTest, NoNameStandsTwiceInAPage) {
    thermal({"--html", "out.html"});
    const std::string page = contentOf("out.html");
    const std::regex id(" id=[\"']([^\"']*)");
    std::set<std::string> ids;
    for (std::sregex_iterator found(page.begin(), page.end(), id), end; found != end; ++found) {
        EXPECT_TRUE(ids.insert((*found)[1]).second) << (*found)[1];
    }
    EXPECT_GE(ids.size(), 4U);
}

TEST_F(ThermalProgramTest, NameOfTheRadioIsNoMarkup) {
    std::string marked = board;
    write("board.toml", marked.replace(marked.find("Test radio"), 10, "A <b> & C"));
    thermal({"--html", "out.html"});
    EXPECT_THAT(contentOf("out.html"), HasSubstr("A &lt;b&gt; &amp; C"));
}

TEST_F(ThermalProgramTest, MissingGnuplotIsSaidBeforeTheReplay) {
    const Ending ending = thermal({"--html", "out.html"}, {{"PATH", "/nowhere"}});
    EXPECT_EQ(ending.errors, "radioctl: --html: the plots need gnuplot, which cannot be run: No such file or "
                             "directory; the Debian package gnuplot-nox has it\n");
    EXPECT_EQ(ending.output, "");
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_FALSE(std::filesystem::exists("out.html"));
}

TEST_F(ThermalProgramTest, FileThatCannotBeWrittenIsRefusedBeforeTheReplay) {
    const Ending ending = thermal({"--csv", "none/out.csv"});
    EXPECT_EQ(ending.errors, "radioctl: none/out.csv: cannot be written: No such file or directory\n");
    EXPECT_EQ(ending.output, "");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(ThermalProgramTest, FileThatIsReadIsNotWritten) {
    const Ending log = thermal({"--csv", "./log.csv"});
    EXPECT_EQ(log.errors, "radioctl: --csv: ./log.csv is the log, expected a file of its own\n");
    EXPECT_EQ(log.exitCode, 2);
    const Ending itself = thermal({"--html", "board.toml"});
    EXPECT_EQ(itself.errors, "radioctl: --html: board.toml is the board, expected a file of its own\n");
    EXPECT_EQ(contentOf("board.toml"), board);
}

TEST_F(ThermalProgramTest, TimelineAndPageAreTwoFiles) {
    const Ending ending = thermal({"--html", "x", "--csv", "x"});
    EXPECT_EQ(ending.errors, "radioctl: --csv: x is --html, expected a file of its own\n");
    EXPECT_EQ(ending.exitCode, 2);
}

TEST_F(ThermalProgramTest, LogOfOneSampleIsDrawnAsALevel) {
    write("log.csv", "seconds, degrees\n0,10\n");
    EXPECT_EQ(thermal({"--html", "page.html"}).exitCode, 0);
    const std::string page = contentOf("page.html");
    EXPECT_THAT(page, HasSubstr("1 sample in 0 s"));
    // Unlike the line in the key, the one in the plot goes in its colour from the left edge to the right one.
    EXPECT_THAT(page, testing::ContainsRegex("rgb[^>]*M[0-9][0-9][.][0-9]+,[0-9.]+ L9[0-9][0-9][.]"));
}

TEST_F(ThermalProgramTest, UnusableLogIsExitCode3) {
    write("log.csv", "seconds,degrees\n0,warm\n");
    const Ending ending = thermal({});
    EXPECT_EQ(ending.errors,
              "radioctl: log.csv:2: degrees: \"warm\", expected a whole number from -100 to 200, "
              "as the temperature service gives it\n");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(ThermalProgramTest, BoardWithoutCompensationIsExitCode3) {
    write("board.toml", rfModuleBoard);
    const Ending ending = thermal({});
    EXPECT_EQ(ending.errors,
              "radioctl: board.toml: nothing to replay; expected \"iq_compensation = true\" in at "
              "least one [[channel]]\n");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(ThermalProgramTest, CarrierOfAnUnknownChannelIsAWrongCommandLine) {
    const Ending ending = thermal({"--carrier", "3=7442000"});
    EXPECT_EQ(ending.errors,
              "radioctl: --carrier: board.toml has no channel 3 with IQ compensation; it has: 1\n");
    EXPECT_EQ(ending.exitCode, 2);
}

TEST_F(ThermalProgramTest, TwoCarriersOfAChannelAreAWrongCommandLine) {
    const Ending ending = thermal({"--carrier", "1=7442000", "--carrier", "1=7GHz"});
    EXPECT_EQ(ending.errors, "radioctl: --carrier: channel 1 has two carriers, expected one\n");
    EXPECT_EQ(ending.exitCode, 2);
}

TEST_F(ThermalProgramTest, WhatIsNoCarrierIsAWrongCommandLine) {
    for (const char* const word : {"7442000", "x=7442000", "-1=7442000", "=7442000", "1x=7442000"}) {
        const Ending ending = thermal({"--carrier=" + std::string(word)});
        EXPECT_THAT(ending.errors,
                    HasSubstr("expected a channel and its carrier, such as \"1=18.00025GHz\""));
        EXPECT_EQ(ending.exitCode, 2);
    }
    EXPECT_EQ(thermal({"--carrier", "1=7.5"}).exitCode, 2);
}

TEST_F(ThermalProgramTest, StandardOutputIsForOneOnly) {
    EXPECT_EQ(thermal({"--json", "--csv", "-"}).errors,
              "radioctl: --json and --csv - both want standard output\n");
    EXPECT_EQ(thermal({"--html", "-"}).errors,
              "radioctl: --html - is no file; expected a name such as thermal.html\n");
    EXPECT_EQ(thermal({"--html", "-"}).exitCode, 2);
}

TEST_F(ThermalProgramTest, InterruptEndsTheReplayCleanly) {
    writeLongLog(600'000);
    Process process({{"thermal", "board.toml", "log.csv", "--csv", "out.csv"}});
    ASSERT_TRUE(process.waitUntilItIsWritten("out.csv"));
    process.signal(SIGINT);
    const Ending ending = process.finish();
    EXPECT_THAT(ending.output, HasSubstr("\nInterrupted: no files were written.\n"));
    EXPECT_EQ(ending.exitCode, 130);
    EXPECT_FALSE(std::filesystem::exists("out.csv"));
    EXPECT_EQ(ending.errors, "");
}

TEST_F(ThermalProgramTest, ThereIsABarAtATerminal) {
    writeLongLog(600'000);
    Process process({{"thermal", "board.toml", "log.csv"}, {{"TERM", "xterm"}}, true});
    EXPECT_TRUE(process.waitFor(" of 600000 samples"));
    process.signal(SIGINT);
    EXPECT_THAT(process.finish().output, HasSubstr("\r\033[KTest radio (board.toml)\r\n"));
}

} // namespace
