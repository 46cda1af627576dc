#include "radio/board/BoardCheck.h"
#include "radio/board/BoardFile.h"
#include "radio/board/PlatformWords.h"
#include "radio/session/BootedRadio.h"
#include "tests/radio/support/BoardFileFixture.h"
#include "tests/radio/support/PlanBoards.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace Radio {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BoardTableFileTest : public BoardFileFixture {
protected:
    /** A board whose table "T", on line 6, comes from a column of x.csv with this content. */
    static Board loadWith(const std::string& csv, const std::string& column = "i") {
        write("x.csv", csv);
        return loadAfterChannel("[tables]\nT = { file = \"x.csv\", column = \"" + column + "\" }\n");
    }
    static std::string refusedWith(const std::string& csv, const std::string& column = "i") {
        return refusal([&] { loadWith(csv, column); });
    }
    static std::string refusedTable(const std::string& entry) {
        return refusedAfterChannel("[tables]\nT = { " + entry + " }\n");
    }
    /** A board whose canceller has no tables but one for I and one for Q from a file that is not there. */
    static Board uncalibrated() {
        Board board = PlanBoards::microwave(::FrequencyHandler::MicrowaveBoardHz);
        for (TableDescription& table : board.tables) {
            if (table.table.name.find("Mixer") != std::string::npos) {
                table = {{table.table.name, {}, {}, {}}, {"board.toml", 7}, "x.csv", "i"};
            }
        }
        return board;
    }
    /** Of the tables on line 7. */
    static std::vector<std::string> findings(const Board& board) {
        std::vector<std::string> texts;
        for (const Finding& finding : checkBoard(board)) {
            if (finding.place.line == 7) {
                texts.push_back(std::string(toString(finding.severity)) + ": " + finding.text);
            }
        }
        return texts;
    }

    static constexpr const char* someRows = "kHz,degrees,i,q\n"
                                            "200,5,4,-4\n"
                                            "100,-5,1,-1\n"
                                            "200,-5,3,-3\n"
                                            "100,5,2,-2\n";
};

TEST_F(BoardTableFileTest, RowsMayStandInAnyOrder) {
    const CalibrationTable table = loadWith(someRows).tables.front().table;
    EXPECT_EQ(table.name, "T");
    EXPECT_THAT(table.axis1, ElementsAre(100, 200));
    EXPECT_THAT(table.axis2, ElementsAre(-5, 5));
    EXPECT_THAT(table.values, ElementsAre(1, 2, 3, 4));
}

TEST_F(BoardTableFileTest, ColumnNamesTheValues) {
    const TableDescription table = loadWith(someRows, "q").tables.front();
    EXPECT_THAT(table.table.values, ElementsAre(-1, -2, -3, -4));
    EXPECT_EQ(table.column, "q");
    EXPECT_EQ(table.file, "x.csv");
    EXPECT_EQ(table.place.line, 6U);
}

TEST_F(BoardTableFileTest, FileLiesBesideTheBoard) {
    std::filesystem::create_directories("boards/tables");
    write("boards/tables/x.csv", someRows);
    write("boards/b.toml", "name = \"R\"\n[[channel]]\nnumber = 1\ntype = 1\n[tables.T]\n"
                           "file = \"tables/x.csv\"\ncolumn = \"i\"\n");
    const TableDescription table = loadBoard("boards/b.toml").tables.front();
    EXPECT_TRUE(table.isThere());
    EXPECT_EQ(table.file, "boards/tables/x.csv");
}

TEST_F(BoardTableFileTest, MissingFileLeavesATableWithoutContent) {
    const Board board = loadAfterChannel("[tables]\nT = { file = \"none.csv\", column = \"i\" }\n");
    EXPECT_FALSE(board.tables.front().isThere());
    EXPECT_EQ(board.tables.front().table.name, "T");
    EXPECT_EQ(board.tables.front().file, "none.csv");
}

TEST_F(BoardTableFileTest, MissingFileIsAWarningThatSaysHowToMakeIt) {
    const std::string table = "table \"Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.";
    const std::string rest =
        "\" has no content: there is no file \"x.csv\"; channel 1 (microwave-hz) can start "
        "without it, but will report errors; \"radioctl calibrate board.toml --channel 1\" "
        "makes it";
    EXPECT_THAT(findings(uncalibrated()),
                ElementsAre("warning: " + table + "I" + rest, "warning: " + table + "Q" + rest));
}

TEST_F(BoardTableFileTest, CoarseDcTableStandsInForAMissingFile) {
    Board board = uncalibrated();
    PlanBoards::remove(board, "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q");
    board.tables.push_back({{"Channel.1.Tx.Bb.Frequency.To.Coarse.Dc.I.Compensation", {1}, {}, {1}}, {}});
    board.tables.push_back({{"Channel.1.Tx.Bb.Frequency.To.Coarse.Dc.Q.Compensation", {1}, {}, {1}}, {}});
    EXPECT_THAT(
        findings(board),
        ElementsAre("warning: table \"Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I\" has "
                    "no content: there is no file \"x.csv\"; channel 1 (microwave-hz) takes "
                    "\"Channel.1.Tx.Bb.Frequency.To.Coarse.Dc.I.Compensation\" instead"));
}

TEST_F(BoardTableFileTest, RadioWithAMissingFileBootsAndTunes) {
    const Board board = uncalibrated();
    BootedRadio booted(board);
    EXPECT_TRUE(booted.isUp());
    booted.radio().tune(Direction::tx, 1, 18'000'000);
    EXPECT_EQ(booted.radio().platform().drivers().find("channel.1.tx.rf.mixer.i")->value(), 0);
}

TEST_F(BoardTableFileTest, FileThatCannotBeReadIsRefused) {
    std::filesystem::create_directory("x.csv");
    EXPECT_EQ(refusedTable("file = \"x.csv\", column = \"i\""),
              "x.csv: is a directory, expected a calibration table");
}

TEST_F(BoardTableFileTest, FileBelowAFileIsRefused) {
    write("x.csv", someRows);
    EXPECT_EQ(refusedTable("file = \"x.csv/y.csv\", column = \"i\""),
              "x.csv/y.csv: cannot be read: Not a directory");
}

TEST_F(BoardTableFileTest, MissingNodeIsRefused) {
    EXPECT_EQ(refusedWith("kHz,degrees,i\n100,0,1\n100,5,2\n200,0,3\n"),
              "x.csv:4: no row for kHz 200, degrees 5, expected one for each pair of the values of the two "
              "columns");
}

TEST_F(BoardTableFileTest, FirstOfManyMissingNodesIsNamed) {
    EXPECT_EQ(
        refusedWith("kHz,degrees,i\n300,3,3\n200,2,2\n100,1,1\n"),
        "x.csv:4: no row for kHz 100, degrees 2 and 5 more, expected one for each pair of the values of the "
        "two columns");
}

TEST_F(BoardTableFileTest, DoubleNodeIsRefused) {
    EXPECT_EQ(refusedWith("kHz,degrees,i\n100,0,1\n200,0,3\n100,0,1\n"),
              "x.csv:4: kHz 100, degrees 0 stands on line 2 already, expected each pair once");
}

TEST_F(BoardTableFileTest, UnknownColumnIsRefused) {
    EXPECT_EQ(refusedWith(someRows, "z"), "x.csv:1: no column \"z\"; there are: kHz, degrees, i, q");
}

TEST_F(BoardTableFileTest, AxisIsNoColumnOfValues) {
    EXPECT_EQ(refusedWith(someRows, "degrees"),
              "x.csv:1: column \"degrees\" is an axis, expected one of values");
}

TEST_F(BoardTableFileTest, OneAxisIsNotEnough) {
    EXPECT_EQ(refusedWith("kHz,i\n100,1\n"),
              "x.csv:1: expected two columns for the axes and columns of values behind them, found 2 in all");
}

TEST_F(BoardTableFileTest, ValueThatIsNoIntegerIsRefusedWithItsLine) {
    EXPECT_EQ(refusedWith("kHz,degrees,i\n100,0,1.5\n"),
              "x.csv:2: i: \"1.5\", expected a whole number from -2147483648 to 2147483647");
}

TEST_F(BoardTableFileTest, FileAndContentTogetherAreRefused) {
    EXPECT_EQ(
        refusedTable("file = \"x.csv\", column = \"i\", axes = [[1], [2]]"),
        "board.toml:6: tables.T: expected either file and column, or axes and values, found file and axes");
    EXPECT_EQ(refusedTable("column = \"i\", values = [1]"),
              "board.toml:6: tables.T: expected either file and column, or axes and values, found column "
              "and values");
}

TEST_F(BoardTableFileTest, FileAndColumnNeedEachOther) {
    EXPECT_EQ(refusedTable("file = \"x.csv\""),
              "board.toml:6: tables.T.column: missing, expected the name of a column of the file");
    EXPECT_EQ(refusedTable("column = \"i\""),
              "board.toml:6: tables.T.file: missing, expected the name of a CSV file");
}

} // namespace
} // namespace Radio
