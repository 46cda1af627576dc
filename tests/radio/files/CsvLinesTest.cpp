#include "radio/files/CsvLines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Radio {
namespace {

using Cells = std::vector<std::string_view>;

class CsvLinesTest : public testing::Test {
protected:
    /** What is said about a line; "taken" when nothing is. */
    std::string saidOf(const std::string& line) {
        try {
            lines.take(line);
            return "taken";
        } catch (const InputError& error) {
            return error.what();
        }
    }

    CsvLines lines{"x.csv", 20, "a pair of numbers"};
};

TEST_F(CsvLinesTest, FirstLineWithValuesIsTheHeadingAndThoseBelowItAreRows) {
    EXPECT_FALSE(lines.hasHeading());
    EXPECT_EQ(lines.take("a,b"), CsvLine::heading);
    EXPECT_TRUE(lines.hasHeading());
    EXPECT_EQ(lines.take("1,2"), CsvLine::row);
    EXPECT_EQ(lines.take("a,b"), CsvLine::row);
}

TEST_F(CsvLinesTest, EmptyLinesAndCommentsAreNothingWhereverTheyStand) {
    for (const char* const line : {"", " \t\r", "#", " # made by hand", "a", "", "# a,b"}) {
        const bool isHeading = std::string_view(line) == "a";
        EXPECT_EQ(lines.take(line), isHeading ? CsvLine::heading : CsvLine::nothing) << line;
    }
}

TEST_F(CsvLinesTest, CommentWithAColonIsAPropertyWhereverItStands) {
    EXPECT_EQ(lines.take("#  made at : 12:30 "), CsvLine::property);
    EXPECT_EQ(lines.cells(), (Cells{"made at", "12:30"}));
    EXPECT_FALSE(lines.hasHeading());
    lines.take("a");
    EXPECT_EQ(lines.take("#:"), CsvLine::property);
    EXPECT_EQ(lines.cells(), (Cells{"", ""}));
}

TEST_F(CsvLinesTest, CommaAlwaysEndsAValue) {
    lines.take("a,\"b,c\",");
    EXPECT_EQ(lines.cells(), (Cells{"a", "\"b", "c\"", ""}));
    lines.take(",");
    EXPECT_EQ(lines.cells(), (Cells{"", ""}));
    lines.take("a:b#c");
    EXPECT_EQ(lines.cells(), (Cells{"a:b#c"}));
}

TEST_F(CsvLinesTest, BlanksAndCarriageReturnsAtTheEndsOfLinesAndValuesDoNotCount) {
    lines.take(" \ta b \r, c\t\r");
    EXPECT_EQ(lines.text(), "a b \r, c");
    EXPECT_EQ(lines.cells(), (Cells{"a b", "c"}));
}

TEST_F(CsvLinesTest, ByteOrderMarkCountsOnTheFirstLineNeitherAsTextNorInItsLength) {
    EXPECT_EQ(lines.take("\xEF\xBB\xBF"
                         "12345678901234567890"),
              CsvLine::heading);
    EXPECT_EQ(lines.text(), "12345678901234567890");
    lines.take("\xEF\xBB\xBF"
               "1");
    EXPECT_EQ(lines.text(), "\xEF\xBB\xBF"
                            "1");
}

TEST_F(CsvLinesTest, PlaceIsThatOfTheLineThatWasTaken) {
    EXPECT_EQ(toString(lines.place()), "x.csv");
    lines.take("");
    lines.take("a");
    EXPECT_EQ(toString(lines.place()), "x.csv:2");
}

TEST_F(CsvLinesTest, LongLineIsRefused) {
    EXPECT_EQ(saidOf("12345678901234567890"), "taken");
    EXPECT_EQ(saidOf("#                    "),
              "x.csv:2: longer than 20 characters, expected a pair of numbers");
}

TEST_F(CsvLinesTest, LineWhoseEndWasNotReadIsTheNextOne) {
    lines.take("a");
    try {
        lines.refuseLongLine();
    } catch (const InputError& error) {
        EXPECT_STREQ(error.what(), "x.csv:2: longer than 20 characters, expected a pair of numbers");
    }
}

} // namespace
} // namespace Radio
