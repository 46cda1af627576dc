#include "radio/laboratory/Results.h"
#include "tests/radio/support/FileFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Radio::Laboratory {
namespace {

using testing::HasSubstr;
using testing::SizeIs;

Heading heading() {
    Heading result;
    result.version = "0.2.0";
    result.fingerprint = "0123456789abcdef";
    result.name = "Test radio";
    result.channel = 1;
    result.count = 5;
    result.seed = 42;
    result.mostFailures = 0.01;
    result.limit = -68.0;
    result.settings = {{"few probes", "fit", R"({"channel":1,"shrink_factor":0.75})"}, {"b", "search", "{}"}};
    return result;
}

Trial trialOf(const Task& task) {
    Trial trial;
    trial.task = task;
    trial.end = task.transmitter == 3 ? TrialEnd::refused : TrialEnd::held;
    trial.reason = task.transmitter == 3 ? "the detector is stuck" : "";
    trial.probes = 300 + task.transmitter;
    trial.temperatureChanges = 7;
    trial.seconds = 0.1 * task.transmitter;
    if (task.transmitter != 3) {
        trial.worst = -70.1 / 3.0;
    }
    return trial;
}

Results resultsOf(const Shard& shard, const Heading& of = heading()) {
    Results results{of, shard, {}};
    for (const Task& task : tasksOf(of, shard)) {
        results.trials.push_back(trialOf(task));
    }
    return results;
}

class LaboratoryResultsTest : public FileFixture {
protected:
    /** Its name. */
    static std::string put(const std::string& name, const std::string& text) {
        write(name, text);
        return name;
    }
};

TEST_F(LaboratoryResultsTest, ShardHasEachTransmitterThatLeavesItsNumberLessOne) {
    const std::vector<Task> tasks = tasksOf(heading(), {2, 3});
    ASSERT_THAT(tasks, SizeIs(4));
    EXPECT_EQ(tasks[0].transmitter, 1U);
    EXPECT_EQ(tasks[1].settings, 1U);
    EXPECT_EQ(tasks[3].transmitter, 4U);
}

TEST_F(LaboratoryResultsTest, WhatIsReadIsTheSameTextAgain) {
    const std::string text = textOf(resultsOf({1, 1}));
    EXPECT_EQ(textOf(readResults(put("all.results", text))), text);
}

TEST_F(LaboratoryResultsTest, ShardsInAnyOrderAreTheWholeByteForByte) {
    std::vector<std::filesystem::path> files;
    for (const std::uint32_t number : {3U, 1U, 2U}) {
        files.emplace_back(put(std::to_string(number), textOf(resultsOf({number, 3}))));
    }
    EXPECT_EQ(textOf(merged(files)), textOf(resultsOf({1, 1})));
}

TEST_F(LaboratoryResultsTest, MoreShardsThanTransmittersLeaveSomeEmpty) {
    std::vector<std::filesystem::path> files;
    for (std::uint32_t number = 1; number <= 7; ++number) {
        files.emplace_back(put(std::to_string(number), textOf(resultsOf({number, 7}))));
    }
    EXPECT_EQ(textOf(merged(files)), textOf(resultsOf({1, 1})));
}

TEST_F(LaboratoryResultsTest, ShardThatIsThereTwiceIsRefusedByName) {
    write("1", textOf(resultsOf({1, 2})));
    write("again", textOf(resultsOf({1, 2})));
    EXPECT_EQ(refusal([] {
                  merged({"1", "again"});
              }),
              "again: shard 1 of 2, which 1 is, too; expected each once");
}

TEST_F(LaboratoryResultsTest, MissingShardsAreRefusedByNumber) {
    write("2", textOf(resultsOf({2, 4})));
    EXPECT_EQ(refusal([] { merged({"2"}); }), "2: one of 4 shards, of which 3 shards are missing: 1, 3, 4");
}

TEST_F(LaboratoryResultsTest, ShardsOfAnotherLaboratoryVersionOrNumberAreRefusedByName) {
    write("1", textOf(resultsOf({1, 2})));
    Heading other = heading();
    other.fingerprint = "0000000000000000";
    write("other", textOf(resultsOf({2, 2}, other)));
    EXPECT_EQ(refusal([] {
                  merged({"1", "other"});
              }),
              "other: of another laboratory file, or of another board, expected a shard of the laboratory "
              "that 1 is of");
    other = heading();
    other.version = "0.3.0";
    write("newer", textOf(resultsOf({2, 2}, other)));
    EXPECT_THAT(refusal([] {
                    merged({"1", "newer"});
                }),
                HasSubstr("newer: made by radioctl 0.3.0, the others by 0.2.0"));
    write("third", textOf(resultsOf({2, 3})));
    EXPECT_EQ(refusal([] { merged({"1", "third"}); }), "third: one of 3 shards, expected one of 2 as 1 is");
}

TEST_F(LaboratoryResultsTest, ResultsThatLackATrialAreDamaged) {
    Results results = resultsOf({1, 1});
    results.trials.erase(results.trials.begin() + 4);
    write("short", textOf(results));
    EXPECT_EQ(refusal([] { readResults("short"); }),
              "short: is damaged: expected 10 trials in their order, found 9");
}

TEST_F(LaboratoryResultsTest, LinesThatAreNoneAreRefusedWithTheirNumber) {
    write("line", textOf(resultsOf({1, 1})) + "nonsense\n");
    EXPECT_EQ(refusal([] { readResults("line"); }),
              "line:12: no JSON object, expected a line of a laboratory's results");
    write("none", "");
    EXPECT_EQ(refusal([] { readResults("none"); }),
              "none:1: there is nothing, expected a line of a laboratory's results");
}

TEST_F(LaboratoryResultsTest, WhoWasKilledHasWhatWasEnteredAndNoTornLine) {
    {
        RunningResults running("lab.results", heading(), {1, 1});
        EXPECT_THAT(running.known(), SizeIs(0));
        running.add(trialOf({4, 1}));
        running.add(trialOf({0, 0}));
    }
    const std::string before = contentOf("lab.results.running");
    write("lab.results.running", before + R"({"transmitter":1,"sett)");
    {
        const RunningResults running("lab.results", heading(), {1, 1});
        ASSERT_THAT(running.known(), SizeIs(2));
        EXPECT_EQ(running.known()[0].task.transmitter, 4U);
        EXPECT_EQ(lineOf(running.known()[1]), lineOf(trialOf({0, 0})));
    }
    EXPECT_EQ(contentOf("lab.results.running"), before);
}

TEST_F(LaboratoryResultsTest, RunningResultsOfSomethingElseAreNotGoneOnWith) {
    { const RunningResults running("lab.results", heading(), {1, 1}); }
    EXPECT_THAT(refusal([] {
                    const RunningResults running("lab.results", heading(), {1, 2});
                }),
                HasSubstr("lab.results.running: of another laboratory file, board, shard or version"));
}

TEST_F(LaboratoryResultsTest, TwoCannotWorkOnTheSameResults) {
    const RunningResults one("lab.results", heading(), {1, 1});
    EXPECT_EQ(refusal([] {
                  const RunningResults other("lab.results", heading(), {1, 1});
              }),
              "lab.results.running: another laboratory is at work here, expected one at a time");
}

} // namespace
} // namespace Radio::Laboratory
