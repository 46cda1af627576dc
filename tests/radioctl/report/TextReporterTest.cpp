#include "radioctl/report/TextReporter.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Radio {
namespace {

using Standalone::Call;
using Standalone::Operation;

class TextReporterTest : public testing::Test {
protected:
    std::string shownFor(const Call& call) {
        TextReporter(m_out, {}).called(call);
        return m_out.str();
    }

    std::string traceInColour(OrbiTraceLevel level) {
        TextStyle style;
        style.colour = true;
        TextReporter(m_out, style).traced({"QVX.FH", level, "private/File.cpp", 7, "text", false});
        return m_out.str();
    }

    static Call write(std::int64_t value, std::int32_t code) {
        Call call{};
        call.operation = Operation::driverWrite;
        call.object = "driver";
        call.value = value;
        call.code = code;
        return call;
    }

    std::ostringstream m_out;
};

TEST_F(TextReporterTest, NumbersValuesInTheOrderInWhichTheyReachHardware) {
    TextReporter reporter(m_out, {});
    reporter.called(write(7, 0));
    reporter.called(write(8, 0x8001));
    reporter.called(write(9, 0));
    EXPECT_EQ(m_out.str(), "  1  driver <- 7\n  -  driver <- 8  FAILED 0x8001\n  2  driver <- 9\n");
}

TEST_F(TextReporterTest, ShowsASuccessCodeOtherThanZero) {
    EXPECT_EQ(shownFor(write(7, 0x7FFF)), "  1  driver <- 7  (answered 0x7fff)\n");
}

TEST_F(TextReporterTest, ShowsTheSizeOfABufferWrite) {
    Call call = write(7442000000000, 0);
    call.operation = Operation::driverWriteBuffer;
    call.bytes.resize(8);
    EXPECT_EQ(shownFor(call), "  1  driver <- 7442000000000 (8 bytes)\n");
}

TEST_F(TextReporterTest, CommandsAreShownWithNothingThatATerminalObeys) {
    TextReporter(m_out, {}).commandStarted({{}, "quit\t# \x1b[2J", Action(Quit{})});
    EXPECT_EQ(m_out.str(), "\n> quit # \\x1b[2J\n");
}

TEST_F(TextReporterTest, ShowsValuesThatWereReadAndWhen) {
    TextReporter reporter(m_out, {});
    reporter.valueRead({"driver", -7});
    reporter.valueRead({"driver", 8, 12.34});
    EXPECT_EQ(m_out.str(), "     driver = -7\n         12.3 s  driver = 8\n");
}

TEST_F(TextReporterTest, WarningsStandBelowTheCommandInYellow) {
    TextStyle style;
    style.colour = true;
    TextReporter(m_out, style).warned("not here");
    EXPECT_EQ(m_out.str(), "     \033[33mwarning: not here\033[0m\n");
}

TEST_F(TextReporterTest, CommandsOfAFileAreShownAlsoWhereTheUserTypes) {
    TextStyle style;
    style.echo = false;
    TextReporter reporter(m_out, style);
    reporter.commandStarted({{}, "typed", Action(Quit{})});
    reporter.commandStarted({{"file", 1}, "included", Action(Quit{})});
    EXPECT_EQ(m_out.str(), "\n> included\n");
}

TEST_F(TextReporterTest, HidesLookupsThatWentWell) {
    Call call{};
    call.operation = Operation::driverLookup;
    call.object = "driver";
    EXPECT_EQ(shownFor(call), "");
    call.code = 0x8000;
    EXPECT_EQ(shownFor(call), "     driver-lookup driver  FAILED 0x8000\n");
}

TEST_F(TextReporterTest, HidesLookupsOfWhatIsNotThere) {
    Call call{};
    call.object = "name";
    call.code = 0x8001;
    for (const Operation operation : {Operation::driverLookup, Operation::tableLookup, Operation::variableGet,
                                      Operation::variableAddress, Operation::brokerLookup}) {
        call.operation = operation;
        EXPECT_EQ(shownFor(call), "");
    }
    call.operation = Operation::driverRead;
    EXPECT_EQ(shownFor(call), "     driver-read name  FAILED 0x8001\n");
}

TEST_F(TextReporterTest, ColoursErrorsRed) {
    EXPECT_EQ(traceInColour(Standalone::TraceLevel::error), "     \033[1;31merror: text\033[0m\n");
}

TEST_F(TextReporterTest, ColoursWarningsYellow) {
    EXPECT_EQ(traceInColour(Standalone::TraceLevel::warning), "     \033[33mwarning: text\033[0m\n");
}

TEST_F(TextReporterTest, ColoursNoticesCyan) {
    EXPECT_EQ(traceInColour(Standalone::TraceLevel::notice), "     \033[36mnotice: text\033[0m\n");
}

TEST_F(TextReporterTest, ShowsInformationFaintly) {
    EXPECT_EQ(traceInColour(Standalone::TraceLevel::information), "     \033[2minformation: text\033[0m\n");
}

TEST_F(TextReporterTest, ListsLevelsWithTwoDecimals) {
    TextReporter(m_out, {}).listed({"levels", {"level"}, {{-71.238}, {0.0}, {-0.004}, {-40.0}}});
    EXPECT_EQ(m_out.str(), "     level\n     -71.24\n     0.00\n     0.00\n     -40.00\n");
}

TEST_F(TextReporterTest, ShowsExpectedAndFoundWritesSideBySide) {
    Judgement judgement{false, "a.driver=1 b=2 c=3", "b=20 c=3 d=400000"};
    judgement.writes = {{"a.driver", 1, {}}, {"b", 2, 20}, {"c", 3, 3}, {"d", {}, 400000}};
    TextReporter(m_out, {}).judged({{"script", 3}, "expect writes a.driver=1 b=2 c=3", Action(Quit{})},
                                   judgement);
    EXPECT_EQ(m_out.str(), "  FAILED  expect writes a.driver=1 b=2 c=3  (script:3)\n"
                           "          driver    expected   found\n"
                           "        ! a.driver         1       -\n"
                           "        ! b                2      20\n"
                           "          c                3       3\n"
                           "        ! d                -  400000\n");
}

TEST_F(TextReporterTest, LeavesOutWritesFarFromWhatDiffers) {
    Judgement judgement{false, "", ""};
    for (int value = 0; value < 20; ++value) {
        judgement.writes.push_back({"d", value, value == 10 ? -1 : value});
    }
    TextReporter(m_out, {}).judged({{}, "expect writes", Action(Quit{})}, judgement);
    EXPECT_EQ(m_out.str(), "  FAILED  expect writes\n"
                           "          driver             expected  found\n"
                           "          ... 7 as expected\n"
                           "          d                         7      7\n"
                           "          d                         8      8\n"
                           "          d                         9      9\n"
                           "        ! d                        10     -1\n"
                           "          d                        11     11\n"
                           "          d                        12     12\n"
                           "          d                        13     13\n"
                           "          ... 6 as expected\n");
}

TEST_F(TextReporterTest, JoinsNeighbouringChannels) {
    EXPECT_EQ(numberList({1}), "1");
    EXPECT_EQ(numberList({1, 2}), "1, 2");
    EXPECT_EQ(numberList({1, 2, 3, 5, 7, 8, 9, 10}), "1 to 3, 5, 7 to 10");
}

} // namespace
} // namespace Radio
