#include "radio/store/RunText.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace Radio::Store {
namespace {

Run someRun() {
    Run run;
    run.id = "0b5e2d4c-1111-4222-8333-444455556666";
    run.kind = "calibration";
    run.serial = "8H-0042";
    run.board = "Board";
    run.fingerprint = "0123456789abcdef";
    run.version = "0.1.0";
    run.begun = "2026-03-01T09:30:00Z";
    run.ended = "2026-03-01T09:31:00Z";
    run.channel = 1;
    run.verdict = VerdictKind::pass;
    run.settings = R"({"method":"fit"})";
    Measurement measurement{"leakage_after", "dBc"};
    measurement.channel = 1;
    measurement.frequency = 18000000;
    measurement.temperature = -33;
    measurement.value = -70.5;
    measurement.highest = -60.0;
    measurement.isHeld = true;
    run.measurements.push_back(measurement);
    run.files.push_back({"tables", "a,b\n"});
    return run;
}

constexpr const char* someLine =
    R"({"run_schema":1,"id":"0b5e2d4c-1111-4222-8333-444455556666","kind":"calibration","serial":"8H-0042",)"
    R"("board":"Board","fingerprint":"0123456789abcdef","version":"0.1.0","station":null,"operator":null,)"
    R"("begun":"2026-03-01T09:30:00Z","ended":"2026-03-01T09:31:00Z","mode":"simulation","channel":1,)"
    R"("verdict":"pass","exit_code":0,"settings":{"method":"fit"},"measurements":[{"name":"leakage_after",)"
    R"("unit":"dBc","channel":1,"khz":18000000,"degrees":-33,"value":-70.5,"lowest":null,"highest":-60.0,)"
    R"("held":true}],"files":{"tables":"a,b\n"}})";

TEST(RunText, IsOneLineWithEverything) {
    EXPECT_EQ(toLine(someRun()), someLine);
}

TEST(RunText, IsReadAsItWasWritten) {
    const ReadRun read = readRun(someLine, {"line", 1});
    EXPECT_EQ(toLine(read.run), someLine);
    EXPECT_EQ(read.store, "");
}

TEST(RunText, OfARunThatWaitsSaysForWhom) {
    EXPECT_EQ(readRun(toLine(someRun(), "sqlite:/a \"b\""), {"line", 1}).store, "sqlite:/a \"b\"");
}

TEST(RunText, PassesOverMembersThatItDoesNotKnow) {
    const std::string line = R"({"more":[1,{"x":2}],)" + std::string(someLine).substr(1);
    EXPECT_EQ(toLine(readRun(line, {"line", 1}).run), someLine);
}

TEST(RunText, IdsAreDifferentEachTimeAndOfTheirForm) {
    std::set<std::string> ids;
    for (int n = 0; n < 1000; ++n) {
        const std::string id = newRunId();
        EXPECT_TRUE(isRunId(id)) << id;
        EXPECT_EQ(id[14], '4') << id;
        ids.insert(id);
    }
    EXPECT_EQ(ids.size(), 1000U);
    EXPECT_FALSE(isRunId("0B5E2D4C-1111-4222-8333-444455556666"));
    EXPECT_FALSE(isRunId("0b5e2d4c-1111-4222-8333-44445555666"));
}

} // namespace
} // namespace Radio::Store
