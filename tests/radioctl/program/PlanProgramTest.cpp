#include "tests/radioctl/program/ProgramTest.h"

#include <csignal>
#include <iterator>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/** "radioctl plan" as its user meets it. */
class PlanProgramTest : public ProgramTest {
protected:
    /** Has board.toml also state `count` transmit carriers from 7442 MHz on, and `more`. */
    static void addRaster(std::uint32_t count, const std::string& more = "") {
        write("board.toml", std::string(rfModuleBoard) + R"(
[[raster]]
name = "7 GHz"
direction = "tx"
first = 7442000
step = 1
last = )" + std::to_string(7442000 + count - 1) +
                                "\n" + more);
    }
    static Ending plan(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "plan");
        return runProgram({arguments});
    }
    static std::string contentOf(const std::string& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    static constexpr const char* csvHeading =
        "board,channel,direction,raster,channel_spacing,carrier_khz,dsp_offset_khz,if_pll_khz,rf_pll,"
        "rf_pll_unit,charge_pump,mixer_i,mixer_q,passed_on_khz,produced_hz,error_hz,findings\n";
};

TEST_F(PlanProgramTest, AuditDoesNotWriteOverABoard) {
    addRaster(1);
    const std::string before = contentOf("board.toml");
    const Ending ending = plan({"audit", "board.toml", "--csv", "./board.toml"});
    EXPECT_EQ(ending.errors, "radioctl: --csv: ./board.toml is a board, expected a file of its own\n");
    EXPECT_EQ(ending.exitCode, 2);
    EXPECT_EQ(contentOf("board.toml"), before);
}

TEST_F(PlanProgramTest, ExplainTakesFrequenciesAsScriptsDo) {
    const std::string told = plan({"explain", "board.toml", "--channel", "1", "--tx", "7442500"}).output;
    EXPECT_THAT(told, HasSubstr("  1  channel.1.tx.rf.frequency <- 7442500\n"));
    EXPECT_EQ(plan({"explain", "board.toml", "--channel", "1", "--tx", "7442.5MHz"}).output, told);
    EXPECT_EQ(plan({"explain", "board.toml", "--channel", "1", "--tx=7.4425GHz"}).output, told);
    EXPECT_EQ(plan({"explain", "--tx", "7.4425", "GHz", "--channel", "1", "board.toml"}).output, told);
}

TEST_F(PlanProgramTest, ExplainedCarrierIsExitCode0) {
    const Ending ending = plan({"explain", "board.toml", "--channel", "1", "--rx", "7603000"});
    EXPECT_THAT(ending.output, HasSubstr("  1  channel.1.rx.rf.frequency <- 7603000\n"));
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(PlanProgramTest, ExplainSpeaksJson) {
    const Ending ending = plan({"explain", "board.toml", "--channel", "1", "--tx", "7442500", "--json"});
    EXPECT_THAT(ending.output,
                StartsWith(R"({"schema":1,"event":"carrier","file":"board.toml","channel":1,)"));
    EXPECT_EQ(
        runProgram({{"--json", "plan", "explain", "board.toml", "--channel", "1", "--tx", "7442500"}}).output,
        ending.output);
}

TEST_F(PlanProgramTest, ExplainOfAnUnknownChannelIsAWrongCommandLine) {
    const Ending ending = plan({"explain", "board.toml", "--channel", "3", "--tx", "7442500"});
    EXPECT_EQ(ending.errors, "radioctl: --channel: board.toml has no channel 3; it has: 1\n");
    EXPECT_EQ(ending.exitCode, 2);
}

TEST_F(PlanProgramTest, ExplainWantsOneCarrier) {
    const Ending none = plan({"explain", "board.toml", "--channel", "1"});
    EXPECT_THAT(none.errors, StartsWith("radioctl: Exactly 1 option from [--tx,--rx] is required\n"));
    EXPECT_EQ(none.exitCode, 2);
    const Ending both = plan({"explain", "board.toml", "--channel", "1", "--tx", "1", "--rx", "1"});
    EXPECT_EQ(both.exitCode, 2);
}

TEST_F(PlanProgramTest, ExplainRefusesWhatIsNoFrequency) {
    const Ending ending = plan({"explain", "board.toml", "--channel", "1", "--tx", "7442.5"});
    EXPECT_THAT(ending.errors,
                StartsWith("radioctl: --tx: \"7442.5\" has a fraction of a kHz, expected whole kHz\n"));
    EXPECT_EQ(ending.exitCode, 2);
}

TEST_F(PlanProgramTest, PlanWantsOneOfItsCommands) {
    EXPECT_EQ(plan({}).exitCode, 2);
    EXPECT_EQ(plan({"audit"}).exitCode, 2);
    EXPECT_EQ(plan({"adjust"}).exitCode, 2);
}

TEST_F(PlanProgramTest, BoardThatDoesNotBootIsUnusable) {
    write("broken.toml", brokenBoard);
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"explain", "broken.toml", "--channel", "1", "--tx", "7442500"},
          {"audit", "broken.toml"}}) {
        const Ending ending = plan(arguments);
        EXPECT_THAT(ending.errors,
                    StartsWith("radioctl: broken.toml:3: driver \"channel.1.tx.rf.frequency\" is missing; "));
        EXPECT_THAT(ending.errors, EndsWith(" (\"radioctl check\" has the whole list)\n"));
        EXPECT_EQ(ending.output, "");
        EXPECT_EQ(ending.exitCode, 3);
    }
}

TEST_F(PlanProgramTest, AuditWithoutRastersSaysWhatIsMissing) {
    const Ending ending = plan({"audit", "board.toml"});
    EXPECT_EQ(ending.errors,
              "radioctl: board.toml: no carriers to audit; expected at least one [[raster]]\n");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(PlanProgramTest, AuditOfAGoodBoardIsExitCode0) {
    addRaster(2);
    const Ending ending = plan({"audit", "board.toml"});
    EXPECT_THAT(ending.output, StartsWith("SIMULATION: nothing reaches hardware.\nTest radio (board.toml)\n"
                                          "  channel      spacing  carriers  worst error  at  outside\n"
                                          "  7 GHz\n"
                                          "        1  tx        -         2         0 Hz   -        0\n"
                                          "2 carriers in "));
    EXPECT_THAT(ending.output, EndsWith(" s: all within limits.\n"));
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(PlanProgramTest, DescribedMicrowaveRadiosAreWithinTheirLimits) {
    std::vector<std::string> arguments{"audit"};
    for (const auto& entry : std::filesystem::directory_iterator(RADIOCTL_BOARDS)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("microwave-", 0) == 0 && entry.path().extension() == ".toml") {
            arguments.push_back(entry.path().string());
        }
    }
    ASSERT_GE(arguments.size(), 5U);
    const Ending ending = plan(arguments);
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, 0) << ending.output;
}

TEST_F(PlanProgramTest, WhatIsShownFitsIntoEightyColumns) {
    // Where the boards are, since the path of a file is not broken.
    std::filesystem::current_path(RADIOCTL_BOARDS);
    std::size_t boards = 0;
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        if (entry.path().extension() != ".toml") {
            continue;
        }
        ++boards;
        const std::string board = entry.path().filename().string();
        EXPECT_THAT(plan({"audit", board}).output, Not(testing::ContainsRegex("[^\n]{81}"))) << board;
        for (const std::vector<std::string>& carrier :
             {std::vector<std::string>{"--tx", "18.0005GHz"}, {"--rx", "18.0005GHz"}, {"--rx", "81250000"}}) {
            EXPECT_THAT(plan({"explain", board, "--channel", "1", carrier[0], carrier[1]}).output,
                        Not(testing::ContainsRegex("[^\n]{81}")))
                << board;
        }
    }
    EXPECT_GE(boards, 8U);
}

TEST_F(PlanProgramTest, AuditGoesOnAfterABoardThatCannotBeRead) {
    addRaster(1);
    const Ending ending = plan({"audit", "none.toml", "board.toml"});
    EXPECT_THAT(ending.errors, StartsWith("radioctl: none.toml: cannot be read: No such file or directory"));
    EXPECT_THAT(ending.output, EndsWith(" s: all within limits.\n"));
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(PlanProgramTest, AuditWritesACsvFile) {
    addRaster(2);
    const Ending ending = plan({"audit", "board.toml", "--csv", "out.csv"});
    EXPECT_THAT(ending.output, EndsWith(" s: all within limits.\n"));
    EXPECT_EQ(contentOf("out.csv"), std::string(csvHeading) +
                                        "board.toml,1,tx,7 GHz,,7442000,,,,,,,,7442000,7442000000,0,\n"
                                        "board.toml,1,tx,7 GHz,,7442001,,,,,,,,7442001,7442001000,0,\n");
}

TEST_F(PlanProgramTest, CsvOnStandardOutputStandsThereAlone) {
    addRaster(1);
    const Ending ending = plan({"audit", "board.toml", "--csv", "-"});
    EXPECT_EQ(ending.output,
              std::string(csvHeading) + "board.toml,1,tx,7 GHz,,7442000,,,,,,,,7442000,7442000000,0,\n");
    EXPECT_THAT(ending.errors,
                StartsWith("SIMULATION: nothing reaches hardware.\nTest radio (board.toml)\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(PlanProgramTest, CsvInTheFileThatStandardOutputLeadsToIsStandardOutput) {
    addRaster(1);
    write("all.txt", "");
    const Ending ending =
        runProgram({{"plan", "audit", "board.toml", "--csv", "/dev/stdout"}, {}, false, "all.txt"});
    EXPECT_EQ(contentOf("all.txt"),
              std::string(csvHeading) + "board.toml,1,tx,7 GHz,,7442000,,,,,,,,7442000,7442000000,0,\n");
    EXPECT_THAT(ending.errors, StartsWith("SIMULATION: nothing reaches hardware.\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(PlanProgramTest, CsvThatCannotBeWrittenIsRefusedBeforeTheAudit) {
    addRaster(1);
    const Ending ending = plan({"audit", "board.toml", "--csv", "none/out.csv"});
    EXPECT_EQ(ending.errors, "radioctl: none/out.csv: cannot be written: No such file or directory\n");
    EXPECT_EQ(ending.output, "");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(PlanProgramTest, JsonAndCsvDoNotShareStandardOutput) {
    const Ending ending = plan({"audit", "board.toml", "--json", "--csv", "-"});
    EXPECT_EQ(ending.errors, "radioctl: --json and --csv - both want standard output\n");
    EXPECT_EQ(ending.exitCode, 2);
}

TEST_F(PlanProgramTest, AuditSpeaksJson) {
    addRaster(1);
    const Ending ending = plan({"audit", "board.toml", "--json"});
    EXPECT_THAT(ending.output, StartsWith(R"({"schema":1,"event":"mode","mode":"simulation"})"
                                          "\n"
                                          R"({"schema":1,"event":"row","file":"board.toml","channel":1,)"));
    EXPECT_THAT(ending.output, EndsWith(R"("interrupted":false,"exit_code":0})"
                                        "\n"));
}

TEST_F(PlanProgramTest, InterruptEndsTheAuditCleanly) {
    addRaster(1'000'000);
    Process process({{"plan", "audit", "board.toml", "--csv", "out.csv"}});
    ASSERT_TRUE(process.waitUntilItIsWritten("out.csv"));
    process.signal(SIGINT);
    const Ending ending = process.finish();
    EXPECT_THAT(ending.output, HasSubstr("\nInterrupted: not all carriers were audited.\n"));
    EXPECT_EQ(ending.exitCode, 130);
    EXPECT_FALSE(std::filesystem::exists("out.csv"));
    EXPECT_EQ(ending.errors, "");
}

TEST_F(PlanProgramTest, ThereIsABarAtATerminal) {
    addRaster(5'000'000);
    Process process({{"plan", "audit", "board.toml"}, {{"TERM", "xterm"}}, true});
    EXPECT_TRUE(process.waitFor(" of 5000000 carriers"));
    process.signal(SIGINT);
    EXPECT_THAT(process.finish().output, HasSubstr("\r\033[KTest radio (board.toml)\r\n"));
}

TEST_F(PlanProgramTest, ThereIsNoBarInAPipe) {
    addRaster(100'000);
    const Ending ending = plan({"audit", "board.toml"});
    EXPECT_THAT(ending.errors, IsEmpty());
    EXPECT_THAT(ending.output, Not(HasSubstr("\r")));
}

} // namespace
