#include "radio/calibration/CalibrationRun.h"
#include "radio/calibration/FitOutcome.h"
#include "radio/calibration/ResultFile.h"
#include "radio/calibration/Surface.h"
#include "tests/radio/support/BoardFileFixture.h"
#include "tests/radio/support/LeakageBoard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace Radio::Calibration {
namespace {

using testing::AllOf;
using testing::Ge;
using testing::HasSubstr;
using testing::Le;
using testing::Not;

/** A calibration by a fit, over 17.9 to 18.1 GHz and -10 to 50 degrees. */
class FitCalibrationTest : public BoardFileFixture, public CalibrationListener {
protected:
    FitCalibrationTest() { m_order.wishes.channel = 1; }

    void begins(const Board& /*board*/, const Result& result, std::size_t /*knownProbes*/) override {
        m_begun = result.settings;
    }
    void calibrated(const Point& point) override { m_told.push_back(point); }
    bool goOn(const CalibrationProgress& progress) override {
        m_last = progress;
        return !m_stopsAt || progress.probes < *m_stopsAt;
    }

    static Board fitBoard(const std::string& detector = "range = [0, 4095]") {
        return load(leakageBoard(detector));
    }
    CalibrationOutcome run() {
        CalibrationRun run(m_board, m_order);
        run.open();
        return run.run(*this);
    }
    static std::string tables() {
        std::string text = contentOf("board.channel-1.csv");
        const std::size_t begin = text.find("# date");
        return text.erase(begin, text.find('\n', begin) - begin);
    }
    static void removeAll() {
        std::filesystem::remove("board.channel-1.csv");
        std::filesystem::remove("board.channel-1.journal");
    }
    static std::vector<std::string> linesOf(const std::string& file) {
        std::istringstream text(contentOf(file));
        std::vector<std::string> lines;
        for (std::string line; std::getline(text, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    Board m_board = fitBoard();
    CalibrationOrder m_order = [] {
        CalibrationOrder order;
        order.wishes.method = CalibrationMethod::fit;
        order.version = "1.2.3";
        return order;
    }();
    std::optional<Settings> m_begun;
    std::vector<Point> m_told;
    CalibrationProgress m_last;
    std::optional<std::size_t> m_stopsAt;
};

TEST_F(FitCalibrationTest, TablesLeaveNoMoreAnywhereThanTheFitClaims) {
    const CalibrationOutcome outcome = run();
    EXPECT_TRUE(outcome.isComplete);
    EXPECT_TRUE(outcome.isGood);
    EXPECT_EQ(outcome.tables, "board.channel-1.csv");
    ASSERT_TRUE(outcome.summary.claim);
    ASSERT_TRUE(outcome.summary.between);
    EXPECT_LE(outcome.summary.between->level, outcome.summary.claim->level);
    EXPECT_LE(outcome.summary.claim->level, -74.0);
    EXPECT_LE(outcome.newProbes, 400U);
}

TEST_F(FitCalibrationTest, EndsOfBandAndTemperaturesAreWhatItIsAskedFor) {
    run();
    ASSERT_TRUE(m_begun);
    EXPECT_THAT(m_begun->frequencies, testing::ElementsAre(17'900'000, 18'100'000));
    EXPECT_THAT(m_begun->temperatures, testing::ElementsAre(-10, 50));
    EXPECT_EQ(m_begun->budget, 400U);
    EXPECT_FALSE(m_begun->limit);
}

TEST_F(FitCalibrationTest, NodesReachBothEndsAndAreReadBack) {
    const CalibrationOutcome outcome = run();
    const Result read = readResult("board.channel-1.csv");
    EXPECT_EQ(read.settings.method, CalibrationMethod::fit);
    EXPECT_EQ(read.settings.budget, 400U);
    EXPECT_EQ(read.settings.frequencies.front(), 17'900'000U);
    EXPECT_EQ(read.settings.frequencies.back(), 18'100'000U);
    EXPECT_EQ(read.settings.temperatures.front(), -10);
    EXPECT_EQ(read.settings.temperatures.back(), 50);
    EXPECT_EQ(read.points.size(), outcome.result.nodes.size());
    EXPECT_EQ(asTables(read).points.size(), read.points.size());
}

TEST_F(FitCalibrationTest, EachPointIsToldWithItsProbes) {
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(m_told.size(), outcome.result.points.size());
    std::size_t probes = outcome.result.fit->verifications.size();
    for (const Point& point : m_told) {
        probes += point.probes.size();
    }
    // A place whose table left more than was foretold has its try among the probes of its point.
    // After the tries at each of the two temperatures there is one that shows that the detector still
    // follows.
    EXPECT_THAT(probes, AllOf(Ge(outcome.newProbes - 2), Le(outcome.newProbes + 19)));
}

TEST_F(FitCalibrationTest, PointsOfTheFitAreThoseOfTheResult) {
    m_board.limits.leakage = -74.0;
    const CalibrationOutcome outcome = run();
    ASSERT_EQ(outcome.result.fit->points.size(), outcome.result.points.size());
    std::int32_t last = -10;
    for (std::size_t n = 0; n < outcome.result.points.size(); ++n) {
        const Point& point = outcome.result.points[n];
        const Fit::Point& fitted = outcome.result.fit->points[n];
        EXPECT_EQ(fitted.place.carrier, point.frequency);
        EXPECT_EQ(fitted.place.temperature, point.temperature);
        EXPECT_EQ(fitted.probes, point.probes.size());
        EXPECT_GE(point.temperature, last);
        last = point.temperature;
    }
}

TEST_F(FitCalibrationTest, BudgetHoldsAllProbesWithThoseThatQualifyTheDetector) {
    m_order.qualifies = true;
    m_order.wishes.probes = 150;
    const CalibrationOutcome outcome = run();
    EXPECT_GT(outcome.qualifyingReadings, 0U);
    EXPECT_LE(outcome.newProbes, 150U);
}

TEST_F(FitCalibrationTest, BudgetThatIsSpentTooEarlyStoresNothing) {
    m_order.wishes.probes = 60;
    const CalibrationOutcome outcome = run();
    EXPECT_TRUE(outcome.isComplete);
    EXPECT_FALSE(outcome.isGood);
    EXPECT_EQ(outcome.result.fit->reason, "the budget of probes was spent before all was tried");
    EXPECT_TRUE(outcome.isHeldBackByFail);
    EXPECT_EQ(outcome.tables, "");
    EXPECT_FALSE(std::filesystem::exists("board.channel-1.csv"));
}

TEST_F(FitCalibrationTest, LimitIsHeldByWhatTheFitClaims) {
    m_board.limits.leakage = -70.0;
    const CalibrationOutcome outcome = run();
    ASSERT_EQ(outcome.verdict.limits.size(), 1U);
    EXPECT_EQ(outcome.verdict.kind(), VerdictKind::pass);
    EXPECT_EQ(outcome.verdict.limits[0].found, toHundredth(outcome.summary.claim->level));
}

TEST_F(FitCalibrationTest, LimitOfTablesThatWereNotTriedIsNotHeld) {
    m_board.limits.leakage = -1.0;
    m_order.wishes.probes = 60;
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(outcome.verdict.kind(), VerdictKind::fail);
    ASSERT_EQ(outcome.verdict.limits.size(), 1U);
    EXPECT_EQ(outcome.verdict.limits[0].whyUnknown, "the budget of probes was spent before all was tried");
}

TEST_F(FitCalibrationTest, ClaimStandsWithTheTables) {
    const CalibrationOutcome outcome = run();
    ASSERT_TRUE(outcome.result.claim);
    EXPECT_EQ(outcome.result.claim, outcome.summary.claim->level);
    EXPECT_EQ(readResult("board.channel-1.csv").claim, toHundredth(*outcome.result.claim));
}

TEST_F(FitCalibrationTest, ClaimOfTablesThatWereNotTriedDoesNot) {
    m_order.wishes.probes = 60;
    m_order.acceptsFail = true;
    EXPECT_EQ(run().tables, "board.channel-1.csv");
    EXPECT_EQ(readResult("board.channel-1.csv").claim, std::nullopt);
}

TEST(FitClaimTest, IsKnownInDbcAndHolds) {
    Fit::Outcome outcome;
    EXPECT_EQ(claimOf(outcome, {}), std::nullopt);
    outcome.claim = Fit::LevelAt{-70.5, {}};
    outcome.verdict = Fit::Verdict::held;
    EXPECT_EQ(claimOf(outcome, {}), -70.5);
    outcome.isRelative = true;
    EXPECT_EQ(claimOf(outcome, {}), std::nullopt);
}

/** Below the limit it is something else that is wrong with the tables. */
TEST(FitClaimTest, OfTablesThatMissedTheLimitIsAboveIt) {
    Fit::Outcome outcome;
    outcome.claim = Fit::LevelAt{-70.5, {}};
    outcome.verdict = Fit::Verdict::missed;
    EXPECT_EQ(claimOf(outcome, -74.0), -70.5);
    EXPECT_EQ(claimOf(outcome, -70.0), std::nullopt);
    EXPECT_EQ(claimOf(outcome, {}), std::nullopt);
    outcome.verdict = Fit::Verdict::failed;
    EXPECT_EQ(claimOf(outcome, -74.0), std::nullopt);
}

TEST_F(FitCalibrationTest, WhatIsStoredClaimsNoLessThanWhatLeaks) {
    m_order.qualifies = true;
    m_board.limits.leakage = -68.0;
    std::minstd_rand random(7);
    const auto between = [&random](double low, double high) {
        return low + (high - low) * static_cast<double>(random() % 10001) / 10000.0;
    };
    for (int transmitter = 0; transmitter < 8; ++transmitter) {
        LeakageDescription& leakage = m_board.leakages.at(0);
        leakage.paths.resize(2);
        leakage.paths[0].level = between(-30.0, -22.0);
        leakage.paths[0].phase = between(0.0, 360.0);
        leakage.paths[0].phasePerDegree = between(-0.3, 0.3);
        leakage.paths[0].delay = between(0.0, 0.5);
        leakage.paths[1].level = between(-45.0, -35.0);
        leakage.paths[1].delay = between(0.5, 1.5);
        leakage.skew = between(-6.0, 6.0);
        leakage.detector.slope = between(15.0, 40.0);
        leakage.detector.noise = between(0.5, 3.0);
        leakage.detector.floor = between(-90.0, -75.0);
        const CalibrationOutcome outcome = run();
        ASSERT_EQ(outcome.tables, "board.channel-1.csv") << transmitter << outcome.trouble << outcome.refusal;
        const Result read = readResult("board.channel-1.csv");
        EXPECT_EQ(read.verdict, VerdictKind::pass);
        ASSERT_TRUE(read.claim);
        EXPECT_LE(*read.claim, -68.0);
        // More than 10,000 places: seven between two nodes along each axis.
        const std::optional<Surface> anywhere = leakageBetween(asTables(read), leakage);
        ASSERT_TRUE(anywhere);
        ASSERT_GT(anywhere->levels.size(), 10000U);
        EXPECT_LE(worstOf(*anywhere)->level, *read.claim) << transmitter;
        removeAll();
    }
}

TEST_F(FitCalibrationTest, FitThatDoesNotHoldPassesNoLimit) {
    m_board.limits.leakageImprovement = 10.0;
    m_order.wishes.probes = 60;
    const CalibrationOutcome outcome = run();
    EXPECT_THAT(
        Radio::linesOf(outcome.verdict),
        testing::ElementsAre("FAIL: improvement unknown, limit 10: the budget of probes was spent before "
                             "all was tried"));
    EXPECT_EQ(outcome.tables, "");
}

TEST_F(FitCalibrationTest, NodesOfTheTablesAreHeldToTheLimitOfNodes) {
    const CalibrationOutcome outcome = run();
    double most = -200.0;
    for (const Point& node : outcome.result.nodes) {
        most = std::max(most, *node.after);
    }
    ASSERT_GT(most, outcome.summary.after->level);
    m_order.beginning = Beginning::restart;
    m_board.limits.leakageAtNodes = (most + outcome.summary.after->level) / 2.0;
    const CalibrationOutcome held = run();
    EXPECT_EQ(held.verdict.kind(), VerdictKind::fail);
    EXPECT_EQ(held.verdict.limits.at(0).found, toHundredth(most));
}

TEST_F(FitCalibrationTest, NodesAtTheEndOfARangeSaySo) {
    m_order.wishes.iRange = Range{-470, 1000};
    m_order.acceptsEdge = true;
    const CalibrationOutcome outcome = run();
    ASSERT_GT(outcome.summary.edge, 0U);
    std::size_t edges = 0;
    for (const Point& node : outcome.result.nodes) {
        EXPECT_EQ(node.state == PointState::edge, node.i == -470);
        edges += node.state == PointState::edge ? 1 : 0;
    }
    EXPECT_GT(edges, 0U);
}

TEST_F(FitCalibrationTest, GoesOnAsItWasBegunWhateverTheBoardSaysMeanwhile) {
    m_order.wishes.probes = 300;
    m_board.limits.leakage = -70.0;
    run();
    const std::string whole = tables();
    const std::vector<std::string> journal = linesOf("board.channel-1.journal");
    removeAll();
    std::string begun;
    for (std::size_t n = 0; n <= 40; ++n) {
        begun += journal.at(n) + "\n";
    }
    write("board.channel-1.journal", begun);
    m_order.beginning = Beginning::resume;
    m_order.wishes.probes.reset();
    m_order.wishes.method.reset();
    m_board.calibrations.at(0).minDelta = 7;
    m_board.limits.leakage = -72.0;
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(outcome.trouble, "");
    EXPECT_EQ(m_begun->budget, 300U);
    EXPECT_EQ(m_begun->limit, -70.0);
    EXPECT_EQ(outcome.verdict.limits.at(0).limit, -72.0);
    EXPECT_EQ(tables(), whole);
}

TEST_F(FitCalibrationTest, TablesThatWereStoredBeforeAreNotDenied) {
    m_order.wishes.probes = 60;
    m_order.acceptsFail = true;
    EXPECT_EQ(run().tables, "board.channel-1.csv");
    m_order.acceptsFail = false;
    m_order.beginning = Beginning::resume;
    const CalibrationOutcome again = run();
    EXPECT_EQ(again.tables, "board.channel-1.csv");
    EXPECT_TRUE(again.isUnchanged);
}

TEST_F(FitCalibrationTest, StuckDetectorFailsByName) {
    std::string board = leakageBoard("range = [-10, 4095]");
    board.replace(board.find("slope = 25.0"), 12, "slope = 0.0");
    m_board = load(board);
    const CalibrationOutcome outcome = run();
    EXPECT_FALSE(outcome.isGood);
    EXPECT_THAT(outcome.result.fit->reason, HasSubstr("the detector is stuck"));
    EXPECT_EQ(outcome.tables, "");
}

// The journal.

TEST_F(FitCalibrationTest, EveryProbeIsInTheJournalBeforeTheNextIsSet) {
    class Counting final : public CalibrationListener {
    public:
        void begins(const Board& /*board*/, const Result& /*result*/, std::size_t /*known*/) override {}
        void calibrated(const Point& /*point*/) override {}
        bool goOn(const CalibrationProgress& progress) override {
            const std::size_t entered = linesOf("board.channel-1.journal").size() - 1;
            isBehind |= entered < progress.probes;
            asked = std::max(asked, progress.probes);
            return true;
        }
        bool isBehind = false;
        std::size_t asked = 0;
    } counting;
    CalibrationRun run(m_board, m_order);
    run.open();
    const CalibrationOutcome outcome = run.run(counting);
    EXPECT_FALSE(counting.isBehind);
    EXPECT_EQ(counting.asked, outcome.newProbes);
}

TEST_F(FitCalibrationTest, KilledAnywhereAndResumedGivesTheSameTables) {
    const std::uint64_t probes = run().newProbes;
    const std::string whole = tables();
    const std::vector<std::string> journal = linesOf("board.channel-1.journal");
    m_order.beginning = Beginning::resume;
    for (const std::size_t kept : {1U, 6U, 20U, 57U, 120U}) {
        removeAll();
        std::string begun;
        for (std::size_t n = 0; n <= kept; ++n) {
            begun += journal.at(n) + "\n";
        }
        write("board.channel-1.journal", begun);
        const CalibrationOutcome resumed = run();
        EXPECT_EQ(resumed.knownProbes, kept);
        EXPECT_EQ(resumed.knownProbes + resumed.newProbes, probes);
        EXPECT_EQ(tables(), whole);
    }
}

TEST_F(FitCalibrationTest, InterruptedStoresNothingAndGoesOn) {
    run();
    const std::string whole = tables();
    removeAll();
    m_stopsAt = 33;
    const CalibrationOutcome interrupted = run();
    EXPECT_FALSE(interrupted.isComplete);
    EXPECT_EQ(interrupted.newProbes, 33U);
    EXPECT_FALSE(std::filesystem::exists("board.channel-1.csv"));
    m_stopsAt.reset();
    m_order.beginning = Beginning::resume;
    EXPECT_TRUE(run().isComplete);
    EXPECT_EQ(tables(), whole);
}

TEST_F(FitCalibrationTest, OfflineGivesTheSameTablesAndMeasuresNothing) {
    run();
    const std::string whole = tables();
    std::filesystem::remove("board.channel-1.csv");
    m_order.beginning = Beginning::offline;
    m_order.journal = "board.channel-1.journal";
    m_order.tables = "board.channel-1.csv";
    const CalibrationOutcome outcome = run();
    EXPECT_TRUE(outcome.isComplete);
    EXPECT_EQ(outcome.newProbes, 0U);
    EXPECT_EQ(tables(), whole);
}

TEST_F(FitCalibrationTest, OfflineJournalThatIsNotCompleteEndsIt) {
    m_stopsAt = 40;
    run();
    m_stopsAt.reset();
    m_order.beginning = Beginning::offline;
    m_order.journal = "board.channel-1.journal";
    const CalibrationOutcome outcome = run();
    EXPECT_FALSE(outcome.isComplete);
    EXPECT_EQ(outcome.trouble, "the journal ends here");
}

TEST_F(FitCalibrationTest, JournalOfTheOtherMethodIsRefused) {
    m_stopsAt = 40;
    run();
    m_order.beginning = Beginning::resume;
    m_order.wishes.method = CalibrationMethod::search;
    try {
        run();
        FAIL() << "went on with a journal of a fit";
    } catch (const ChoiceError& error) {
        EXPECT_THAT(error.what(), HasSubstr("method: begun with \"fit\", now asked for with \"search\""));
    }
}

TEST_F(FitCalibrationTest, JournalWithAProbeBeyondTheEndsIsDamaged) {
    m_stopsAt = 40;
    run();
    std::string journal = contentOf("board.channel-1.journal");
    const std::size_t place = journal.find("\"khz\":");
    journal.replace(place, 14, "\"khz\":17899999");
    write("board.channel-1.journal", journal);
    EXPECT_THROW(readJournal("board.channel-1.journal"), InputError);
}

TEST_F(FitCalibrationTest, TablesOfASearchSayNothingOfAMethod) {
    m_order.wishes.method = CalibrationMethod::search;
    run();
    EXPECT_THAT(contentOf("board.channel-1.csv"), Not(HasSubstr("# method")));
}

} // namespace
} // namespace Radio::Calibration
