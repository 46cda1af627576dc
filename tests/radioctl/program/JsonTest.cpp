#include "tests/radioctl/program/ProgramTest.h"

#include <nlohmann/json.hpp>

#include <sstream>

namespace {

using testing::ElementsAre;

class JsonTest : public ProgramTest {
protected:
    static std::vector<std::string> lines(const std::string& text) {
        std::istringstream stream(text);
        std::vector<std::string> result;
        for (std::string line; std::getline(stream, line);) {
            result.push_back(line);
        }
        return result;
    }
};

TEST_F(JsonTest, OneObjectPerEventAndLine) {
    const Ending ending = runScript("tune tx 1 7442 MHz\nexpect writes 2\nshow drivers tx\n", {"--json"});
    EXPECT_THAT(
        lines(ending.output),
        ElementsAre(
            R"({"schema":1,"event":"mode","mode":"simulation"})",
            R"({"schema":1,"event":"board","file":"board.toml","name":"Test radio","description":"","channels":[{"number":1,"type":"rf-module"}]})",
            R"({"schema":1,"event":"phase","phase":11,"meaning":"module initialisation"})",
            R"({"schema":1,"event":"module","phase":11,"module":"FrequencyHandler","id":19000,"channel":1,"code":0,"ok":true})",
            R"({"schema":1,"event":"phase","phase":5,"meaning":"storage objects retrieved"})",
            R"({"schema":1,"event":"module","phase":5,"module":"FrequencyHandler","id":19000,"channel":1,"code":0,"ok":true})",
            R"({"schema":1,"event":"phase","phase":20,"meaning":"post frame-format load"})",
            R"({"schema":1,"event":"module","phase":20,"module":"FrequencyHandler","id":19000,"channel":1,"code":0,"ok":true})",
            R"({"schema":1,"event":"booted","ok":true})",
            R"({"schema":1,"event":"command","text":"tune tx 1 7442 MHz","file":"script","line":1})",
            R"({"schema":1,"event":"call","operation":"driver-write","object":"channel.1.tx.rf.frequency","destination":"channel.1.tx.rf.frequency","value":7442000,"code":0,"ok":true})",
            R"({"schema":1,"event":"notified","direction":"tx","channel":1,"khz":7442000,"observer":"class"})",
            R"({"schema":1,"event":"result","code":0,"ok":true})",
            R"({"schema":1,"event":"expectation","text":"expect writes 2","held":false,"expected":"2 writes","found":"1 write: channel.1.tx.rf.frequency=7442000","file":"script","line":2})",
            R"({"schema":1,"event":"command","text":"show drivers tx","file":"script","line":3})",
            R"({"schema":1,"event":"list","of":"drivers","rows":[{"driver":"channel.1.tx.rf.frequency","value":7442000,"writes":1}]})",
            R"({"schema":1,"event":"result","code":0,"ok":true})",
            R"({"schema":1,"event":"summary","booted":true,"commands":1,"held":0,"failed":1,"unexpected_failures":0,"refused_lines":0,"interrupted":false,"exit_code":1})"));
    EXPECT_EQ(ending.exitCode, 1);
}

TEST_F(JsonTest, FailedListOfWritesHasItsDifferences) {
    const Ending ending = runScript(
        "tune tx 1 7442 MHz\nexpect writes channel.1.rx.rf.frequency=1 channel.1.tx.rf.frequency=7442000\n"
        "expect writes channel.1.tx.rf.frequency=7442000\n",
        {"--json"});
    EXPECT_THAT(
        ending.output,
        testing::HasSubstr(
            R"("found":"channel.1.tx.rf.frequency=7442000",)"
            R"("differences":[{"driver":"channel.1.rx.rf.frequency","expected":1,"found":null}],"file":)"));
    EXPECT_THAT(ending.output,
                testing::HasSubstr(R"("held":true,"expected":"channel.1.tx.rf.frequency=7442000",)"
                                   R"("found":"channel.1.tx.rf.frequency=7442000","file":)"));
}

TEST_F(JsonTest, TraceNamesTheSourceFileInsideTheProject) {
    const Ending ending = runScript("fault driver-write 0x8001\ntune tx 1 7442000\n", {"--json"});
    for (const std::string& line : lines(ending.output)) {
        const auto event = nlohmann::json::parse(line);
        if (event["event"] == "trace") {
            EXPECT_EQ(event["level"], "error");
            EXPECT_EQ(event["source"], "QVX.FH");
            EXPECT_EQ(event["file"],
                      "PlatformServices/FrequencyHandler/private/FrequencyHandler_RfModule.cpp");
            EXPECT_GT(event["line"], 0);
            EXPECT_EQ(event["text"],
                      "Write to driver failed for channel.1.Tx.rf.frequency (EDriverResult = 0x8001)");
            return;
        }
    }
    FAIL() << "no trace event in\n" << ending.output;
}

TEST_F(JsonTest, TellsErrorsToMachinesAndPeople) {
    const Ending ending = runScript("tune up\n", {"--json"});
    EXPECT_EQ(ending.output,
              "{\"schema\":1,\"event\":\"error\",\"message\":\"script:1: tune: \\\"up\\\" is out of place, "
              "expected tx or rx\"}\n");
    EXPECT_EQ(ending.errors, "radioctl: script:1: tune: \"up\" is out of place, expected tx or rx\n");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(JsonTest, CheckReportsFindings) {
    write("board.toml", brokenBoard);
    const Ending ending = runProgram({{"check", "--json", "board.toml"}});
    const std::vector<std::string> events = lines(ending.output);
    ASSERT_EQ(events.size(), 2U) << ending.output;
    EXPECT_EQ(nlohmann::json::parse(events[0])["severity"], "error");
    EXPECT_EQ(events[1], R"({"schema":1,"event":"checked","file":"board.toml","errors":1,"warnings":0})");
    EXPECT_EQ(ending.exitCode, 1);
}

TEST_F(JsonTest, EveryLineOfEveryCommandBeginsWithItsSchema) {
    write("script", "help quit\nshow drivers\ntune tx 1 7442000\n");
    write("log.csv", "seconds,degrees\n0,20\n");
    const std::string boards = RADIOCTL_BOARDS;
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"run", "board.toml", "script"},
             {"run", "board.toml", "none.script"},
             {"console", "board.toml"},
             {"check", "board.toml", "none.toml"},
             {"plan", "explain", boards + "/microwave-if-8ghz.toml", "--channel", "1", "--tx", "7754425"},
             {"plan", "audit", boards + "/rau-18ghz.toml"},
             {"plan", "audit", "board.toml"},
             {"thermal", boards + "/iq-compensation-18ghz.toml", "log.csv"},
             {"tables", "lint", boards + "/lo-leakage-18ghz.toml"},
             {"tables", "why", boards + "/lo-leakage-18ghz.toml", "--channel", "1", "--frequency", "18700000",
              "--temperature", "20"},
             {"tables", "diff", boards + "/lo-leakage-18ghz.toml", boards + "/lo-leakage-18ghz.toml"}}) {
        std::vector<std::string> words{"--json"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        const std::vector<std::string> events = lines(runProgram({words}).output);
        EXPECT_THAT(events, testing::Not(testing::IsEmpty())) << arguments[0];
        EXPECT_THAT(events, testing::Each(testing::StartsWith(R"({"schema":1,"event":")"))) << arguments[0];
    }
}

TEST_F(JsonTest, CanStandBeforeTheCommandToo) {
    const Ending ending = runProgram({{"--json", "run", "board.toml"}});
    EXPECT_THAT(ending.output, testing::StartsWith("{\"schema\":1,\"event\":\"mode\""));
}

} // namespace
