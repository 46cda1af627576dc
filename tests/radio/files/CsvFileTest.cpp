#include "radio/files/CsvFile.h"

#include "tests/radio/support/FileFixture.h"

namespace Radio {
namespace {

class CsvFileTest : public FileFixture {
protected:
    static CsvFile read(const std::string& text) {
        write("x.csv", text);
        return {"x.csv", "a table"};
    }
    static std::string refused(const std::string& text) {
        return refusal([&] { read(text); });
    }
    /** The item of the first row of a file with one column "n". */
    static CsvItem item(const std::string& text) { return read("n,m\n" + text + ",0\n").item(0, 0); }
};

TEST_F(CsvFileTest, RowsStandBelowTheColumnNames) {
    const CsvFile file = read("a,b\n1,x\n2,y\n");
    EXPECT_EQ(file.columns(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(file.rows(), 2U);
    EXPECT_EQ(file.item(1, file.column("b")).text(), "y");
    EXPECT_EQ(file.line(1), 3U);
}

TEST_F(CsvFileTest, BlanksEmptyLinesAndLineEndsOfSpreadsheetsDoNotCount) {
    const CsvFile file = read("\xEF\xBB\xBF\r\n a ,\tb\r\n\r\n 1 , 2 \r\n");
    EXPECT_EQ(file.columns(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(file.item(0, 1).text(), "2");
    EXPECT_EQ(file.line(0), 4U);
}

TEST_F(CsvFileTest, LastLineNeedsNoEnd) {
    EXPECT_EQ(read("a\n1").item(0, 0).integer(), 1);
}

TEST_F(CsvFileTest, CommentWithAColonIsAProperty) {
    const CsvFile file = read("# made by hand\n#  made at : 12:30\na\n1\n# late: 1\n");
    EXPECT_EQ(file.property("made at").text(), "12:30");
    EXPECT_EQ(file.property("made at").place().line, 2U);
    EXPECT_EQ(file.property("late").text(), "1");
    EXPECT_FALSE(file.findProperty("made by hand").has_value());
}

TEST_F(CsvFileTest, MissingPropertyIsRefused) {
    EXPECT_EQ(refusal([] { read("a\n1\n").property("serial"); }),
              "x.csv: no line \"# serial: ...\", expected it above the column names");
}

TEST_F(CsvFileTest, PropertyThatIsThereTwiceIsRefused) {
    EXPECT_EQ(refusal([] { read("# k: 1\n# k: 1\na\n1\n").property("k"); }),
              "x.csv:2: a second \"k\", expected it once");
}

TEST_F(CsvFileTest, EmptyValueIsAnEmptyText) {
    EXPECT_EQ(read("a,b\n1,\n").item(0, 1).text(), "");
    EXPECT_EQ(refusal([] { read("a,b\n1,\n").item(0, 1).nonEmptyText("a word"); }),
              "x.csv:2: b: \"\", expected a word");
}

TEST_F(CsvFileTest, IntegersReachBothEnds) {
    EXPECT_EQ(item("-2147483648").integer(), -2147483647 - 1);
    EXPECT_EQ(item("+2147483647").integer(), 2147483647);
    EXPECT_EQ(item("7").integer(7, 7), 7);
}

TEST_F(CsvFileTest, IntegersBeyondTheirRangeAreRefused) {
    EXPECT_EQ(refusal([] { item("2147483648").integer(); }),
              "x.csv:2: n: \"2147483648\", expected a whole number from -2147483648 to 2147483647");
    EXPECT_EQ(refusal([] { item("-1").integer(0, 9); }),
              "x.csv:2: n: \"-1\", expected a whole number from 0 to 9");
    EXPECT_EQ(refusal([] { item("99999999999999999999").integer(0, 9); }),
              "x.csv:2: n: \"99999999999999999999\", expected a whole number from 0 to 9");
}

TEST_F(CsvFileTest, WhatIsNoIntegerIsRefused) {
    for (const std::string text : {"1.5", "1 2", "0x10", "", "+-1", "one"}) {
        EXPECT_EQ(refusal([&] { item(text).integer(0, 9); }),
                  "x.csv:2: n: \"" + text + "\", expected a whole number from 0 to 9");
    }
}

TEST_F(CsvFileTest, NumbersMayHaveFractions) {
    EXPECT_EQ(item("-0.75").number(1), -0.75);
    EXPECT_EQ(item("5e-1").number(1), 0.5);
}

TEST_F(CsvFileTest, NumbersOutsideOrNoneAtAllAreRefused) {
    for (const std::string text : {"1.5", "nan", "inf", "1e999", ""}) {
        EXPECT_EQ(refusal([&] { item(text).number(1); }),
                  "x.csv:2: n: \"" + text + "\", expected a number from -1 to 1");
    }
}

TEST_F(CsvFileTest, RowWithTooFewOrTooManyValuesIsRefused) {
    EXPECT_EQ(refused("a,b\n1\n"), "x.csv:2: \"1\" has 1 value, expected one for each of the 2 columns");
    EXPECT_EQ(refused("a,b\n1,2,\n"),
              "x.csv:2: \"1,2,\" has 3 values, expected one for each of the 2 columns");
}

TEST_F(CsvFileTest, ColumnWithoutNameIsRefused) {
    EXPECT_EQ(refused("a,,c\n1,2,3\n"), "x.csv:1: column 2 has no name, expected one for each column");
}

TEST_F(CsvFileTest, ColumnThatIsThereTwiceIsRefused) {
    EXPECT_EQ(refused("a,b,a\n1,2,3\n"), "x.csv:1: two columns \"a\", expected each name once");
}

TEST_F(CsvFileTest, UnknownColumnIsRefused) {
    EXPECT_EQ(refusal([] { read("# x\na,b\n1,2\n").column("c"); }),
              "x.csv:2: no column \"c\"; there are: a, b");
}

TEST_F(CsvFileTest, ThereIsNoQuoting) {
    EXPECT_EQ(refused("a,b\n1,\"x,y\"\n"), "x.csv:2: \"1,\"x,y\"\", expected values without quotation marks");
}

TEST_F(CsvFileTest, ControlCharactersAreRefused) {
    EXPECT_EQ(refused(std::string("a\n\x1b[2J\n")),
              "x.csv:2: \"\\x1b[2J\", expected text without control characters");
    EXPECT_EQ(refused(std::string("a\n1\0\n", 5)),
              "x.csv:2: \"1\\x00\", expected text without control characters");
}

TEST_F(CsvFileTest, EmptyFileIsRefused) {
    EXPECT_EQ(refused(""), "x.csv: empty, expected a table with a line of column names");
    EXPECT_EQ(refused("# k: 1\n"), "x.csv: empty, expected a table with a line of column names");
}

TEST_F(CsvFileTest, FileWithoutRowsIsRefused) {
    EXPECT_EQ(refused("\na,b\n"), "x.csv:2: no rows, expected them below the column names");
}

TEST_F(CsvFileTest, EndlessLineIsRefused) {
    EXPECT_EQ(refused("a\n" + std::string(65535, '1')).substr(0, 12), "accepted");
    EXPECT_EQ(refused("a\n" + std::string(65536, '1')),
              "x.csv:2: longer than 65535 characters, expected values with commas between them");
}

TEST_F(CsvFileTest, HugeFileIsRefused) {
    EXPECT_EQ(refused("a\n1\n" + std::string(std::size_t{4} * 1024 * 1024, '\n')),
              "x.csv: is larger than 4 MiB, expected a table");
}

TEST_F(CsvFileTest, FileThatIsNotThereIsRefused) {
    EXPECT_EQ(refusal([] { CsvFile("none.csv", "a table"); }),
              "none.csv: cannot be read: No such file or directory");
}

} // namespace
} // namespace Radio
