#include "radio/tables/Lint.h"
#include "tests/radio/support/BoardFileFixture.h"
#include "tests/radio/support/LeakageBoard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

namespace Radio::Tables {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/**
 * Tables held against the limits of their board. The radio leaks with 1/20 of its signal at 18 GHz and 25
 * degrees, -26.02 dBc, which I = -500 takes away; I = -490 leaves a fiftieth of it, -60.00 dBc.
 */
class TablesLimitLint : public BoardFileFixture {
protected:
    static std::vector<std::string> lint(const std::string& limits,
                                         const std::string& board = leakageBoard()) {
        const Board loaded = load(board + "\n[limits]\n" + limits);
        std::vector<std::string> texts;
        for (const Finding& finding : lintBoard(loaded)) {
            // Where the table stands in a made-up board says nothing.
            const std::string place = finding.place.file == "board.toml" ? "board" : toString(finding.place);
            texts.push_back(place + ": " + std::string(toString(finding.severity)) + ": " + finding.text);
        }
        return texts;
    }
    /** One node at 18 GHz and 25 degrees. */
    static void writeTables(const std::string& levels, const std::string& header = "") {
        write("board.channel-1.csv", header +
                                         "frequency_khz,temperature_c,i,q,before_dbc,after_dbc\n"
                                         "18000000,25,-490,0," +
                                         levels + "\n");
    }
    static std::string withoutModel() {
        std::string board = leakageBoard();
        const std::size_t begin = board.find("[[leakage]]");
        return board.erase(begin, board.find("[[calibration]]") - begin);
    }
};

TEST_F(TablesLimitLint, LevelsOfTheFileAreHeldAgainstTheLimits) {
    writeTables("-26.00,-69.00");
    EXPECT_THAT(lint("leakage_at_nodes = -69\nleakage_improvement = 43\n"), IsEmpty());
    EXPECT_THAT(lint("leakage_at_nodes = -70\nleakage_improvement = 50\n"),
                ElementsAre("board: error: channel 1: leakage at the nodes -69.00 dBc at 18000000 kHz, 25 "
                            "degrees, limit -70",
                            "board: error: channel 1: improvement 43.00 dB at 18000000 kHz, 25 degrees, "
                            "limit 50"));
}

TEST_F(TablesLimitLint, WhatLeaksAnywhereIsThatOfTheModel) {
    writeTables("-26.00,-69.00");
    EXPECT_THAT(lint("leakage = -60\n"), IsEmpty());
    EXPECT_THAT(lint("leakage = -65\n"),
                ElementsAre("board: error: channel 1: leakage anywhere -60.00 dBc at "
                            "18000000 kHz, 25 degrees, limit -65"));
}

TEST_F(TablesLimitLint, WithoutLevelsInTheFileTheModelHasThem) {
    write("board.channel-1.csv", "f,t,i,q\n18000000,25,-490,0\n");
    EXPECT_THAT(lint("leakage_at_nodes = -60\n"), IsEmpty());
    EXPECT_THAT(lint("leakage_at_nodes = -61\n"),
                ElementsAre("board: error: channel 1: leakage at the nodes -60.00 dBc at 18000000 kHz, 25 "
                            "degrees, limit -61"));
}

TEST_F(TablesLimitLint, WhatNobodyKnowsIsAWarning) {
    write("board.channel-1.csv", "f,t,i,q\n18000000,25,-490,0\n");
    EXPECT_THAT(
        lint("leakage_at_nodes = -60\n", withoutModel()),
        ElementsAre("board: warning: channel 1: leakage at the nodes unknown, limit -60: nobody knows "
                    "in dBc what leaks"));
}

TEST_F(TablesLimitLint, ClaimOfAFitOnHardwareIsHeldAgainstTheLimit) {
    write("board.channel-1.csv",
          "# mode: hardware\n# method: fit\n# claim_dbc: -75.58\nf,t,i,q\n18000000,25,-490,0\n");
    // What is modelled of the channel says nothing about a real one.
    for (const std::string& board : {leakageBoard(), withoutModel()}) {
        EXPECT_THAT(lint("leakage = -75\n", board), IsEmpty());
        EXPECT_THAT(lint("leakage = -80\n", board),
                    ElementsAre("board.channel-1.csv:3: error: channel 1: leakage anywhere -75.58 dBc by the "
                                "claim of its fit, limit -80"));
    }
}

TEST_F(TablesLimitLint, OfAFitOnHardwareWithoutAClaimNobodyKnows) {
    write("board.channel-1.csv", "# mode: hardware\n# method: fit\nf,t,i,q\n18000000,25,-490,0\n");
    for (const std::string& board : {leakageBoard(), withoutModel()}) {
        EXPECT_THAT(
            lint("leakage = -10\n", board),
            ElementsAre("board: warning: channel 1: leakage anywhere unknown, limit -10: nobody knows "
                        "in dBc what leaks"));
    }
}

/** The model says what leaks, the claim what the fit could make sure of. */
TEST_F(TablesLimitLint, ModelAndClaimAreBothHeldAgainstTheLimit) {
    write("board.channel-1.csv", "# method: fit\n# claim_dbc: -55.00\nf,t,i,q\n18000000,25,-490,0\n");
    EXPECT_THAT(lint("leakage = -55\n"), IsEmpty());
    EXPECT_THAT(
        lint("leakage = -58\n"),
        ElementsAre("board.channel-1.csv:2: error: channel 1: leakage anywhere -55.00 dBc by the claim "
                    "of its fit, limit -58"));
    EXPECT_THAT(
        lint("leakage = -65\n"),
        ElementsAre("board: error: channel 1: leakage anywhere -60.00 dBc at 18000000 kHz, 25 "
                    "degrees, limit -65",
                    "board.channel-1.csv:2: error: channel 1: leakage anywhere -55.00 dBc by the claim "
                    "of its fit, limit -65"));
}

TEST_F(TablesLimitLint, ClaimThatIsNoLevelIsRefused) {
    write("board.channel-1.csv", "# claim_dbc: low\nf,t,i,q\n18000000,25,-490,0\n");
    EXPECT_THROW(lint("leakage = -60\n"), InputError);
}

TEST_F(TablesLimitLint, WithoutLimitsNothingIsHeldAgainstThem) {
    writeTables("-26.00,-25.00");
    EXPECT_THAT(lint("carrier_error = 0\n"), IsEmpty());
}

TEST_F(TablesLimitLint, AcceptedFailureAndMissedPointsAreWarnedOf) {
    write("x.csv", "# verdict: FAIL (accepted)\nf,t,i,q,state\n1,1,0,0,missed\n");
    std::vector<std::string> texts;
    for (const Finding& finding : lintFile("x.csv")) {
        texts.push_back(toString(finding.place) + ": " + finding.text);
    }
    EXPECT_THAT(texts,
                ElementsAre("x.csv:1: limits of its board were not held: \"FAIL (accepted)\"",
                            "x.csv:3: 1 kHz at 1 degrees: the corrections found did not meet the limits of "
                            "their board"));
}

TEST_F(TablesLimitLint, NodesOfAFitAreToldOfOnceForAll) {
    write("x.csv",
          "# method: fit\nf,t,i,q,state\n1,1,0,0,good\n2,1,0,0,missed\n3,1,0,0,edge\n4,1,0,0,missed\n"
          "5,1,0,0,missed\n");
    std::vector<std::string> texts;
    for (const Finding& finding : lintFile("x.csv")) {
        texts.push_back(toString(finding.place) + ": " + finding.text);
    }
    EXPECT_THAT(
        texts, ElementsAre(
                   "x.csv:4: 2 kHz at 1 degrees and 2 more nodes: the corrections did not meet the limits of "
                   "their board",
                   "x.csv:5: 3 kHz at 1 degrees: at the end of its range; the best corrections may lie "
                   "beyond"));
}

} // namespace
} // namespace Radio::Tables
