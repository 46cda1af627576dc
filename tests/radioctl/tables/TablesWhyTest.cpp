#include "radioctl/tables/WhyReport.h"
#include "standalone/Interpolation.h"
#include "tests/radio/support/PlanBoards.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <sstream>

namespace Radio::Tables {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

// A value in a table

const CalibrationTable positive{"", {100, 300}, {0, 10}, {10, 20, 30, 50}};
const CalibrationTable negative{"", {100, 300}, {0, 10}, {-10, -20, -30, -50}};

std::string exactAt(const CalibrationTable& table, std::int32_t x1, std::int32_t x2) {
    return toString(lookUp(table, x1, x2).value);
}

TEST(TablesLookup, BetweenFourNodes) {
    EXPECT_EQ(exactAt(positive, 150, 4), "20");
    EXPECT_EQ(exactAt(positive, 150, 5), "21 + 1/4");
    EXPECT_EQ(exactAt(negative, 150, 5), "-(21 + 1/4)");
}

TEST(TablesLookup, NodesHaveTheirWeights) {
    const Lookup lookup = lookUp(positive, 150, 4);
    ASSERT_EQ(lookup.nodes.size(), 4U);
    EXPECT_EQ(lookup.axis1.width, 200U);
    EXPECT_EQ(lookup.axis2.width, 10U);
    const WeighedNode& node = lookup.nodes[1];
    EXPECT_EQ(node.x1, 100);
    EXPECT_EQ(node.x2, 10);
    EXPECT_EQ(node.value, 20);
    EXPECT_EQ(node.weight1, 150U);
    EXPECT_EQ(node.weight2, 4U);
}

TEST(TablesLookup, OnOneAxisTwoNodesTakePart) {
    EXPECT_EQ(lookUp(positive, 100, 5).nodes.size(), 2U);
    EXPECT_EQ(lookUp(positive, 150, 0).nodes.size(), 2U);
}

TEST(TablesLookup, OnANodeItAloneTakesPart) {
    const Lookup lookup = lookUp(positive, 300, 0);
    ASSERT_EQ(lookup.nodes.size(), 1U);
    EXPECT_EQ(lookup.nodes.front().value, 30);
    EXPECT_FALSE(lookup.axis1.isClamped);
}

TEST(TablesLookup, OutsideTheNearestNodeHolds) {
    const Lookup lookup = lookUp(positive, 99, 11);
    EXPECT_TRUE(lookup.axis1.isClamped);
    EXPECT_TRUE(lookup.axis2.isClamped);
    EXPECT_EQ(toString(lookup.value), "20");
}

TEST(TablesLookup, HalvesAreRoundedAwayFromZero) {
    EXPECT_EQ(exactAt(positive, 105, 0), "10 + 1/2");
    EXPECT_EQ(lookUp(positive, 105, 0).value.rounded(), 11);
    EXPECT_EQ(exactAt(negative, 105, 0), "-(10 + 1/2)");
    EXPECT_EQ(lookUp(negative, 105, 0).value.rounded(), -11);
    EXPECT_EQ(lookUp(negative, 104, 0).value.rounded(), -10);
}

TEST(TablesLookup, RoundsAsThePlatformDoesOverAllIntegers) {
    using Limits = std::numeric_limits<std::int32_t>;
    const std::vector<std::int32_t> axis{Limits::min(), Limits::max()};
    const CalibrationTable table{
        "", axis, axis, {Limits::min(), Limits::max(), Limits::max(), Limits::min() + 1}};
    for (const std::int32_t x1 : {Limits::min() + 1, -7, 0, 12345, Limits::max() - 1}) {
        for (const std::int32_t x2 : {Limits::min() + 1, -3, 1, Limits::max() - 1}) {
            EXPECT_EQ(lookUp(table, x1, x2).value.rounded(),
                      Standalone::Interpolation::bilinear(axis, axis, table.values, x1, x2));
        }
    }
}

// A correction of a radio

/** The tables of `positive` and `negative` for I and Q, at 18.0 and 18.2 GHz. */
class TablesWhyTest : public testing::Test {
protected:
    TablesWhyTest() {
        PlanBoards::remove(m_board, name("I"));
        PlanBoards::remove(m_board, name("Q"));
        add(name("I"), positive.values);
        add(name("Q"), negative.values);
    }
    static std::string name(const std::string& branch) {
        return "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer." + branch;
    }
    void add(const std::string& table, const std::vector<std::int32_t>& values) {
        m_board.tables.push_back({{table, {18'000'000, 18'200'000}, {0, 10}, values}, {}});
    }
    Reason explain(std::uint32_t carrier, std::int32_t temperature,
                   const std::vector<Standalone::Fault>& faults = {}) const {
        BootedRadio booted(m_board);
        EXPECT_TRUE(booted.isUp());
        for (const Standalone::Fault& fault : faults) {
            booted.radio().platform().calls().inject(fault);
        }
        return explainCorrections(booted, m_board, m_board.channels.front(), carrier, temperature);
    }
    std::string told(std::uint32_t carrier, std::int32_t temperature) const {
        std::ostringstream out;
        writeText(out, m_board, explain(carrier, temperature));
        return out.str();
    }

    Board m_board = PlanBoards::microwave(::FrequencyHandler::MicrowaveBoardHz);
};

TEST_F(TablesWhyTest, ComputedValueIsTheOneThatReachedTheDriver) {
    const Reason reason = explain(18'050'000, 5);
    ASSERT_EQ(reason.branches.size(), 2U);
    EXPECT_EQ(reason.branches[0].driver, "channel.1.tx.rf.mixer.i");
    EXPECT_EQ(reason.branches[0].computed, 21);
    EXPECT_EQ(reason.branches[0].written, 21);
    EXPECT_EQ(reason.branches[1].driver, "channel.1.tx.rf.mixer.q");
    EXPECT_EQ(reason.branches[1].computed, -21);
    EXPECT_EQ(reason.branches[1].written, -21);
    EXPECT_THAT(reason.disagreements, IsEmpty());
}

TEST_F(TablesWhyTest, ReportHasNodesWeightsExactValueAndDriver) {
    EXPECT_THAT(told(18'050'000, 5),
                HasSubstr("Test radio (board.toml)\n"
                          "  tx 1, microwave-hz: 18050000 kHz at 5 degrees\n"
                          "\n"
                          "I: table Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I\n"
                          "       kHz  degrees  value  weight\n"
                          "  18000000        0     10  150000/200000 x 5/10\n"
                          "  18000000       10     20  150000/200000 x 5/10\n"
                          "  18200000        0     30  50000/200000 x 5/10\n"
                          "  18200000       10     50  50000/200000 x 5/10\n"
                          "  exactly 21 + 1/4, which is about 21.250; rounded 21\n"
                          "  channel.1.tx.rf.mixer.i <- 21\n"));
    EXPECT_THAT(told(18'050'000, 5), EndsWith("\nThe library wrote what the tables say.\n"));
}

TEST_F(TablesWhyTest, ClampingIsToldInWords) {
    const std::string text = told(18'300'000, -5);
    EXPECT_THAT(text, HasSubstr("  18300000 kHz is above the table's axis: its node at 18200000 holds\n"));
    EXPECT_THAT(text, HasSubstr("  -5 degrees is below the table's axis: its node at 0 holds\n"));
}

TEST_F(TablesWhyTest, FileAndColumnOfTheTableAreNamed) {
    m_board.tables.back().file = "x.csv";
    m_board.tables.back().column = "q";
    EXPECT_THAT(told(18'000'000, 0), HasSubstr("Mixer.Q, from x.csv, column q\n"));
}

TEST_F(TablesWhyTest, CoarseDcDriversAreNamedWhereTheyAreInUse) {
    for (const std::string branch : {"i", "q"}) {
        PlanBoards::remove(m_board, "channel.1.tx.rf.mixer." + branch);
        PlanBoards::addDrivers(m_board, {"tx.bb.iq.coarse.dc." + branch + ".v.adjust"});
    }
    const Reason reason = explain(18'000'000, 0);
    EXPECT_EQ(reason.branches[0].driver, "channel.1.tx.bb.iq.coarse.dc.i.v.adjust");
    EXPECT_EQ(reason.branches[0].written, 10);
    EXPECT_THAT(reason.disagreements, IsEmpty());
}

TEST_F(TablesWhyTest, MissingTableHasTheLibraryWrite0) {
    PlanBoards::remove(m_board, name("Q"));
    const Reason reason = explain(18'000'000, 0);
    EXPECT_EQ(reason.branches[1].whyNoValue, "the table is not there");
    EXPECT_EQ(reason.branches[1].computed, 0);
    EXPECT_EQ(reason.branches[1].written, 0);
    EXPECT_THAT(reason.complaints, ElementsAre(HasSubstr("Unable to fetch value from table")));
    EXPECT_THAT(reason.disagreements, IsEmpty());
}

TEST_F(TablesWhyTest, CoarseDcTableStopsTheCorrection) {
    PlanBoards::remove(m_board, name("Q"));
    add("Channel.1.Tx.Bb.Frequency.To.Coarse.Dc.Q.Compensation", positive.values);
    EXPECT_THAT(
        told(18'000'000, 0),
        EndsWith("\nWith table \"Channel.1.Tx.Bb.Frequency.To.Coarse.Dc.Q.Compensation\" in use the channel "
                 "makes no correction by frequency.\n\nThe library wrote no correction.\n"));
    EXPECT_THAT(explain(18'000'000, 0).branches, IsEmpty());
}

TEST_F(TablesWhyTest, CoarseDcTableBesideTheUsualOneIsNotInUse) {
    for (const std::string branch : {"I", "Q"}) {
        add("Channel.1.Tx.Bb.Frequency.To.Coarse.Dc." + branch + ".Compensation", {1, 2, 3, 4});
    }
    const Reason reason = explain(18'000'000, 0);
    EXPECT_EQ(reason.whyNone, "");
    ASSERT_EQ(reason.branches.size(), 2U);
    EXPECT_EQ(reason.branches[0].written, 10);
    EXPECT_EQ(reason.branches[1].written, -10);
    EXPECT_THAT(reason.disagreements, IsEmpty());
}

TEST_F(TablesWhyTest, ChannelWithoutCancellerIsToldInWords) {
    m_board = PlanBoards::rfModule();
    EXPECT_EQ(explain(18'000'000, 0).whyNone, "A channel of type rf-module has no LO cancellation.");
}

TEST_F(TablesWhyTest, OtherValueThanTheTableGivesIsADisagreement) {
    const Standalone::Fault fault{Standalone::Operation::tableBilinear, name("I"), 0x8001, {}, 7};
    EXPECT_THAT(explain(18'000'000, 0, {fault}).disagreements,
                ElementsAre("channel.1.tx.rf.mixer.i: the table gives 10, the library wrote 7"));
}

TEST_F(TablesWhyTest, WriteThatFailedIsADisagreement) {
    const Standalone::Fault fault{
        Standalone::Operation::driverWrite, "channel.1.tx.rf.mixer.i", 0x8001, {}, {}};
    EXPECT_THAT(explain(18'000'000, 0, {fault}).disagreements,
                ElementsAre("channel.1.tx.rf.mixer.i: the table gives 10, writing it failed with 0x8001",
                            "channel.1.tx.rf.mixer.q: the table gives -10, the library wrote nothing"));
}

TEST_F(TablesWhyTest, LeakageIsModelledWithAndWithoutCorrection) {
    // 0.001 in opposition to I, of which 10 units of I take 0.0009; Q, which is -10, does nothing.
    LeakageDescription leakage = PlanBoards::leakage(-60.0, 9e-5);
    leakage.paths.front().phase = 180.0;
    leakage.q.gain = 1e-12;
    m_board.leakages = {leakage};
    EXPECT_THAT(told(18'000'000, 0),
                HasSubstr("\nModelled leakage: -80.00 dBc, and -60.00 dBc with both corrections 0.\n"));
}

TEST_F(TablesWhyTest, JsonHasTheExactValue) {
    std::ostringstream out;
    writeJson(out, m_board, explain(18'050'000, 0));
    EXPECT_THAT(out.str(), HasSubstr(R"("exact":[15,0,1],"computed":15,"driver":"channel.1.tx.rf.mixer.i",)"
                                     R"("written":15,"code":0})"));
    EXPECT_THAT(out.str(), EndsWith(R"("complaints":[],"disagreements":[],"ok":true})"
                                    "\n"));
}

} // namespace
} // namespace Radio::Tables
