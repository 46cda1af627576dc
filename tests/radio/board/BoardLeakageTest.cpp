#include "tests/radio/support/BoardFileFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace Radio {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

const std::string paths = "paths = [{ level = -27.5, phase = 35 }]\n";
const std::string branches = "i = { driver = \"i\", gain = 1e-4, range = [-1000, 1000] }\n"
                             "q = { driver = \"q\", gain = -1e-4, range = [-500, 500] }\n";
const std::string detector = "detector = { driver = \"low\", slope = 25, zero = -95, range = [0, 4095] }\n";
const std::string drivers = "[drivers]\n\"i\" = {}\n\"q\" = {}\n\"low\" = {}\n\"high\" = {}\n";

class BoardLeakageTest : public BoardFileFixture {
protected:
    /** The leakage of channel 1 whose table starts on line 5; `text` begins on line 8. */
    static LeakageDescription leakageOf(const std::string& text) {
        return loadAfterChannel(start + text + drivers).leakages.at(0);
    }
    static std::string refusedLeakage(const std::string& text) {
        return refusedAfterChannel(start + text + drivers);
    }
    /** The message about a path, on line 8. */
    static std::string refusedPath(const std::string& path) {
        return refusedLeakage("paths = [{ " + path + " }]\n" + branches + detector);
    }
    /** The message about the branch I, on line 9. */
    static std::string refusedBranch(const std::string& branch) {
        return refusedLeakage(paths + "i = { " + branch + " }\n");
    }
    /** The message about the detector, on line 11. */
    static std::string refusedDetector(const std::string& text) {
        return refusedLeakage(paths + branches + "detector = { " + text + " }\n");
    }
    /** The same for a detector that says `text` beside what it needs. */
    static std::string refusedDetectorWith(const std::string& text) {
        return refusedDetector("driver = \"low\", slope = 25, zero = -95, range = [0, 4095], " + text);
    }

    static const std::string start;
};

const std::string BoardLeakageTest::start = "[[leakage]]\nchannel = 1\nreference = 18700000\n";

// What is kept.

TEST_F(BoardLeakageTest, BoardWithoutLeakagesHasNone) {
    EXPECT_THAT(loadAfterChannel("").leakages, IsEmpty());
}

TEST_F(BoardLeakageTest, LeakageIsKept) {
    const LeakageDescription leakage =
        leakageOf(paths + branches + detector + "skew = -3.5\nseed = 2147483647\n");
    EXPECT_EQ(leakage.channel, 1);
    EXPECT_EQ(leakage.reference, 18'700'000U);
    EXPECT_EQ(leakage.skew, -3.5);
    EXPECT_EQ(leakage.seed, 2147483647U);
}

TEST_F(BoardLeakageTest, PathsAreKept) {
    const LeakageDescription leakage = leakageOf(
        "paths = [{ level = -27, level_per_degree = 0.01, level_per_ghz = 0.8, phase = 35, phase_per_degree "
        "= 0.1, delay = 0.25 },\n{ level = -41.5, phase = -120 }]\n" +
        branches + detector);
    ASSERT_THAT(leakage.paths, SizeIs(2));
    EXPECT_EQ(leakage.paths[0].level, -27.0);
    EXPECT_EQ(leakage.paths[0].levelPerDegree, 0.01);
    EXPECT_EQ(leakage.paths[0].levelPerGHz, 0.8);
    EXPECT_EQ(leakage.paths[0].phase, 35.0);
    EXPECT_EQ(leakage.paths[0].phasePerDegree, 0.1);
    EXPECT_EQ(leakage.paths[0].delay, 0.25);
    EXPECT_EQ(leakage.paths[1].level, -41.5);
    EXPECT_EQ(leakage.paths[1].phase, -120.0);
}

TEST_F(BoardLeakageTest, BranchesAreKept) {
    const LeakageDescription leakage =
        leakageOf(paths + "i = { driver = \"i\", gain = -2e-4, step = 4, range = [-1000, 999] }\n" +
                  "q = { driver = \"q\", gain = 1, range = [7, 7] }\n" + detector);
    EXPECT_EQ(leakage.i.driver, "i");
    EXPECT_EQ(leakage.i.gain, -2e-4);
    EXPECT_EQ(leakage.i.step, 4);
    EXPECT_EQ(leakage.i.low, -1000);
    EXPECT_EQ(leakage.i.high, 999);
    EXPECT_EQ(leakage.q.driver, "q");
    EXPECT_EQ(leakage.q.low, 7);
}

TEST_F(BoardLeakageTest, DetectorsAreKept) {
    const LeakageDescription leakage =
        leakageOf(paths + branches + detector +
                  "high_detector = { driver = \"high\", slope = -10.5, zero = -60, floor = -55, noise = 1.5, "
                  "step = 2, range = [-5, 1023], settling = 0.5 }\n");
    EXPECT_EQ(leakage.detector.driver, "low");
    EXPECT_EQ(leakage.detector.slope, 25.0);
    ASSERT_TRUE(leakage.highDetector.has_value());
    const DetectorDescription& high = *leakage.highDetector;
    EXPECT_EQ(high.driver, "high");
    EXPECT_EQ(high.slope, -10.5);
    EXPECT_EQ(high.zero, -60.0);
    EXPECT_EQ(high.floor, -55.0);
    EXPECT_EQ(high.noise, 1.5);
    EXPECT_EQ(high.step, 2);
    EXPECT_EQ(high.low, -5);
    EXPECT_EQ(high.high, 1023);
    EXPECT_EQ(high.settling, 0.5);
}

TEST_F(BoardLeakageTest, WhatIsNotSaidHasItsDefault) {
    const LeakageDescription leakage = leakageOf(paths + branches + detector);
    EXPECT_EQ(leakage.skew, 0.0);
    EXPECT_EQ(leakage.seed, 0U);
    EXPECT_EQ(leakage.paths[0].delay, 0.0);
    EXPECT_EQ(leakage.paths[0].phasePerDegree, 0.0);
    EXPECT_EQ(leakage.i.step, 1);
    EXPECT_EQ(leakage.detector.step, 1);
    EXPECT_EQ(leakage.detector.floor, -120.0);
    EXPECT_EQ(leakage.detector.noise, 0.0);
    EXPECT_EQ(leakage.detector.settling, 0.0);
    EXPECT_FALSE(leakage.highDetector.has_value());
}

// The table.

TEST_F(BoardLeakageTest, LeakageInSingleBracketsIsRefused) {
    EXPECT_EQ(refusedAfterChannel("[leakage]\nchannel = 1\n"),
              "board.toml:5: leakage: expected [[leakage]] tables, one for each modelled LO leakage, found a "
              "table");
}

TEST_F(BoardLeakageTest, UnknownKeyIsRefusedAndTheNearestOffered) {
    EXPECT_EQ(refusedLeakage("path = []\n"),
              "board.toml:8: leakage.path: unknown key (did you mean \"paths\"?), expected one of channel, "
              "reference, paths, skew, seed, i, q, detector, high_detector");
    EXPECT_EQ(refusedPath("levle = 1"),
              "board.toml:8: leakage.paths.levle: unknown key (did you mean \"level\"?), expected one of "
              "level, level_per_degree, level_per_ghz, phase, phase_per_degree, delay");
    EXPECT_EQ(refusedBranch("drive = 1"),
              "board.toml:9: leakage.i.drive: unknown key (did you mean \"driver\"?), expected one of "
              "driver, gain, step, range");
    EXPECT_EQ(refusedDetector("slop = 1"),
              "board.toml:11: leakage.detector.slop: unknown key (did you mean \"slope\"?), expected one of "
              "driver, slope, zero, floor, noise, step, range, settling");
}

TEST_F(BoardLeakageTest, ChannelIsOneOfTheBoards) {
    EXPECT_EQ(refusedAfterChannel("[[leakage]]\nchannel = 2\n"),
              "board.toml:6: leakage.channel: expected the number of one of the board's channels, found 2");
    EXPECT_EQ(refusedAfterChannel("[[leakage]]\nreference = 1\n"),
              "board.toml:5: leakage.channel: missing, expected the number of one of the board's channels");
}

TEST_F(BoardLeakageTest, ChannelHasOneLeakage) {
    EXPECT_EQ(refusedLeakage(paths + branches + detector + "[[leakage]]\nchannel = 1\n"),
              "board.toml:13: leakage.channel: 1 has the leakage on line 6, expected one for each channel");
}

TEST_F(BoardLeakageTest, ReferenceIsACarrier) {
    EXPECT_EQ(refusedAfterChannel("[[leakage]]\nchannel = 1\n"),
              "board.toml:5: leakage.reference: missing, expected the carrier in kHz for which levels and "
              "phases are given");
    EXPECT_EQ(refusedAfterChannel("[[leakage]]\nchannel = 1\nreference = 0\n"),
              "board.toml:7: leakage.reference: expected an integer from 1 to 2147483647, found 0");
}

TEST_F(BoardLeakageTest, SkewIsWithin60Degrees) {
    EXPECT_EQ(refusedLeakage(paths + "skew = 61\n"),
              "board.toml:9: leakage.skew: expected a number from -60 to 60, found 61");
}

TEST_F(BoardLeakageTest, SeedIsNotNegative) {
    EXPECT_EQ(refusedLeakage(paths + "seed = -1\n"),
              "board.toml:9: leakage.seed: expected an integer from 0 to 2147483647, found -1");
}

// Paths.

TEST_F(BoardLeakageTest, OnePathAtLeastIsRequired) {
    EXPECT_EQ(refusedLeakage(""),
              "board.toml:5: leakage.paths: missing, expected the ways of the leakage, each with level and "
              "phase");
    EXPECT_EQ(refusedLeakage("paths = []\n"),
              "board.toml:8: leakage.paths: expected an array of at least one element, found an empty array");
    EXPECT_EQ(refusedLeakage("paths = [-27]\n"), "board.toml:8: leakage.paths: expected a table, found -27");
}

TEST_F(BoardLeakageTest, PathHasLevelAndPhase) {
    EXPECT_EQ(refusedPath("phase = 1"),
              "board.toml:8: leakage.paths.level: missing, expected the level of the path in dBc");
    EXPECT_EQ(refusedPath("level = 1"),
              "board.toml:8: leakage.paths.phase: missing, expected the phase of the path in degrees");
}

TEST_F(BoardLeakageTest, NumbersLieWithinAMillion) {
    const std::string expected = ": expected a number from -1000000 to 1000000, found ";
    EXPECT_EQ(refusedPath("level = 1e7"), "board.toml:8: leakage.paths.level" + expected + "1e+07");
    EXPECT_EQ(refusedPath("level = 1, phase = nan"), "board.toml:8: leakage.paths.phase" + expected + "nan");
    EXPECT_EQ(refusedPath("level = 1, phase = 1, delay = \"1\""),
              "board.toml:8: leakage.paths.delay" + expected + "\"1\"");
    EXPECT_EQ(refusedBranch("driver = \"i\", gain = -inf"),
              "board.toml:9: leakage.i.gain" + expected + "-inf");
    EXPECT_EQ(refusedDetector("driver = \"low\", slope = 1000001"),
              "board.toml:11: leakage.detector.slope" + expected + "1000001");
    EXPECT_EQ(refusedDetectorWith("floor = true"),
              "board.toml:11: leakage.detector.floor" + expected + "true");
}

// Branches.

TEST_F(BoardLeakageTest, BothBranchesAreRequired) {
    EXPECT_EQ(refusedLeakage(paths),
              "board.toml:5: leakage.i: missing, expected what the correction of I does");
    EXPECT_EQ(refusedLeakage(paths + "i = { driver = \"i\", gain = 1, range = [0, 1] }\n"),
              "board.toml:5: leakage.q: missing, expected what the correction of Q does");
    EXPECT_EQ(refusedLeakage(paths + "i = \"i\"\n"),
              "board.toml:9: leakage.i: expected a table, found \"i\"");
}

TEST_F(BoardLeakageTest, BranchHasDriverGainAndRange) {
    EXPECT_EQ(refusedBranch("gain = 1"),
              "board.toml:9: leakage.i.driver: missing, expected the name of a driver in [drivers]");
    EXPECT_EQ(refusedBranch("driver = \"i\""),
              "board.toml:9: leakage.i.gain: missing, expected what one unit adds, as a fraction of the "
              "signal's amplitude");
    EXPECT_EQ(refusedBranch("driver = \"i\", gain = 1"),
              "board.toml:9: leakage.i.range: missing, expected the lowest and the highest value");
}

TEST_F(BoardLeakageTest, GainIsNotZero) {
    EXPECT_EQ(refusedBranch("driver = \"i\", gain = 0"),
              "board.toml:9: leakage.i.gain: expected a number other than 0, found 0");
}

TEST_F(BoardLeakageTest, StepIsAtLeast1) {
    EXPECT_EQ(refusedBranch("driver = \"i\", gain = 1, step = 0"),
              "board.toml:9: leakage.i.step: expected an integer from 1 to 2147483647, found 0");
    EXPECT_EQ(refusedDetectorWith("step = 0.5"),
              "board.toml:11: leakage.detector.step: expected an integer from 1 to 2147483647, found 0.5");
}

TEST_F(BoardLeakageTest, RangeHasTheLowestValueFirst) {
    EXPECT_EQ(refusedBranch("driver = \"i\", gain = 1, range = [1000, -1000]"),
              "board.toml:9: leakage.i.range: expected the lowest value first, found -1000 after 1000");
    EXPECT_EQ(refusedBranch("driver = \"i\", gain = 1, range = [0]"),
              "board.toml:9: leakage.i.range: expected the lowest and the highest value: 2, found 1");
    EXPECT_EQ(refusedBranch("driver = \"i\", gain = 1, range = [0, 0.5]"),
              "board.toml:9: leakage.i.range: expected an integer from -2147483648 to 2147483647, found 0.5");
}

// Drivers.

TEST_F(BoardLeakageTest, DriverIsOneOfTheBoards) {
    EXPECT_EQ(refusedBranch("driver = \"hihg\""),
              "board.toml:9: leakage.i.driver: expected the name of a driver in [drivers], found \"hihg\" "
              "(did you mean \"high\"?)");
    EXPECT_EQ(refusedBranch("driver = \"mixer\""),
              "board.toml:9: leakage.i.driver: expected the name of a driver in [drivers], found \"mixer\"");
}

TEST_F(BoardLeakageTest, DriverHasOneUse) {
    EXPECT_EQ(refusedDetector("driver = \"q\""),
              "board.toml:11: leakage.detector.driver: \"q\" is in use on line 10, expected a driver of its "
              "own");
}

TEST_F(BoardLeakageTest, DriverHasOneUseAmongAllLeakages) {
    EXPECT_EQ(refusedAfterChannel("[[channel]]\nnumber = 2\ntype = \"rf-module\"\n" + start + paths +
                                  branches + detector + "[[leakage]]\nchannel = 2\nreference = 1\n" + paths +
                                  "i = { driver = \"i\" }\n" + drivers),
              "board.toml:19: leakage.i.driver: \"i\" is in use on line 12, expected a driver of its own");
}

// Detectors.

TEST_F(BoardLeakageTest, DetectorIsRequired) {
    EXPECT_EQ(refusedLeakage(paths + branches),
              "board.toml:5: leakage.detector: missing, expected the detector of the channel");
}

TEST_F(BoardLeakageTest, DetectorHasDriverSlopeZeroAndRange) {
    const std::string missing = "board.toml:11: leakage.detector.";
    EXPECT_EQ(refusedDetector("slope = 1"),
              missing + "driver: missing, expected the name of a driver in [drivers]");
    EXPECT_EQ(refusedDetector("driver = \"low\""),
              missing + "slope: missing, expected the units of the reading for each dB");
    EXPECT_EQ(refusedDetector("driver = \"low\", slope = 1"),
              missing + "zero: missing, expected the level in dBc at which the reading is 0");
    EXPECT_EQ(refusedDetector("driver = \"low\", slope = 1, zero = 1"),
              missing + "range: missing, expected the lowest and the highest value");
}

TEST_F(BoardLeakageTest, NoiseAndSettlingAreNotNegative) {
    EXPECT_EQ(refusedDetectorWith("noise = -0.5"),
              "board.toml:11: leakage.detector.noise: expected a number that is not negative, found -0.5");
    EXPECT_EQ(refusedDetectorWith("settling = -1"),
              "board.toml:11: leakage.detector.settling: expected a number that is not negative, found -1");
}

TEST_F(BoardLeakageTest, StuckDetectorIsAccepted) {
    EXPECT_EQ(refusedDetector("driver = \"low\", slope = 0, zero = 0, range = [7, 7]"), "accepted");
}

} // namespace
} // namespace Radio
