#include "radio/calibration/Settings.h"
#include "tests/radio/support/BoardFileFixture.h"
#include "tests/radio/support/LeakageBoard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace Radio::Calibration {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

class CalibrationSettings : public BoardFileFixture {
protected:
    /** The board with these lines in its [[calibration]] instead of its own. */
    Settings settings(const std::string& lines, const CalibrationDescription& wishes = wish()) {
        std::string board = leakageBoard();
        const std::size_t begin = board.find("band = ");
        board.replace(begin, board.find("[drivers]") - begin, lines + "\n");
        return settingsFor(load(board), wishes);
    }
    /** What is said about such a board. */
    std::string complaint(const std::string& lines) {
        try {
            settings(lines);
            return "none";
        } catch (const ChoiceError& error) {
            return error.what() + std::string("; ") + error.choice();
        } catch (const InputError& error) {
            return error.what();
        }
    }
    static CalibrationDescription wish() {
        CalibrationDescription wishes;
        wishes.channel = 1;
        wishes.method = CalibrationMethod::search;
        return wishes;
    }

    static constexpr const char* whole = "band = [17900000, 18100000]\n"
                                         "step = 100000\n"
                                         "temperatures = [50, -10]\n"
                                         "i_range = [-800, 700]\n"
                                         "q_range = [-600, 500]\n"
                                         "shrink_factor = 0.8\n"
                                         "min_delta = 3\n"
                                         "max_iterations = 25\n"
                                         "settle_time = 7\n"
                                         "detector = \"high\"\n";
};

TEST_F(CalibrationSettings, AreWhatTheBoardSays) {
    const Settings read = settings(whole);
    EXPECT_EQ(read.channel, 1);
    EXPECT_THAT(read.frequencies, ElementsAre(17900000, 18000000, 18100000));
    EXPECT_THAT(read.temperatures, ElementsAre(-10, 50));
    EXPECT_EQ(read.i.low, -800);
    EXPECT_EQ(read.i.high, 700);
    EXPECT_EQ(read.q.low, -600);
    EXPECT_EQ(read.q.high, 500);
    EXPECT_EQ(read.shrinkFactor, 0.8);
    EXPECT_EQ(read.minDelta, 3);
    EXPECT_EQ(read.maxIterations, 25U);
    EXPECT_EQ(read.settleTime, 7U);
    EXPECT_TRUE(read.useHighDetector);
}

TEST_F(CalibrationSettings, WishesGoBeforeTheBoard) {
    CalibrationDescription wishes = wish();
    wishes.band = Range{18000000, 18000000};
    wishes.temperatures = {20};
    wishes.iRange = Range{-5, 5};
    wishes.minDelta = 9;
    wishes.useHighDetector = false;
    const Settings read = settings(whole, wishes);
    EXPECT_THAT(read.frequencies, ElementsAre(18000000));
    EXPECT_THAT(read.temperatures, ElementsAre(20));
    EXPECT_EQ(read.i.high, 5);
    EXPECT_EQ(read.q.high, 500);
    EXPECT_EQ(read.minDelta, 9);
    EXPECT_FALSE(read.useHighDetector);
}

TEST_F(CalibrationSettings, UsualOnesServeWhereNobodySaysAnything) {
    const Settings read = settings("band = [17900000, 17900000]\nstep = 1\ntemperatures = [25]");
    EXPECT_EQ(read.i.low, -1000); // what the DAC can do
    EXPECT_EQ(read.q.high, 1000);
    EXPECT_EQ(read.shrinkFactor, 0.75);
    EXPECT_EQ(read.minDelta, 3);
    EXPECT_EQ(read.maxIterations, 40U);
    EXPECT_EQ(read.settleTime, 5U);
    EXPECT_FALSE(read.useHighDetector);
}

TEST_F(CalibrationSettings, LastCarrierIsCalibratedAlsoOffTheStep) {
    EXPECT_THAT(settings("band = [100, 130]\nstep = 20\ntemperatures = [25]").frequencies,
                ElementsAre(100, 120, 130));
}

TEST_F(CalibrationSettings, BandIsThatOfTheTransmitRasters) {
    EXPECT_THAT(settings("step = 30000\ntemperatures = [25]\n\n"
                         "[[raster]]\nname = \"A\"\ncentre = 18000000\nspacing = 10000\ncount = 5\n"
                         "tx = -100000\nrx = 100000\n")
                    .frequencies,
                ElementsAre(17910000, 17940000, 17950000));
}

TEST_F(CalibrationSettings, MissingOnesAreNamed) {
    EXPECT_EQ(complaint("step = 1\ntemperatures = [25]"),
              std::string("board.toml") +
                  ": channel 1: no band, and no [[raster]] with transmit carriers, expected band in its "
                  "[[calibration]]; band");
    EXPECT_EQ(complaint("band = [1, 2]\ntemperatures = [25]"),
              std::string("board.toml") +
                  ": channel 1: no distance of two carriers, expected step in its [[calibration]]; step");
    EXPECT_EQ(complaint("band = [1, 2]\nstep = 1"),
              std::string("board.toml") +
                  ": channel 1: no temperatures, expected temperatures in its [[calibration]]; temperatures");
}

TEST_F(CalibrationSettings, BandGoesFromTheLowestToTheHighestRaster) {
    const std::string rasters =
        "[[raster]]\nname = \"A\"\ndirection = \"tx\"\nfirst = 200\nlast = 300\nstep = 50\n"
        "[[raster]]\nname = \"B\"\ndirection = \"both\"\nfirst = 100\nlast = 250\nstep = 50\n"
        "[[raster]]\nname = \"C\"\ndirection = \"rx\"\nfirst = 1\nlast = 999\nstep = 1\n";
    EXPECT_THAT(settings("step = 100\ntemperatures = [25]\n\n" + rasters).frequencies,
                ElementsAre(100, 200, 300));
}

TEST_F(CalibrationSettings, AsManyPointsAsCanBe) {
    EXPECT_EQ(settings("band = [1, 40000]\nstep = 1\ntemperatures = [25]").frequencies.size(), 40000U);
}

TEST_F(CalibrationSettings, TooManyPointsAreRefused) {
    EXPECT_EQ(complaint("band = [1, 200000]\nstep = 1\ntemperatures = [25]"),
              std::string("board.toml") + ": expected at most 40000 carriers, found 200000");
    EXPECT_EQ(complaint("band = [1, 30000]\nstep = 1\ntemperatures = [25, 26]"),
              std::string("board.toml") +
                  ": expected at most 40000 points, found 30000 carriers at 2 temperatures");
}

TEST_F(CalibrationSettings, MethodIsAFitUnlessSomebodySaysOtherwise) {
    CalibrationDescription wishes;
    wishes.channel = 1;
    const std::string ends = "band = [100, 130]\ntemperatures = [50, 0, -10]\n";
    const Settings fit = settings(ends, wishes);
    EXPECT_EQ(fit.method, CalibrationMethod::fit);
    EXPECT_THAT(fit.frequencies, ElementsAre(100, 130));
    EXPECT_THAT(fit.temperatures, ElementsAre(-10, 50));
    EXPECT_EQ(fit.budget, 400U);
    EXPECT_EQ(settings(ends + "step = 10\nmethod = \"search\"", wishes).method, CalibrationMethod::search);
    EXPECT_EQ(settings(ends + "probes = 1000", wishes).budget, 1000U);
    wishes.probes = 60;
    EXPECT_EQ(settings(ends + "probes = 1000", wishes).budget, 60U);
}

TEST_F(CalibrationSettings, FitOfOneCarrierAtOneTemperatureHasOneEndOfEach) {
    CalibrationDescription wishes;
    wishes.channel = 1;
    const Settings fit = settings("band = [100, 100]\ntemperatures = [25]\n", wishes);
    EXPECT_THAT(fit.frequencies, ElementsAre(100));
    EXPECT_THAT(fit.temperatures, ElementsAre(25));
}

/** Line 18 is the first behind "channel = 1" of [[calibration]]. */
TEST_F(CalibrationSettings, WrongLinesAreNamed) {
    const std::string place = std::string("board.toml:18: calibration.");
    EXPECT_EQ(complaint("band = [2, 1]"), place + "band: expected the lowest carrier first, found 1 after 2");
    EXPECT_EQ(complaint("band = [0, 1]"), place + "band: expected values from 1 to 2147483647, found 0");
    EXPECT_THAT(complaint("band = [1]"),
                StartsWith(place + "band: expected the lowest and the highest value"));
    EXPECT_EQ(complaint("step = 0"), place + "step: expected a number from 1 to 2147483647, found 0");
    EXPECT_EQ(complaint("temperatures = [201]"),
              place + "temperatures: expected degrees from -100 to 200, found 201");
    EXPECT_EQ(complaint("i_range = [5, 5]"),
              place + "i_range: expected the lowest value first and a higher one behind it, found 5 and 5");
    EXPECT_EQ(complaint("q_range = [-2000000000, 5]"),
              place + "q_range: expected values from -1000000000 to 1000000000, found -2000000000");
    EXPECT_EQ(complaint("probes = 59"), place + "probes: expected a number from 60 to 100000, found 59");
    EXPECT_THAT(complaint("method = \"guess\""), StartsWith(place + "method: "));
    EXPECT_THAT(complaint("shrink_factor = 1.0"),
                StartsWith(place + "shrink_factor: expected a number between 0 and 1, such as 0.75"));
    EXPECT_EQ(complaint("min_delta = -1"),
              place + "min_delta: expected a number from 0 to 1000000000, found -1");
    EXPECT_EQ(complaint("max_iterations = 0"),
              place + "max_iterations: expected a number from 1 to 1000, found 0");
    EXPECT_EQ(complaint("settle_time = 60001"),
              place + "settle_time: expected a number from 0 to 60000, found 60001");
    EXPECT_THAT(complaint("detector = \"middle\""), StartsWith(place + "detector: unknown word \"middle\""));
    EXPECT_THAT(complaint("stepp = 1"), StartsWith(place + "stepp: unknown key"));
}

TEST_F(CalibrationSettings, SectionIsForAChannelOfTheBoardAndOnce) {
    EXPECT_THAT(complaint("[[calibration]]\nchannel = 2"),
                StartsWith(std::string("board.toml") +
                           ":19: calibration.channel: expected the number of one of the board's channels"));
    EXPECT_EQ(complaint("[[calibration]]\nchannel = 1"),
              std::string("board.toml") +
                  ":19: calibration.channel: 1 has the calibration on line 17, expected one for each "
                  "channel");
}

} // namespace
} // namespace Radio::Calibration
