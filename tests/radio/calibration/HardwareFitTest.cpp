#include "radio/calibration/CalibrationRun.h"
#include "tests/radio/support/BoardFileFixture.h"
#include "tests/radio/support/FakeRadio.h"
#include "tests/radio/support/HardwareBoard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace Radio::Calibration {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

/** A fit over 17.9 to 18.1 GHz at 25 degrees, on a radio that is no model; its best corrections are the same
 * everywhere. */
class HardwareFitTest : public BoardFileFixture, public CalibrationListener {
protected:
    HardwareFitTest() {
        m_order.wishes.channel = 1;
        m_order.wishes.method = CalibrationMethod::fit;
        m_order.wishes.temperatures = {25};
        m_order.wishes.settleTime = 0;
        m_order.isHardware = true;
        m_order.version = "1.2.3";
        m_radio.isLogarithmic = true;
    }

    void begins(const Board& /*board*/, const Result& /*result*/, std::size_t /*knownProbes*/) override {}
    void calibrated(const Point& point) override { m_told.push_back(point); }
    bool goOn(const CalibrationProgress& progress) override {
        return m_stopsAt == 0 || progress.probes < m_stopsAt;
    }

    static Board board(const std::string& calibration = "detector_slope = 25.0\ndetector_zero = -95.0\n") {
        std::string text = hardwareBoard("/bench", calibration);
        text.replace(text.find("[drivers]"), 9, "[drivers]\n\"analyser\" = {}");
        return load(text + "\n[hardware.\"analyser\"]\nread = \"/bench/analyser\"\n");
    }
    CalibrationOutcome run() {
        CalibrationRun run(m_board, m_order);
        run.open();
        const CalibrationBench bench = m_radio.bench();
        return run.run(*this, bench);
    }
    static std::string tables() {
        std::string text = contentOf(csv);
        const std::size_t begin = text.find("# date");
        return text.erase(begin, text.find('\n', begin) - begin);
    }
    /** Those of a fit that nothing disturbs. */
    std::string wholeTables() {
        FakeRadio undisturbed{m_board};
        undisturbed.isLogarithmic = true;
        CalibrationRun run(m_board, m_order);
        run.open();
        const CalibrationBench bench = undisturbed.bench();
        EXPECT_TRUE(run.run(*this, bench).isGood);
        std::string text = tables();
        std::filesystem::remove(csv);
        std::filesystem::remove(journal);
        return text;
    }

    static constexpr const char* journal = "board.channel-1.journal";
    static constexpr const char* csv = "board.channel-1.csv";

    Board m_board = board();
    CalibrationOrder m_order;
    FakeRadio m_radio{m_board};
    std::vector<Point> m_told;
    std::size_t m_stopsAt = 0;
};

TEST_F(HardwareFitTest, FindsTheCorrectionsEverywhere) {
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(outcome.trouble, "");
    EXPECT_TRUE(outcome.isGood);
    ASSERT_TRUE(outcome.result.fit);
    for (const Point& node : outcome.result.nodes) {
        EXPECT_NEAR(node.i, -480, 1);
        EXPECT_NEAR(node.q, 120, 1);
    }
    EXPECT_EQ(outcome.tables, csv);
}

TEST_F(HardwareFitTest, ReadingThatFailsStopsItAndIsMeasuredWhenItGoesOn) {
    const std::string whole = wholeTables();
    m_radio.failsAtRead = 40;
    const CalibrationOutcome stopped = run();
    EXPECT_FALSE(stopped.isComplete);
    EXPECT_THAT(stopped.trouble, EndsWith(" kHz, 25 degrees: channel.1.tx.rf.detector.v could not be read"));
    EXPECT_EQ(stopped.wayOn, "measure");
    EXPECT_EQ(stopped.tables, "");
    EXPECT_EQ(stopped.newProbes, 39U);
    m_radio.failsAtRead = 0;
    m_order.beginning = Beginning::resume;
    const CalibrationOutcome resumed = run();
    EXPECT_EQ(resumed.knownProbes, 39U);
    EXPECT_TRUE(resumed.isGood);
    EXPECT_EQ(tables(), whole);
}

TEST_F(HardwareFitTest, CarrierThatCannotBeTunedStopsItAndIsTunedWhenItGoesOn) {
    const std::string whole = wholeTables();
    m_radio.beforeWrite = [this] { m_radio.isTunable = m_radio.reads < 30; };
    const CalibrationOutcome stopped = run();
    EXPECT_FALSE(stopped.isComplete);
    EXPECT_THAT(stopped.trouble, HasSubstr(" kHz, 25 degrees: the radio could not be tuned: "));
    EXPECT_EQ(stopped.wayOn, "measure");
    m_radio.beforeWrite = [this] { m_radio.isTunable = true; };
    m_order.beginning = Beginning::resume;
    EXPECT_TRUE(run().isGood);
    EXPECT_EQ(tables(), whole);
}

TEST_F(HardwareFitTest, InterruptedPointIsNotTold) {
    m_stopsAt = 33;
    const CalibrationOutcome outcome = run();
    EXPECT_FALSE(outcome.isComplete);
    EXPECT_EQ(outcome.trouble, "");
    for (const Point& point : m_told) {
        EXPECT_EQ(point.state, PointState::good);
    }
}

TEST_F(HardwareFitTest, LeavesTheHardwareWithWhatItHadBefore) {
    run();
    EXPECT_EQ(m_radio.writesTo("i").back(), "i 0");
    EXPECT_EQ(m_radio.writesTo("q").back(), "q 0");
}

TEST_F(HardwareFitTest, NothingBeyondTheRangesIsWritten) {
    run();
    for (const std::string& write : m_radio.writesTo("i")) {
        EXPECT_LE(std::abs(std::stoi(write.substr(2))), 1000) << write;
    }
    EXPECT_GT(m_radio.writesTo("i").size(), 30U);
}

TEST_F(HardwareFitTest, LimitIsHeldByTheClaimWhereZeroAndSlopeAreStated) {
    // One step beside the bottom are -80 dBc, and half of one in both directions -83; the detector shows -85
    // besides.
    m_board.limits.leakage = -70.0;
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(outcome.verdict.kind(), VerdictKind::pass);
    ASSERT_TRUE(outcome.verdict.limits.at(0).found);
    EXPECT_LT(*outcome.verdict.limits[0].found, -70.0);
    EXPECT_GT(*outcome.verdict.limits[0].found, -85.0);
}

TEST_F(HardwareFitTest, WhatNoCorrectionTakesAwayCountsAsLeaking) {
    m_radio.uncancelled = -68.0;
    m_board.limits.leakage = -70.0;
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(outcome.verdict.kind(), VerdictKind::fail);
    ASSERT_TRUE(outcome.summary.claim);
    EXPECT_GT(outcome.summary.claim->level, -68.0);
    EXPECT_EQ(outcome.tables, "");
}

TEST_F(HardwareFitTest, LimitInDbcIsNotHeldWithoutAZero) {
    m_board = board("detector_slope = 25.0\n");
    m_board.limits.leakage = -10.0;
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(outcome.verdict.kind(), VerdictKind::fail);
    EXPECT_EQ(outcome.verdict.limits.at(0).whyUnknown,
              "the limit is in dBc, and the detector's zero is not known");
}

TEST_F(HardwareFitTest, ImprovementIsJudgedWithoutAZero) {
    // 495 units from the bottom are -26 dBc, and there it is below -75.
    m_board = board("detector_slope = 25.0\n");
    m_board.limits.leakageImprovement = 49.0;
    EXPECT_EQ(run().verdict.kind(), VerdictKind::pass);
    m_order.beginning = Beginning::restart;
    m_board.limits.leakageImprovement = 60.0;
    EXPECT_EQ(run().verdict.kind(), VerdictKind::fail);
}

TEST_F(HardwareFitTest, AnalyserLooksAtPointsAndTries) {
    m_board = board("detector_slope = 25.0\ndetector_zero = -95.0\nanalyser = \"analyser\"\n");
    const CalibrationOutcome outcome = run();
    ASSERT_TRUE(outcome.result.fit);
    EXPECT_EQ(m_radio.looks, outcome.result.points.size() + outcome.result.tries.size());
    EXPECT_THAT(outcome.result.tries, SizeIs(outcome.result.fit->verifications.size()));
    EXPECT_GE(outcome.result.tries.size(), 10U);
    EXPECT_EQ(outcome.result.tries[0].analysed, -80.0);
}

TEST_F(HardwareFitTest, WhatTheAnalyserSeesIsHeldToTheLimitsAsWell) {
    m_board = board("detector_slope = 25.0\ndetector_zero = -95.0\nanalyser = \"analyser\"\n");
    m_board.limits.leakage = -70.0;
    m_radio.analysed = -6950;
    const CalibrationOutcome outcome = run();
    EXPECT_THAT(linesOf(outcome.verdict), ElementsAre(StartsWith("FAIL: leakage anywhere -69.50 dBc at ")));
    EXPECT_EQ(outcome.result.points.at(0).state, PointState::missed);
    EXPECT_THAT(outcome.result.points[0].remark, HasSubstr("it leaks -69.50 dBc, and leakage allows -70"));
}

TEST_F(HardwareFitTest, StuckDetectorIsCalledStuckThoughItIsNoisy) {
    m_radio.isStuck = true;
    const CalibrationOutcome outcome = run();
    ASSERT_TRUE(outcome.result.fit);
    EXPECT_THAT(outcome.result.fit->reason, HasSubstr(": the detector is stuck"));
    ASSERT_THAT(outcome.result.points, SizeIs(1));
    EXPECT_EQ(outcome.summary.failed, 1U);
    EXPECT_FALSE(outcome.isGood);
    EXPECT_EQ(outcome.tables, "");
}

TEST_F(HardwareFitTest, LinearDetectorFailsByName) {
    m_radio.isLogarithmic = false;
    EXPECT_THAT(run().result.fit->reason, Not(HasSubstr("stuck")));
    EXPECT_FALSE(std::filesystem::exists(csv));
}

TEST_F(HardwareFitTest, ChamberBringsEachTemperatureOnce) {
    std::string text =
        hardwareBoard("/bench", "detector_slope = 25.0\ndetector_zero = -95.0\nchamber = \"chamber\"\n");
    text.replace(text.find("[drivers]"), 9, "[drivers]\n\"chamber\" = {}");
    m_board = load(text +
                   "\n[hardware.\"chamber\"]\nwrite = \"/bench/chamber\"\nrange = [-40, 85]\non_exit = 25\n");
    m_order.wishes.temperatures = {-10, 50};
    FakeRadio radio{m_board};
    radio.isLogarithmic = true;
    radio.timeBetweenQuestions = std::chrono::minutes(1);
    CalibrationRun run(m_board, m_order);
    run.open();
    const CalibrationBench bench = radio.bench();
    const CalibrationOutcome outcome = run.run(*this, bench);
    EXPECT_TRUE(outcome.isGood) << outcome.trouble;
    const std::vector<std::string> chamber = radio.writesTo("chamber");
    EXPECT_EQ(chamber.front(), "chamber 50"); // 25 degrees are nearer to that
    EXPECT_EQ(chamber.size(), outcome.result.fit->temperatureChanges);
}

} // namespace
} // namespace Radio::Calibration
