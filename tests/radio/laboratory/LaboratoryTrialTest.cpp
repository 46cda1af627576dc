#include "radio/calibration/CalibrationRun.h"
#include "radio/laboratory/LaboratoryReader.h"
#include "radio/laboratory/Results.h"
#include "radio/laboratory/Workers.h"
#include "tests/radio/support/FileFixture.h"
#include "tests/radio/support/LeakageBoard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <iterator>
#include <map>
#include <string>

namespace Radio::Laboratory {
namespace {

using testing::HasSubstr;

/** Three carriers at two temperatures, by a search. */
const std::string beginning = "board = \"board.toml\"\nchannel = 1\ncount = 3\nseed = 1\n";
const std::string bySearch = "\n[[settings]]\nname = \"search\"\nmethod = \"search\"\nqualify = false\n";

class LaboratoryTrialTest : public FileFixture {
protected:
    LaboratoryTrialTest() { write("board.toml", leakageBoard()); }

    static Description load(const std::string& text) {
        write("lab.toml", text);
        return loadLaboratory("lab.toml");
    }
    /** What is wrong with a population of this text. */
    static std::string refusalOf(const std::string& text) {
        return refusal([&] { load(beginning + text + bySearch); });
    }
    static std::optional<Trial> trialOf(const Description& laboratory, const Task& task) {
        return carryOut(laboratory, task, [] { return true; });
    }
    static std::size_t countFiles() {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("."), {}));
    }
};

class Silent final : public Calibration::CalibrationListener {
public:
    void begins(const Board& /*board*/, const Calibration::Result& /*result*/,
                std::size_t /*known*/) override {}
    void calibrated(const Calibration::Point& /*point*/) override {}
    bool goOn(const Calibration::CalibrationProgress& /*progress*/) override { return true; }
};

TEST_F(LaboratoryTrialTest, TransmitterLikeTheBoardsIsCalibratedAsTheBoardIs) {
    const Description laboratory = load(beginning + bySearch);
    const std::optional<Trial> trial = trialOf(laboratory, {0, 0});
    Calibration::CalibrationOrder order;
    order.wishes.channel = 1;
    Calibration::CalibrationRun run(laboratory.board, order);
    run.open();
    Silent silent;
    const Calibration::CalibrationOutcome outcome = run.run(silent);
    ASSERT_TRUE(trial);
    EXPECT_EQ(trial->end, TrialEnd::held);
    EXPECT_EQ(trial->reason, "");
    EXPECT_EQ(trial->probes, outcome.newProbes);
    ASSERT_TRUE(trial->worst && outcome.summary.between && outcome.summary.after);
    EXPECT_EQ(*trial->worst, std::max(outcome.summary.between->level, outcome.summary.after->level));
    // A temperature for each half of the points.
    EXPECT_EQ(trial->temperatureChanges, 2U);
    // Each probe waits 5 ms.
    EXPECT_DOUBLE_EQ(trial->seconds, 0.005 * static_cast<double>(trial->probes));
}

TEST_F(LaboratoryTrialTest, NothingIsKeptOfACalibration) {
    const Description laboratory = load(beginning + bySearch);
    ASSERT_EQ(countFiles(), 2U);
    ASSERT_TRUE(trialOf(laboratory, {0, 0}));
    EXPECT_EQ(countFiles(), 2U);
}

TEST_F(LaboratoryTrialTest, TimeHasWhatTemperaturesAndProbesTakeBesides) {
    const Description laboratory =
        load(beginning + "[time]\ntemperature_change = 600\nprobe = 2.5\n" + bySearch);
    const std::optional<Trial> trial = trialOf(laboratory, {0, 0});
    ASSERT_TRUE(trial);
    // 5 ms and 2.5 ms for each probe, and 600 s for each of two temperatures.
    EXPECT_NEAR(trial->seconds, 1200.0 + 0.0075 * static_cast<double>(trial->probes), 1e-9);
}

TEST_F(LaboratoryTrialTest, BestCorrectionsBeyondTheRangeAreAnEdge) {
    // 1/5 of the amplitude would take I = -2000.
    const Description laboratory =
        load(beginning + "[population]\npaths = [{ level = -13.98 }]\n" + bySearch);
    const std::optional<Trial> trial = trialOf(laboratory, {0, 0});
    ASSERT_TRUE(trial);
    EXPECT_EQ(trial->end, TrialEnd::edge);
    EXPECT_THAT(trial->reason, HasSubstr("17900000 kHz, -10 degrees: "));
}

TEST_F(LaboratoryTrialTest, StuckDetectorIsRefused) {
    const Description laboratory = load(beginning + "[population.detector]\nslope = 0\n" +
                                        "[[settings]]\nname = \"search\"\nmethod = \"search\"\n");
    const std::optional<Trial> trial = trialOf(laboratory, {0, 0});
    ASSERT_TRUE(trial);
    EXPECT_EQ(trial->end, TrialEnd::refused);
    EXPECT_FALSE(trial->worst);
}

TEST_F(LaboratoryTrialTest, LimitsOfTheLaboratoryTakeThePlaceOfTheBoards) {
    const Description laboratory = load(beginning + "[limits]\nleakage = -100\n" + bySearch);
    const std::optional<Trial> trial = trialOf(laboratory, {0, 0});
    ASSERT_TRUE(trial);
    EXPECT_EQ(trial->end, TrialEnd::missed);
    EXPECT_THAT(trial->reason, HasSubstr("limit -100"));
}

TEST_F(LaboratoryTrialTest, WhoDoesNotGoOnHasNoResult) {
    const Description laboratory = load(beginning + bySearch);
    EXPECT_FALSE(carryOut(laboratory, {0, 0}, [] { return false; }));
}

std::map<Task, std::string> linesOf(const Description& laboratory, unsigned jobs) {
    std::map<Task, std::string> lines;
    const bool isWhole = carryOutAll(
        laboratory, tasksOf(headingOf(laboratory, "0"), {1, 1}), jobs,
        {[&lines](const Trial& trial) { lines[trial.task] = lineOf(trial); }, [] { return true; }});
    EXPECT_TRUE(isWhole);
    return lines;
}

TEST_F(LaboratoryTrialTest, SeveralProcessesFindWhatOneFinds) {
    const Description laboratory =
        load(beginning + "[population]\nskew = { uniform = [-6, 6] }\n[population.detector]\nnoise = 1\n" +
             bySearch);
    const std::map<Task, std::string> alone = linesOf(laboratory, 1);
    EXPECT_EQ(alone.size(), 3U);
    EXPECT_EQ(linesOf(laboratory, 3), alone);
    EXPECT_EQ(lineOf(*trialOf(laboratory, {2, 0})), alone.at({2, 0}));
    EXPECT_NE(alone.at({2, 0}).substr(20), alone.at({1, 0}).substr(20));
}

TEST_F(LaboratoryTrialTest, WhatThrowsWhileItIsToldEndsTheWork) {
    const Description laboratory = load(beginning + bySearch);
    EXPECT_EQ(refusal([&] {
                  carryOutAll(laboratory, tasksOf(headingOf(laboratory, "0"), {1, 1}), 2,
                              {[](const Trial&) {
                                   throw InputError({"disk", 0}, "is full");
                               },
                               [] { return true; }});
              }),
              "disk: is full");
}

TEST_F(LaboratoryTrialTest, WhatAFileHasWrongIsNamedWithLineAndKey) {
    EXPECT_THAT(refusalOf("[population]\nskew = { uniform = [6, -6] }\n"),
                HasSubstr("lab.toml:6: population.skew.uniform: expected the lowest value first, found 6"));
    EXPECT_THAT(refusalOf("[population]\nskew = { normal = [0, 20] }\n"),
                HasSubstr("lab.toml:6: population.skew: expected values from -60.0 to 60.0, found -120.0 to "
                          "120.0"));
    EXPECT_THAT(refusalOf("[population.detector]\nnoise = { normal = [1, 0.5] }\n"),
                HasSubstr("population.detector.noise: expected values that are not negative, found -2.0 to "
                          "4.0"));
    EXPECT_THAT(refusalOf("[population.i]\ngain = { uniform = [-1e-4, 1e-4] }\n"),
                HasSubstr("population.i.gain: expected values other than 0, all of one sign"));
    EXPECT_THAT(refusalOf("[population]\nskew = \"wide\"\n"),
                HasSubstr("population.skew: expected a number"));
    EXPECT_THAT(refusalOf("[population]\nskew = { uniform = [0, 1], values = [1] }\n"),
                HasSubstr("population.skew: expected a number, or one of"));
    EXPECT_THAT(refusalOf("[population]\nskew = { quantiles = [3, 2] }\n"),
                HasSubstr("population.skew.quantiles: expected two values or more, from the least"));
    EXPECT_THAT(refusalOf("[population]\nskew = { normal = [0, 1], within = [1, 2] }\n"),
                HasSubstr("population.skew.within: expected a range with the mean 0.0 in it"));
    EXPECT_THAT(refusalOf("[population]\nscew = 1\n"), HasSubstr("population.scew: unknown key"));
    EXPECT_THAT(refusalOf("[population]\npaths = [{}, { level = -30 }]\n"),
                HasSubstr("phase in degrees, of a path that the board does not have"));
    EXPECT_THAT(refusalOf("[population.high_detector]\nnoise = 1\n"),
                HasSubstr("the board's [[leakage]] has no high_detector"));
    EXPECT_THAT(refusalOf("failures = 2\n"), HasSubstr("lab.toml:5: failures: "));
    EXPECT_THAT(refusalOf("[time]\nprobe = -1\n"),
                HasSubstr("time.probe: expected a time that is not negative"));
}

TEST_F(LaboratoryTrialTest, WhatSettingsHaveWrongIsNamedWithLineAndKey) {
    const auto refusalOfSettings = [](const std::string& text) {
        return refusal([&] { load(beginning + "\n[[settings]]\nname = \"a\"\n" + text); });
    };
    EXPECT_THAT(refusalOfSettings("probes = 100\n"),
                HasSubstr("probes: does nothing with the method search"));
    EXPECT_THAT(refusalOfSettings("method = \"fit\"\nstep = 1000\n"),
                HasSubstr("step: does nothing with the method fit, expected it with search alone"));
    EXPECT_THAT(refusalOfSettings("shrink_factor = 2\n"), HasSubstr("shrink_factor: expected a number"));
    EXPECT_THAT(refusalOfSettings("chamber = \"x\"\n"), HasSubstr("chamber: unknown key"));
    EXPECT_THAT(refusalOfSettings("[[settings]]\nname = \"a\"\n"),
                HasSubstr("\"a\" is the name of others, expected one of its own"));
    EXPECT_THAT(refusal([] { load(beginning); }), HasSubstr("settings: expected 1 to 100 tables"));
}

TEST_F(LaboratoryTrialTest, ChannelNeedsALeakage) {
    EXPECT_THAT(
        refusal([] { load("board = \"board.toml\"\nchannel = 2\ncount = 1\nseed = 1\n" + bySearch); }),
        HasSubstr("lab.toml:2: channel: expected a channel with a [[leakage]] in board.toml, found 2"));
}

TEST_F(LaboratoryTrialTest, FingerprintChangesWithBothFiles) {
    const std::string before = load(beginning + bySearch).fingerprint;
    EXPECT_EQ(load(beginning + bySearch).fingerprint, before);
    EXPECT_NE(load(beginning + "failures = 0.5\n" + bySearch).fingerprint, before);
    write("board.toml", leakageBoard() + "# another\n");
    EXPECT_NE(load(beginning + bySearch).fingerprint, before);
}

} // namespace
} // namespace Radio::Laboratory
