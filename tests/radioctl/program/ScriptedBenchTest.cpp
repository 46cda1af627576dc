#include "tests/devices/Instrument.h"
#include "tests/radio/support/HardwareBoard.h"
#include "tests/radioctl/program/HardwareTest.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <regex>
#include <sstream>
#include <thread>

namespace {

using testing::AllOf;
using testing::HasSubstr;

/**
 * A bench of scripted instruments on the loopback: one is the transmitter with its corrections and its
 * detector, the other a chamber with the sensor. What leaks least moves with the temperature.
 */
class ScriptedBench {
public:
    ScriptedBench()
        : m_transmitter([this](const std::string& line) { return transmit(line); }),
          m_chamber([this](const std::string& line) { return heat(line); }) {}

    std::string transmitter() const { return m_transmitter.address(); }
    std::string chamber() const { return m_chamber.address(); }
    std::vector<std::string> chamberHeard() { return m_chamber.heard(); }

    std::atomic<bool> isRough{false};

private:
    DeviceTests::Reaction transmit(const std::string& line) {
        if (line.rfind("I ", 0) == 0) {
            m_i = std::stol(line.substr(2));
        } else if (line.rfind("Q ", 0) == 0) {
            m_q = std::stol(line.substr(2));
        } else if (line == "DET?") {
            return {std::to_string(std::lround(25 * decibels()) + roughness()) + "\n"};
        } else if (line == "LEVEL?") {
            // An instrument of another make: it sees half a dB less.
            return {std::to_string(decibels() - 95.5) + "\n"};
        }
        return {};
    }
    /** As noise, but the same with the same corrections at the same temperature. */
    long roughness() const { return isRough ? (m_i * 31 + m_q * 17 + m_degrees * 7) % 3 : 0; }
    double decibels() const {
        const auto i = static_cast<double>(m_i + 480 + m_degrees);
        const auto q = static_cast<double>(m_q - 120);
        return 10 * std::log10(i * i + q * q + 100);
    }
    /** Five degrees nearer each time that somebody looks. */
    DeviceTests::Reaction heat(const std::string& line) {
        if (line.rfind("TEMP ", 0) == 0) {
            m_wanted = std::stoi(line.substr(5));
        } else if (line == "SENS?") {
            m_degrees = m_degrees + std::clamp(m_wanted - m_degrees, -5, 5);
            return {std::to_string(m_degrees) + "\n"};
        }
        return {};
    }

    long m_i = 0;
    long m_q = 0;
    std::atomic<int> m_degrees{25};
    int m_wanted = 25;
    DeviceTests::Instrument m_transmitter;
    DeviceTests::Instrument m_chamber;
};

class ScriptedBenchTest : public HardwareTest {
protected:
    ScriptedBenchTest() {
        write("lo", "0\n");
        write("board.toml", board());
    }

    std::string board() const {
        std::string text = leakageBoard(
            "range = [0, 4095]", "chamber = \"chamber\"\ntolerance = 0\ndwell = 0\ndetector_slope = 25\n"
                                 "detector_zero = -80\n");
        const std::size_t begin = text.find("[[leakage]]");
        text.erase(begin, text.find("[[calibration]]") - begin);
        text.replace(text.find("[drivers]"), 9, "[drivers]\n\"chamber\" = {}");
        const auto on = [](const std::string& driver, const std::string& device, const std::string& rest) {
            return "\n[hardware.\"" + driver + "\"]\ndevice = \"" + device + "\"\n" + rest + "\n";
        };
        const std::string range = "range = [-1000, 1000]\non_exit = 0";
        return text + "\n[devices]\nbench = { scpi = \"" + m_bench.transmitter() +
               "\" }\nchamber = { scpi = \"" + m_bench.chamber() + "\" }\n" +
               on("channel.1.tx.rf.mixer.i", "bench", "write = \"I {}\"\n" + range) +
               on("channel.1.tx.rf.mixer.q", "bench", "write = \"Q {}\"\n" + range) +
               on("channel.1.tx.rf.detector.v", "bench", "read = \"DET?\"") +
               on("chamber", "chamber", "write = \"TEMP {}\"\nrange = [-40, 70]\non_exit = 25") +
               "\n[sensor]\ndevice = \"chamber\"\nread = \"SENS?\"\ninterval = 20\n";
    }
    std::string withAnalyser() const {
        std::string described = board();
        described.replace(described.find("chamber = \"chamber\"\n"), 20,
                          "chamber = \"chamber\"\nanalyser = \"analyser\"\n");
        described.replace(described.find("[drivers]"), 9, "[drivers]\n\"analyser\" = {}");
        return described + "\n[hardware.analyser]\ndevice = \"bench\"\nread = \"LEVEL?\"\nscale = 0.01\n";
    }
    static std::vector<std::string> arguments(const std::vector<std::string>& options) {
        std::vector<std::string> words{"calibrate",     "--hardware", "board.toml",
                                       "--channel",     "1",          "--temperatures=-10,12,33,50",
                                       "--settle-time", "1"};
        words.insert(words.end(), options.begin(), options.end());
        return words;
    }
    static std::string tables(const std::string& file) {
        return std::regex_replace(contentOf(file), std::regex("# date: .*\n"), "");
    }
    /** Kills a calibration once its journal has so many lines. */
    void killAt(long lines, const std::string& beginning, const std::string& method = "search") {
        Process process(invoke(arguments({beginning, "--method", method})));
        for (int waits = 0; waits < 3000 && linesOfJournal() < lines; ++waits) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        process.signal(SIGKILL);
        EXPECT_EQ(process.finish().exitCode, -SIGKILL);
        EXPECT_GE(linesOfJournal(), lines);
    }
    static long linesOfJournal() {
        const std::string entered = contentOf("board.channel-1.journal");
        return static_cast<long>(std::count(entered.begin(), entered.end(), '\n'));
    }

    ScriptedBench m_bench;
};

TEST_F(ScriptedBenchTest, KilledTwiceAndResumedGivesTheSameTables) {
    const Ending whole = run(arguments({"--out", "whole.csv", "--journal", "whole.journal"}));
    ASSERT_EQ(whole.exitCode, 0) << whole.output << whole.errors;
    EXPECT_THAT(whole.output,
                AllOf(HasSubstr("They are gone through in the order 33 50 12 -10.\n"),
                      HasSubstr("12 points of 12: 12 good"), HasSubstr("\nDetector: settles within ")));
    const std::string expected = tables("whole.csv");
    ASSERT_THAT(expected, HasSubstr("\n18100000,50,"));
    m_bench.chamberHeard();
    killAt(60, "--restart");
    killAt(300, "--resume");
    const Ending ending = run(arguments({"--resume"}));
    EXPECT_EQ(ending.exitCode, 0) << ending.output << ending.errors;
    EXPECT_EQ(tables("board.channel-1.csv"), expected);
}

TEST_F(ScriptedBenchTest, FitThatIsKilledTwiceAndResumedGivesTheSameTables) {
    m_bench.isRough = true;
    write("board.toml", withAnalyser() + "\n[limits]\nleakage = -50\n");
    const Ending whole =
        run(arguments({"--method", "fit", "--out", "whole.csv", "--journal", "whole.journal"}));
    ASSERT_EQ(whole.exitCode, 0) << whole.output << whole.errors;
    EXPECT_THAT(whole.output,
                AllOf(HasSubstr("\nIt begins at 50 degrees.\n"), HasSubstr("\nPASS: leakage anywhere -5")));
    const std::string expected = tables("whole.csv");
    ASSERT_THAT(expected,
                AllOf(HasSubstr("\n# mode: hardware\n"), HasSubstr("\n# method: fit\n"),
                      HasSubstr("\n# claim_dbc: -5"), HasSubstr("\nfrequency_khz,temperature_c,i,q,state\n"),
                      HasSubstr("\n18100000,50,-530,120,good\n")));
    killAt(40, "--restart", "fit");
    killAt(120, "--resume", "fit");
    m_bench.chamberHeard();
    // What it was begun with need not be said again.
    const Ending ending = run({"calibrate", "--hardware", "board.toml", "--channel", "1", "--resume"});
    EXPECT_EQ(ending.exitCode, 0) << ending.output << ending.errors;
    EXPECT_EQ(tables("board.channel-1.csv"), expected);
}

TEST_F(ScriptedBenchTest, AnalyserLooksAtPointsAndTriesOfAFit) {
    write("board.toml", withAnalyser());
    const Ending ending = run(arguments({"--method", "fit", "--json"}));
    ASSERT_EQ(ending.exitCode, 0) << ending.output << ending.errors;
    const std::string entered = contentOf("board.channel-1.journal");
    long looks = 0;
    for (std::size_t at = entered.find("\"analysed\":"); at != std::string::npos;
         at = entered.find("\"analysed\":", at + 1)) {
        ++looks;
    }
    long seen = 0;
    std::istringstream lines(ending.output);
    for (std::string line; std::getline(lines, line);) {
        const auto event = nlohmann::json::parse(line);
        if (event.at("event") == "point" || event.at("event") == "tried") {
            // 10 units off are 20 dB, above the 20 of the floor at -80; it sees 15 dB less.
            EXPECT_LT(event.at("analyser_dbc").get<double>(), -70.0) << line;
            ++seen;
        }
    }
    EXPECT_EQ(looks, seen);
    EXPECT_GE(seen, 25);
}

TEST_F(ScriptedBenchTest, FitGoesOnWithAPersonInPlaceOfChamberAndSensor) {
    std::string described = board();
    described.erase(described.find("chamber = \"chamber\"\n"), 20);
    write("board.toml", described.substr(0, described.find("\n[sensor]")));
    const std::vector<std::string> words = arguments({"--method", "fit", "--attended"});
    const auto goThrough = [](Process& process, const std::vector<std::string>& temperatures) {
        for (const std::string& temperature : temperatures) {
            EXPECT_TRUE(process.waitFor("Bring the radio to " + temperature + " degrees;")) << temperature;
            process.type("\n");
        }
        return process.finish();
    };
    std::vector<std::string> wholeWords = words;
    wholeWords.insert(wholeWords.end(), {"--out", "whole.csv", "--journal", "whole.journal"});
    Process undisturbed(invoke(wholeWords));
    // Four Chebyshev nodes up, and on the way back the middles of the outer cells, in whole degrees.
    const Ending whole = goThrough(undisturbed, {"-10", "5", "35", "50", "42", "-3"});
    ASSERT_EQ(whole.exitCode, 0) << whole.output << whole.errors;
    EXPECT_THAT(whole.output, HasSubstr("Bring the radio to -10 degrees; Enter when it is there"));
    Process process(invoke(words));
    ASSERT_TRUE(process.waitFor("Bring the radio to"));
    process.type("\n");
    process.closeInput();
    const Ending left = process.finish();
    EXPECT_EQ(left.exitCode, 3) << left.output;
    EXPECT_THAT(left.errors, HasSubstr("nobody is there any more"));
    std::vector<std::string> resumed = words;
    resumed.emplace_back("--resume");
    Process again(invoke(resumed));
    // What was measured at -10 degrees is in the journal.
    EXPECT_EQ(goThrough(again, {"5", "35", "50", "42", "-3"}).exitCode, 0);
    EXPECT_EQ(tables("board.channel-1.csv"), tables("whole.csv"));
}

TEST_F(ScriptedBenchTest, ResumedFitThatTheJournalHasWholeTouchesNoHardware) {
    const Ending fit = run(arguments({"--method", "fit"}));
    ASSERT_EQ(fit.exitCode, 0) << fit.output << fit.errors;
    const std::string whole = tables("board.channel-1.csv");
    m_bench.chamberHeard();
    EXPECT_EQ(run(arguments({"--method", "fit", "--resume", "--out", "again.csv"})).exitCode, 0);
    EXPECT_EQ(tables("again.csv"), whole);
    std::vector<std::string> sent = m_bench.chamberHeard();
    sent.erase(std::remove(sent.begin(), sent.end(), "SENS?"), sent.end());
    EXPECT_THAT(sent, testing::ElementsAre("TEMP 25")); // which is on_exit
}

/** Nothing is measured at the nodes, and nothing modelled: the claim is what is known of them. */
TEST_F(ScriptedBenchTest, TablesOfAFitAreHeldAgainstTheLimitByWhatItClaims) {
    const Ending fit = run(arguments({"--method", "fit"}));
    ASSERT_EQ(fit.exitCode, 0) << fit.output << fit.errors;
    const std::string content = contentOf("board.channel-1.csv");
    std::smatch claim;
    ASSERT_TRUE(std::regex_search(content, claim, std::regex("\n# claim_dbc: (-[0-9]+\\.[0-9][0-9])\n")));
    write("board.toml", board() + "\n[limits]\nleakage = -10\n");
    EXPECT_EQ(run({"tables", "lint", "board.toml"}).output, "board.toml: good\n");
    write("board.toml", board() + "\n[limits]\nleakage = -200\n");
    const Ending missed = run({"tables", "lint", "board.toml"});
    EXPECT_EQ(missed.exitCode, 1);
    EXPECT_EQ(missed.output,
              "board.channel-1.csv:16: error: channel 1: leakage anywhere " + claim[1].str() +
                  " dBc by the claim of its fit, limit -200\nboard.toml: 1 error, 0 warnings\n");
}

TEST_F(ScriptedBenchTest, AnalyserLooksAtEachPointOnceItsCorrectionsAreFound) {
    write("board.toml", withAnalyser());
    const Ending ending = run(arguments({"--band", "18GHz", "18GHz"}));
    ASSERT_EQ(ending.exitCode, 0) << ending.output << ending.errors;
    // At -10 degrees I is best at -470: 6 and 5 off are 61 more than the 100 of the floor, 22.07 dB; the
    // detector's last probe was farther away.
    EXPECT_THAT(tables("board.channel-1.csv"),
                testing::ContainsRegex(",after_dbc,analyser_dbc\n18000000,-10,-464,125,.*,-73.43\n"));
    EXPECT_THAT(contentOf("board.channel-1.journal"), HasSubstr("\"analysed\":-7343,"));
    EXPECT_THAT(ending.output, HasSubstr("the analyser sees -73.43 dBc, the detector -53.32 dBc"));
    const std::string whole = tables("board.channel-1.csv");
    EXPECT_EQ(run(arguments({"--band", "18GHz", "18GHz", "--resume", "--out", "again.csv"})).exitCode, 0);
    EXPECT_EQ(tables("again.csv"), whole);
}

TEST_F(ScriptedBenchTest, ChamberIsSentTheShortestWayAndLeftAsItIsToBe) {
    ASSERT_EQ(run(arguments({"--band", "18GHz", "18GHz"})).exitCode, 0);
    std::vector<std::string> sent = m_bench.chamberHeard();
    sent.erase(std::remove(sent.begin(), sent.end(), "SENS?"), sent.end());
    EXPECT_THAT(sent, testing::ElementsAre("TEMP 33", "TEMP 50", "TEMP 12", "TEMP -10", "TEMP 25"));
}

TEST_F(ScriptedBenchTest, LevelsAreThoseOfTheDetectorWhereItsSlopeAndZeroAreStated) {
    const Ending ending = run(arguments({"--band", "18GHz", "18GHz"}));
    ASSERT_EQ(ending.exitCode, 0) << ending.output << ending.errors;
    EXPECT_THAT(ending.output, HasSubstr("\nWorst leakage by the detector\n  without corrections"));
    // Without corrections and at -10 degrees I is 470 off and Q 120: 53.72 dB, which reads 1343, or 53.72 dB.
    EXPECT_THAT(
        contentOf("board.channel-1.csv"),
        testing::ContainsRegex(",max_delta,state,before_dbc,after_dbc\n18000000,-10,.*,good,-26.28,"));
    EXPECT_THAT(contentOf("board.channel-1.journal"),
                HasSubstr("{\"khz\":18000000,\"degrees\":-10,\"uncorrected\":1343,"));
}

TEST_F(ScriptedBenchTest, WithASlopeAloneThereIsAnImprovement) {
    std::string described = board();
    described.erase(described.find("detector_zero = -80"), 19);
    write("board.toml", described);
    ASSERT_EQ(run(arguments({"--band", "18GHz", "18GHz"})).exitCode, 0);
    EXPECT_THAT(contentOf("board.channel-1.csv"),
                HasSubstr(",max_delta,state,improvement_db\n18000000,-10,"));
}

TEST_F(ScriptedBenchTest, QualifyOnHardwareLeavesTheRadio) {
    const Ending ending = run({"qualify", "--hardware", "board.toml", "--channel", "1"});
    EXPECT_EQ(ending.exitCode, 0) << ending.output << ending.errors;
    EXPECT_THAT(ending.output, AllOf(HasSubstr(" kHz, 25 degrees, by channel.1.tx.rf.detector.v\n"),
                                     HasSubstr("units per dB"), HasSubstr("Leaving:\n")));
}

TEST_F(ScriptedBenchTest, CtrlCWhileQualifyingLeavesTheRadio) {
    Process process(invoke({"qualify", "--hardware", "board.toml", "--channel", "1"}));
    ASSERT_TRUE(process.waitFor("HARDWARE: "));
    ASSERT_TRUE(process.waitUntilItCatches(SIGINT));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    process.signal(SIGINT);
    const Ending ending = process.finish();
    EXPECT_EQ(ending.exitCode, 130);
    EXPECT_THAT(ending.output, HasSubstr("Leaving:\n"));
}

/** The radio on files, whose detector is stuck, and somebody who is there in place of chamber or sensor. */
class AttendedBenchTest : public HardwareTest {
protected:
    AttendedBenchTest() {
        for (const char* const file : {"lo", "i", "q"}) {
            write(file, "0\n");
        }
        write("detector", "500\n");
        write("temperature", "21\n");
    }
    Invocation calibration(const std::vector<std::string>& options) const {
        std::vector<std::string> words{"calibrate",   "--hardware",       "board.toml", "--channel",     "1",
                                       "--attended",  "--max-iterations", "1",          "--settle-time", "0",
                                       "--no-qualify"};
        words.insert(words.end(), options.begin(), options.end());
        return invoke(words);
    }
};

TEST_F(AttendedBenchTest, PersonIsToldWhatToDoAndTheSensorSaysWhenItIsDone) {
    write("board.toml", hardwareBoard(folder()));
    Process process(calibration({"--temperatures", "55"}));
    ASSERT_TRUE(process.waitFor("Bring the radio to 55 degrees, now 21\n"));
    write("temperature", "54\n");
    EXPECT_THAT(process.finish().output, HasSubstr("3 points of 3"));
}

TEST_F(AttendedBenchTest, WithoutASensorThePersonSaysWhenItIsDone) {
    write("board.toml", hardwareBoardWithoutSensor(folder()));
    Process process(calibration({"--temperatures", "25,55"}));
    ASSERT_TRUE(
        process.waitFor("Bring the radio to 25 degrees; Enter when it is there, or type what it is\n"));
    process.type("\n");
    ASSERT_TRUE(process.waitFor("Bring the radio to 55 degrees"));
    process.type("warm\n");
    ASSERT_TRUE(process.waitFor("expected Enter, or the temperature in degrees Celsius\n"));
    process.type("40\n");
    ASSERT_TRUE(process.waitFor("Bring the radio to 55 degrees, now 40;"));
    process.type("55.4\n");
    EXPECT_THAT(process.finish().output, HasSubstr("6 points of 6"));
}

TEST_F(AttendedBenchTest, CtrlCWhileAPersonIsAskedLeavesTheRadio) {
    write("board.toml", hardwareBoardWithoutSensor(folder()));
    Process process(calibration({"--temperatures", "25,55"}));
    ASSERT_TRUE(process.waitFor("Bring the radio to 25 degrees"));
    process.signal(SIGINT);
    const Ending ending = process.finish();
    EXPECT_EQ(ending.exitCode, 130);
    EXPECT_THAT(ending.output, HasSubstr("Leaving:\n"));
}

TEST_F(AttendedBenchTest, EndOfInputEndsItWhereOnlyAPersonKnows) {
    write("board.toml", hardwareBoardWithoutSensor(folder()));
    Process process(calibration({"--temperatures", "25,55"}));
    ASSERT_TRUE(process.waitFor("Bring the radio to 25 degrees"));
    process.closeInput();
    const Ending ending = process.finish();
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_THAT(ending.errors, HasSubstr("nobody is there any more who says that 25 degrees"));
    EXPECT_THAT(ending.output, HasSubstr("Leaving:\n"));
}

} // namespace
