#include "radioctl/tables/DiffReport.h"
#include "tests/radio/support/FileFixture.h"
#include "tests/radio/support/PlanBoards.h"

#include <gmock/gmock.h>

#include <sstream>

namespace Radio::Tables {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class TablesDiffTest : public FileFixture {
protected:
    /** Compares the rows of two files that both say channel 1. */
    static Difference compared(const std::string& before, const std::string& after,
                               const Board* model = nullptr) {
        write("a.csv", "# channel: 1\nf,t,i,q\n" + before);
        write("b.csv", "# channel: 1\nf,t,i,q\n" + after);
        return compare(readSource("a.csv"), readSource("b.csv"), model, std::nullopt);
    }
    static Difference comparedFiles(std::optional<int> channel = std::nullopt) {
        return compare(readSource("a.csv"), readSource("b.csv"), nullptr, channel);
    }
    /** A source of these channels, whose tables have one node of this value for both I and Q. */
    static Source source(const std::string& file, const std::vector<std::optional<int>>& channels,
                         std::int32_t value) {
        Source source{file, {}, {}};
        for (const std::optional<int> channel : channels) {
            source.channels.push_back({channel, {"", {1}, {1}, {value}}, {"", {1}, {1}, {value}}});
        }
        return source;
    }
    /** The LO leaks with 1/20 of the amplitude in phase with I: I = -500 takes it away. */
    static Board leaking() {
        Board board = PlanBoards::microwave(::FrequencyHandler::MicrowaveBoardHz);
        board.leakages = {PlanBoards::leakage(-26.0206, 1e-4)};
        return board;
    }
    /** A table for carriers 1 to `carriers` kHz, at temperatures from 1 to `temperatures`, of the value 0. */
    static CalibrationTable table(std::int32_t carriers, std::int32_t temperatures) {
        CalibrationTable table;
        for (std::int32_t carrier = 1; carrier <= carriers; ++carrier) {
            table.axis1.push_back(carrier);
        }
        for (std::int32_t degrees = 1; degrees <= temperatures; ++degrees) {
            table.axis2.push_back(degrees);
        }
        table.values.resize(table.axis1.size() * table.axis2.size());
        return table;
    }
    /** Compares a table of these carriers and one temperature with one of a carrier and these temperatures.
     */
    static Difference compareCrossed(std::int32_t carriers, std::int32_t temperatures) {
        const CalibrationTable before = table(carriers, 1);
        const CalibrationTable after = table(1, temperatures);
        return compare({"a.csv", {{1, before, before}}, {}}, {"b.csv", {{1, after, after}}, {}}, nullptr,
                       std::nullopt);
    }
    static std::string textOf(const Difference& difference, bool all = false) {
        std::ostringstream out;
        writeText(out, difference, "a.csv", "b.csv", all);
        return out.str();
    }
};

TEST_F(TablesDiffTest, EqualTablesDoNotDiffer) {
    const Difference difference = compared("1,25,7,8\n", "1,25,7,8\n");
    EXPECT_FALSE(difference.isThere());
    EXPECT_EQ(difference.channels.front().moved(), 0U);
    EXPECT_FALSE(difference.channels.front().axesDiffer);
}

TEST_F(TablesDiffTest, MoveIsTheDistanceOfBothCorrections) {
    const Difference difference = compared("1,25,10,-1\n", "1,25,13,3\n");
    EXPECT_TRUE(difference.isThere());
    EXPECT_EQ(difference.channels.front().nodes.front().move(), 5.0);
}

TEST_F(TablesDiffTest, OtherNodesAreComparedByWhatTheTablesGiveThere) {
    const Difference difference = compared("100,25,0,0\n300,25,200,-20\n", //
                                           "100,25,0,0\n200,25,100,-10\n300,25,200,-20\n");
    EXPECT_FALSE(difference.isThere());
    EXPECT_TRUE(difference.channels.front().axesDiffer);
    EXPECT_EQ(difference.channels.front().nodes.size(), 3U);
}

TEST_F(TablesDiffTest, AxesOfOneBranchAloneMayDiffer) {
    Source before = source("a", {1}, 5);
    before.channels.front().q = {"", {1, 2}, {1}, {5, 5}};
    EXPECT_TRUE(compare(before, source("b", {1}, 5), nullptr, {}).channels.front().axesDiffer);
    before.channels.front().q = {"", {1}, {1, 2}, {5, 5}};
    EXPECT_TRUE(compare(before, source("b", {1}, 5), nullptr, {}).channels.front().axesDiffer);
    EXPECT_EQ(compare(before, source("b", {1}, 5), nullptr, {}).channels.front().nodes.size(), 2U);
}

TEST_F(TablesDiffTest, OutsideATableItsOutermostNodeCounts) {
    const ChannelDifference channel = compared("100,25,7,0\n", "100,25,7,0\n100,55,9,0\n").channels.front();
    ASSERT_EQ(channel.nodes.size(), 2U);
    EXPECT_EQ(channel.nodes[1].temperature, 55);
    EXPECT_EQ(channel.nodes[1].before.i, 7);
    EXPECT_EQ(channel.nodes[1].after.i, 9);
}

TEST_F(TablesDiffTest, LeakageIsModelledWithBoth) {
    const Board board = leaking();
    const NodeDifference node =
        compared("18000000,25,-400,0\n", "18000000,25,-450,0\n", &board).channels.front().nodes.front();
    EXPECT_NEAR(node.levelBefore.value(), -40.0, 0.01);
    EXPECT_NEAR(node.levelAfter.value(), -46.02, 0.01);
    EXPECT_EQ(node.worsening(), 0.0);
}

TEST_F(TablesDiffTest, RisingLeakageIsAWorsening) {
    const Board board = leaking();
    const NodeDifference node =
        compared("18000000,25,-450,0\n", "18000000,25,-400,0\n", &board).channels.front().nodes.front();
    EXPECT_NEAR(node.worsening(), 6.02, 0.01);
}

TEST_F(TablesDiffTest, WithoutAModelThereAreNoLevels) {
    EXPECT_FALSE(compared("1,25,7,8\n", "1,25,7,9\n").channels.front().nodes.front().levelAfter.has_value());
}

TEST_F(TablesDiffTest, ChannelsAreComparedOneByOne) {
    const Difference difference =
        compare(source("a", {1, 2}, 5), source("b", {2, 1}, 5), nullptr, std::nullopt);
    ASSERT_EQ(difference.channels.size(), 2U);
    EXPECT_EQ(difference.channels[0].channel, 1);
    EXPECT_EQ(difference.channels[1].channel, 2);
}

TEST_F(TablesDiffTest, OneChannelCanBeAskedFor) {
    const Difference difference = compare(source("a", {1, 2}, 5), source("b", {1, 2}, 5), nullptr, 2);
    ASSERT_EQ(difference.channels.size(), 1U);
    EXPECT_EQ(difference.channels[0].channel, 2);
}

TEST_F(TablesDiffTest, ChannelThatOnlyOneHasIsADifference) {
    const Difference difference =
        compare(source("a", {1, 2}, 5), source("b", {1, 3}, 5), nullptr, std::nullopt);
    EXPECT_THAT(difference.onlyBefore, ElementsAre(2));
    EXPECT_THAT(difference.onlyAfter, ElementsAre(3));
    EXPECT_TRUE(difference.isThere());
}

TEST_F(TablesDiffTest, FileWithoutAChannelGoesWithTheOnlyOne) {
    const Difference difference = compare(source("a", {{}}, 5), source("b", {4}, 5), nullptr, std::nullopt);
    EXPECT_EQ(difference.channels.front().channel, 4);
}

TEST_F(TablesDiffTest, ChannelOfFilesThatDoNotSayItIsTheOneThatIsAskedFor) {
    const Source unsaid = source("a", {{}}, 5);
    EXPECT_EQ(compare(unsaid, unsaid, nullptr, std::nullopt).channels.front().channel, std::nullopt);
    EXPECT_EQ(compare(unsaid, unsaid, nullptr, 3).channels.front().channel, 3);
}

TEST_F(TablesDiffTest, LeakageIsThatOfTheChannelThatIsAskedFor) {
    const Board board = leaking();
    const Source unsaid = source("a", {{}}, 5);
    const auto levelFor = [&](int channel) {
        return compare(unsaid, unsaid, &board, channel).channels.front().nodes.front().levelAfter;
    };
    EXPECT_TRUE(levelFor(1).has_value());
    EXPECT_FALSE(levelFor(2).has_value());
}

TEST_F(TablesDiffTest, FileWithoutAChannelDoesNotGoWithSeveral) {
    EXPECT_EQ(refusal([] {
                  compare(source("a", {{}}, 5), source("b", {1, 2}, 5), nullptr, std::nullopt);
              }),
              "a: no line \"# channel: ...\", expected it");
    EXPECT_EQ(compare(source("a", {{}}, 5), source("b", {1, 2}, 5), nullptr, 2).channels.front().channel, 2);
}

TEST_F(TablesDiffTest, NoChannelInCommonIsRefused) {
    EXPECT_EQ(refusal([] { compare(source("a", {1}, 5), source("b", {2}, 5), nullptr, std::nullopt); }),
              "b: no channel in common with a; that has channel 1, this 2");
    EXPECT_EQ(refusal([] { compare(source("a", {1}, 5), source("b", {1}, 5), nullptr, 3); }),
              "b: no channel 3 in common with a; that has channel 1, this 1");
}

TEST_F(TablesDiffTest, FileNeedsBothBranches) {
    write("a.csv", "f,t,i\n1,25,7\n");
    EXPECT_EQ(refusal([] { readSource("a.csv"); }), "a.csv:1: no column \"q\"; there are: f, t, i");
}

TEST_F(TablesDiffTest, BoardNeedsAChannelWithBothTables) {
    write("a.toml", "name = \"R\"\n[[channel]]\nnumber = 1\ntype = 1\n");
    EXPECT_EQ(refusal([] { readSource("a.toml"); }),
              "a.toml: no channel has LO-cancellation tables for both I and Q, with two axes");
}

TEST_F(TablesDiffTest, BadChannelIsRefused) {
    write("a.csv", "# channel: one\nf,t,i,q\n1,25,7,8\n");
    EXPECT_EQ(refusal([] { readSource("a.csv"); }),
              "a.csv:1: channel: \"one\", expected a whole number from 0 to 2147483647");
}

TEST_F(TablesDiffTest, AxesWithNothingInCommonAreRefusedBeforeTheyFillTheMemory) {
    EXPECT_EQ(
        refusal([] { compareCrossed(1001, 1000); }),
        "b.csv: more than a million nodes together with the other tables, expected axes that have more in "
        "common with theirs");
}

TEST_F(TablesDiffTest, AMillionNodesAreCompared) {
    EXPECT_EQ(compareCrossed(1000, 1000).channels.front().nodes.size(), 1'000'000U);
}

TEST_F(TablesDiffTest, SummaryComesFirst) {
    const Board board = leaking();
    EXPECT_EQ(textOf(compared("18000000,0,-400,5\n18000000,25,-450,0\n",
                              "18000000,0,-450,0\n18000000,25,-440,0\n", &board)),
              "a.csv -> b.csv\n"
              "\n"
              "channel 1: 2 nodes compared, 2 moved\n"
              "  largest move in I     50          18000000 kHz at 0 degrees\n"
              "  largest move in Q     5           18000000 kHz at 0 degrees\n"
              "  worst leakage before  -39.99 dBc  18000000 kHz at 0 degrees\n"
              "  worst leakage after   -44.44 dBc  18000000 kHz at 25 degrees\n"
              "  got worse             1 node      most by 1.58 dB, 18000000 kHz at 25 degrees\n"
              "\n"
              "       kHz  degrees             I       Q  move    leakage in dBc\n"
              "  18000000        0  -400 -> -450  5 -> 0  50.2  -39.99 -> -46.02\n"
              "  18000000       25  -450 -> -440  0 -> 0  10.0  -46.02 -> -44.44\n");
}

TEST_F(TablesDiffTest, EqualTablesAreToldInOneLine) {
    EXPECT_EQ(textOf(compared("1,25,7,8\n", "1,25,7,8\n")),
              "a.csv -> b.csv\n\nchannel 1: 1 node compared, 0 moved\n");
}

TEST_F(TablesDiffTest, TenNodesAreShownUnlessAllAreWanted) {
    std::string before;
    std::string after;
    for (int node = 1; node <= 12; ++node) {
        before += std::to_string(node) + ",25,0,0\n";
        after += std::to_string(node) + ",25," + std::to_string(node) + ",0\n";
    }
    const Difference difference = compared(before, after);
    EXPECT_THAT(textOf(difference), HasSubstr("\n  and 2 more; --all shows them\n"));
    EXPECT_THAT(textOf(difference), Not(HasSubstr("0 -> 2 ")));
    EXPECT_THAT(textOf(difference, true), HasSubstr("0 -> 2 "));
    EXPECT_THAT(textOf(difference, true), Not(HasSubstr("more;")));
}

TEST_F(TablesDiffTest, JsonHasEveryNodeThatMoved) {
    std::ostringstream out;
    writeJson(out, compared("1,25,10,-1\n2,25,0,0\n", "1,25,13,3\n2,25,0,0\n"), "a.csv", "b.csv");
    EXPECT_EQ(
        out.str(),
        R"({"schema":1,"event":"moved","channel":1,"khz":1,"degrees":25,"i_before":10,"i_after":13,"q_before":-1,)"
        R"("q_after":3,"move":5.0,"dbc_before":null,"dbc_after":null})"
        "\n"
        R"({"schema":1,"event":"channel","channel":1,"nodes":2,"moved":1,"axes_differ":false,"largest_i":3,)"
        R"("largest_q":4,"worst_dbc_before":null,"worst_dbc_after":null,"got_worse":null})"
        "\n"
        R"({"schema":1,"event":"compared","before":"a.csv","after":"b.csv","only_before":[],"only_after":[],)"
        R"("different":true})"
        "\n");
}

} // namespace
} // namespace Radio::Tables
