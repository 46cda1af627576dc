#include "tests/radio/support/LeakageBoard.h"
#include "tests/radioctl/program/ProgramTest.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

/** "radioctl tables" as its user meets it. */
class TablesProgramTest : public ProgramTest {
protected:
    TablesProgramTest() {
        write("board.toml", leakageBoard());
        write("board.channel-1.csv", goodTables);
    }
    static Ending tables(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "tables");
        return runProgram({arguments});
    }
    static Ending why(const std::vector<std::string>& frequency, const std::string& temperature = "25") {
        std::vector<std::string> arguments{"why",           "board.toml", "--channel",  "1",
                                           "--temperature", temperature,  "--frequency"};
        arguments.insert(arguments.end(), frequency.begin(), frequency.end());
        return tables(arguments);
    }

    static constexpr const char* goodTables = "# channel: 1\n"
                                              "frequency_khz,temperature_c,i,q\n"
                                              "17900000,-10,-480,10\n"
                                              "18000000,-10,-490,20\n"
                                              "18100000,-10,-500,30\n"
                                              "17900000,50,-500,20\n"
                                              "18000000,50,-510,30\n"
                                              "18100000,50,-520,40\n";
};

TEST_F(TablesProgramTest, GoodTablesAreExitCode0) {
    const Ending ending = tables({"lint", "board.toml", "board.channel-1.csv"});
    EXPECT_EQ(ending.output, "board.toml: good\nboard.channel-1.csv: good\n");
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(TablesProgramTest, WarningsAreExitCode0) {
    write("x.csv", "f,t,i\n1,1,0\n");
    const Ending ending = tables({"lint", "x.csv"});
    EXPECT_EQ(ending.output,
              "x.csv:1: warning: a column \"i\", but none \"q\"\nx.csv: 0 errors, 1 warning\n");
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(TablesProgramTest, ErrorsAreExitCode1) {
    write("x.csv", "f,t,i,q\n1,1,0,0\n1,1,0,0\n");
    const Ending ending = tables({"lint", "x.csv"});
    EXPECT_EQ(ending.output, "x.csv:3: error: f 1, t 1 stands on line 2 already, expected each pair once\n"
                             "x.csv: 1 error, 0 warnings\n");
    EXPECT_EQ(ending.exitCode, 1);
}

TEST_F(TablesProgramTest, UnusableFileIsExitCode3AndTheOthersAreLookedAt) {
    const Ending ending = tables({"lint", "none.csv", "board.toml"});
    EXPECT_EQ(ending.errors, "radioctl: none.csv: cannot be read: No such file or directory\n");
    EXPECT_EQ(ending.output, "board.toml: good\n");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(TablesProgramTest, LintSpeaksJson) {
    write("x.csv", "f,t,i\n1,1,0\n");
    EXPECT_EQ(tables({"lint", "--json", "x.csv"}).output,
              R"({"schema":1,"event":"finding","severity":"warning","file":"x.csv","line":1,)"
              R"("text":"a column \"i\", but none \"q\""})"
              "\n"
              R"({"schema":1,"event":"checked","file":"x.csv","errors":0,"warnings":1})"
              "\n");
}

TEST_F(TablesProgramTest, CheckTellsHowToMakeATableThatIsNotThere) {
    std::filesystem::remove("board.channel-1.csv");
    const Ending ending = runProgram({{"check", "board.toml"}});
    EXPECT_THAT(ending.output, HasSubstr("\"radioctl calibrate board.toml --channel 1\" makes it\n"));
    EXPECT_THAT(ending.output, HasSubstr("board.toml: 0 errors, 2 warnings\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(TablesProgramTest, EqualTablesAreExitCode0) {
    const Ending ending = tables({"diff", "board.channel-1.csv", "board.toml"});
    EXPECT_THAT(ending.output,
                StartsWith("board.channel-1.csv -> board.toml\n\nchannel 1: 6 nodes compared, 0 "
                           "moved\n  worst leakage before"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(TablesProgramTest, DifferentTablesAreExitCode1) {
    write("x.csv", "f,t,i,q\n18000000,25,-500,20\n");
    const Ending ending = tables({"diff", "board.channel-1.csv", "x.csv"});
    EXPECT_THAT(ending.output, HasSubstr("channel 1: 9 nodes compared, 8 moved\n"));
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, 1);
}

TEST_F(TablesProgramTest, DiffTakesTheLeakageOfTheBoardThatIsNamed) {
    const Ending without = tables({"diff", "board.channel-1.csv", "board.channel-1.csv"});
    EXPECT_EQ(without.output,
              "board.channel-1.csv -> board.channel-1.csv\n\nchannel 1: 6 nodes compared, 0 moved\n");
    const Ending with =
        tables({"diff", "board.channel-1.csv", "board.channel-1.csv", "--board", "board.toml"});
    EXPECT_THAT(with.output, HasSubstr("\n  worst leakage after "));
}

TEST_F(TablesProgramTest, FilesThatCannotBeComparedAreExitCode3) {
    const Ending ending = tables({"diff", "board.toml", "board.toml", "--channel", "2"});
    EXPECT_EQ(ending.errors,
              "radioctl: board.toml: no channel 2 in common with board.toml; that has channel 1, "
              "this 1\n");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(TablesProgramTest, WhyTakesFrequenciesAsScriptsDo) {
    const Ending ending = why({"17950000"});
    EXPECT_THAT(ending.output, HasSubstr("  channel.1.tx.rf.mixer.i <- "));
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_EQ(why({"17.95GHz"}).output, ending.output);
    EXPECT_EQ(why({"17.95", "GHz"}).output, ending.output);
}

TEST_F(TablesProgramTest, WhyGoesBelowZeroDegrees) {
    EXPECT_THAT(why({"18.0GHz"}, "-10").output, HasSubstr("  channel.1.tx.rf.mixer.i <- -490\n"));
}

TEST_F(TablesProgramTest, WhyRefusesAnUnknownChannel) {
    const Ending ending =
        tables({"why", "board.toml", "--channel", "7", "--frequency", "18GHz", "--temperature", "25"});
    EXPECT_EQ(ending.errors, "radioctl: --channel: board.toml has no channel 7; it has: 1\n");
    EXPECT_EQ(ending.exitCode, 2);
}

TEST_F(TablesProgramTest, WhyRefusesWhatIsNoFrequency) {
    const Ending ending = why({"18.0000001GHz"});
    EXPECT_THAT(ending.errors, HasSubstr("has a fraction of a kHz, expected whole kHz"));
    EXPECT_EQ(ending.exitCode, 2);
}

TEST_F(TablesProgramTest, WhyRefusesABoardThatCannotBoot) {
    write("board.toml", brokenBoard);
    EXPECT_EQ(why({"18GHz"}).exitCode, 3);
}

TEST_F(TablesProgramTest, UnusableTableOfABoardIsExitCode3) {
    write("board.channel-1.csv", "f,t,i,q\n1,1,x,0\n");
    const Ending ending = runProgram({{"run", "board.toml", "-"}});
    EXPECT_EQ(ending.errors,
              "radioctl: board.channel-1.csv:2: i: \"x\", expected a whole number from -2147483648 "
              "to 2147483647\n");
    EXPECT_EQ(ending.exitCode, 3);
}

} // namespace
