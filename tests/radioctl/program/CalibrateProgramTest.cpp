#include "tests/radio/support/FileSizeLimit.h"
#include "tests/radio/support/LeakageBoard.h"
#include "tests/radioctl/program/ProgramTest.h"
#include "tests/support/PoorFileSystem.h"

#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <iterator>
#include <random>
#include <regex>
#include <sstream>
#include <thread>

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/** "radioctl calibrate" as its user meets it, on a radio of one channel: three carriers, two temperatures. */
class CalibrateProgramTest : public ProgramTest {
protected:
    CalibrateProgramTest() { write("board.toml", leakageBoard()); }

    static Ending calibrate(std::vector<std::string> options = {}) {
        return runProgram({arguments(std::move(options))});
    }
    static std::vector<std::string> arguments(std::vector<std::string> options) {
        options.insert(options.begin(), {"calibrate", "board.toml", "--channel", "1"});
        return options;
    }
    static std::string contentOf(const std::string& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /** The tables without the date and the version, which are other ones another time. */
    static std::string tables(const std::string& file = "board.channel-1.csv") {
        return std::regex_replace(contentOf(file), std::regex("# (date|tool): .*\n"), "");
    }
    static std::size_t linesOf(const std::string& file) {
        const std::string content = contentOf(file);
        return static_cast<std::size_t>(std::count(content.begin(), content.end(), '\n'));
    }
    static bool isThere(const std::string& file) { return std::filesystem::exists(file); }

    /** Has the searches go on to the end. */
    inline static const std::vector<std::string> fine = {"--min-delta", "3"};
    static constexpr const char* journal = "board.channel-1.journal";
    static constexpr const char* csv = "board.channel-1.csv";
};

TEST_F(CalibrateProgramTest, StoresTablesThatTheBoardLoads) {
    const Ending ending = calibrate();
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_EQ(ending.errors, "");
    EXPECT_THAT(ending.output, AllOf(HasSubstr("\nStored: board.channel-1.csv\n"),
                                     EndsWith("Journal: board.channel-1.journal\n")));
    EXPECT_EQ(runProgram({{"check", "board.toml"}}).output, "board.toml: good\n");
}

TEST_F(CalibrateProgramTest, FindsTheCorrectionsThatTakeTheLeakageAway) {
    calibrate(fine);
    // At 18 GHz and -10 degrees the leakage is 0.35 dB less than 1/20: 0.0480, which is 480 steps.
    std::smatch found;
    const std::string content = contentOf(csv);
    ASSERT_TRUE(std::regex_search(content, found, std::regex("\n18000000,-10,(-?\\d+),(-?\\d+),")));
    EXPECT_NEAR(std::stoi(found[1]), -480, 3);
    EXPECT_NEAR(std::stoi(found[2]), 0, 3);
}

TEST_F(CalibrateProgramTest, LeakageIsGoneWhenTheRadioTunesWithTheTables) {
    write("script", "temperature -10\ntune tx 1 18000000\nexpect leakage 1 below -60\n");
    EXPECT_EQ(runProgram({{"run", "board.toml", "script"}}).exitCode, 1);
    calibrate(fine);
    EXPECT_EQ(runProgram({{"run", "board.toml", "script"}}).exitCode, 0);
}

TEST_F(CalibrateProgramTest, SummaryComparesBeforeAndAfter) {
    // Most leaks at 18.1 GHz and 50 degrees: -26.02 + 0.2 + 0.25 dBc.
    EXPECT_THAT(calibrate().output,
                AllOf(HasSubstr("Worst modelled leakage\n"),
                      HasSubstr("without corrections            -25.57 dBc  at 18100000 kHz, 50 degrees\n"),
                      HasSubstr("\n6 points of 6: 6 good, 0 at an edge, 0 failed; ")));
}

TEST_F(CalibrateProgramTest, EveryProbeIsInTheJournal) {
    const Ending ending = calibrate({"--json"});
    const auto last = nlohmann::json::parse(
        ending.output.substr(ending.output.rfind("{\"schema\":1,\"event\":\"calibrated\"")));
    // Between the header, with a line for the qualification, and the line that says that it is finished.
    EXPECT_EQ(last.at("qualifying_probes"), 31);
    EXPECT_EQ(last.at("probes").get<std::size_t>() - 31 + 3, linesOf(journal));
}

TEST_F(CalibrateProgramTest, JsonHasAnObjectForEachPoint) {
    std::istringstream lines(calibrate({"--json"}).output);
    std::vector<nlohmann::json> events;
    for (std::string line; std::getline(lines, line);) {
        events.push_back(nlohmann::json::parse(line));
    }
    ASSERT_EQ(events.size(), 10U);
    EXPECT_EQ(events[0].at("mode"), "simulation");
    EXPECT_EQ(events[2].at("event"), "qualified");
    EXPECT_EQ(events[2].at("settle_time_ms"), 2);
    EXPECT_TRUE(events[2].at("refusal").is_null());
    events.erase(events.begin() + 2);
    EXPECT_EQ(events[1].at("event"), "calibration");
    EXPECT_EQ(events[1].at("serial"), "T-1");
    EXPECT_EQ(events[1].at("settings").at("shrink_factor"), 0.75);
    EXPECT_EQ(events[2].at("event"), "point");
    EXPECT_EQ(events[2].at("khz"), 17900000);
    EXPECT_EQ(events[2].at("degrees"), -10);
    EXPECT_EQ(events[2].at("state"), "good");
    EXPECT_EQ(events[8].at("worst_before").at("khz"), 18100000);
    EXPECT_EQ(events[8].at("tables"), "board.channel-1.csv");
    EXPECT_EQ(events[8].at("exit_code"), 0);
}

TEST_F(CalibrateProgramTest, JsonSaysNothingOfIterationsWhereNothingIsSearched) {
    EXPECT_THAT(calibrate({"--json", "--max-iterations", "1"}).output,
                HasSubstr(R"("iterations":1,"max_delta":1500,"probes":4})"));
    EXPECT_THAT(calibrate({"--json", "--method", "fit", "--restart"}).output,
                AllOf(HasSubstr(R"("iterations":null,"max_delta":null,"probes":)"),
                      Not(HasSubstr(R"("iterations":0)")), Not(HasSubstr(R"("max_delta":0)"))));
}

TEST_F(CalibrateProgramTest, OldTablesAreKept) {
    calibrate();
    const std::string first = contentOf(csv);
    const Ending ending = calibrate({"--min-delta", "100"});
    EXPECT_THAT(ending.output,
                HasSubstr("\nStored: board.channel-1.csv; what was there is now board.channel-1.csv.~1~\n"));
    EXPECT_EQ(contentOf("board.channel-1.csv.~1~"), first);
    EXPECT_NE(contentOf(csv), first);
    calibrate();
    EXPECT_EQ(contentOf("board.channel-1.csv.~1~"), first);
    EXPECT_TRUE(isThere("board.channel-1.csv.~2~"));
}

TEST_F(CalibrateProgramTest, FinishedJournalIsKeptWhenTheNextBegins) {
    calibrate();
    const std::string first = contentOf(journal);
    calibrate();
    EXPECT_EQ(contentOf("board.channel-1.journal.~1~"), first);
}

TEST_F(CalibrateProgramTest, SameCalibrationGivesTheSameTables) {
    calibrate();
    const std::string first = tables();
    calibrate();
    EXPECT_EQ(tables(), first);
}

TEST_F(CalibrateProgramTest, OptionsGoBeforeTheBoard) {
    calibrate({"--band",
               "18GHz",
               "18.01GHz",
               "--step",
               "10MHz",
               "--temperatures=-20,60",
               "--i-range",
               "-700",
               "700",
               "--q-range",
               "-600",
               "600",
               "--shrink",
               "0.8",
               "--min-delta",
               "4",
               "--max-iterations",
               "33",
               "--settle-time",
               "2",
               "--serial",
               "T-2",
               "--out",
               "other.csv"});
    EXPECT_THAT(contentOf("other.csv"),
                AllOf(HasSubstr("# serial: T-2\n"), HasSubstr("# i_range: -700 700\n"),
                      HasSubstr("# q_range: -600 600\n"), HasSubstr("# shrink_factor: 0.8\n"),
                      HasSubstr("# min_delta: 4\n"), HasSubstr("# max_iterations: 33\n"),
                      HasSubstr("# settle_time_ms: 2\n"), HasSubstr("\n18000000,-20,"),
                      HasSubstr("\n18010000,60,")));
    EXPECT_FALSE(isThere(csv));
}

/** The demonstration board, calibrated over its whole band and all its temperatures. */
class CalibrateDemonstrationTest : public CalibrateProgramTest,
                                   public testing::WithParamInterface<const char*> {
protected:
    CalibrateDemonstrationTest() {
        std::filesystem::copy_file(boards() / "lo-leakage-18ghz.toml", "lo-leakage-18ghz.toml");
    }

    static Ending calibrateDemonstration(const std::vector<std::string>& options = {}) {
        std::vector<std::string> arguments{"calibrate", "lo-leakage-18ghz.toml", "--channel", GetParam(),
                                           "--json"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runProgram({arguments});
    }
    static nlohmann::json lastEvent(const Ending& ending) {
        return nlohmann::json::parse(
            ending.output.substr(ending.output.rfind("{\"schema\":1,\"event\":\"calibrated\"")));
    }
    static std::filesystem::path boards() { return RADIOCTL_BOARDS; }
};

TEST_P(CalibrateDemonstrationTest, FitHoldsItsLimitsAnywhereWithFewProbes) {
    const Ending ending = calibrateDemonstration();
    EXPECT_EQ(ending.exitCode, 0);
    const auto end = lastEvent(ending);
    EXPECT_EQ(end.at("verdict"), "pass");
    EXPECT_EQ(end.at("good"), end.at("points"));
    EXPECT_LE(end.at("probes").get<int>(), 400);
    EXPECT_GT(end.at("worst_before").at("dbc").get<double>(), -24.0);
    EXPECT_LT(end.at("worst_between").at("dbc").get<double>(), -76.0);
    // What it says without knowing the model is on the safe side of what the model says.
    const auto& fit = end.at("fit");
    EXPECT_GE(fit.at("claim_dbc"), end.at("worst_between").at("dbc"));
    EXPECT_LE(fit.at("claim_dbc").get<double>(), -74.0);
}

TEST_P(CalibrateDemonstrationTest, LeakageAtTheNodesOfASearchIsThirtyDecibelsLowerAtLeast) {
    const auto end = lastEvent(calibrateDemonstration({"--method", "search"}));
    EXPECT_EQ(end.at("points"), 30);
    EXPECT_EQ(end.at("edge"), 0);
    EXPECT_EQ(end.at("failed"), 0);
    EXPECT_TRUE(end.at("fit").is_null());
    EXPECT_LT(end.at("worst_after").at("dbc").get<double>(),
              end.at("worst_before").at("dbc").get<double>() - 30.0);
    // Between nodes that are so far apart, much more leaks than the limits of the board allow.
    EXPECT_EQ(end.at("verdict"), "fail");
    EXPECT_LT(end.at("worst_between").at("dbc").get<double>(), -55.0);
    EXPECT_GT(end.at("worst_between").at("dbc").get<double>(), -60.0);
}

/** A place of the tables is tried with a probe of its own, and each try is told. */
TEST_P(CalibrateDemonstrationTest, EachPlaceWhereTheTableWasTriedHasAnEvent) {
    const Ending ending = calibrateDemonstration();
    std::istringstream lines(ending.output);
    std::size_t tried = 0;
    for (std::string line; std::getline(lines, line);) {
        const auto event = nlohmann::json::parse(line);
        if (event.at("event") == "tried") {
            ++tried;
            EXPECT_EQ(event.at("as_foretold"), true) << line;
            EXPECT_LT(event.at("dbc").get<double>(), -74.0) << line;
            EXPECT_GT(event.at("reading").get<int>(), 0) << line;
            EXPECT_GE(event.at("khz").get<int>(), 17727500) << line;
            EXPECT_LE(event.at("degrees").get<int>(), 55) << line;
        }
    }
    EXPECT_GE(tried, 20U);
    EXPECT_EQ(lastEvent(ending).at("fit").at("verifications"), tried);
}

TEST_P(CalibrateDemonstrationTest, TablesOfAFitAreGoodForTheToolsOfTables) {
    const std::string file = std::string("lo-leakage-18ghz.channel-") + GetParam() + ".csv";
    calibrateDemonstration();
    EXPECT_EQ(runProgram({{"tables", "lint", file}}).output, file + ": good\n");
    calibrateDemonstration({"--method", "search", "--accept-fail", "--out", "search.csv"});
    const Ending moved = runProgram({{"tables", "diff", "search.csv", file}});
    EXPECT_EQ(moved.exitCode, 1);
    EXPECT_THAT(moved.output,
                HasSubstr("\n  The tables have other axes; they are compared at the nodes of both.\n"));
    const std::string other = std::string(GetParam()) == "1" ? "2" : "1";
    std::filesystem::copy_file(boards() / ("lo-leakage-18ghz.channel-" + other + ".csv"),
                               "lo-leakage-18ghz.channel-" + other + ".csv");
    // A node, where the tables have one value each; nobody interpolates.
    EXPECT_THAT(
        runProgram({{"tables", "why", "lo-leakage-18ghz.toml", "--channel", GetParam(), "--frequency",
                     "17727500", "--temperature=-33"}})
            .output,
        AllOf(HasSubstr(", from lo-leakage-18ghz.channel-" + std::string(GetParam()) + ".csv, column i\n"),
              HasSubstr("The library wrote what the tables say.\n")));
}

TEST_P(CalibrateDemonstrationTest, SuppliedTablesAreThoseThatItMakes) {
    const std::string file = std::string("lo-leakage-18ghz.channel-") + GetParam() + ".csv";
    calibrateDemonstration();
    EXPECT_EQ(tables(file), tables(boards() / file));
}

INSTANTIATE_TEST_SUITE_P(Channels, CalibrateDemonstrationTest, testing::Values("1", "2"));

// Interrupted

/** Lets a calibration that takes its time begin, and ends it with `signal` after a while. */
Ending interruptAfter(std::chrono::milliseconds time, int signal, const std::vector<std::string>& arguments) {
    Process process({arguments});
    std::this_thread::sleep_for(time);
    process.signal(signal);
    return process.finish();
}

/** Kills calibrations that take their time again and again, until one gets through; gives the number of
 * kills. */
int killUntilItIsDone(std::minstd_rand& random, const std::string& journal,
                      std::vector<std::string> arguments) {
    int kills = 0;
    arguments.emplace_back("--restart");
    // Later and later, so that it gets through on a slow machine as well.
    for (unsigned longest = 200;; longest += longest / 4) {
        const Ending ending =
            interruptAfter(std::chrono::milliseconds(10 + random() % longest), SIGKILL, arguments);
        if (ending.exitCode != -SIGKILL) {
            EXPECT_EQ(ending.exitCode, 0) << ending.errors;
            return kills;
        }
        ++kills;
        arguments.back() = std::filesystem::exists(journal) ? "--resume" : "--restart";
    }
}

TEST_F(CalibrateProgramTest, KilledAtAnyMomentAndResumedGivesTheSameTables) {
    const std::vector<std::string> options = {"--settle-time", "1", "--no-qualify"};
    std::vector<std::string> inRealTime = arguments(options);
    inRealTime.emplace_back("--real-time");
    calibrate(options);
    const std::string whole = tables();
    ASSERT_THAT(whole, HasSubstr("\n18100000,50,"));
    std::minstd_rand random(1); // the same moments each time, as far as the machine allows
    int kills = 0;
    for (int round = 0; round < 4; ++round) {
        std::filesystem::remove(csv);
        kills += killUntilItIsDone(random, journal, inRealTime);
        EXPECT_EQ(tables(), whole);
    }
    EXPECT_GT(kills, 4);
}

TEST_F(CalibrateProgramTest, KilledWhileItQualifiesAndResumedGivesTheSameTables) {
    calibrate({"--settle-time", "1"});
    const std::string whole = tables();
    std::filesystem::remove(csv);
    std::minstd_rand random(2);
    EXPECT_GT(killUntilItIsDone(random, journal, arguments({"--settle-time", "1", "--real-time"})), 1);
    EXPECT_EQ(tables(), whole);
}

TEST_F(CalibrateProgramTest, KilledAfterAnyProbeAndResumedGivesTheSameTables) {
    calibrate();
    const std::string whole = tables();
    const std::string entered = contentOf(journal);
    // What the journal is when the power goes: any beginning of it that has its first line.
    const std::size_t first = entered.find('\n') + 1;
    for (std::size_t size = first; size < entered.size(); size += (entered.size() - first) / 12 + 1) {
        write(journal, entered.substr(0, size));
        std::filesystem::remove(csv);
        ASSERT_EQ(calibrate({"--resume"}).exitCode, 0);
        ASSERT_EQ(tables(), whole) << "with " << size << " bytes of the journal";
    }
}

TEST_F(CalibrateProgramTest, NoProbeIsMadeTwice) {
    calibrate();
    const std::size_t lines = linesOf(journal);
    const std::string entered = contentOf(journal);
    write(journal, entered.substr(0, entered.size() / 2));
    const Ending ending = calibrate({"--resume"});
    EXPECT_EQ(linesOf(journal), lines);
    EXPECT_THAT(ending.output, HasSubstr("; they are not made again.\n"));
}

TEST_F(CalibrateProgramTest, CtrlCLeavesWhatIsThereAndSaysHowToGoOn) {
    write(csv, "frequency_khz,temperature_c,i,q\n1,1,1,1\n");
    Process process({arguments({"--real-time", "--settle-time", "20"})});
    ASSERT_TRUE(process.waitUntilItCatches(SIGINT));
    ASSERT_TRUE(process.waitFor("degrees\n"));
    process.signal(SIGINT);
    const Ending ending = process.finish();
    EXPECT_EQ(ending.exitCode, 130);
    EXPECT_THAT(ending.output,
                HasSubstr("\nInterrupted: no tables were stored; --resume goes on where it stopped.\n"));
    EXPECT_EQ(contentOf(csv), "frequency_khz,temperature_c,i,q\n1,1,1,1\n");
    EXPECT_EQ(calibrate({"--settle-time", "20", "--resume"}).exitCode, 0);
}

TEST_F(CalibrateProgramTest, UnfinishedCalibrationIsNotThrownAway) {
    calibrate();
    const std::string entered = contentOf(journal);
    write(journal, entered.substr(0, entered.size() / 2));
    const Ending ending = calibrate();
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_EQ(ending.errors,
              "radioctl: board.channel-1.journal: of a calibration that is not finished; --resume "
              "goes on with it, --restart keeps it as a backup and begins anew\n");
    EXPECT_EQ(contentOf(journal), entered.substr(0, entered.size() / 2));
    EXPECT_EQ(calibrate({"--restart"}).exitCode, 0);
    EXPECT_EQ(contentOf("board.channel-1.journal.~1~"), entered.substr(0, entered.size() / 2));
}

/** On file systems that cannot rename without replacing, as of a network. */
class PoorFileSystemCalibrationTest : public CalibrateProgramTest,
                                      public testing::WithParamInterface<PoorFileSystem::Unknown> {
public:
    void SetUp() override {
        if (!PoorFileSystem::holdsThere(GetParam(), [] { return true; })) {
            GTEST_SKIP() << "the kernel answers for no file system here, in an emulator for example";
        }
    }

protected:
    static bool succeedsThere(const std::vector<std::string>& options) {
        return PoorFileSystem::holdsThere(GetParam(), [&] { return calibrate(options).exitCode == 0; });
    }
};

TEST_P(PoorFileSystemCalibrationTest, CalibrationBeginsGoesOnAndBeginsAnew) {
    ASSERT_TRUE(succeedsThere({}));
    const std::string whole = tables();
    const std::string entered = contentOf(journal);
    const std::string half = entered.substr(0, entered.size() / 2);

    write(journal, half);
    std::filesystem::remove(csv);
    ASSERT_TRUE(succeedsThere({"--resume"}));
    EXPECT_EQ(tables(), whole);
    EXPECT_EQ(linesOf(journal), static_cast<std::size_t>(std::count(entered.begin(), entered.end(), '\n')));

    write(journal, half);
    write(csv, "frequency_khz,temperature_c,i,q\n1,1,1,1\n");
    ASSERT_TRUE(succeedsThere({"--restart"}));
    EXPECT_EQ(contentOf("board.channel-1.journal.~1~"), half);
    EXPECT_EQ(contentOf("board.channel-1.csv.~1~"), "frequency_khz,temperature_c,i,q\n1,1,1,1\n");
    EXPECT_EQ(tables(), whole);
}

INSTANTIATE_TEST_SUITE_P(Knows, PoorFileSystemCalibrationTest,
                         testing::Values(PoorFileSystem::Unknown::renamingToNew,
                                         PoorFileSystem::Unknown::renamingToNewAndLinks),
                         [](const testing::TestParamInfo<PoorFileSystem::Unknown>& test) {
                             return test.param == PoorFileSystem::Unknown::renamingToNew ? "Links"
                                                                                         : "Nothing";
                         });

TEST_F(CalibrateProgramTest, ResumesWithTheSameSettingsOnly) {
    calibrate();
    const Ending ending = calibrate({"--resume", "--min-delta", "2"});
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_EQ(ending.errors,
              "radioctl: board.channel-1.journal:1: min_delta: begun with 60, now asked for with 2; "
              "--restart begins anew\n");
}

TEST_F(CalibrateProgramTest, JournalOfAnotherSearchIsFoundOut) {
    calibrate();
    std::string entered = contentOf(journal);
    const std::size_t at = entered.find("\"i\":1000");
    entered.replace(at, 8, "\"i\":1001");
    write(journal, entered);
    const Ending ending = calibrate({"--resume"});
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_THAT(ending.errors,
                HasSubstr("radioctl: board.channel-1.journal:4: a probe at I 1001, Q -1000, but this "
                          "search has one at I 1000, Q -1000: the journal is damaged, or of another search; "
                          "--restart keeps the journal as a backup and begins anew\n"));
}

TEST_F(CalibrateProgramTest, NothingToResume) {
    EXPECT_EQ(calibrate({"--resume"}).errors,
              "radioctl: board.channel-1.journal: is not there: nothing to resume\n");
}

TEST_F(CalibrateProgramTest, JournalThatCannotBeWrittenEndsItAtOnce) {
    const Ending ending = calibrate({"--journal", "missing/x.journal"});
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_THAT(ending.errors, StartsWith("radioctl: missing/x.journal: cannot be written"));
}

TEST_F(CalibrateProgramTest, LineThatWasCutOffIsTakenOutOfTheJournal) {
    calibrate();
    const std::string entered = contentOf(journal);
    write(journal, entered.substr(0, entered.size() / 2)); // inside a line
    ASSERT_EQ(calibrate({"--resume"}).exitCode, 0);
    EXPECT_EQ(calibrate({"--offline", journal}).exitCode, 0);
    EXPECT_EQ(linesOf(journal), static_cast<std::size_t>(std::count(entered.begin(), entered.end(), '\n')));
}

TEST_F(CalibrateProgramTest, ResumedCalibrationHasTheDateOfItsBeginning) {
    calibrate();
    std::string entered = contentOf(journal);
    entered.replace(entered.find("\"date\":\"2"), 9, "\"date\":\"1");
    write(journal, entered.substr(0, entered.size() / 2));
    calibrate({"--resume"});
    EXPECT_THAT(contentOf(csv), HasSubstr("# date: 1"));
}

TEST_F(CalibrateProgramTest, FinishedCalibrationIsNotStoredTwice) {
    calibrate();
    const std::size_t lines = linesOf(journal);
    EXPECT_THAT(calibrate({"--resume"}).output,
                HasSubstr("\nStored before, and the same: board.channel-1.csv\n"));
    EXPECT_EQ(linesOf(journal), lines);
    EXPECT_FALSE(isThere("board.channel-1.csv.~1~"));
}

TEST_F(CalibrateProgramTest, ResumesTheSameRadioOnly) {
    calibrate();
    std::string board = leakageBoard();
    board.replace(board.find("T-1"), 3, "T-2");
    write("board.toml", board);
    EXPECT_EQ(calibrate({"--resume"}).errors,
              "radioctl: board.channel-1.journal:1: serial: begun with \"T-1\", now asked for with \"T-2\"; "
              "--restart begins anew\n");
}

TEST_F(CalibrateProgramTest, ChangedTransmitterIsNoticed) {
    calibrate();
    std::string board = leakageBoard();
    board.replace(board.find("level = -26.0206"), 16, "level = -26.0205");
    write("board.toml", board);
    const std::string complaint =
        "radioctl: board.channel-1.journal:1: transmitter: the board's [[leakage]] of the "
        "channel has changed since; --restart begins anew\n";
    EXPECT_EQ(calibrate({"--resume"}).errors, complaint);
    EXPECT_EQ(calibrate({"--offline", journal}).errors, complaint);
}

TEST_F(CalibrateProgramTest, OldTablesDoNotChangeWhatIsFound) {
    write("board.toml", leakageBoard("range = [0, 4095], settling = 5.0"));
    calibrate({"--settle-time", "3", "--accept-edge"});
    const std::string first = tables();
    calibrate({"--settle-time", "3", "--accept-edge", "--restart"});
    EXPECT_EQ(tables(), first);
}

TEST_F(CalibrateProgramTest, SettleTimeDoesNotHoldBackCtrlC) {
    Process process({arguments({"--real-time", "--settle-time", "60000"})});
    ASSERT_TRUE(process.waitUntilItCatches(SIGINT));
    ASSERT_TRUE(process.waitFor("degrees\n"));
    process.signal(SIGINT);
    EXPECT_EQ(process.finish().exitCode, 130); // finish() gives up after 10 s
}

TEST_F(CalibrateProgramTest, ProgressIsShownAtATerminal) {
    Invocation invocation{arguments({"--real-time", "--settle-time", "2"})};
    invocation.atTerminal = true;
    invocation.environment = {{"TERM", "xterm"}};
    Process process(invocation);
    const std::string output = process.finish().output;
    EXPECT_THAT(output,
                testing::ContainsRegex("[1-5] of 6 points, [0-9]+ s left, leakage up to -[0-9.]+ dBc"));
}

TEST_F(CalibrateProgramTest, EveryFileIsOneOfItsOwn) {
    calibrate();
    const std::string board = contentOf("board.toml");
    const std::string entered = contentOf(journal);
    const auto complaint = [](const std::vector<std::string>& options) {
        const Ending ending = calibrate(options);
        EXPECT_EQ(ending.exitCode, 2);
        return ending.errors;
    };
    EXPECT_EQ(complaint({"--html", "board.toml"}),
              "radioctl: --html: board.toml is the board, expected a file of its own\n");
    EXPECT_EQ(complaint({"--html", csv}),
              "radioctl: --html: board.channel-1.csv is the tables, expected a file of its own\n");
    EXPECT_EQ(complaint({"--html", "./board.channel-1.journal"}),
              "radioctl: --html: ./board.channel-1.journal is the journal, expected a file of its own\n");
    EXPECT_EQ(complaint({"--out", "board.toml"}),
              "radioctl: the tables: board.toml is the board, expected a file of its own\n");
    EXPECT_EQ(complaint({"--journal", "board.toml", "--restart"}),
              "radioctl: the journal: board.toml is the board, expected a file of its own\n");
    EXPECT_EQ(contentOf("board.toml"), board);
    EXPECT_EQ(contentOf(journal), entered);
}

TEST_F(CalibrateProgramTest, TablesOfTheBoardMakeNoRoomForAJournal) {
    calibrate();
    const std::string stored = contentOf(csv);
    const Ending ending = calibrate({"--journal", csv, "--out", "other.csv", "--restart"});
    EXPECT_EQ(ending.exitCode, 2);
    EXPECT_EQ(ending.errors, "radioctl: the journal: board.channel-1.csv is a table of the board, expected a "
                             "file of its own\n");
    EXPECT_EQ(contentOf(csv), stored);
}

// What is there in place of a journal

/** What may be at the place of a journal, and what is said about it. */
struct Damage {
    const char* name;
    /** Made of a whole journal. */
    std::string (*content)(const std::string& whole);
    const char* complaint;
};

class DamagedJournalTest : public CalibrateProgramTest, public testing::WithParamInterface<Damage> {};

TEST_P(DamagedJournalTest, IsPutAwayByRestartAndByNothingElse) {
    calibrate();
    std::filesystem::remove(csv);
    const std::string damaged = GetParam().content(contentOf(journal));
    write(journal, damaged);
    for (const char* const option : {"-v", "--resume"}) {
        const Ending ending = calibrate({option});
        EXPECT_EQ(ending.exitCode, 3);
        EXPECT_EQ(ending.errors, std::string("radioctl: board.channel-1.journal") + GetParam().complaint +
                                     "; --restart keeps it as a backup and begins anew\n");
        EXPECT_EQ(contentOf(journal), damaged);
    }
    const Ending ending = calibrate({"--restart"});
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_EQ(ending.errors, "");
    EXPECT_THAT(ending.output,
                HasSubstr(std::string("\nPut away: board.channel-1.journal is now "
                                      "board.channel-1.journal.~1~; it was no journal to go on with: "
                                      "board.channel-1.journal") +
                          GetParam().complaint + "\n"));
    EXPECT_EQ(contentOf("board.channel-1.journal.~1~"), damaged);
    EXPECT_TRUE(isThere(csv));
}

INSTANTIATE_TEST_SUITE_P(
    All, DamagedJournalTest,
    testing::Values(Damage{"Empty", [](const std::string& /*whole*/) { return std::string(); },
                           ": has no whole line, expected a calibration journal"},
                    Damage{"FirstLineCut", [](const std::string& whole) { return whole.substr(0, 100); },
                           ": has no whole line, expected a calibration journal"},
                    Damage{"GarbageInside",
                           [](const std::string& whole) {
                               const std::size_t line = whole.find('\n') + 1;
                               return whole.substr(0, line) + std::string(30, '\xff') + "\n" +
                                      whole.substr(line);
                           },
                           ":2: expected a JSON object with khz, degrees, i, q and reading"},
                    Damage{"Zeros", [](const std::string& whole) { return std::string(whole.size(), '\0'); },
                           ": has no whole line, expected a calibration journal"},
                    Damage{"OfAnotherProgram",
                           [](const std::string& /*whole*/) { return std::string("mine\n"); },
                           ":1: expected the JSON object with which a calibration journal begins"},
                    Damage{"OfALaterProgram",
                           [](const std::string& whole) {
                               std::string later = whole;
                               return later.replace(later.find("\"format\":1"), 10, "\"format\":2");
                           },
                           ":1: another kind of file, or of a later version of this program"}),
    [](const auto& damage) { return damage.param.name; });

TEST_F(CalibrateProgramTest, BackupsAreNeverWrittenOver) {
    for (const char* const content : {"one\n", "two\n", "three\n"}) {
        write(journal, content);
        EXPECT_EQ(calibrate({"--restart"}).exitCode, 0);
    }
    EXPECT_EQ(contentOf("board.channel-1.journal.~1~"), "one\n");
    EXPECT_EQ(contentOf("board.channel-1.journal.~2~"), "two\n");
    EXPECT_EQ(contentOf("board.channel-1.journal.~3~"), "three\n");
}

TEST_F(CalibrateProgramTest, JsonTellsWhatWasPutAway) {
    write(journal, "mine\n");
    const std::string output = calibrate({"--restart", "--json"}).output;
    EXPECT_THAT(output, HasSubstr(R"("event":"put_away","file":"board.channel-1.journal",)"
                                  R"("backup":"board.channel-1.journal.~1~",)"
                                  R"("remark":"board.channel-1.journal:1: expected the JSON object)"));
    EXPECT_THAT(calibrate({"--json"}).output,
                HasSubstr(R"("backup":"board.channel-1.journal.~2~","remark":null})"));
}

TEST_F(CalibrateProgramTest, WhatIsNoOrdinaryFileIsNotPutAway) {
    std::filesystem::create_directory("folder");
    std::filesystem::create_symlink("nowhere", "link");
    ASSERT_EQ(mkfifo("pipe", S_IRUSR | S_IWUSR), 0);
    const auto complaint = [](const std::string& file) {
        std::string complaints;
        for (const char* const option : {"-v", "--restart", "--resume"}) {
            const Ending ending = calibrate({"--journal", file, option});
            EXPECT_EQ(ending.exitCode, 3);
            EXPECT_TRUE(complaints.empty() || complaints == ending.errors) << ending.errors;
            complaints = ending.errors;
        }
        return complaints;
    };
    EXPECT_EQ(complaint("folder"), "radioctl: folder: is a directory, expected a calibration journal\n");
    EXPECT_EQ(complaint("link"),
              "radioctl: link: a symbolic link that leads nowhere, expected a calibration journal\n");
    EXPECT_EQ(complaint("pipe"), "radioctl: pipe: no ordinary file, expected a calibration journal\n");
    EXPECT_EQ(complaint("/dev/null"),
              "radioctl: /dev/null: no ordinary file, expected a calibration journal\n");
    EXPECT_FALSE(isThere("nowhere"));
}

TEST_F(CalibrateProgramTest, LinkedJournalMakesRoomAsALink) {
    write("elsewhere", "mine\n");
    std::filesystem::create_symlink("elsewhere", "link");
    EXPECT_EQ(calibrate({"--journal", "link", "--restart"}).exitCode, 0);
    EXPECT_EQ(contentOf("elsewhere"), "mine\n");
    EXPECT_EQ(contentOf("link.~1~"), "mine\n");
    EXPECT_FALSE(std::filesystem::is_symlink("link"));
}

// A full disk

TEST_F(CalibrateProgramTest, FullDiskIsToldWithTheWayToGoOn) {
    calibrate({"--journal", "whole.journal", "--out", "whole.csv"});
    std::vector<std::string> errors;
    {
        const FileSizeLimit limit(2000); // which the program inherits
        // That the signal does not kill it is its own doing.
        static_cast<void>(std::signal(SIGXFSZ, SIG_DFL));
        for (const char* const option : {"--restart", "--resume"}) {
            const Ending ending = calibrate({option});
            EXPECT_EQ(ending.exitCode, 3);
            EXPECT_THAT(ending.output,
                        HasSubstr("\nNo tables were stored: board.channel-1.journal: could not "
                                  "be written: File too large: the disk is full"));
            errors.push_back(ending.errors);
        }
    }
    // Neither the header nor the qualification is a probe.
    const std::string kept = std::to_string(linesOf(journal) - 2);
    EXPECT_EQ(errors[0], "radioctl: board.channel-1.journal: could not be written: File too large: the disk "
                         "is full as far as one file may fill it; what was entered before is kept: " +
                             kept + " probes; --resume goes on once there is room\n");
    EXPECT_EQ(errors[1], errors[0]);
    EXPECT_FALSE(isThere(csv));
    EXPECT_EQ(calibrate({"--resume"}).exitCode, 0);
    EXPECT_EQ(tables(), tables("whole.csv"));
    EXPECT_EQ(linesOf(journal), linesOf("whole.journal"));
}

TEST_F(CalibrateProgramTest, FullDiskLosesNoOldJournal) {
    write(journal, "mine\n");
    Ending ending{};
    {
        const FileSizeLimit limit(20);
        ending = calibrate({"--restart"});
    }
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_THAT(ending.errors, StartsWith("radioctl: board.channel-1.journal: could not be written"));
    EXPECT_EQ(contentOf(journal), "mine\n");
    EXPECT_FALSE(isThere("board.channel-1.journal.~1~"));
}

// One calibration of a channel at a time

TEST_F(CalibrateProgramTest, SecondCalibrationOfTheChannelIsRefusedWhateverItsJournalIsCalled) {
    Process process({arguments({"--real-time", "--settle-time", "60000"})});
    ASSERT_TRUE(process.waitUntilItCatches(SIGINT));
    ASSERT_TRUE(process.waitFor("degrees\n"));
    std::filesystem::create_symlink("board.toml", "link.toml");
    for (const char* const board : {"board.toml", "link.toml"}) {
        const Ending ending = runProgram({{"calibrate", board, "--channel", "1", "--journal", "other.journal",
                                           "--out", "other.csv", "--restart"}});
        EXPECT_EQ(ending.exitCode, 3);
        EXPECT_EQ(ending.errors, std::string("radioctl: ") + board +
                                     ": another calibration of channel 1 of this board goes on, expected "
                                     "one at a time\n");
    }
    EXPECT_FALSE(isThere("other.journal"));
    process.signal(SIGKILL);
    process.finish();
    EXPECT_EQ(calibrate({"--journal", "other.journal"}).exitCode, 0);
}

TEST_F(CalibrateProgramTest, BoardMayStandBehindTheOptions) {
    const Ending ending = runProgram({{"calibrate", "--channel", "1", "--temperatures", "20,30", "--i-range",
                                       "-700", "100", "board.toml"}});
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(CalibrateProgramTest, FilesThatCannotBeWrittenAreNoticedBeforeTheFirstProbe) {
    EXPECT_EQ(calibrate({"--out", "missing/x.csv"}).errors,
              "radioctl: missing/x.csv: cannot be written: No such file or directory\n");
    EXPECT_EQ(calibrate({"--html", "missing/x.html"}).errors,
              "radioctl: missing/x.html: cannot be written: No such file or directory\n");
    EXPECT_EQ(calibrate({"--html", "missing/x.html", "--out", "missing/x.csv"}).errors,
              "radioctl: missing/x.csv: cannot be written: No such file or directory\n");
    EXPECT_FALSE(isThere(journal));
}

TEST_F(CalibrateProgramTest, TablesThatCouldNotBeWrittenAreTold) {
    const Ending ending = calibrate({"--out", "/dev/full"});
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_THAT(ending.output, HasSubstr("\nNo tables were stored: /dev/full: could not be written"));
}

// Offline

TEST_F(CalibrateProgramTest, JournalGivesTheSameTablesOffline) {
    calibrate();
    const std::string entered = contentOf(journal);
    const Ending ending = calibrate({"--offline", journal, "--out", "again.csv"});
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_EQ(contentOf("again.csv"), contentOf(csv));
    EXPECT_EQ(contentOf(journal), entered);
}

TEST_F(CalibrateProgramTest, OfflineStoresNothingUnlessItIsToldWhere) {
    calibrate();
    std::filesystem::remove(csv);
    const Ending ending = calibrate({"--offline", journal});
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(ending.output, HasSubstr("\nNo tables were asked for.\n"));
    EXPECT_FALSE(isThere(csv));
}

TEST_F(CalibrateProgramTest, OfflineCanEndTheSearchesEarlier) {
    calibrate();
    EXPECT_EQ(calibrate({"--offline", journal, "--out", "coarse.csv", "--min-delta", "200"}).exitCode, 0);
    calibrate({"--min-delta", "200", "--restart"});
    EXPECT_EQ(tables("coarse.csv"), tables());
}

TEST_F(CalibrateProgramTest, OfflineNamesThePointsThatTheJournalLacks) {
    calibrate();
    const std::string entered = contentOf(journal);
    write(journal, entered.substr(0, entered.find("\"khz\":18100000,\"degrees\":50") - 1));
    const Ending ending = calibrate({"--offline", journal, "--out", "part.csv"});
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(ending.output,
                AllOf(HasSubstr("  18100000       50  -  -"), HasSubstr("failed: the journal ends here\n"),
                      HasSubstr("\nNo tables were stored: 1 point without corrections. ")));
    EXPECT_FALSE(isThere("part.csv"));
}

TEST_F(CalibrateProgramTest, OfflineIsContentWithEdges) {
    calibrate({"--i-range", "-300", "1000"});
    const Ending ending = calibrate({"--offline", journal});
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(ending.output, HasSubstr("\nNo tables were asked for.\n"));
}

TEST_F(CalibrateProgramTest, CarrierThatTheHardwareDoesNotTakeFails) {
    std::string board = leakageBoard();
    const std::string driver = "\"channel.1.tx.rf.lo.frequency.in.hz\" = {";
    board.replace(board.find(driver), driver.size(), driver + " without = [\"write-buffer\"] ");
    write("board.toml", board);
    EXPECT_NE(calibrate().exitCode, 0);
    EXPECT_FALSE(isThere(csv));
}

TEST_F(CalibrateProgramTest, OfflineMeasuresNothingNew) {
    EXPECT_EQ(calibrate({"--offline", "x.journal", "--settle-time", "3"}).errors,
              "radioctl: --settle-time: not together with --offline, whose journal says it\n");
    EXPECT_EQ(
        calibrate({"--offline", "x.journal"}).errors,
        "radioctl: x.journal: cannot be read: No such file or directory, expected a calibration journal\n");
}

// Qualification

TEST_F(CalibrateProgramTest, SettleTimeAndReadingsAreThoseOfTheQualification) {
    write("board.toml", leakageBoard("range = [0, 4095], settling = 3.0, noise = 6.0"));
    EXPECT_EQ(calibrate().exitCode, 0);
    const std::string entered = contentOf(journal);
    const std::size_t at = entered.find("{\"qualified\"");
    ASSERT_NE(at, std::string::npos);
    const auto found = nlohmann::json::parse(entered.substr(at, entered.find('\n', at) - at)).at("qualified");
    // A quarter more than four time constants.
    EXPECT_NEAR(found.at("settle_time_ms").get<int>(), 15, 3);
    EXPECT_GT(found.at("readings").get<int>(), 1);
    EXPECT_THAT(contentOf(csv),
                AllOf(HasSubstr("\n# settle_time_ms: " + found.at("settle_time_ms").dump() + "\n"),
                      HasSubstr("\n# readings: " + found.at("readings").dump() + "\n")));
}

TEST_F(CalibrateProgramTest, StatedSettleTimeStaysAndIsWarnedOf) {
    write("board.toml", leakageBoard("range = [0, 4095], settling = 5.0"));
    EXPECT_THAT(
        calibrate({"--settle-time", "4"}).output,
        HasSubstr("\nWarning: the settle time of 4 ms is too short: 45 % of a step of the detector is "
                  "left then, and 2 % after 19.7 ms\n"));
    EXPECT_THAT(contentOf(csv), HasSubstr("\n# settle_time_ms: 4\n"));
}

TEST_F(CalibrateProgramTest, QualificationIsNotMadeTwice) {
    write("board.toml", leakageBoard("range = [0, 4095], settling = 3.0, noise = 6.0"));
    calibrate();
    const std::string whole = tables();
    const std::string entered = contentOf(journal);
    write(journal, entered.substr(0, entered.size() / 2));
    const Ending ending = calibrate({"--resume"});
    EXPECT_THAT(ending.output, AllOf(HasSubstr("\nDetector: settles within "), Not(HasSubstr("to qualify"))));
    EXPECT_EQ(tables(), whole);
    EXPECT_EQ(calibrate({"--offline", journal, "--out", "again.csv"}).exitCode, 0);
    EXPECT_EQ(tables("again.csv"), whole);
}

TEST_F(CalibrateProgramTest, JournalWithoutAQualificationGoesOn) {
    write("board.toml", leakageBoard("range = [0, 4095], settling = 3.0, noise = 6.0"));
    calibrate({"--no-qualify"});
    const std::string whole = tables();
    const std::string entered = contentOf(journal);
    EXPECT_THAT(entered, Not(HasSubstr("qualified")));
    write(journal, entered.substr(0, entered.size() / 2));
    EXPECT_EQ(calibrate({"--resume"}).exitCode, 0);
    EXPECT_EQ(tables(), whole);
    EXPECT_THAT(whole, HasSubstr("\n# settle_time_ms: 5\n"));
}

TEST_F(CalibrateProgramTest, DetectorThatIsNoUseEndsItBeforeTheFirstPoint) {
    write("board.toml", leakageBoard("range = [0, 100]"));
    const Ending ending = calibrate();
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(ending.output,
                AllOf(HasSubstr("\nNothing was calibrated: every reading is 100, the highest there is: the "
                                "detector is saturated. --no-qualify begins all the same.\n"),
                      HasSubstr("\n0 points of 6: 0 good, 0 at an edge, 0 failed; 22 probes made, 22 of them "
                                "to qualify the detector, in ")));
    EXPECT_FALSE(isThere(journal));
    EXPECT_FALSE(isThere(csv));
    EXPECT_EQ(calibrate({"--detector", "high"}).exitCode, 1);
}

TEST_F(CalibrateProgramTest, QualifyTellsWhatTheDetectorIsGoodFor) {
    const Ending good = runProgram({{"qualify", "board.toml", "--channel", "1"}});
    EXPECT_EQ(good.exitCode, 0);
    EXPECT_EQ(
        good.output,
        "SIMULATION: nothing reaches hardware.\nTest radio (board.toml)\nChannel 1: 17900000 kHz, -10 "
        "degrees, by channel.1.tx.rf.detector.v\nDetector: settles within 1.0 ms, noise 0.0, 25.1 units "
        "per dB; settle time 2 ms, 1 reading a probe\n31 readings taken.\n");
    write("board.toml", leakageBoard("range = [0, 100]"));
    const Ending bad = runProgram({{"qualify", "board.toml", "--channel", "1", "--json"}});
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_THAT(bad.output, HasSubstr(R"("event":"qualified","taken":22,"warnings":[],"refusal":"every)"));
    EXPECT_FALSE(isThere(journal));
    EXPECT_EQ(runProgram({{"qualify", "board.toml", "--channel", "7"}}).exitCode, 2);
}

// Detectors

TEST_F(CalibrateProgramTest, StuckDetectorStoresNothing) {
    std::string board = leakageBoard();
    board.replace(board.find("slope = 25.0"), 12, "slope = 0.0");
    board.replace(board.find("range = [0, 4095]"), 17, "range = [-10, 4095]");
    write("board.toml", board);
    const Ending ending = calibrate({"--no-qualify"});
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(ending.output,
                AllOf(HasSubstr("failed: every reading is 0: the detector is stuck\n"),
                      HasSubstr("\nNo tables were stored: 6 points without corrections. When what is said "
                                "about them is mended, --restart begins anew.\n")));
    EXPECT_FALSE(isThere(csv));
}

TEST_F(CalibrateProgramTest, StuckDetectorWithNoiseIsNotCalledNoisy) {
    for (const char* const noise : {"1.0", "20.0"}) {
        std::string board = leakageBoard(std::string("range = [-4095, 4095], noise = ") + noise);
        board.replace(board.find("slope = 25.0"), 12, "slope = 0.0");
        write("board.toml", board);
        const Ending ending = calibrate({"--restart", "--no-qualify"});
        EXPECT_EQ(ending.exitCode, 1);
        EXPECT_THAT(
            ending.output,
            AllOf(testing::ContainsRegex(
                      "failed: readings stay within [0-9]+ of -?[0-9]+ whatever the corrections are: the "
                      "detector is stuck\n"),
                  Not(HasSubstr("noisy")), HasSubstr("0 good, 0 at an edge, 6 failed")));
        EXPECT_FALSE(isThere(csv));
    }
}

TEST_F(CalibrateProgramTest, SearchWithAStuckDetectorEndsInTheUpperCorner) {
    std::string board = leakageBoard();
    board.replace(board.find("slope = 25.0"), 12, "slope = 0.0");
    write("board.toml", board);
    calibrate({"--max-iterations", "1", "--restart", "--no-qualify"});
    // All four probes tie, and the last of them wins.
    EXPECT_THAT(contentOf(journal), HasSubstr(R"("i":1000,"q":1000,"reading":0,)"));
}

TEST_F(CalibrateProgramTest, SaturatedDetectorIsNamed) {
    // -26 dBc read 25 * 69 = 1725; anything above 100 is cut off.
    write("board.toml", leakageBoard("range = [0, 100]"));
    const Ending ending = calibrate({"--no-qualify"});
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(ending.output,
                HasSubstr("failed: every reading is 100, the highest there is: the detector is saturated\n"));
    EXPECT_FALSE(isThere(csv));
}

TEST_F(CalibrateProgramTest, NoisyDetectorIsNamed) {
    write("board.toml", leakageBoard("range = [0, 4095], noise = 300.0"));
    EXPECT_THAT(calibrate({"--min-delta", "3", "--no-qualify"}).output,
                HasSubstr("the detector is noisy, or the settle time too short"));
}

TEST_F(CalibrateProgramTest, AbsentHighDetectorIsNamed) {
    const Ending ending = calibrate({"--detector", "high", "--no-qualify"});
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(ending.output,
                HasSubstr("failed: the high-range detector was never read: the radio has none\n"));
    EXPECT_THAT(contentOf(journal), HasSubstr(R"("i":1000,"q":1000,"reading":null,)"));
}

TEST_F(CalibrateProgramTest, DetectorThatCannotBeReadIsNamedInTheRadiosWords) {
    std::string board = leakageBoard();
    const std::string driver = "\"channel.1.tx.rf.detector.v\" = {";
    board.replace(board.find(driver), driver.size(), driver + " without = [\"read\"] ");
    write("board.toml", board);
    const Ending ending = calibrate({"--no-qualify"});
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(ending.output,
                HasSubstr("failed: LoCancellation detector driver cannot be read (RadioChannel: 1)\n"));
}

TEST_F(CalibrateProgramTest, TooShortASettleTimeGivesWorseResults) {
    write("board.toml", leakageBoard("range = [0, 4095], settling = 5.0"));
    const auto worstAfter = [](const std::string& settleTime) {
        const std::string output =
            calibrate({"--json", "--restart", "--min-delta", "3", "--settle-time", settleTime}).output;
        return nlohmann::json::parse(output.substr(output.rfind("{\"schema\":1,\"event\":\"calibrated\"")))
            .at("worst_after");
    };
    const auto good = worstAfter("50");
    const auto bad = worstAfter("1");
    EXPECT_LT(good.at("dbc").get<double>(), -60.0);
    EXPECT_TRUE(bad.is_null() || bad.at("dbc").get<double>() > good.at("dbc").get<double>() + 6.0) << bad;
}

// Edges

TEST_F(CalibrateProgramTest, PointAtTheEdgeIsNotStoredSilently) {
    // I = -480 and less would be needed.
    const Ending ending = calibrate({"--i-range", "-300", "1000"});
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(
        ending.output,
        AllOf(HasSubstr("edge: I ended at the low edge of its range, -300\n"),
              HasSubstr(
                  "\nNo tables were stored: the search ended at the edge of a range for 6 points; the same "
                  "once more with --accept-edge, and with --resume after a measurement, stores them.\n")));
    EXPECT_FALSE(isThere(csv));
}

TEST_F(CalibrateProgramTest, AcceptedEdgesAreMarkedInTheTables) {
    calibrate({"--i-range", "-300", "1000"});
    const Ending ending = calibrate({"--i-range", "-300", "1000", "--resume", "--accept-edge"});
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(contentOf(csv), HasSubstr(",edge\n"));
}

// Wrong input

TEST_F(CalibrateProgramTest, BoardWithoutTheChannelIsRefused) {
    EXPECT_EQ(runProgram({{"calibrate", "board.toml", "--channel", "2"}}).errors,
              "radioctl: --channel: board.toml has no channel 2; it has: 1\n");
}

TEST_F(CalibrateProgramTest, BoardWithoutALeakageIsRefused) {
    std::string board = leakageBoard();
    const std::size_t begin = board.find("[[leakage]]");
    board.erase(begin, board.find("[[calibration]]") - begin);
    write("board.toml", board);
    const Ending ending = calibrate();
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_EQ(ending.errors,
              "radioctl: board.toml: channel 1 has no transmitter to calibrate, expected a [[leakage]]\n");
}

TEST_F(CalibrateProgramTest, TablesInsideTheBoardAreNotReplaced) {
    std::string board = leakageBoard();
    const std::string file = "file = \"board.channel-1.csv\"\ncolumn = \"q\"\n";
    board.replace(board.find(file), file.size(), "axes = [[1], [1]]\nvalues = [[0]]\n");
    write("board.toml", board);
    const Ending ending = calibrate();
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_THAT(
        ending.errors,
        AllOf(StartsWith("radioctl: board.toml:"),
              EndsWith(": table \"Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q\" does not "
                       "come from the column \"q\" of a file, expected { file = \"NAME.csv\", column = "
                       "\"q\" }, or --out\n")));
    EXPECT_FALSE(isThere(journal));
}

TEST_F(CalibrateProgramTest, BothTablesComeFromOneFile) {
    std::string board = leakageBoard();
    const std::string file = "file = \"board.channel-1.csv\"\ncolumn = \"q\"\n";
    board.replace(board.find(file), file.size(), "file = \"other.csv\"\ncolumn = \"q\"\n");
    write("board.toml", board);
    EXPECT_THAT(calibrate().errors,
                HasSubstr("comes from another file than that of I, expected one for both, or --out"));
}

TEST_F(CalibrateProgramTest, WrongOptionsAreNamed) {
    const auto complaint = [](const std::vector<std::string>& options) {
        const Ending ending = calibrate(options);
        EXPECT_EQ(ending.exitCode, 2);
        return ending.errors;
    };
    EXPECT_THAT(complaint({"--shrink", "1.5"}),
                HasSubstr("--shrink: \"1.5\", expected a number between 0 and 1, such as 0.75"));
    EXPECT_THAT(complaint({"--shrink", "nan"}), HasSubstr("expected a number between 0 and 1"));
    EXPECT_THAT(complaint({"--i-range", "5", "5"}),
                HasSubstr("--i-range: 5 and 5, expected the lowest value first"));
    EXPECT_THAT(complaint({"--band", "18.1GHz", "18GHz"}),
                HasSubstr("--band: 18.1GHz and 18GHz, expected the lowest carrier first"));
    EXPECT_THAT(complaint({"--temperatures", "5,5"}), HasSubstr("--temperatures: 5 is there twice"));
    EXPECT_THAT(complaint({"--detector", "middle"}), HasSubstr("--detector"));
    EXPECT_THAT(complaint({"--serial", ""}),
                HasSubstr("--serial: \"\", expected 1 to 100 printable characters"));
    EXPECT_THAT(complaint({"--serial", "a\nb"}), HasSubstr("expected 1 to 100 printable characters"));
    EXPECT_THAT(complaint({"--serial", "\xff"}), HasSubstr("expected UTF-8"));
    EXPECT_THAT(complaint({"--step", "0"}), HasSubstr("--step: \"0\", expected from 1 to 2147483647 kHz"));
    EXPECT_THAT(complaint({"--resume", "--restart"}),
                HasSubstr("--resume, --restart and --offline exclude each other"));
}

TEST_F(CalibrateProgramTest, OptionsThatDoNothingWithTheMethodAreRefused) {
    const auto complaint = [](const std::vector<std::string>& options) {
        const Ending ending = calibrate(options);
        EXPECT_EQ(ending.exitCode, 2);
        EXPECT_FALSE(isThere(journal));
        return ending.errors;
    };
    EXPECT_EQ(complaint({"--method", "fit", "--step", "10MHz"}),
              "radioctl: --step: not together with --method fit; it is for --method search\n");
    EXPECT_EQ(complaint({"--method", "search", "--probes", "100"}),
              "radioctl: --probes: not together with --method search; it is for --method fit\n");
    EXPECT_EQ(complaint({"--probes", "100"}),
              "radioctl: --probes: not together with the method \"search\" of channel 1 in board.toml; it is "
              "for --method fit\n");
    std::string board = leakageBoard();
    const std::string method = "method = \"search\"\n";
    board.erase(board.find(method), method.size());
    write("board.toml", board);
    EXPECT_EQ(
        complaint({"--step", "10MHz"}),
        "radioctl: --step: not together with the method fit, which it is when nobody says otherwise; it "
        "is for --method search\n");
}

TEST_F(CalibrateProgramTest, BoardMayDescribeBothMethods) {
    write("board.toml", leakageBoard("range = [0, 4095]", "probes = 300\n"));
    EXPECT_EQ(calibrate().exitCode, 0);
    EXPECT_EQ(calibrate({"--method", "fit"}).exitCode, 0);
}

/** Where it cannot fit, it falls back on searches with them. */
TEST_F(CalibrateProgramTest, FitTakesTheOptionsOfItsSearches) {
    const Ending ending =
        calibrate({"--method", "fit", "--shrink", "0.8", "--min-delta", "4", "--max-iterations", "33"});
    EXPECT_EQ(ending.exitCode, 0) << ending.errors;
    EXPECT_THAT(contentOf(csv), HasSubstr("# shrink_factor: 0.8\n# min_delta: 4\n# max_iterations: 33\n"));
}

} // namespace
