#include "tests/radio/support/LeakageBoard.h"
#include "tests/radioctl/program/ProgramTest.h"

#include <nlohmann/json.hpp>

#include <iterator>
#include <regex>
#include <sstream>

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/**
 * What a board's limits make of a calibration and of a replay, as the user meets it. The radio leaks with
 * -26.6 to -25.6 dBc; its coarse searches lower that by 20 dB at least, and not by 60.
 */
class VerdictProgramTest : public ProgramTest {
protected:
    static void writeBoard(const std::string& limits) {
        write("board.toml", leakageBoard() + "\n[limits]\n" + limits);
    }
    static Ending calibrate(std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"calibrate", "board.toml", "--channel", "1"});
        return runProgram({options});
    }
    static nlohmann::json lastEvent(const std::string& output) {
        const std::size_t end = output.find_last_not_of('\n');
        return nlohmann::json::parse(output.substr(output.rfind('\n', end) + 1));
    }
    static std::string contentOf(const std::string& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static bool isThere(const std::string& file) { return std::filesystem::exists(file); }

    static constexpr const char* csv = "board.channel-1.csv";
};

TEST_F(VerdictProgramTest, PassIsTheFirstThingThatIsSaidAtTheEnd) {
    writeBoard("leakage_at_nodes = -40\nleakage_improvement = 15\n");
    const Ending ending = calibrate();
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(ending.output, testing::ContainsRegex(
                                   " a probe\n\nPASS: leakage at the nodes -[0-9.]+ dBc \\(limit -40\\), "
                                   "improvement [0-9.]+ dB \\(limit 15\\)\nStored: board.channel-1.csv\n"));
    EXPECT_THAT(contentOf(csv), HasSubstr("\n# verdict: PASS\n"));
}

TEST_F(VerdictProgramTest, FailNamesLimitCarrierAndTemperatureAndStoresNothing) {
    writeBoard("leakage_improvement = 60\nleakage_at_nodes = -40\n");
    const Ending ending = calibrate();
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(ending.output,
                testing::ContainsRegex("\n\nFAIL: improvement [0-9.]+ dB at 1[78][019]00000 kHz, -?[0-9]+ "
                                       "degrees, limit 60\nHeld: leakage at the nodes -[0-9.]+ dBc \\(limit "
                                       "-40\\)\nNo tables were stored: limits of the board are not held; the "
                                       "same once more with --accept-fail, and with --resume after a "
                                       "measurement, stores them\\.\n"));
    EXPECT_THAT(ending.output, AllOf(HasSubstr("missed: its corrections gain "),
                                     HasSubstr(", and leakage_improvement asks for 60\n"),
                                     HasSubstr("0 good, 6 missed, 0 at an edge, 0 failed; ")));
    EXPECT_FALSE(isThere(csv));
}

TEST_F(VerdictProgramTest, AcceptedFailIsStoredAndMarkedAndStillNoSuccess) {
    writeBoard("leakage_improvement = 60\n");
    calibrate();
    const Ending ending = calibrate({"--resume", "--accept-fail"});
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(ending.output, HasSubstr("\nStored: board.channel-1.csv, marked FAIL (accepted)\n"));
    EXPECT_THAT(contentOf(csv), AllOf(HasSubstr("\n# verdict: FAIL (accepted)\n"), HasSubstr(",missed\n")));
    const Ending lint = runProgram({{"tables", "lint", "board.toml"}});
    EXPECT_EQ(lint.exitCode, 1);
    EXPECT_THAT(lint.output, HasSubstr(": error: channel 1: improvement "));
}

TEST_F(VerdictProgramTest, WithoutLimitsNothingIsClaimed) {
    write("board.toml", leakageBoard());
    const Ending ending = calibrate();
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(ending.output,
                HasSubstr("\n\nNO VERDICT: the board states no leakage in its [limits]\nStored: "));
    EXPECT_THAT(contentOf(csv), Not(HasSubstr("verdict")));
    EXPECT_TRUE(lastEvent(calibrate({"--json"}).output).at("verdict").is_null());
}

TEST_F(VerdictProgramTest, LastEventHasTheVerdictAndItsLimits) {
    writeBoard("leakage = -90\nleakage_improvement = 15\n");
    const auto end = lastEvent(calibrate({"--json"}).output);
    EXPECT_EQ(end.at("verdict"), "fail");
    EXPECT_EQ(end.at("exit_code"), 1);
    EXPECT_EQ(end.at("missed"), 6);
    EXPECT_TRUE(end.at("tables").is_null());
    ASSERT_EQ(end.at("limits").size(), 2U);
    const auto& leakage = end.at("limits")[0];
    EXPECT_EQ(leakage.at("name"), "leakage");
    EXPECT_EQ(leakage.at("limit"), -90.0);
    EXPECT_EQ(leakage.at("held"), false);
    EXPECT_EQ(leakage.at("found"), end.at("worst_between").at("dbc"));
    EXPECT_EQ(leakage.at("khz"), end.at("worst_between").at("khz"));
    EXPECT_EQ(leakage.at("degrees"), end.at("worst_between").at("degrees"));
    EXPECT_EQ(end.at("limits")[1].at("name"), "leakage_improvement");
    EXPECT_EQ(end.at("limits")[1].at("held"), true);
}

TEST_F(VerdictProgramTest, FailCountsWhereNoTablesWereAskedFor) {
    writeBoard("leakage_improvement = 60\n");
    calibrate();
    const Ending ending = calibrate({"--offline", "board.channel-1.journal"});
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(ending.output, AllOf(HasSubstr("\nFAIL: "), HasSubstr("\nNo tables were asked for.\n")));
}

TEST_F(VerdictProgramTest, EdgesAndMissedLimitsAreAcceptedOneByOne) {
    writeBoard("leakage_improvement = 60\n");
    const auto calibrateNarrow = [](std::vector<std::string> options) {
        options.insert(options.end(), {"--i-range", "-300", "1000"});
        return calibrate(std::move(options)).output;
    };
    EXPECT_THAT(calibrateNarrow({}),
                HasSubstr("No tables were stored: the search ended at the edge of a range "
                          "for 6 points, and limits of the board are not held; the same "
                          "once more with --accept-edge --accept-fail, and"));
    EXPECT_THAT(calibrateNarrow({"--resume", "--accept-edge"}),
                HasSubstr("No tables were stored: limits of the board are not held; the same once more with "
                          "--accept-fail, and"));
    EXPECT_THAT(calibrateNarrow({"--resume", "--accept-edge", "--accept-fail"}),
                HasSubstr("\nStored: board.channel-1.csv, marked FAIL (accepted)\n"));
}

TEST_F(VerdictProgramTest, StationStandsInTablesEventsAndPageWhenItIsSaid) {
    writeBoard("leakage_at_nodes = -40\n");
    const Ending ending = calibrate({"--station", "Bench 3", "--json", "--html", "page.html"});
    EXPECT_THAT(ending.output, HasSubstr(R"("station":"Bench 3")"));
    EXPECT_THAT(contentOf(csv), HasSubstr("\n# station: Bench 3\n"));
    const std::string page = contentOf("page.html");
    EXPECT_TRUE(std::regex_search(
        page, std::regex("<h1>[^\n]*\n<div class=\"verdict pass\">\n<p>PASS: leakage at the nodes [^\n]*\n"
                         "<p>Stored: board.channel-1.csv</p>\n</div>\n<p>Test radio, serial T-1, channel 1, "
                         "station Bench 3, [-0-9T:]+Z, radioctl [0-9.]+</p>\n")));
    EXPECT_THAT(calibrate({"--json"}).output, HasSubstr(R"("station":null)"));
    EXPECT_THAT(contentOf(csv), Not(HasSubstr("station")));
}

TEST_F(VerdictProgramTest, StationThatCannotBePrintedIsRefused) {
    writeBoard("");
    EXPECT_THAT(calibrate({"--station", "a\nb"}).errors,
                HasSubstr("--station: \"a\\x0ab\", expected 1 to 100 printable characters"));
    EXPECT_EQ(calibrate({"--station", ""}).exitCode, 2);
}

/** A replay of two temperatures on the demonstration board, whose image stays below -79 dBc. */
class ThermalVerdictProgramTest : public VerdictProgramTest {
protected:
    ThermalVerdictProgramTest() { write("log.csv", "seconds,degrees\n100,-33\n7300,55\n"); }

    static Ending thermal(const std::string& limits, std::vector<std::string> options = {}) {
        std::ifstream stream(std::filesystem::path(RADIOCTL_BOARDS) / "iq-compensation-18ghz.toml");
        const std::string board{std::istreambuf_iterator<char>(stream), {}};
        write("board.toml",
              std::regex_replace(board, std::regex("image = -75\ncarrier_leakage = -75"), limits));
        options.insert(options.begin(), {"thermal", "board.toml", "log.csv"});
        return runProgram({options});
    }
};

TEST_F(ThermalVerdictProgramTest, PassStandsInFrontOfTheChannels) {
    const Ending ending = thermal("image = -75\ncarrier_leakage = -75");
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(ending.output, testing::ContainsRegex("degrees\n\nPASS: image -[0-9.]+ dBc \\(limit -75\\), "
                                                      "carrier leakage -[0-9.]+ dBc \\(limit "
                                                      "-75\\)\n\nChannel 1, carrier"));
}

TEST_F(ThermalVerdictProgramTest, FailNamesTheChannelAndIsNoSuccess) {
    const Ending ending = thermal("image = -100");
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(ending.output,
                testing::ContainsRegex("\nFAIL: image -[0-9.]+ dBc of channel [12] at 17727500 "
                                       "kHz, -?[0-9]+ degrees, limit -100\n"));
    const auto end = lastEvent(thermal("image = -100", {"--json"}).output);
    EXPECT_EQ(end.at("verdict"), "fail");
    EXPECT_EQ(end.at("limits")[0].at("name"), "image");
    EXPECT_EQ(end.at("limits")[0].at("khz"), 17727500);
}

TEST_F(ThermalVerdictProgramTest, PageHasTheVerdictFirstAndOneUnitOfTime) {
    thermal("image = -75", {"--html", "page.html", "--station", "Chamber 2"});
    const std::string page = contentOf("page.html");
    EXPECT_TRUE(std::regex_search(
        page,
        std::regex("<h1>[^\n]*\n<div class=\"verdict pass\">\n<p>PASS: image [^\n]*\n</div>\n<p>[^\n]*, "
                   "serial unknown, station Chamber 2, [-0-9T:]+Z, radioctl [0-9.]+</p>\n")));
    EXPECT_THAT(page, AllOf(HasSubstr("<th>log</th><td>log.csv: 2 samples in 120.00 minutes</td>"),
                            HasSubstr("minutes from the beginning of the log"),
                            HasSubstr("<td>at 120.00 minutes, 55 °C</td>"),
                            HasSubstr("<td>at 0.00 minutes, -33 °C</td>"), Not(HasSubstr("7300")),
                            Not(HasSubstr(" s, "))));
}

} // namespace
