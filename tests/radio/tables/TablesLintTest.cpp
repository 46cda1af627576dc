#include "radio/board/BoardFile.h"
#include "radio/tables/Lint.h"
#include "tests/radio/support/BoardFileFixture.h"
#include "tests/radio/support/PlanBoards.h"

#include <gmock/gmock.h>

#include <limits>

namespace Radio::Tables {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> textsOf(const std::vector<Finding>& findings) {
    std::vector<std::string> texts;
    for (const Finding& finding : findings) {
        texts.push_back(toString(finding.place) + ": " + std::string(toString(finding.severity)) + ": " +
                        finding.text);
    }
    return texts;
}

/** Tables in a CSV file. */
class TablesLintTest : public BoardFileFixture {
protected:
    static std::vector<std::string> lint(const std::string& text) {
        write("x.csv", text);
        return textsOf(lintCsv({"x.csv", "a table"}));
    }
    /**
     * A table without a fault, but for one node: I is carrier + degrees, Q its negative; 100 to 500 kHz, and
     * for each degree 0, 10 and 20 five lines, from line 2 on.
     */
    static std::vector<std::string> lintWith(int carrier, int temperature, int i, int shift = 0) {
        std::string text = "frequency_khz,temperature_c,i,q\n";
        for (const int t : {0, 10, 20}) {
            for (const int f : {100, 200, 300, 400, 500}) {
                const int value = f == carrier && t == temperature ? i : f + t + shift;
                text += std::to_string(f) + "," + std::to_string(t) + "," + std::to_string(value) + "," +
                        std::to_string(-f - t) + "\n";
            }
        }
        return lint(text);
    }
    /** A table without a fault, 0 everywhere, but for spikes at every eighth node of I. */
    static std::vector<std::string> lintSpikes(int count) {
        std::vector<int> values(8U * static_cast<unsigned>(count), 0);
        for (std::size_t node = 4; node < values.size(); node += 8) {
            values[node] = 100;
        }
        return lintRow(values);
    }
    /** A table of one temperature, with nodes each kHz. */
    static std::vector<std::string> lintRow(const std::vector<int>& values) {
        std::string text = "f,t,i,q\n";
        int f = 0;
        for (const int value : values) {
            text += std::to_string(++f) + ",25," + std::to_string(value) + ",0\n";
        }
        return lint(text);
    }
};

TEST_F(TablesLintTest, SmoothTableIsGood) {
    EXPECT_THAT(lintWith(300, 10, 310), IsEmpty());
}

TEST_F(TablesLintTest, OutlierIsNamedWithWhatItsNeighboursSuggest) {
    EXPECT_THAT(
        lintWith(300, 10, 999),
        ElementsAre("x.csv:9: warning: i: 300 kHz at 10 degrees: 999 does not go with its neighbours, which "
                    "suggest 310; usually they are off by 0"));
}

TEST_F(TablesLintTest, FewUnitsAreNoOutlier) {
    EXPECT_THAT(lintWith(300, 10, 315), IsEmpty());
    EXPECT_EQ(lintWith(300, 10, 316).size(), 1U);
}

TEST_F(TablesLintTest, CornerMayBeTheOutlier) {
    EXPECT_THAT(
        lintWith(100, 0, 180),
        ElementsAre("x.csv:2: warning: i: 100 kHz at 0 degrees: 180 does not go with its neighbours, which "
                    "suggest 100; usually they are off by 0"));
}

TEST_F(TablesLintTest, OutlierBesideACornerDoesNotMakeTheCornerOne) {
    EXPECT_THAT(
        lintWith(200, 0, 280),
        ElementsAre("x.csv:3: warning: i: 200 kHz at 0 degrees: 280 does not go with its neighbours, which "
                    "suggest 200; usually they are off by 0"));
}

/** 4 and 5 would be right; each is first guessed from the other, which is wrong. */
TEST_F(TablesLintTest, WrongNodesBesideEachOtherAreNamedOnceEach) {
    const std::vector<std::string> findings = lintRow({0, 1, 2, 3, 300, 800, 6, 7, 8, 9});
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_THAT(findings[0], HasSubstr("x.csv:6: warning: i: 5 kHz at 25 degrees: 300 does not go with"));
    EXPECT_THAT(findings[1], HasSubstr("x.csv:7: warning: i: 6 kHz at 25 degrees: 800 does not go with"));
}

TEST_F(TablesLintTest, WhatIsUsualInARoughTableIsNoOutlier) {
    EXPECT_THAT(lintRow({0, 20, 0, 100, 0, 20, 0, 20, 0, 20}), IsEmpty());
    EXPECT_THAT(
        lintRow({0, 20, 0, 300, 0, 20, 0, 20, 0, 20}),
        ElementsAre("x.csv:5: warning: i: 4 kHz at 25 degrees: 300 does not go with its neighbours, which "
                    "suggest 0; usually they are off by 20"));
}

TEST_F(TablesLintTest, OfCarriersThatAreFarApartTheNearerCountsMore) {
    EXPECT_THAT(
        lint("f,t,i,q\n100,25,100,0\n200,25,200,0\n300,25,300,0\n400,25,999,0\n700,25,700,0\n"
             "800,25,800,0\n900,25,900,0\n1000,25,1000,0\n"),
        ElementsAre("x.csv:5: warning: i: 400 kHz at 25 degrees: 999 does not go with its neighbours, "
                    "which suggest 400; usually they are off by 0"));
}

TEST_F(TablesLintTest, OfTemperaturesThatAreFarApartTheNearerCountsMore) {
    EXPECT_THAT(lint("f,t,i,q\n1,10,100,0\n1,20,200,0\n1,30,300,0\n1,40,999,0\n1,70,700,0\n"
                     "1,80,800,0\n1,90,900,0\n1,100,1000,0\n"),
                ElementsAre("x.csv:5: warning: i: 1 kHz at 40 degrees: 999 does not go with its neighbours, "
                            "which suggest 400; usually they are off by 0"));
}

TEST_F(TablesLintTest, TwentyOutliersAreNamed) {
    EXPECT_EQ(lintSpikes(20).size(), 20U);
    EXPECT_THAT(lintSpikes(20), Each(HasSubstr("100 does not go with its neighbours")));
}

TEST_F(TablesLintTest, MoreThanTwentyOutliersSaySomethingOfTheTable) {
    const std::vector<std::string> findings = lintSpikes(21);
    EXPECT_EQ(findings.size(), 21U);
    EXPECT_EQ(findings.front(), "x.csv:1: warning: i: more nodes that do not go with their neighbours; the "
                                "table as a whole is rough");
}

TEST_F(TablesLintTest, SingleNodeTellsNothing) {
    EXPECT_THAT(lintRow({400}), IsEmpty());
}

TEST_F(TablesLintTest, LostSignIsFound) {
    EXPECT_THAT(lintWith(300, 10, -310),
                ElementsAre("x.csv:9: warning: i: 300 kHz at 10 degrees: -310 has another sign than all its "
                            "neighbours, which suggest 310"));
}

TEST_F(TablesLintTest, TableThatCrossesZeroIsGood) {
    EXPECT_THAT(lintWith(300, 10, 0, -310), IsEmpty());
}

TEST_F(TablesLintTest, EitherAxisMayRunFastest) {
    EXPECT_THAT(lint("f,t,i,q\n1,1,0,0\n1,2,0,0\n2,1,0,0\n2,2,0,0\n"), IsEmpty());
    EXPECT_THAT(lint("f,t,i,q\n1,1,0,0\n2,1,0,0\n1,2,0,0\n2,2,0,0\n"), IsEmpty());
}

TEST_F(TablesLintTest, RowsOutOfOrderAreAWarning) {
    EXPECT_THAT(lint("f,t,i,q\n1,1,0,0\n3,1,0,0\n2,1,0,0\n"),
                ElementsAre("x.csv:4: warning: 2 kHz at 1 degrees: the rows are not in ascending order"));
}

TEST_F(TablesLintTest, DoubleNodeIsAnError) {
    EXPECT_THAT(lint("f,t,i,q\n1,1,0,0\n2,1,0,0\n2,1,5,0\n"),
                ElementsAre("x.csv:4: error: f 2, t 1 stands on line 3 already, expected each pair once"));
}

TEST_F(TablesLintTest, MissingNodeIsAnError) {
    EXPECT_THAT(
        lint("f,t,i,q\n1,1,0,0\n1,2,0,0\n2,2,0,0\n"),
        ElementsAre("x.csv:4: error: no row for f 2, t 1, expected one for each pair of the values of "
                    "the two columns"));
}

TEST_F(TablesLintTest, WideGapIsAWarning) {
    EXPECT_THAT(lint("f,t,i,q\n100,1,0,0\n200,1,0,0\n300,1,0,0\n601,1,0,0\n"),
                ElementsAre("x.csv:1: warning: 301 kHz without a node, from 300 to 601; usual are 100"));
    EXPECT_THAT(lint("f,t,i,q\n100,1,0,0\n200,1,0,0\n300,1,0,0\n600,1,0,0\n"), IsEmpty());
}

TEST_F(TablesLintTest, PointAtTheEdgeOfItsSearchIsAWarning) {
    EXPECT_THAT(
        lint("f,t,i,q,state\n1,1,0,0,good\n2,1,0,0,edge\n"),
        ElementsAre("x.csv:3: warning: 2 kHz at 1 degrees: the search ended at the edge of its range; "
                    "the best corrections may lie beyond"));
}

TEST_F(TablesLintTest, PointThatFailedIsAnError) {
    EXPECT_THAT(
        lint("f,t,i,q,state\n1,1,0,0,failed\n"),
        ElementsAre("x.csv:2: error: 1 kHz at 1 degrees: the search failed; there are no corrections"));
}

TEST_F(TablesLintTest, OneBranchWithoutTheOtherIsAWarning) {
    EXPECT_THAT(lint("f,t,i\n1,1,0\n"), ElementsAre("x.csv:1: warning: a column \"i\", but none \"q\""));
    EXPECT_THAT(lint("f,t,q\n1,1,0\n"), ElementsAre("x.csv:1: warning: a column \"q\", but none \"i\""));
}

TEST_F(TablesLintTest, FileWithoutCorrectionsIsRefused) {
    EXPECT_EQ(refusal([] { lint("f,t,x\n1,1,0\n"); }),
              "x.csv:1: no column \"i\" and none \"q\", expected corrections");
}

TEST_F(TablesLintTest, FindingsComeInTheOrderOfTheirLines) {
    EXPECT_THAT(lint("f,t,i,state\n1,1,0,edge\n1,1,0,good\n"),
                ElementsAre(testing::StartsWith("x.csv:1:"), testing::StartsWith("x.csv:2:"),
                            testing::StartsWith("x.csv:3:")));
}

/** Tables in a board, for 18.0 and 18.1 GHz, at 0 and 50 degrees. */
class BoardTablesLintTest : public BoardFileFixture {
protected:
    BoardTablesLintTest() {
        PlanBoards::remove(m_board, name("I"));
        PlanBoards::remove(m_board, name("Q"));
        add("I", {18'000'000, 18'100'000}, {0, 50}, {400, 410, 420, 430}, 60);
        add("Q", {18'000'000, 18'100'000}, {0, 50}, {-40, -30, -20, -10}, 70);
    }
    static std::string name(const std::string& branch) {
        return "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer." + branch;
    }
    void add(const std::string& branch, std::vector<std::int32_t> axis1, std::vector<std::int32_t> axis2,
             std::vector<std::int32_t> values, unsigned line) {
        m_board.tables.push_back(
            {{name(branch), std::move(axis1), std::move(axis2), std::move(values)}, {"board.toml", line}});
    }
    TableDescription& table(const std::string& branch) {
        return *std::find_if(m_board.tables.begin(), m_board.tables.end(),
                             [&](const auto& entry) { return entry.table.name == name(branch); });
    }
    void addRaster(bool transmit, std::uint32_t first, std::uint32_t step, std::uint32_t count) {
        m_board.rasters.push_back({"raster", {1}, {{transmit, first, step, count}}, {}, {}});
    }
    void addLeakage(std::int32_t step, std::int32_t low, std::int32_t high) {
        LeakageDescription leakage = PlanBoards::leakage(-20.0, 1e-4);
        leakage.i.step = step;
        leakage.i.low = low;
        leakage.i.high = high;
        m_board.leakages.push_back(leakage);
    }
    std::vector<std::string> lint() const { return textsOf(lintBoard(m_board)); }

    Board m_board = PlanBoards::microwave(::FrequencyHandler::MicrowaveBoardHz);
};

TEST_F(BoardTablesLintTest, GoodTablesHaveNoFindings) {
    addRaster(true, 18'000'000, 50'000, 3);
    m_board.limits.temperature = Range{0, 50};
    addLeakage(10, -1000, 1000);
    EXPECT_THAT(lint(), IsEmpty());
}

TEST_F(BoardTablesLintTest, BandBeyondTheCarriersIsAWarning) {
    addRaster(true, 17'950'000, 100'000, 3);
    EXPECT_THAT(lint(),
                ElementsAre("board.toml:60: warning: channel 1: carriers begin at 18000000 kHz, the rasters "
                            "go down to 17950000: for the 50000 between, the outermost node holds",
                            "board.toml:60: warning: channel 1: carriers end at 18100000 kHz, the rasters "
                            "go up to 18150000: for the 50000 between, the outermost node holds"));
}

TEST_F(BoardTablesLintTest, BandIsThatOfAllRasters) {
    addRaster(true, 18'090'000, 10'000, 3);
    addRaster(true, 17'990'000, 10'000, 5);
    addRaster(true, 18'050'000, 10'000, 1);
    EXPECT_THAT(lint(), ElementsAre(HasSubstr("the rasters go down to 17990000:"),
                                    HasSubstr("the rasters go up to 18110000:")));
}

TEST_F(BoardTablesLintTest, CarriersToReceiveNeedNoCorrection) {
    addRaster(false, 17'000'000, 100'000, 30);
    EXPECT_THAT(lint(), IsEmpty());
}

TEST_F(BoardTablesLintTest, RastersOfOtherChannelsDoNotCount) {
    addRaster(true, 17'000'000, 100'000, 30);
    m_board.rasters.front().channels = {2};
    EXPECT_THAT(lint(), IsEmpty());
}

TEST_F(BoardTablesLintTest, LimitsBeyondTheTemperaturesAreAWarning) {
    m_board.limits.temperature = Range{-33, 50};
    EXPECT_THAT(lint(),
                ElementsAre("board.toml:60: warning: channel 1: temperatures begin at 0 degrees, the limits "
                            "go down to -33: for the 33 between, the outermost node holds"));
}

TEST_F(BoardTablesLintTest, DifferentAxesAreAWarning) {
    table("Q").table.axis2 = {0, 55};
    EXPECT_THAT(lint(),
                ElementsAre("board.toml:70: warning: channel 1: the tables for I and Q have different axes"));
}

TEST_F(BoardTablesLintTest, ValueBeyondTheConverterIsAWarning) {
    addLeakage(1, -425, 425);
    EXPECT_THAT(lint(),
                ElementsAre("board.toml:60: warning: channel 1, I: 18100000 kHz at 50 degrees: 430 is "
                            "beyond the DAC's range, -425 to 425, and is cut off"));
}

TEST_F(BoardTablesLintTest, ValueAtTheEndOfTheConverterIsAWarning) {
    addLeakage(1, -430, 430);
    EXPECT_THAT(lint(),
                ElementsAre("board.toml:60: warning: channel 1, I: 18100000 kHz at 50 degrees: 430 is at "
                            "the end of the DAC's range, -430 to 430: more may be needed"));
}

TEST_F(BoardTablesLintTest, ValueAtTheLowEndOfTheConverterIsAWarning) {
    addLeakage(1, 400, 1000);
    EXPECT_THAT(lint(),
                ElementsAre("board.toml:60: warning: channel 1, I: 18000000 kHz at 0 degrees: 400 is at the "
                            "end of the DAC's range, 400 to 1000: more may be needed"));
}

TEST_F(BoardTablesLintTest, StepsOfTheConverterCountFromItsLowest) {
    addLeakage(20, -990, 1000);
    EXPECT_THAT(
        lint(),
        ElementsAre("board.toml:60: warning: channel 1, I: 18000000 kHz at 0 degrees: 400 is no value "
                    "of the DAC, which goes from -990 in steps of 20; so it is at 1 other node"));
}

TEST_F(BoardTablesLintTest, ValuesBetweenThoseOfTheConverterAreOneWarning) {
    addLeakage(20, -1000, 1000);
    EXPECT_THAT(lint(),
                ElementsAre("board.toml:60: warning: channel 1, I: 18000000 kHz at 50 degrees: 410 is no "
                            "value of the DAC, which goes from -1000 in steps of 20; so it is at 1 other "
                            "node"));
}

TEST_F(BoardTablesLintTest, ConverterOverTheWholeRangeOfIntegers) {
    using Limits = std::numeric_limits<std::int32_t>;
    addLeakage(2, Limits::min(), Limits::max());
    EXPECT_THAT(lint(), IsEmpty());
}

TEST_F(BoardTablesLintTest, OneBranchWithoutTheOtherIsAWarning) {
    PlanBoards::remove(m_board, name("Q"));
    EXPECT_THAT(lint(), ElementsAre("board.toml:60: warning: channel 1: a table for I, but none for Q"));
}

TEST_F(BoardTablesLintTest, TableWhoseFileIsNotThereIsAWarning) {
    table("Q") = {{name("Q"), {}, {}, {}}, {"board.toml", 70}, "x.csv", "q"};
    EXPECT_THAT(lint(), ElementsAre("board.toml:70: warning: channel 1, Q: there is no file \"x.csv\" yet"));
}

TEST_F(BoardTablesLintTest, OneAxisIsAnError) {
    table("I").table = {name("I"), {18'000'000}, {}, {400}};
    EXPECT_THAT(lint(), ElementsAre("board.toml:60: error: channel 1, I: one axis, expected two"));
}

TEST_F(BoardTablesLintTest, SwappedAxesAreAnError) {
    addRaster(true, 17'950'000, 100'000, 3);
    for (const std::string branch : {"I", "Q"}) {
        table(branch).table.axis1 = {-33, 55};
        table(branch).table.axis2 = {18'000'000, 18'100'000};
    }
    EXPECT_THAT(lint(),
                ElementsAre("board.toml:60: error: channel 1: the axes are swapped: the first goes from -33 "
                            "to 55 and the second from 18000000 to 18100000, expected carriers in kHz and "
                            "then degrees"));
}

TEST_F(BoardTablesLintTest, EdgesAreNamedWhereTheyStandInTheFile) {
    write("x.csv", "f,t,i,q,state\n18000000,0,400,-40,edge\n");
    for (const std::string branch : {"I", "Q"}) {
        table(branch).file = "x.csv";
    }
    EXPECT_THAT(lint(),
                ElementsAre("x.csv:2: warning: 18000000 kHz at 0 degrees: the search ended at the edge of "
                            "its range; the best corrections may lie beyond"));
}

TEST_F(BoardTablesLintTest, TablesOfAnotherRadioOrChannelAreAWarning) {
    write("x.csv", "# serial: T-2\n# channel: 2\nf,t,i,q\n18000000,0,400,-40\n");
    for (const std::string branch : {"I", "Q"}) {
        table(branch).file = "x.csv";
        table(branch).origins = {{"serial", "T-2", {"x.csv", 1}}, {"channel", "2", {"x.csv", 2}}};
    }
    m_board.serial = "T-1";
    EXPECT_THAT(lint(), ElementsAre("x.csv:1: warning: serial \"T-2\", but it is used for serial \"T-1\"",
                                    "x.csv:2: warning: channel \"2\", but it is used for channel \"1\""));
}

TEST_F(BoardTablesLintTest, TablesOfTheSameRadioAndChannelAreGood) {
    write("x.csv", "# serial: T-1\n# channel: 1\nf,t,i,q\n18000000,0,400,-40\n");
    for (const std::string branch : {"I", "Q"}) {
        table(branch).file = "x.csv";
        table(branch).origins = {{"serial", "T-1", {"x.csv", 1}}, {"channel", "1", {"x.csv", 2}}};
    }
    EXPECT_THAT(lint(), IsEmpty()); // a board without a serial number takes any
    m_board.serial = "T-1";
    EXPECT_THAT(lint(), IsEmpty());
}

TEST_F(BoardTablesLintTest, BoardWithoutTablesIsRefused) {
    m_board.tables.clear();
    EXPECT_EQ(refusal([this] { lint(); }),
              "board.toml: no LO-cancellation tables, expected some such as "
              "\"Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I\"");
}

TEST(SuppliedTables, AreGood) {
    EXPECT_THAT(textsOf(lintBoard(loadBoard(RADIO_BOARDS "/lo-leakage-18ghz.toml"))), IsEmpty());
}

} // namespace
} // namespace Radio::Tables
