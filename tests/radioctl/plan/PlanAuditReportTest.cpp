#include "radio/board/PlatformWords.h"
#include "radioctl/plan/AuditReport.h"
#include "tests/radio/support/PlanBoards.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace Radio::Plan {
namespace {

using ::FrequencyHandler;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

/** Audits a board and keeps what the reports write. A board without IF synthesiser has carriers of a fraction
 * of a MHz off. */
class PlanAuditReportTest : public testing::Test {
protected:
    void addRow(Direction direction, std::uint32_t first, std::uint32_t step, std::uint32_t count,
                const std::vector<std::int32_t>& channelSpacings = {}) {
        m_board.rasters.push_back(
            {"F.595", {1}, {{direction == Direction::tx, first, step, count}}, channelSpacings, {}});
    }

    template <typename Report>
    std::string reported(const AuditSummary& summary) {
        BootedRadio booted(m_board);
        std::ostringstream out;
        Report report(out, m_board);
        auditBoard(booted, m_board, {&report}, [](std::uint64_t) { return true; });
        report.finished(summary);
        return out.str();
    }
    std::string text() { return reported<AuditText>({0, 0.25, 0}); }
    std::string json() { return reported<AuditJson>({0, 0.25, 1}); }
    std::string csv() {
        BootedRadio booted(m_board);
        std::ostringstream out;
        AuditCsv report(out, m_board);
        AuditCsv::writeHeading(out);
        auditBoard(booted, m_board, {&report}, [](std::uint64_t) { return true; });
        return out.str();
    }

    Board m_board = PlanBoards::microwave(FrequencyHandler::MicrowaveBoardDspOffset);
};

TEST_F(PlanAuditReportTest, TextOfAGoodBoard) {
    addRow(Direction::tx, 18'000'000, 1000, 2);
    addRow(Direction::rx, 18'500'000, 1000, 1, {50, 100});
    EXPECT_EQ(text(), R"(Test radio (board.toml)
  channel      spacing  carriers  worst error  at  outside
  F.595
        1  tx        -         2         0 Hz   -        0
        1  rx       50         1         0 Hz   -        0
        1  rx      100         1         0 Hz   -        0
4 carriers in 0.25 s: all within limits.
)");
}

TEST_F(PlanAuditReportTest, TextHasTheWorstOfEachFinding) {
    addRow(Direction::tx, 18'000'000, 100, 5);
    EXPECT_EQ(text(), R"(Test radio (board.toml)
  channel      spacing  carriers  worst error            at  outside
  F.595
        1  tx        -         5   -400000 Hz  18000400 kHz        4
Outside the limits
  tx 1, F.595: 4 of 5 carriers, worst at 18000400 kHz: carrier off by -400000
      Hz, allowed are 500 Hz
5 carriers in 0.25 s: 4 not within limits.
)");
}

TEST_F(PlanAuditReportTest, TextOfOneFindingSaysWhere) {
    addRow(Direction::tx, 18'000'000, 250, 2);
    EXPECT_THAT(text(),
                HasSubstr("  tx 1, F.595: 1 of 2 carriers, at 18000250 kHz: carrier off by -250000 Hz"));
}

TEST_F(PlanAuditReportTest, TextOfACarrierThatIsNoneSaysSo) {
    addRow(Direction::rx, 18'000'000, 1000, 3, {500});
    EXPECT_THAT(text(), HasSubstr("        3   no carrier   -        3\n"));
    EXPECT_THAT(text(),
                HasSubstr("  rx 1, F.595, spacing 500: 3 of 3 carriers, first at 18000000 kHz: channel\n"
                          "      spacing 500 is not handled: nothing is written\n"));
}

TEST_F(PlanAuditReportTest, TextShowsTenFindingsAndCountsTheRest) {
    for (std::uint32_t row = 0; row < 12; ++row) {
        addRow(Direction::tx, 18'000'250 + 1000 * row, 1, 1);
    }
    const std::string lines = text();
    EXPECT_THAT(lines, HasSubstr("at 18009250 kHz: carrier off by -250000 Hz,\n"
                                 "      allowed are 500 Hz\n"
                                 "  and 2 more; --json and --csv have all\n"));
    EXPECT_THAT(lines, Not(HasSubstr("at 18010250 kHz: ")));
    EXPECT_THAT(lines, EndsWith("12 carriers in 0.25 s: 12 not within limits.\n"));
}

TEST_F(PlanAuditReportTest, EachRasterHasItsNameAboveItsRows) {
    m_board.name = "Radio with a name that nobody would want to have on the front of a box";
    addRow(Direction::tx, 18'000'000, 1000, 2);
    addRow(Direction::rx, 18'500'000, 1000, 1, {50, 100});
    m_board.rasters.back().name =
        "Recommendation ITU-R F.595, channels of 110 MHz, receiver in the upper half";
    EXPECT_EQ(text(), R"(Radio with a name that nobody would want to have on the front of a box
  (board.toml)
  channel      spacing  carriers  worst error  at  outside
  F.595
        1  tx        -         2         0 Hz   -        0
  Recommendation ITU-R F.595, channels of 110 MHz, receiver in the upper half
        1  rx       50         1         0 Hz   -        0
        1  rx      100         1         0 Hz   -        0
4 carriers in 0.25 s: all within limits.
)");
}

TEST_F(PlanAuditReportTest, CarrierMovedByDefaultSaysThatTheArrayHasNoEntry) {
    m_board = PlanBoards::microwave(FrequencyHandler::MicrowaveBoardHzCsOffset);
    addRow(Direction::rx, 18'000'250, 1, 1, {28000});
    EXPECT_THAT(text(),
                HasSubstr("  rx 1, F.595, spacing 28000: 1 of 1 carrier, at 18000250 kHz: carrier off by\n"
                          "      +3000000 Hz, allowed are 500 Hz: the array has no entry for channel\n"
                          "      spacing 28000, and by default the LO moves by +3 MHz\n"));
}

TEST_F(PlanAuditReportTest, TextOfAnInterruptedAuditSaysSo) {
    addRow(Direction::tx, 18'000'000, 1000, 2);
    EXPECT_THAT(reported<AuditText>({2, 0.25, 130}),
                EndsWith("Interrupted: not all carriers were audited.\n2 carriers in 0.25 s: all within "
                         "limits.\n"));
}

TEST_F(PlanAuditReportTest, TextOfAnAuditThatWasBrokenOffSaysSo) {
    addRow(Direction::tx, 18'000'000, 1000, 2);
    EXPECT_THAT(reported<AuditText>({0, 0.25, 1, true}),
                HasSubstr("Broken off: not all carriers were audited.\n2 carriers in 0.25 s: "));
}

TEST_F(PlanAuditReportTest, JsonHasFindingsRowsAndTheEnd) {
    addRow(Direction::rx, 18'000'000, 250, 2, {100});
    EXPECT_EQ(
        json(),
        R"({"schema":1,"event":"outside","file":"board.toml","channel":1,"direction":"rx","raster":"F.595",)"
        R"("channel_spacing":100,"khz":18000250,"kind":"carrier-off",)"
        R"("text":"carrier off by -250000 Hz, allowed are 500 Hz"}
{"schema":1,"event":"row","file":"board.toml","channel":1,"direction":"rx","raster":"F.595","channel_spacing":100,)"
        R"("first_khz":18000000,"step_khz":250,"carriers":2,"worst_error_hz":-250000,)"
        R"("worst_khz":18000250,"outside":1}
{"schema":1,"event":"audited","file":"board.toml","carriers":2,"outside":1,"seconds":0.25,"interrupted":false,)"
        R"("exit_code":1}
)");
}

TEST_F(PlanAuditReportTest, JsonOfARowWithoutCarriersHasNoError) {
    addRow(Direction::rx, 18'000'000, 1, 1, {500});
    EXPECT_THAT(json(), HasSubstr(R"("carriers":1,"worst_error_hz":null,"worst_khz":null,"outside":1})"));
}

TEST_F(PlanAuditReportTest, CsvHasTheWordsOfEveryCarrier) {
    addRow(Direction::tx, 18'000'000, 250, 2);
    addRow(Direction::rx, 18'000'000, 1, 1, {100, 500});
    EXPECT_EQ(csv(), "board,channel,direction,raster,channel_spacing,carrier_khz,dsp_offset_khz,if_pll_khz,"
                     "rf_pll,rf_pll_unit,charge_pump,mixer_i,mixer_q,passed_on_khz,produced_hz,error_hz,"
                     "findings\n"
                     "board.toml,1,tx,F.595,,18000000,,,9000000,kHz,100,7,-7,,18000000000,0,\n"
                     "board.toml,1,tx,F.595,,18000250,,,9000000,kHz,100,7,-7,,18000000000,-250000,"
                     "carrier-off\n"
                     "board.toml,1,rx,F.595,100,18000000,50000,,8975000,kHz,100,,,,18000000000,0,\n"
                     "board.toml,1,rx,F.595,500,18000000,,,,kHz,,,,,,,unhandled-spacing\n");
}

TEST_F(PlanAuditReportTest, CsvOfAnIfBoardHasItsIfPll) {
    m_board = PlanBoards::microwave(FrequencyHandler::MicrowaveBoardIf);
    addRow(Direction::rx, 18'000'250, 1, 1);
    EXPECT_THAT(csv(),
                EndsWith("board.toml,1,rx,F.595,,18000250,,140250,8930000,kHz,100,,,,18000250000,0,\n"));
}

TEST_F(PlanAuditReportTest, CsvOfALoInHzHasItsUnit) {
    m_board = PlanBoards::microwave(FrequencyHandler::MicrowaveBoardHz);
    addRow(Direction::rx, 18'000'250, 1, 1);
    EXPECT_THAT(csv(), EndsWith("board.toml,1,rx,F.595,,18000250,,,9000125000,Hz,100,,,,18000250000,0,\n"));
}

TEST_F(PlanAuditReportTest, CsvOfAnRfModuleHasWhatItPassesOn) {
    m_board = PlanBoards::rfModule();
    addRow(Direction::tx, 7'442'000, 1, 1);
    EXPECT_THAT(csv(), EndsWith("board.toml,1,tx,F.595,,7442000,,,,,,,,7442000,7442000000,0,\n"));
}

TEST_F(PlanAuditReportTest, CsvPutsAwkwardNamesInQuotes) {
    m_board = PlanBoards::rfModule();
    m_board.file = "my \"new\", board.toml";
    addRow(Direction::tx, 7'442'000, 1, 1);
    EXPECT_THAT(csv(), HasSubstr("\n\"my \"\"new\"\", board.toml\",1,tx,F.595,,7442000,"));
}

TEST_F(PlanAuditReportTest, CsvHasNoFormulas) {
    m_board = PlanBoards::rfModule();
    for (const char* const name : {"=1+1", "+1", "-1", "@SUM(A1)"}) {
        m_board.file = name;
        addRow(Direction::tx, 7'442'000, 1, 1);
        EXPECT_THAT(csv(), HasSubstr("\n'" + std::string(name) + ",1,tx,F.595,,7442000,"));
    }
}

TEST_F(PlanAuditReportTest, CsvHasNothingThatATerminalObeys) {
    m_board = PlanBoards::rfModule();
    m_board.file = "\x1b[31m\t=1.toml";
    addRow(Direction::tx, 7'442'000, 1, 1);
    EXPECT_THAT(csv(), HasSubstr("\n\\x1b[31m\\x09=1.toml,1,tx,F.595,,7442000,"));
}

TEST_F(PlanAuditReportTest, SeveralFindingsOfACarrierArePartedBySemicolons) {
    m_board.limits.rfPll = Range{1, 2};
    addRow(Direction::tx, 18'000'250, 1, 1);
    EXPECT_THAT(csv(), EndsWith(",-250000,rf-pll-out-of-range;carrier-off\n"));
}

} // namespace
} // namespace Radio::Plan
