#include "tests/radio/support/HardwareBoard.h"
#include "tests/radioctl/program/HardwareTest.h"

#include <nlohmann/json.hpp>

#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <thread>

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/** "radioctl calibrate --hardware" on a radio that is files: three carriers at 25 degrees. */
class HardwareCalibrateTest : public HardwareTest {
protected:
    HardwareCalibrateTest() {
        for (const char* const file : {"lo", "i", "q"}) {
            write(file, "0\n");
        }
        write("detector", "500\n");
        write("temperature", "25\n");
        write("board.toml", hardwareBoard(folder()));
    }

    Ending calibrate(const std::vector<std::string>& options = {}) const { return run(arguments(options)); }
    static std::vector<std::string> arguments(const std::vector<std::string>& options) {
        std::vector<std::string> words{"calibrate", "--hardware",     "board.toml", "--channel",
                                       "1",         "--temperatures", "25"};
        words.insert(words.end(), options.begin(), options.end());
        return words;
    }
    static bool isThere(const std::string& file) { return std::filesystem::exists(file); }

    /** Few probes, for what does not depend on what is found. */
    inline static const std::vector<std::string> quick = {"--max-iterations", "1", "--settle-time", "0",
                                                          "--no-qualify"};
    static constexpr const char* left =
        "Leaving:\n  channel.1.tx.rf.mixer.i <- 0\n  channel.1.tx.rf.mixer.q <- 0\n";
};

/** Has the detector read how far I is from -480 and Q from 120, as long as it lives. */
class Detector {
public:
    Detector() : m_thread([this] { work(); }) {}
    Detector(const Detector&) = delete;
    Detector& operator=(const Detector&) = delete;
    ~Detector() {
        m_isOver = true;
        m_thread.join();
    }

private:
    void work() {
        long i = 0;
        long q = 0;
        while (!m_isOver) {
            // What is being written just now is read the next time.
            std::ifstream("i") >> i;
            std::ifstream("q") >> q;
            std::ofstream("detector.new")
                << std::lround(std::hypot(static_cast<double>(i + 480), static_cast<double>(q - 120)))
                << "\n";
            std::filesystem::rename("detector.new", "detector");
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    std::atomic<bool> m_isOver = false;
    std::thread m_thread;
};

TEST_F(HardwareCalibrateTest, CalibratesWhatTheFilesAre) {
    const Detector detector;
    const Ending ending = calibrate({"--settle-time", "25", "--min-delta", "150"});
    EXPECT_EQ(ending.exitCode, 0) << ending.output << ending.errors;
    EXPECT_THAT(ending.output,
                AllOf(StartsWith("HARDWARE: 4 drivers on files; simulated: "),
                      HasSubstr("\nEach temperature begins when the sensor is within 2 degrees of it.\n"),
                      HasSubstr(left),
                      HasSubstr("\nHighest readings of the detector\n  at the first probe  1235  at 17900000 "
                                "kHz, 25 degrees\n  at the last probe"),
                      HasSubstr("3 points of 3: 3 good"), Not(HasSubstr("dBc")),
                      HasSubstr("\nStored: board.channel-1.csv\n")));
    EXPECT_THAT(contentOf("board.channel-1.csv"), HasSubstr("\n# mode: hardware\n"));
    EXPECT_EQ(contentOf("i"), "0\n");
    EXPECT_EQ(contentOf("lo"), "9050000000\n"); // 18.1 GHz, doubled behind the synthesiser
}

TEST_F(HardwareCalibrateTest, EventsSayThatItIsHardware) {
    std::vector<std::string> options = quick;
    options.emplace_back("--json");
    std::istringstream lines(calibrate(options).output);
    std::vector<nlohmann::json> events;
    for (std::string line; std::getline(lines, line);) {
        events.push_back(nlohmann::json::parse(line));
    }
    ASSERT_EQ(events.size(), 7U);
    EXPECT_EQ(events[0].at("event"), "mode");
    EXPECT_EQ(events[0].at("mode"), "hardware");
    EXPECT_EQ(events[1].at("event"), "calibration");
    EXPECT_EQ(events[1].at("temperature"), "sensor");
    EXPECT_EQ(events[2].at("event"), "point");
    EXPECT_TRUE(events[2].at("before_dbc").is_null());
    EXPECT_EQ(events[5].at("event"), "left");
    EXPECT_EQ(events[6].at("event"), "calibrated");
    EXPECT_EQ(events[6].at("failed"), 3);
    EXPECT_TRUE(events[6].at("worst_before").is_null());
}

TEST_F(HardwareCalibrateTest, StuckDetectorStoresNothing) {
    const Ending ending = calibrate(quick);
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(ending.output, HasSubstr("failed: every reading is 500: the detector is stuck\n"));
    EXPECT_THAT(ending.output, HasSubstr("--resume measures what could not be measured"));
    EXPECT_FALSE(isThere("board.channel-1.csv"));
}

TEST_F(HardwareCalibrateTest, LimitInDbcIsNotPassedByWhatWasNotMeasured) {
    write("board.toml", hardwareBoard(folder()) + "\n[limits]\nleakage_at_nodes = -10\n");
    const Detector detector;
    const Ending ending = calibrate({"--settle-time", "25", "--min-delta", "150"});
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(ending.output,
                AllOf(HasSubstr("\nFAIL: leakage at the nodes unknown, limit -10: nobody knows in dBc what "
                                "leaks\nNo tables were stored: limits of the board are not held; "),
                      HasSubstr("missed: nobody knows in dBc what leaks, and leakage_at_nodes allows -10\n"),
                      HasSubstr("3 points of 3: 0 good, 3 missed, ")));
    EXPECT_FALSE(isThere("board.channel-1.csv"));
}

/** A fit would spend all its probes, and nobody would know more than before. */
TEST_F(HardwareCalibrateTest, FitWhoseLimitNobodyCanHoldIsRefusedBeforeTheFirstProbe) {
    const std::string limit = "\n[limits]\nleakage = -60\n";
    write("board.toml", hardwareBoard(folder()) + limit);
    std::vector<std::string> options = quick;
    options.insert(options.end(), {"--method", "fit"});
    const Ending refused = calibrate(options);
    EXPECT_EQ(refused.exitCode, 3);
    EXPECT_EQ(refused.errors,
              "radioctl: board.toml: the limit leakage is in dBc, and channel 1 states no detector_zero: "
              "nobody will know whether it is held; --force calibrates all the same\n");
    EXPECT_EQ(contentOf("lo"), "0\n");
    EXPECT_FALSE(isThere("board.channel-1.journal"));
    options.emplace_back("--force");
    EXPECT_THAT(calibrate(options).output,
                HasSubstr("\nWarning: the limit leakage is in dBc, and channel 1 states no detector_zero: "
                          "nobody will know whether it is held\n"));
    // With a zero there is nothing against it; the detector is stuck, and nothing else.
    write("board.toml", hardwareBoard(folder(), "detector_slope = 25.0\ndetector_zero = -95.0\n") + limit);
    options.back() = "--restart";
    EXPECT_EQ(calibrate(options).exitCode, 1);
}

TEST_F(HardwareCalibrateTest, QualificationHoldsNoLimitAndNeedsNoZero) {
    std::string board = hardwareBoard(folder());
    board.replace(board.find("\"search\""), 8, "\"fit\"");
    write("board.toml", board + "\n[limits]\nleakage = -60\n");
    const Ending ending = run({"qualify", "--hardware", "board.toml", "--channel", "1"});
    EXPECT_EQ(ending.exitCode, 1); // the detector is stuck
    EXPECT_EQ(ending.errors, "");
}

TEST_F(HardwareCalibrateTest, LimitOfASimulatedFitNeedsNoZero) {
    write("board.toml", leakageBoard() + "\n[limits]\nleakage = -60\n");
    EXPECT_THAT(run({"calibrate", "board.toml", "--channel", "1", "--method", "fit"}).output,
                Not(HasSubstr("detector_zero")));
}

TEST_F(HardwareCalibrateTest, WithoutASensorTheTemperatureIsTakenAsGiven) {
    write("board.toml", hardwareBoardWithoutSensor(folder()));
    EXPECT_THAT(calibrate(quick).output,
                HasSubstr("\nThere is no [sensor]: the radio is taken to be at 25 degrees.\n"));
}

TEST_F(HardwareCalibrateTest, WaitsForTheTemperatureUntilItIsInterrupted) {
    write("temperature", "21\n");
    Process process(invoke(arguments(quick)));
    ASSERT_TRUE(process.waitUntilItCatches(SIGINT));
    ASSERT_TRUE(process.waitFor("waiting for 25 degrees, now "));
    process.signal(SIGINT);
    const Ending ending = process.finish();
    EXPECT_EQ(ending.exitCode, 130);
    EXPECT_THAT(ending.output, HasSubstr(left));
    EXPECT_EQ(contentOf("lo"), "0\n");
}

TEST_F(HardwareCalibrateTest, GoesOnOnceTheTemperatureIsThere) {
    write("temperature", "21\n");
    Process process(invoke(arguments(quick)));
    ASSERT_TRUE(process.waitFor("waiting for 25 degrees, now "));
    write("temperature", "24\n");
    EXPECT_THAT(process.finish().output, HasSubstr("3 points of 3"));
}

TEST_F(HardwareCalibrateTest, CarriersBeyondTheRasterAreRefusedBeforeTheFirstWrite) {
    write("board.toml", hardwareBoard(folder()) +
                            "\n[[raster]]\nname = \"R\"\ndirection = \"tx\"\nfirst = 17800000\nlast = "
                            "18000000\nstep = 50000\n");
    const Ending refused = calibrate(quick);
    EXPECT_EQ(refused.exitCode, 3);
    EXPECT_THAT(
        refused.errors,
        AllOf(StartsWith("radioctl: board.toml: 18100000 kHz is outside the rasters of the board for tx 1"),
              EndsWith("; --force calibrates all the same\n")));
    EXPECT_EQ(contentOf("lo"), "0\n");
    EXPECT_FALSE(isThere("board.channel-1.journal"));
    std::vector<std::string> options = quick;
    options.emplace_back("--force");
    EXPECT_THAT(calibrate(options).output, HasSubstr("\nWarning: 18100000 kHz is outside the rasters"));
    EXPECT_EQ(contentOf("lo"), "9050000000\n");
}

/** The ends of the band lie in one raster each. Of the 49 carriers of a fit, 4166 2/3 kHz apart, the ones
 * numbered 13 to 35 lie between the rasters. */
TEST_F(HardwareCalibrateTest, GapOfTheRastersInTheMiddleOfTheBandIsRefusedForAFit) {
    write("board.toml", hardwareBoard(folder()) +
                            "\n[[raster]]\nname = \"L\"\ndirection = \"tx\"\nfirst = 17850000\nlast = "
                            "17950000\nstep = 50000\n\n[[raster]]\nname = \"H\"\ndirection = "
                            "\"tx\"\nfirst = 18050000\nlast = 18150000\nstep = 50000\n");
    std::vector<std::string> options = quick;
    options.insert(options.end(), {"--method", "fit"});
    const Ending refused = calibrate(options);
    EXPECT_EQ(refused.exitCode, 3);
    EXPECT_EQ(refused.errors,
              "radioctl: board.toml: 17954167 kHz is outside the rasters of the board for tx 1: 17850000 to "
              "17950000 and 18050000 to 18150000 kHz; and 22 more; --force calibrates all the same\n");
    EXPECT_EQ(contentOf("lo"), "0\n");
    EXPECT_FALSE(isThere("board.channel-1.journal"));
    options.emplace_back("--force");
    EXPECT_THAT(calibrate(options).output, HasSubstr("\nWarning: 17954167 kHz is outside the rasters"));
    EXPECT_NE(contentOf("lo"), "0\n");
}

TEST_F(HardwareCalibrateTest, NodesBetweenTheCarriersOfARasterAreNoMatter) {
    write("board.toml", hardwareBoard(folder()) +
                            "\n[[raster]]\nname = \"R\"\ndirection = \"tx\"\nfirst = 17850000\nlast = "
                            "18150000\nstep = 300000\n");
    EXPECT_EQ(calibrate(quick).exitCode, 1); // the detector is stuck, and nothing else
}

TEST_F(HardwareCalibrateTest, SimulationOnlyWarns) {
    write("board.toml", leakageBoard() + "\n[limits]\ntemperature = [0, 40]\n");
    const Ending ending = run({"calibrate", "board.toml", "--channel", "1"});
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(ending.output,
                StartsWith("SIMULATION: nothing reaches hardware.\nWarning: -10 degrees are outside the "
                           "board's 0 to 40; and 1 more\n"));
}

TEST_F(HardwareCalibrateTest, SimulatedFitOnlyWarnsOfAGapOfTheRasters) {
    write("board.toml", leakageBoard() +
                            "\n[[raster]]\nname = \"L\"\ndirection = \"tx\"\nfirst = 17850000\nlast = "
                            "17950000\nstep = 50000\n\n[[raster]]\nname = \"H\"\ndirection = "
                            "\"tx\"\nfirst = 18050000\nlast = 18150000\nstep = 50000\n");
    const Ending ending = run({"calibrate", "board.toml", "--channel", "1", "--method", "fit"});
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(ending.output,
                StartsWith("SIMULATION: nothing reaches hardware.\nWarning: 17954167 kHz is outside the "
                           "rasters of the board for tx 1: 17850000 to 17950000 and 18050000 to 18150000 "
                           "kHz; and 22 more\n"));
}

/** From -10 to 50 degrees, ten lie below 0 and ten above 40. */
TEST_F(HardwareCalibrateTest, EveryDegreeOfAFitIsHeldAgainstTheLimits) {
    write("board.toml", leakageBoard() + "\n[limits]\ntemperature = [0, 40]\n");
    const Ending ending = run({"calibrate", "board.toml", "--channel", "1", "--method", "fit"});
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(ending.output,
                StartsWith("SIMULATION: nothing reaches hardware.\nWarning: -10 degrees are outside the "
                           "board's 0 to 40; and 19 more\n"));
}

TEST_F(HardwareCalibrateTest, MissingAttributeLeavesNothingToResume) {
    std::filesystem::remove("detector");
    EXPECT_EQ(calibrate(quick).exitCode, 3);
    EXPECT_EQ(contentOf("lo"), "0\n");
    EXPECT_FALSE(isThere("board.channel-1.journal"));
    write("detector", "500\n");
    EXPECT_EQ(calibrate(quick).exitCode, 1); // not: of a calibration that is not finished
}

TEST_F(HardwareCalibrateTest, OptionsThatDoNotGoTogetherAreNamed) {
    EXPECT_EQ(run({"calibrate", "--hardware", "board.toml", "--channel", "1", "--offline", "x"}).errors,
              "radioctl: --hardware: not together with --offline, whose journal says it\n");
    EXPECT_EQ(calibrate({"--dry-run"}).exitCode, 2);
}

TEST_F(HardwareCalibrateTest, RangesBeyondTheDriversAreRefused) {
    const Ending ending = calibrate({"--i-range", "-2000", "0"});
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_THAT(ending.errors, EndsWith("expected a range of I within that, or --i-range\n"));
    EXPECT_EQ(contentOf("i"), "0\n");
}

} // namespace
