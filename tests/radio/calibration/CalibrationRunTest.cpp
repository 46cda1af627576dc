#include "radio/calibration/CalibrationRun.h"

#include "radio/session/BootedRadio.h"
#include "tests/radio/support/BoardFileFixture.h"
#include "tests/radio/support/LeakageBoard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Radio::Calibration {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/** The calibration as a program without a command line calls it: three carriers at two temperatures. */
class CalibrationRunTest : public BoardFileFixture, public CalibrationListener {
protected:
    CalibrationRunTest() { m_order.wishes.channel = 1; }

    void begins(const Board& board, const Result& result, std::size_t knownProbes) override {
        m_told.push_back("begins " + board.name + ", " + result.serial + ", knows " +
                         std::to_string(knownProbes));
    }
    void calibrated(const Point& point) override {
        m_told.push_back(std::to_string(point.frequency) + " at " + std::to_string(point.temperature));
    }
    bool goOn(const CalibrationProgress& progress) override {
        ++m_asked;
        m_wanted = progress.wantedPoints;
        return m_asked != m_stopsAt;
    }

    CalibrationOutcome run() {
        CalibrationRun run(m_board, m_order);
        run.open();
        return run.run(*this);
    }

    Board m_board = load(leakageBoard());
    CalibrationOrder m_order;
    std::vector<std::string> m_told;
    unsigned m_asked = 0;
    unsigned m_stopsAt = 0;
    std::size_t m_wanted = 0;
};

TEST_F(CalibrationRunTest, TellsEachPointAndGivesAllOfThem) {
    const CalibrationOutcome outcome = run();
    EXPECT_THAT(m_told, ElementsAre("begins Test radio, T-1, knows 0", "17900000 at -10", "18000000 at -10",
                                    "18100000 at -10", "17900000 at 50", "18000000 at 50", "18100000 at 50"));
    EXPECT_EQ(m_wanted, 6U);
    EXPECT_TRUE(outcome.isComplete);
    EXPECT_TRUE(outcome.isGood);
    EXPECT_EQ(outcome.trouble, "");
    EXPECT_EQ(outcome.result.points.size(), 6U);
    EXPECT_EQ(outcome.summary.good, 6U);
    EXPECT_EQ(outcome.wanted, 6U);
    EXPECT_EQ(outcome.tables, "board.channel-1.csv");
    EXPECT_EQ(outcome.journal, "board.channel-1.journal");
    EXPECT_TRUE(std::filesystem::exists("board.channel-1.csv"));
}

TEST_F(CalibrationRunTest, IsAskedAfterEachProbeAndEachPoint) {
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(m_asked, outcome.newProbes + 6);
}

TEST_F(CalibrationRunTest, StoppedWithinAPointStoresNoTablesAndLosesNoProbe) {
    m_stopsAt = 10;
    const CalibrationOutcome outcome = run();
    EXPECT_FALSE(outcome.isComplete);
    EXPECT_EQ(outcome.newProbes, 10U);
    EXPECT_THAT(outcome.result.points, IsEmpty());
    EXPECT_EQ(outcome.tables, "");
    EXPECT_FALSE(std::filesystem::exists("board.channel-1.csv"));
    EXPECT_EQ(readJournal("board.channel-1.journal").probes.begin()->second.size(), 10U);
}

TEST_F(CalibrationRunTest, ResumedGivesWhatOneRunGives) {
    const std::uint64_t probes = run().newProbes;
    const std::string whole = contentOf("board.channel-1.csv");
    std::filesystem::remove("board.channel-1.csv");
    std::filesystem::remove("board.channel-1.journal");
    m_asked = 0;
    m_stopsAt = 50;
    EXPECT_FALSE(run().isComplete);
    m_order.beginning = Beginning::resume;
    m_stopsAt = 0;
    const CalibrationOutcome resumed = run();
    EXPECT_TRUE(resumed.isComplete);
    EXPECT_EQ(resumed.knownProbes + resumed.newProbes, probes);
    const auto withoutDate = [](std::string text) {
        const std::size_t begin = text.find("# date");
        return text.erase(begin, text.find('\n', begin) - begin);
    };
    EXPECT_EQ(withoutDate(contentOf("board.channel-1.csv")), withoutDate(whole));
}

TEST_F(CalibrationRunTest, TablesThatMissALimitAreNotStored) {
    m_board.limits.leakageImprovement = 100.0;
    const CalibrationOutcome outcome = run();
    EXPECT_TRUE(outcome.isComplete);
    EXPECT_FALSE(outcome.isGood);
    EXPECT_EQ(outcome.verdict.kind(), VerdictKind::fail);
    EXPECT_EQ(outcome.summary.missed, 6U);
    EXPECT_TRUE(outcome.isHeldBackByFail);
    EXPECT_EQ(outcome.tables, "");
    EXPECT_FALSE(std::filesystem::exists("board.channel-1.csv"));
}

TEST_F(CalibrationRunTest, AcceptedFailureIsStoredAndMarkedAndNotGood) {
    m_board.limits.leakageImprovement = 100.0;
    m_order.acceptsFail = true;
    const CalibrationOutcome outcome = run();
    EXPECT_FALSE(outcome.isGood);
    EXPECT_EQ(outcome.tables, "board.channel-1.csv");
    EXPECT_NE(contentOf("board.channel-1.csv").find("\n# verdict: FAIL (accepted)\n"), std::string::npos);
}

TEST_F(CalibrationRunTest, TablesThatHoldTheLimitsSaySo) {
    m_board.limits.leakageImprovement = 10.0;
    const CalibrationOutcome outcome = run();
    EXPECT_TRUE(outcome.isGood);
    EXPECT_EQ(outcome.verdict.kind(), VerdictKind::pass);
    EXPECT_NE(contentOf("board.channel-1.csv").find("\n# verdict: PASS\n"), std::string::npos);
}

TEST_F(CalibrationRunTest, WithoutLimitsTheTablesHaveNoVerdict) {
    EXPECT_EQ(run().verdict.kind(), VerdictKind::none);
    EXPECT_EQ(contentOf("board.channel-1.csv").find("verdict"), std::string::npos);
}

TEST_F(CalibrationRunTest, WhatWasStoppedHasNoVerdict) {
    m_board.limits.leakageImprovement = 10.0;
    m_stopsAt = 10;
    EXPECT_EQ(run().verdict.kind(), VerdictKind::none);
}

TEST_F(CalibrationRunTest, IsSettledBeforeAnythingIsWritten) {
    const CalibrationRun run(m_board, m_order);
    EXPECT_EQ(run.journalFile(), "board.channel-1.journal");
    EXPECT_EQ(run.tablesFile(), "board.channel-1.csv");
    EXPECT_FALSE(std::filesystem::exists("board.channel-1.journal"));
}

TEST_F(CalibrationRunTest, ChannelWithoutALeakageIsRefused) {
    m_board.leakages.clear();
    EXPECT_EQ(refusal([this] { run(); }),
              "board.toml: channel 1 has no transmitter to calibrate, expected a [[leakage]]");
}

TEST_F(CalibrationRunTest, RadioThatDoesNotBootIsAnExceptionOfItsOwn) {
    for (DriverDescription& driver : m_board.drivers) {
        driver.missingWords = ~0U;
    }
    try {
        run();
        FAIL() << "it booted";
    } catch (const RadioError& error) {
        EXPECT_STREQ(error.what(), "board.toml: the radio did not boot");
    }
    EXPECT_THAT(m_told, IsEmpty());
}

} // namespace
} // namespace Radio::Calibration
