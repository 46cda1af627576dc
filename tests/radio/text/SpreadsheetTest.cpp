#include "radio/text/Spreadsheet.h"

#include <gtest/gtest.h>

namespace Radio {
namespace {

TEST(Spreadsheet, TextStaysWhatItIs) {
    EXPECT_EQ(asCell("board.toml"), "board.toml");
    EXPECT_EQ(asCell(""), "");
    EXPECT_EQ(asCell("a=b, +c"), "\"a=b, +c\"");
    EXPECT_EQ(asComment("AB-0042, room 3; left"), "AB-0042, room 3; left");
    EXPECT_EQ(asComment(""), "");
}

TEST(Spreadsheet, CellIsNoFormula) {
    EXPECT_EQ(asCell("=1+1"), "'=1+1");
    EXPECT_EQ(asCell("+1"), "'+1");
    EXPECT_EQ(asCell("-1"), "'-1");
    EXPECT_EQ(asCell("@SUM(A1)"), "'@SUM(A1)");
    EXPECT_EQ(asCell("  =1"), "'  =1");
    EXPECT_EQ(asCell("\xEF\xBC\x9D"
                     "1"),
              "'\xEF\xBC\x9D"
              "1");
    EXPECT_EQ(asCell("=HYPERLINK(\"x\",1)"), "\"'=HYPERLINK(\"\"x\"\",1)\"");
}

TEST(Spreadsheet, CellThatWouldBeSeveralStandsInQuotationMarks) {
    EXPECT_EQ(asCell("a,=1"), "\"a,=1\"");
    EXPECT_EQ(asCell("a;=1"), "\"a;=1\"");
    EXPECT_EQ(asCell("a|=1"), "\"a|=1\"");
}

TEST(Spreadsheet, TabulatorsAndLineEndsBeginNothing) {
    EXPECT_EQ(asCell("\t=1"), "\\x09=1");
    EXPECT_EQ(asCell("\r=1"), "\\x0d=1");
    EXPECT_EQ(asCell("a\n=1"), "a\\x0a=1");
    EXPECT_EQ(asComment("a\t=1"), "a\\x09=1");
    EXPECT_EQ(asComment("a\r\n=1"), "a\\x0d\\x0a=1");
}

TEST(Spreadsheet, NothingInACommentIsAFormula) {
    EXPECT_EQ(asComment("x,=1+1"), "x,'=1+1");
    EXPECT_EQ(asComment("x, -1;+1|@a"), "x,' -1;'+1|'@a");
    EXPECT_EQ(asComment("x,\"=1\""), "x,'\"=1\"");
    EXPECT_EQ(asComment(",=1"), ",'=1");
    // It stands behind "# serial: ".
    EXPECT_EQ(asComment("=1"), "=1");
    EXPECT_EQ(asComment("x,'=1+1"), "x,'=1+1");
}

} // namespace
} // namespace Radio
