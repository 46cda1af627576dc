#include "radio/calibration/CalibrationRun.h"

#include "radio/session/BootedRadio.h"
#include "tests/radio/support/BoardFileFixture.h"
#include "tests/radio/support/FileSizeLimit.h"
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

// One at a time

TEST_F(CalibrationRunTest, ChannelIsCalibratedOnceAtATimeWhateverTheJournalsAreCalled) {
    CalibrationRun first(m_board, m_order);
    first.prepare();
    CalibrationOrder other = m_order;
    other.journal = "other.journal";
    other.tables = "other.csv";
    EXPECT_EQ(refusal([&] { CalibrationRun(m_board, other).prepare(); }),
              "board.toml: another calibration of channel 1 of this board goes on, expected one at a time");
    EXPECT_FALSE(std::filesystem::exists("other.journal"));
}

TEST_F(CalibrationRunTest, ChannelIsFreeOnceItsCalibrationIsThrough) {
    run();
    EXPECT_EQ(refusal([&] { CalibrationRun(m_board, m_order).prepare(); }), "accepted");
}

TEST_F(CalibrationRunTest, TablesAreThoseOfOneCalibrationAtATime) {
    CalibrationRun first(m_board, m_order);
    first.prepare();
    // A copy of the board, or what an editor has put in its place.
    Board copy = m_board;
    copy.file = "copy.toml";
    write("copy.toml", contentOf("board.toml"));
    EXPECT_EQ(refusal([&] { CalibrationRun(copy, m_order).prepare(); }),
              "board.channel-1.csv: another calibration is to store its tables here, expected one at a time");
    CalibrationOrder other = m_order;
    other.tables = "other.csv";
    EXPECT_EQ(refusal([&] { CalibrationRun(copy, other).prepare(); }), "accepted");
}

TEST_F(CalibrationRunTest, JournalThatGoesOnCanBeGoneThroughOffline) {
    m_stopsAt = 10;
    run();
    CalibrationOrder resumed = m_order;
    resumed.beginning = Beginning::resume;
    CalibrationRun first(m_board, resumed);
    first.prepare();
    m_order.beginning = Beginning::offline;
    m_order.journal = "board.channel-1.journal";
    EXPECT_EQ(refusal([&] { CalibrationRun(m_board, m_order).prepare(); }), "accepted");
}

TEST_F(CalibrationRunTest, BoardThatIsGoneCannotBeLocked) {
    std::filesystem::remove("board.toml");
    EXPECT_EQ(refusal([&] { CalibrationRun(m_board, m_order).prepare(); }),
              "board.toml: cannot be locked: No such file or directory, expected a board file of which one "
              "calibration at a time can be made");
}

// What is there in place of a journal

TEST_F(CalibrationRunTest, DamagedJournalIsInNobodysWay) {
    write("board.channel-1.journal", "mine\n");
    EXPECT_EQ(refusal([this] { run(); }),
              "board.channel-1.journal:1: expected the JSON object with which a calibration journal begins");
    m_order.beginning = Beginning::restart;
    CalibrationRun run(m_board, m_order);
    run.prepare();
    EXPECT_EQ(contentOf("board.channel-1.journal"), "mine\n");
    run.open();
    EXPECT_EQ(run.putAway().backup, "board.channel-1.journal.~1~");
    EXPECT_EQ(run.putAway().remark,
              "board.channel-1.journal:1: expected the JSON object with which a calibration journal begins");
    EXPECT_EQ(contentOf("board.channel-1.journal.~1~"), "mine\n");
    EXPECT_TRUE(run.run(*this).isGood);
}

TEST_F(CalibrationRunTest, HealthyJournalIsPutAwayWithoutARemark) {
    run();
    CalibrationRun run(m_board, m_order);
    run.open();
    EXPECT_EQ(run.putAway().backup, "board.channel-1.journal.~1~");
    EXPECT_EQ(run.putAway().remark, "");
}

TEST_F(CalibrationRunTest, JournalThatCannotBeBegunLeavesTheOldOne) {
    write("board.channel-1.journal", "mine\n");
    m_order.beginning = Beginning::restart;
    CalibrationRun run(m_board, m_order);
    run.prepare();
    {
        const FileSizeLimit limit(20); // less than a first line has
        EXPECT_THROW(run.open(), InputError);
    }
    EXPECT_EQ(contentOf("board.channel-1.journal"), "mine\n");
    EXPECT_FALSE(std::filesystem::exists("board.channel-1.journal.~1~"));
}

TEST_F(CalibrationRunTest, FullDiskEndsItAndKeepsWhatWasEntered) {
    CalibrationOutcome outcome;
    {
        const FileSizeLimit limit(2000);
        outcome = run();
    }
    EXPECT_FALSE(outcome.isComplete);
    EXPECT_EQ(outcome.wayOn, "room");
    EXPECT_EQ(outcome.trouble,
              "board.channel-1.journal: could not be written: File too large: the disk is full as far as one "
              "file may fill it; what was entered before is kept: " +
                  std::to_string(outcome.newProbes) + " probes");
    EXPECT_GT(outcome.newProbes, 5U);
    EXPECT_EQ(readJournal("board.channel-1.journal").probes.begin()->second.size(), outcome.newProbes);
    m_order.beginning = Beginning::resume;
    EXPECT_TRUE(run().isGood);
}

TEST_F(CalibrationRunTest, TablesThatFindNoRoomAreStoredByResuming) {
    m_order.tables = "/dev/full";
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(outcome.wayOn, "resume");
    m_order.tables = "other.csv";
    m_order.beginning = Beginning::resume;
    const CalibrationOutcome resumed = run();
    EXPECT_EQ(resumed.newProbes, 0U);
    EXPECT_EQ(resumed.tables, "other.csv");
}

TEST_F(CalibrationRunTest, JournalOfAnotherSearchCanBePutAway) {
    run();
    std::string entered = contentOf("board.channel-1.journal");
    entered.replace(entered.find("\"i\":1000"), 8, "\"i\":1001");
    write("board.channel-1.journal", entered);
    m_order.beginning = Beginning::resume;
    EXPECT_EQ(run().wayOn, "put away");
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
