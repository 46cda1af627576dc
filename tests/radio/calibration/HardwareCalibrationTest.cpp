#include "radio/calibration/CalibrationRun.h"
#include "radio/calibration/ResultFile.h"
#include "tests/radio/support/BoardFileFixture.h"
#include "tests/radio/support/FakeRadio.h"
#include "tests/radio/support/HardwareBoard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace Radio::Calibration {
namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

/** A calibration of three carriers at 25 degrees, if nothing else is said, on a radio that is no model. */
class HardwareCalibrationTest : public BoardFileFixture, public CalibrationListener {
protected:
    HardwareCalibrationTest() {
        m_order.wishes.channel = 1;
        m_order.wishes.temperatures = {25};
        m_order.wishes.settleTime = 0;
        m_order.isHardware = true;
        m_order.version = "1.2.3";
    }

    void begins(const Board& /*board*/, const Result& /*result*/, std::size_t /*knownProbes*/) override {}
    void calibrated(const Point& /*point*/) override {}
    bool goOn(const CalibrationProgress& progress) override {
        ++m_asked;
        if (progress.awaited) {
            const std::optional<int> now = progress.awaited->now;
            m_awaited.push_back(std::to_string(progress.awaited->wanted) + ", now " +
                                (now ? std::to_string(*now) : "unknown"));
        }
        return m_asked != m_stopsAt;
    }

    CalibrationOutcome run() { return run(m_radio); }
    CalibrationOutcome run(FakeRadio& radio) {
        CalibrationRun run(m_board, m_order);
        run.open();
        const CalibrationBench bench = radio.bench();
        return run.run(*this, bench);
    }
    /** What is said about the board that this makes of it. */
    std::string refused(const std::string& board) {
        m_board = load(board);
        return settling();
    }
    std::string settling() {
        try {
            CalibrationRun(m_board, m_order);
        } catch (const ChoiceError& error) {
            return error.what() + std::string("; ") + error.choice();
        } catch (const InputError& error) {
            return error.what();
        }
        return "accepted";
    }
    /** That of opening the journal. */
    std::string opening() {
        CalibrationRun run(m_board, m_order);
        try {
            run.open();
        } catch (const ChoiceError& error) {
            return error.what() + std::string("; ") + error.choice();
        }
        return "opened";
    }
    static std::string with(const std::string& part, const std::string& other) {
        std::string board = hardwareBoard("/bench");
        return board.replace(board.find(part), part.size(), other);
    }

    /** The board with the model of leakageBoard() besides. */
    static std::string withAModel() {
        const std::string model = leakageBoard();
        const std::size_t begin = model.find("[[leakage]]");
        return with("[[calibration]]",
                    model.substr(begin, model.find("[[calibration]]") - begin) + "[[calibration]]");
    }

    static constexpr const char* journal = "board.channel-1.journal";
    static constexpr const char* csv = "board.channel-1.csv";

    Board m_board = load(hardwareBoard("/bench"));
    CalibrationOrder m_order;
    FakeRadio m_radio{m_board};
    std::vector<std::string> m_awaited;
    unsigned m_asked = 0;
    unsigned m_stopsAt = 0;
};

TEST_F(HardwareCalibrationTest, FindsWhereTheDetectorReadsLeast) {
    m_order.wishes.minDelta = 3;
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(outcome.trouble, "");
    EXPECT_TRUE(outcome.isGood);
    ASSERT_THAT(outcome.result.points, SizeIs(3));
    for (const Point& point : outcome.result.points) {
        EXPECT_NEAR(point.i, -480, 3);
        EXPECT_NEAR(point.q, 120, 3);
        EXPECT_EQ(point.remark, "");
    }
    EXPECT_EQ(outcome.tables, csv);
}

TEST_F(HardwareCalibrationTest, TellsReadingsInPlaceOfLeakage) {
    const CalibrationOutcome outcome = run();
    const Point& point = outcome.result.points.at(0);
    EXPECT_EQ(point.before, std::nullopt);
    EXPECT_EQ(point.after, std::nullopt);
    EXPECT_EQ(point.firstReading, 1235); // 520 and 1120 away
    EXPECT_LT(point.lastReading, 100);
    EXPECT_EQ(outcome.summary.before, std::nullopt);
    EXPECT_EQ(outcome.summary.between, std::nullopt);
    ASSERT_TRUE(outcome.summary.firstReading);
    EXPECT_EQ(outcome.summary.firstReading->level, 1235.0);
    EXPECT_EQ(outcome.summary.firstReading->frequency, 17900000U);
}

TEST_F(HardwareCalibrationTest, ModelOfTheBoardDoesNotMatter) {
    m_board = load(withAModel());
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(outcome.result.points.at(0).firstReading, 1235);
    EXPECT_EQ(outcome.result.points.at(0).before, std::nullopt);
}

TEST_F(HardwareCalibrationTest, EveryProbeIsInTheJournalBeforeTheNextIsSet) {
    bool isBehind = false;
    m_radio.beforeWrite = [&] {
        const std::string entered = contentOf(journal);
        const auto lines = std::count(entered.begin(), entered.end(), '\n');
        isBehind |= lines != static_cast<std::ptrdiff_t>(m_radio.reads) + 1;
    };
    run();
    EXPECT_FALSE(isBehind);
    EXPECT_GT(m_radio.reads, 100U);
}

TEST_F(HardwareCalibrationTest, CorrectionsFoundAreLeftInTheHardware) {
    m_order.wishes.band = Range{18000000, 18000000};
    const Point point = run().result.points.at(0);
    EXPECT_EQ(m_radio.writesTo("i").back(), "i " + std::to_string(point.i));
    EXPECT_EQ(m_radio.writesTo("q").back(), "q " + std::to_string(point.q));
}

TEST_F(HardwareCalibrationTest, SettleTimesAreWaitedFor) {
    m_order.wishes.band = Range{18000000, 18000000};
    m_order.wishes.settleTime = 20;
    m_order.wishes.maxIterations = 1;
    EXPECT_GE(run().seconds, 0.08); // four probes
}

// What is kept

TEST_F(HardwareCalibrationTest, JournalAndTablesSayThatTheyAreOfHardware) {
    run();
    EXPECT_THAT(contentOf(journal), HasSubstr(R"("mode":"hardware","transmitter":")"));
    EXPECT_TRUE(readJournal(journal).header.isHardware);
    EXPECT_THAT(contentOf(csv),
                AllOf(HasSubstr("\n# mode: hardware\n"),
                      HasSubstr("\nfrequency_khz,temperature_c,i,q,first_reading,last_reading,iterations,"
                                "max_delta,state\n17900000,25,-"),
                      HasSubstr(",1235,")));
    const Result read = readResult(csv);
    EXPECT_TRUE(read.isHardware);
    EXPECT_EQ(read.points.at(0).firstReading, 1235);
    EXPECT_EQ(read.points.at(0).before, std::nullopt);
}

TEST_F(HardwareCalibrationTest, BoardLoadsTheTables) {
    run();
    const Board again = loadBoard("board.toml");
    ASSERT_THAT(again.tables, SizeIs(2));
    EXPECT_THAT(again.tables[0].table.values, SizeIs(3));
}

TEST_F(HardwareCalibrationTest, ResumedMeasuresNothingTwice) {
    run();
    const unsigned whole = m_radio.reads;
    const std::string tables = contentOf(csv);
    std::filesystem::remove(csv);
    std::filesystem::remove(journal);
    FakeRadio radio(m_board);
    m_asked = 0;
    m_stopsAt = whole / 2;
    EXPECT_FALSE(run(radio).isComplete);
    m_order.beginning = Beginning::resume;
    m_stopsAt = 0;
    const CalibrationOutcome resumed = run(radio);
    EXPECT_TRUE(resumed.isComplete);
    EXPECT_EQ(radio.reads, whole);
    const auto withoutDate = [](std::string text) {
        const std::size_t begin = text.find("# date");
        return text.erase(begin, text.find('\n', begin) - begin);
    };
    EXPECT_EQ(withoutDate(contentOf(csv)), withoutDate(tables));
}

TEST_F(HardwareCalibrationTest, KnownPointsTouchNoHardwareAndWaitForNothing) {
    run();
    m_order.beginning = Beginning::resume;
    std::filesystem::remove(csv);
    FakeRadio radio(m_board);
    radio.temperatures = {80};
    EXPECT_TRUE(run(radio).isComplete);
    EXPECT_THAT(radio.writes, IsEmpty());
    EXPECT_EQ(radio.reads, 0U);
    EXPECT_THAT(m_awaited, IsEmpty());
    EXPECT_TRUE(std::filesystem::exists(csv));
}

TEST_F(HardwareCalibrationTest, ReadingThatFailsIsNoProbeAndIsMadeUpFor) {
    m_radio.failsAtRead = 7;
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(outcome.summary.failed, 3U);
    EXPECT_EQ(outcome.newProbes, 6U);
    EXPECT_THAT(outcome.result.points.at(0).remark,
                HasSubstr("unable to read from detector driver (EDriverResult = 0x816e"));
    m_order.beginning = Beginning::resume;
    FakeRadio mended(m_board);
    EXPECT_TRUE(run(mended).isGood);
}

TEST_F(HardwareCalibrationTest, StuckDetectorIsNotTakenForANoisyOne) {
    m_radio.isStuck = true;
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(outcome.summary.failed, 3U);
    for (const Point& point : outcome.result.points) {
        EXPECT_EQ(point.remark,
                  "readings stay within 1 of 500 whatever the corrections are: the detector is stuck");
    }
    EXPECT_FALSE(std::filesystem::exists(csv));
}

TEST_F(HardwareCalibrationTest, ResumedPointThatCannotBeTunedIsOneThatFailed) {
    m_stopsAt = 6;
    run();
    m_stopsAt = 0;
    m_order.beginning = Beginning::resume;
    FakeRadio radio(m_board);
    radio.isTunable = false;
    const CalibrationOutcome outcome = run(radio);
    EXPECT_EQ(outcome.trouble, "");
    EXPECT_EQ(outcome.summary.failed, 3U);
}

TEST_F(HardwareCalibrationTest, PointThatFailedLeavesNoProbeInTheHardware) {
    m_radio.failsAtRead = 7;
    m_order.wishes.band = Range{18000000, 18000000};
    run();
    EXPECT_EQ(m_radio.writesTo("i").back(), "i 0");
    EXPECT_EQ(m_radio.writesTo("q").back(), "q 0");
}

TEST_F(HardwareCalibrationTest, PointThatFailedLeavesWhatTuningWrote) {
    const CalibrationOutcome first = run();
    std::filesystem::remove(journal);
    // With the tables that came of it, tuning writes the corrections of each carrier.
    m_board = loadBoard("board.toml");
    FakeRadio radio(m_board);
    radio.failsAtRead = 7;
    EXPECT_EQ(run(radio).summary.failed, 3U);
    EXPECT_EQ(radio.writesTo("i").back(), "i " + std::to_string(first.result.points.at(2).i));
    EXPECT_EQ(radio.writesTo("q").back(), "q " + std::to_string(first.result.points.at(2).q));
}

TEST_F(HardwareCalibrationTest, PreparedButNotOpenedLeavesNothing) {
    CalibrationRun run(m_board, m_order);
    run.prepare();
    EXPECT_FALSE(std::filesystem::exists(journal));
    run.open();
    EXPECT_TRUE(std::filesystem::exists(journal));
}

TEST_F(HardwareCalibrationTest, RadioThatTakesNoCarrierIsNotMeasured) {
    m_radio.isTunable = false;
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(outcome.result.points.at(0).remark,
              "the radio could not be tuned: channel.1.tx.rf.lo.frequency.in.hz did not take its value");
    EXPECT_EQ(m_radio.reads, 0U);
}

TEST_F(HardwareCalibrationTest, SettleTimeThatWasCutShortGivesNoProbe) {
    m_order.wishes.settleTime = 60000;
    m_stopsAt = 2;
    const CalibrationOutcome outcome = run();
    EXPECT_FALSE(outcome.isComplete);
    EXPECT_EQ(outcome.newProbes, 0U);
    EXPECT_EQ(m_radio.reads, 0U);
    EXPECT_THAT(readJournal(journal).probes, IsEmpty());
}

TEST_F(HardwareCalibrationTest, JournalGivesTheSameTablesOffline) {
    run();
    m_order.beginning = Beginning::offline;
    m_order.isHardware = false;
    m_order.journal = journal;
    m_order.tables = "again.csv";
    m_order.wishes.temperatures.clear();
    m_order.wishes.settleTime.reset();
    const unsigned reads = m_radio.reads;
    EXPECT_TRUE(run().isGood);
    EXPECT_EQ(contentOf("again.csv"), contentOf(csv));
    EXPECT_EQ(m_radio.reads, reads);
}

TEST_F(HardwareCalibrationTest, SimulationDoesNotGoOnWithItsJournalNorTheOtherWayRound) {
    m_board = load(withAModel());
    run();
    m_order.beginning = Beginning::resume;
    m_order.isHardware = false;
    EXPECT_EQ(opening(), "board.channel-1.journal:1: begun on hardware, now asked for in a simulation; "
                         "hardware or restart");
    std::filesystem::remove(journal);
    m_order.beginning = Beginning::fresh;
    run();
    m_order.beginning = Beginning::resume;
    m_order.isHardware = true;
    EXPECT_EQ(opening(),
              "board.channel-1.journal:1: begun in a simulation, now asked for on hardware; restart");
}

TEST_F(HardwareCalibrationTest, ChangedHardwareIsNoticed) {
    run();
    m_order.beginning = Beginning::resume;
    const std::string complaint =
        "board.channel-1.journal:1: transmitter: what the channel's corrections and detectors are in the "
        "board's [hardware] has changed since; restart";
    m_board = load(with("/bench/detector", "/bench/other"));
    EXPECT_EQ(opening(), complaint);
    m_board = load(with("/bench/i\"", "/bench/i\"\nscale = 2"));
    EXPECT_EQ(opening(), complaint);
    // What is written in the end, or tuned with, is no matter of what was measured.
    m_board = load(with("on_exit = 0", "on_exit = 7"));
    EXPECT_EQ(opening(), "opened");
}

// What is asked for

TEST_F(HardwareCalibrationTest, SearchesWhereTheDriversCanBeWritten) {
    m_board = load(with("i\"\nrange = [-1000, 1000]", "i\"\nrange = [-700, 100]"));
    const Settings settings = run().result.settings;
    EXPECT_EQ(settings.i.low, -700);
    EXPECT_EQ(settings.i.high, 100);
    EXPECT_EQ(settings.q.low, -1000);
    EXPECT_EQ(settings.q.high, 1000);
}

TEST_F(HardwareCalibrationTest, SomebodyHasToSayWhereIsSearched) {
    EXPECT_EQ(refused(with("i\"\nrange = [-1000, 1000]", "i\"\n")),
              "board.toml: channel 1: no range for I, and no range of \"channel.1.tx.rf.mixer.i\" in "
              "[hardware], expected i_range in its [[calibration]]; i-range");
    m_order.wishes.iRange = Range{-5, 5};
    EXPECT_EQ(settling(), "accepted");
}

TEST_F(HardwareCalibrationTest, RangesBeyondWhatTheDriverTakesAreRefused) {
    m_order.wishes.iRange = Range{-1001, 1000};
    EXPECT_EQ(settling(),
              "board.toml:" + std::to_string(m_board.hardware.places.at("channel.1.tx.rf.mixer.i").line) +
                  ": I is to be searched from -1001 to 1000, but \"channel.1.tx.rf.mixer.i\" takes "
                  "-1000 to 1000, expected a range of I within that; i-range");
    m_order.wishes.iRange.reset();
    EXPECT_THAT(refused(with("min_delta = 60", "min_delta = 60\nq_range = [0, 2000]")),
                HasSubstr("Q is to be searched from 0 to 2000, but \"channel.1.tx.rf.mixer.q\" takes -1000 "
                          "to 1000, expected a range of Q within that; q-range"));
}

TEST_F(HardwareCalibrationTest, RangeOfOneValueLeavesNothingToSearch) {
    EXPECT_THAT(refused(with("i\"\nrange = [-1000, 1000]", "i\"\nrange = [0, 0]")),
                HasSubstr("\"channel.1.tx.rf.mixer.i\" leaves nothing to search for I, expected a range of "
                          "more than one value; i-range"));
}

TEST_F(HardwareCalibrationTest, CorrectionsAndDetectorHaveHardware) {
    EXPECT_EQ(
        refused(with("[hardware.\"channel.1.tx.rf.mixer.q\"]", "[hardware.\"channel.1.tx.rf.lo.config\"]")),
        "board.toml: channel 1: no range for Q, and no range of \"channel.1.tx.rf.mixer.q\" in "
        "[hardware], expected q_range in its [[calibration]]; q-range");
    m_order.wishes.qRange = Range{-5, 5};
    EXPECT_EQ(settling(),
              "board.toml: channel 1: driver \"channel.1.tx.rf.mixer.q\" has no hardware, expected "
              "it in [hardware] with the key write");
    EXPECT_THAT(refused(with("read = \"/bench/detector", "write = \"/bench/detector")),
                HasSubstr(": \"channel.1.tx.rf.detector.v\": expected the key read for a calibration, found "
                          "none"));
    m_order.wishes.useHighDetector = true;
    EXPECT_EQ(refused(hardwareBoard("/bench")),
              "board.toml: channel 1: no high-range detector, expected a driver that a search can read");
}

TEST_F(HardwareCalibrationTest, CoarseDcDriversStandInForTheMixer) {
    std::string board = hardwareBoard("/bench");
    for (const auto& [mixer, coarse] :
         {std::pair<std::string, std::string>("mixer.i", "i"), {"mixer.q", "q"}}) {
        for (std::size_t at = board.find("tx.rf." + mixer); at != std::string::npos;
             at = board.find("tx.rf." + mixer)) {
            board.replace(at, mixer.size() + 6, "tx.bb.iq.coarse.dc." + coarse + ".v.adjust");
        }
    }
    m_board = load(board);
    EXPECT_EQ(settling(), "accepted");
}

// The temperature

TEST_F(HardwareCalibrationTest, WaitsUntilTheSensorIsNear) {
    m_radio.temperatures = {20, 21, 22, 23};
    bool isEarly = false;
    m_radio.beforeWrite = [&] { isEarly |= m_radio.temperatures.front() != 23; };
    EXPECT_TRUE(run().isGood);
    EXPECT_FALSE(isEarly);
    EXPECT_THAT(m_awaited, Not(IsEmpty()));
    EXPECT_THAT(m_awaited, Each(StartsWith("25, now 2")));
}

TEST_F(HardwareCalibrationTest, WaitingForATemperatureCanBeEnded) {
    m_radio.temperatures = {};
    m_stopsAt = 3;
    const CalibrationOutcome outcome = run();
    EXPECT_FALSE(outcome.isComplete);
    EXPECT_THAT(m_awaited, ElementsAre("25, now unknown", "25, now unknown", "25, now unknown"));
    EXPECT_THAT(m_radio.writes, IsEmpty());
}

TEST_F(HardwareCalibrationTest, TemperatureThatNeverComesStopsTheCalibration) {
    m_radio.temperatures = {20};
    m_radio.timeBetweenQuestions = std::chrono::minutes(20);
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(outcome.trouble,
              "25 degrees did not come about within await_limit, 60 minutes: the sensor says 20 degrees");
    EXPECT_FALSE(outcome.isComplete);
    EXPECT_THAT(outcome.result.points, IsEmpty());
    EXPECT_THAT(m_awaited, SizeIs(3)); // after 20, 40 and 60 minutes
    EXPECT_THAT(m_radio.writes, IsEmpty());
}

TEST_F(HardwareCalibrationTest, BoardSaysHowLongATemperatureMayTake) {
    m_board = load(hardwareBoard("/bench", "await_limit = 1\n"));
    m_radio.temperatures = {};
    m_radio.timeBetweenQuestions = std::chrono::minutes(1);
    EXPECT_EQ(run().trouble,
              "25 degrees did not come about within await_limit, 1 minute: the sensor says nothing");
    for (const std::string limit : {"0", "1441"}) {
        EXPECT_THAT(refusal([&] { load(hardwareBoard("/bench", "await_limit = " + limit + "\n")); }),
                    HasSubstr("await_limit: expected a number from 1 to 1440, found " + limit));
    }
}

TEST_F(HardwareCalibrationTest, TemperatureThatComesInTimeIsInTime) {
    m_radio.temperatures = {20, 20, 20, 20, 25};
    m_radio.timeBetweenQuestions = std::chrono::minutes(20);
    EXPECT_EQ(run().trouble, "");
}

TEST_F(HardwareCalibrationTest, TemperatureThatDriftsAwayIsRemarkedUpon) {
    m_radio.temperatures = {25, 25, 28};
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(outcome.result.points.at(0).remark, "the sensor said 28 degrees");
    EXPECT_EQ(outcome.result.points.at(0).state, PointState::good);
    EXPECT_TRUE(outcome.isGood);
}

TEST_F(HardwareCalibrationTest, ChamberIsToldTheTemperatureFirst) {
    std::string board = with("min_delta = 60", "min_delta = 60\nchamber = \"chamber\"\ndwell = 0");
    board.replace(board.find("[drivers]"), 9, "[drivers]\n\"chamber\" = {}");
    m_board = load(board + "\n[hardware.chamber]\nwrite = \"/bench/chamber\"\nrange = [-40, 60]\n");
    m_order.wishes.temperatures = {-10, 50};
    FakeRadio radio(m_board);
    radio.temperatures = {80};
    m_order.wishes.band = Range{18000000, 18000000};
    const CalibrationOutcome outcome = run(radio);
    // The unit is at 80 degrees: 50 come first.
    EXPECT_EQ(radio.writes.at(0), "chamber 50");
    EXPECT_THAT(radio.writesTo("chamber"), ElementsAre("chamber 50", "chamber -10"));
    EXPECT_TRUE(outcome.isGood);
    m_order.wishes.temperatures = {25, 61};
    EXPECT_THAT(settling(), HasSubstr("\"chamber\" takes -40 to 60 degrees, not 61, expected temperatures "
                                      "within that; temperatures"));
}

TEST_F(HardwareCalibrationTest, ChamberWantsHardwareAndASensor) {
    std::string board = with("min_delta = 60", "min_delta = 60\nchamber = \"chamber\"");
    board.replace(board.find("[drivers]"), 9, "[drivers]\n\"chamber\" = {}");
    EXPECT_EQ(refused(board), "board.toml: channel 1: driver \"chamber\" has no hardware, expected it in "
                              "[hardware] with the key write");
    board.replace(board.find("\n[sensor]"), std::string::npos,
                  "\n[hardware.chamber]\nwrite = \"/bench/chamber\"\n");
    EXPECT_THAT(refused(board),
                HasSubstr(": \"chamber\" sets temperatures, but there is no [sensor], expected "
                          "one that tells when they are reached"));
}

TEST_F(HardwareCalibrationTest, WithoutASensorOneTemperatureIsTakenAsGiven) {
    EXPECT_EQ(refused(hardwareBoardWithoutSensor("/bench")), "accepted");
    m_radio.temperatures = {};
    EXPECT_TRUE(run().isGood);
    EXPECT_THAT(m_awaited, IsEmpty());
    m_order.wishes.temperatures = {25, 50};
    EXPECT_EQ(settling(), "board.toml: channel 1: 2 temperatures, and no [sensor] that tells when they are "
                          "reached, expected one temperature; temperatures");
}

TEST_F(HardwareCalibrationTest, ChamberIsADriverOfTheBoard) {
    EXPECT_THAT(refusal([] { load(with("min_delta = 60", "min_delta = 60\nchamber = \"chamber\"")); }),
                HasSubstr("chamber: the board has no driver \"chamber\", expected one of [drivers]"));
}

TEST_F(HardwareCalibrationTest, OrderOfTemperaturesIsKeptAndTablesDoNotDependOnIt) {
    std::string board = with("min_delta = 60", "min_delta = 60\nchamber = \"chamber\"\ndwell = 0");
    board.replace(board.find("[drivers]"), 9, "[drivers]\n\"chamber\" = {}");
    m_board = load(board + "\n[hardware.chamber]\nwrite = \"/bench/chamber\"\n");
    m_order.wishes.temperatures = {-10, 25, 50};
    m_order.wishes.band = Range{18000000, 18000000};
    FakeRadio radio(m_board);
    radio.temperatures = {30};
    const CalibrationOutcome outcome = run(radio);
    ASSERT_THAT(outcome.result.points, SizeIs(3));
    EXPECT_THAT(radio.writesTo("chamber"), ElementsAre("chamber 50", "chamber 25", "chamber -10"));
    EXPECT_THAT(contentOf(journal), HasSubstr("\n{\"order_c\":[50,25,-10]}\n"));
    EXPECT_EQ(outcome.result.points.at(0).temperature, -10);
    m_order.beginning = Beginning::resume;
    FakeRadio colder(m_board);
    colder.temperatures = {-40};
    EXPECT_THAT(run(colder).result.route, ElementsAre(50, 25, -10));
}

TEST_F(HardwareCalibrationTest, TemperatureHasToLastForTheDwellTime) {
    m_order.wishes.dwell = 10 * 60;
    m_radio.temperatures = {25, 25, 30, 25};
    m_radio.timeBetweenQuestions = std::chrono::minutes(1);
    EXPECT_TRUE(run().isGood);
    // Once away, and then near for ten minutes, of which two go by from one look to the next.
    EXPECT_THAT(m_awaited, testing::Contains("25, now 30"));
    EXPECT_GE(m_awaited.size(), 5U);
}

TEST_F(HardwareCalibrationTest, PersonSaysThatTheTemperatureIsThere) {
    m_board = load(hardwareBoardWithoutSensor("/bench"));
    m_order.wishes.temperatures = {25, 50};
    m_order.isAttended = true;
    m_radio.temperatures = {};
    m_radio.words = {{}, {true}, {}, {true, 40}, {}, {true, 51}};
    const CalibrationOutcome outcome = run();
    EXPECT_TRUE(outcome.isGood);
    EXPECT_THAT(m_awaited, AllOf(testing::Contains("25, now unknown"), testing::Contains("50, now unknown"),
                                 testing::Contains("50, now 40")));
}

TEST_F(HardwareCalibrationTest, PersonWhoHasGoneStopsTheCalibration) {
    m_board = load(hardwareBoardWithoutSensor("/bench"));
    m_order.isAttended = true;
    m_radio.words = {{false, {}, true}};
    const CalibrationOutcome outcome = run();
    EXPECT_EQ(outcome.trouble, "nobody is there any more who says that 25 degrees have come about");
    EXPECT_THAT(m_radio.writes, IsEmpty());
}

} // namespace
} // namespace Radio::Calibration
