#include "tests/radioctl/program/HardwareTest.h"

#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <thread>

namespace {

using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/** "radioctl run" and "radioctl console" on real files. */
class HardwareProgramTest : public HardwareTest {
protected:
    /** 7428, 7435, ... 7582 MHz to transmit. */
    static constexpr const char* raster =
        "[[raster]]\nname = \"R\"\ndirection = \"tx\"\nfirst = 7428000\nlast = 7582000\nstep = 7000\n";
};

// Simulated or real.

TEST_F(HardwareProgramTest, FirstLineSaysWhichItIs) {
    write("script", "");
    EXPECT_THAT(run({"run", "board.toml", "script"}).output,
                StartsWith("SIMULATION: nothing reaches hardware.\n"));
    EXPECT_THAT(run({"run", "--dry-run", "board.toml", "script"}).output,
                StartsWith("DRY RUN: nothing reaches hardware; => is what an attribute would get.\n"));
    EXPECT_THAT(run({"run", "--hardware", "board.toml", "script"}).output,
                StartsWith("HARDWARE: 3 drivers on files\n"));
    EXPECT_THAT(run({"plan", "audit", "board.toml"}).errors, HasSubstr("no carriers to audit"));
}

TEST_F(HardwareProgramTest, FirstEventSaysWhichItIs) {
    write("script", "");
    EXPECT_THAT(run({"run", "--json", "board.toml", "script"}).output,
                ContainsRegex("^\\{\"schema\":1,\"event\":\"mode\",\"mode\":\"simulation\""));
    EXPECT_THAT(run({"run", "--json", "--hardware", "board.toml", "script"}).output,
                ContainsRegex("^\\{\"schema\":1,\"event\":\"mode\",\"mode\":\"hardware\".*\"drivers\":3"));
}

TEST_F(HardwareProgramTest, DriversWithoutHardwareAreCounted) {
    write("board.toml", std::string(rfModuleBoard) + onFile("channel.1.tx.rf.frequency", "tx"));
    EXPECT_THAT(runOnHardware("").output,
                StartsWith("HARDWARE: 1 driver on files; simulated: 1 without hardware\n"));
}

TEST_F(HardwareProgramTest, HardwareAndDryRunAreNotBothGiven) {
    write("script", "");
    const Ending ending = run({"run", "--hardware", "--dry-run", "board.toml", "script"});
    EXPECT_EQ(ending.exitCode, 2);
    EXPECT_THAT(ending.errors, HasSubstr("--hardware excludes --dry-run"));
}

TEST_F(HardwareProgramTest, BoardWithoutHardwareIsRefused) {
    write("board.toml", rfModuleBoard);
    const Ending ending = runOnHardware("");
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_EQ(
        ending.errors,
        "radioctl: board.toml: no hardware, expected a section [hardware] that says what drivers are\n");
}

// Values.

TEST_F(HardwareProgramTest, ValuesReachTheirAttributes) {
    const Ending ending = runOnHardware("tune tx 1 7442 MHz\ntune rx 1 7596 MHz\n");
    EXPECT_EQ(ending.exitCode, 0) << ending.output << ending.errors;
    // kHz become Hz.
    EXPECT_EQ(contentOf("tx"), "7442000000\n");
    EXPECT_EQ(contentOf("rx"), "7596000\n");
}

TEST_F(HardwareProgramTest, SimulationTouchesNothing) {
    write("script", "tune tx 1 7442 MHz\n");
    EXPECT_EQ(run({"run", "board.toml", "script"}).exitCode, 0);
    EXPECT_EQ(run({"run", "--dry-run", "board.toml", "script"}).exitCode, 0);
    EXPECT_EQ(contentOf("tx"), "0\n");
    EXPECT_EQ(contentOf("amplifier"), "0\n");
}

TEST_F(HardwareProgramTest, DryRunSaysWhichAttributeWouldGetWhat) {
    write("script", "tune tx 1 7442 MHz\n");
    EXPECT_THAT(run({"run", "--dry-run", "board.toml", "script"}).output,
                HasSubstr("  1  channel.1.tx.rf.frequency <- 7442000\n       => " + folder() +
                          "/tx <- 7442000000\n"));
}

TEST_F(HardwareProgramTest, TranscriptIsTheSameSimulatedAndReal) {
    write("script",
          "tune tx 1 7442 MHz\nexpect writes channel.1.tx.rf.frequency=7442000\ntune rx 1 7596 MHz\n"
          "expect driver channel.1.rx.rf.frequency 7596000\nexpect frequency tx 1 7442 MHz\n");
    std::string simulated = run({"run", "board.toml", "script"}).output;
    std::string real = run({"run", "--hardware", "board.toml", "script"}).output;
    simulated.erase(0, simulated.find('\n'));
    real.erase(0, real.find('\n'));
    const std::string leaving = "Leaving:\n  amplifier <- 0\n";
    ASSERT_THAT(real, HasSubstr(leaving));
    real.erase(real.find(leaving), leaving.size());
    EXPECT_EQ(simulated, real);
}

TEST_F(HardwareProgramTest, AttributeThatRefusesIsToldAndTheRadioGoesOn) {
    write("board.toml",
          std::string(rfModuleBoard) + "[hardware.\"channel.1.tx.rf.frequency\"]\nwrite = \"/dev/full\"\n");
    const Ending ending =
        runOnHardware("tune tx 1 7442 MHz\nexpect writes 0\nexpect frequency tx 1 7442 MHz\n");
    EXPECT_EQ(ending.exitCode, 0) << ending.output;
    // ENOSPC is 28.
    EXPECT_THAT(ending.output, HasSubstr("/dev/full: 0x811c, no space left on device (ENOSPC)\n"));
    EXPECT_THAT(ending.output, HasSubstr("  -  channel.1.tx.rf.frequency <- 7442000  FAILED 0x811c\n"));
}

TEST_F(HardwareProgramTest, MissingAttributeIsRefusedBeforeAnythingIsWritten) {
    std::filesystem::remove("amplifier");
    const Ending ending = runOnHardware("tune tx 1 7442 MHz\n");
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_THAT(ending.errors,
                StartsWith("radioctl: board.toml:17: \"amplifier\": " + folder() + "/amplifier: "));
    EXPECT_THAT(ending.errors, HasSubstr("no such file or directory (ENOENT)"));
    EXPECT_EQ(contentOf("tx"), "0\n");
    EXPECT_FALSE(std::filesystem::exists("amplifier"));
}

// What the board forbids.

TEST_F(HardwareProgramTest, CarrierOutsideTheRastersIsRefusedBeforeTheFirstWrite) {
    write("board.toml", boardOnFiles(raster));
    const Ending ending =
        runOnHardware("tune tx 1 7442\nexpect result 0x8000\nexpect writes 0\nexpect frequency tx 1 0\n");
    EXPECT_EQ(ending.exitCode, 0) << ending.output;
    EXPECT_THAT(
        ending.output,
        HasSubstr("     warning: 7442 kHz is outside the rasters of the board for tx 1 (did you mean 7442 "
                  "MHz?): 7428000 to 7582000 kHz\n"
                  "     result  FAILED 0x8000\n"
                  "     refused; \"force\" at the end of the line does it all the same\n"));
    EXPECT_EQ(contentOf("tx"), "0\n");
}

TEST_F(HardwareProgramTest, RefusedCommandMakesTheRunFail) {
    write("board.toml", boardOnFiles(raster));
    EXPECT_EQ(runOnHardware("tune tx 1 7442\n").exitCode, 1);
}

TEST_F(HardwareProgramTest, ForceTunesAllTheSame) {
    write("board.toml", boardOnFiles(raster));
    const Ending ending = runOnHardware("tune tx 1 7583 MHz force\nexpect result ok\n");
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(ending.output, HasSubstr("warning: 7583000 kHz is outside the rasters"));
    EXPECT_EQ(contentOf("tx"), "7583000000\n");
}

TEST_F(HardwareProgramTest, SimulationOnlyWarns) {
    write("board.toml", boardOnFiles(raster));
    write("script",
          "tune tx 1 7583 MHz\nexpect result ok\nexpect writes channel.1.tx.rf.frequency=7583000\n");
    const Ending ending = run({"run", "board.toml", "script"});
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(ending.output, HasSubstr("warning: 7583000 kHz is outside the rasters"));
}

TEST_F(HardwareProgramTest, WordOutsideTheRangeOfItsDriverIsRefusedUnlessForced) {
    EXPECT_THAT(
        runOnHardware("tune tx 1 7583 MHz\n").output,
        HasSubstr(
            "warning: 7583000 kHz: \"channel.1.tx.rf.frequency\" takes 7428000 to 7582000, not 7583000\n"));
    EXPECT_EQ(contentOf("tx"), "0\n");
    EXPECT_EQ(runOnHardware("tune tx 1 7583 MHz force\n").exitCode, 0);
    EXPECT_EQ(contentOf("tx"), "7583000000\n");
}

TEST_F(HardwareProgramTest, WrittenValueOutsideTheRangeIsRefusedUnlessForced) {
    EXPECT_THAT(runOnHardware("write amplifier 2\n").output,
                HasSubstr("warning: \"amplifier\" takes 0 to 1, not 2\n"));
    write("amplifier", "1\n");
    Process process(invoke({"console", "--hardware", "board.toml"}));
    process.type("write amplifier 2 force\nread amplifier\n");
    EXPECT_TRUE(process.waitFor("amplifier <- 2"));
    EXPECT_TRUE(process.waitFor("amplifier = 2"));
    process.closeInput();
    EXPECT_EQ(process.finish().exitCode, 0);
    EXPECT_EQ(contentOf("amplifier"), "0\n");
}

TEST_F(HardwareProgramTest, SweepStopsAtTheFirstCarrierThatIsForbidden) {
    const Ending ending = runOnHardware("sweep tx 1 7581 MHz 7585 MHz 1 MHz\nexpect result failed\n");
    EXPECT_EQ(ending.exitCode, 0) << ending.output;
    EXPECT_EQ(contentOf("tx"), "7582000000\n");
}

// Leaving.

TEST_F(HardwareProgramTest, EndOfAScriptCarriesOutWhatIsToBeDoneInTheEnd) {
    write("amplifier", "1\n");
    const Ending ending = runOnHardware("tune tx 1 7442 MHz\n");
    EXPECT_THAT(ending.output, HasSubstr("Leaving:\n  amplifier <- 0\n"));
    EXPECT_EQ(contentOf("amplifier"), "0\n");
}

TEST_F(HardwareProgramTest, FailedExpectationStillLeaves) {
    write("amplifier", "1\n");
    const Ending ending = runOnHardware("expect driver channel.1.rx.rf.frequency 5\n");
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_EQ(contentOf("amplifier"), "0\n");
}

TEST_F(HardwareProgramTest, RadioThatDoesNotBootIsStillLeft) {
    write("amplifier", "1\n");
    write("board.toml", std::string(brokenBoard) + "\"amplifier\" = {}\n" + onFile("amplifier", "amplifier") +
                            "on_exit = 0\n");
    const Ending ending = runOnHardware("");
    EXPECT_EQ(ending.exitCode, 4);
    EXPECT_EQ(contentOf("amplifier"), "0\n");
}

TEST_F(HardwareProgramTest, SignalsLeave) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        write("amplifier", "1\n");
        Process process(invoke({"console", "--hardware", "board.toml"}));
        ASSERT_TRUE(process.waitFor("The radio is up."));
        ASSERT_TRUE(process.waitUntilItCatches(signal));
        process.signal(signal);
        const Ending ending = process.finish();
        EXPECT_EQ(ending.exitCode, 128 + signal);
        EXPECT_THAT(ending.output, HasSubstr("Leaving:\n  amplifier <- 0\n"));
        EXPECT_EQ(contentOf("amplifier"), "0\n");
    }
}

TEST_F(HardwareProgramTest, QuitAtAPromptLeaves) {
    write("amplifier", "1\n");
    Process process(invoke({"console", "--hardware", "board.toml"}, true));
    ASSERT_TRUE(process.waitFor("radio> "));
    process.type("quit\n");
    EXPECT_THAT(process.finish().output, HasSubstr("Leaving:"));
    EXPECT_EQ(contentOf("amplifier"), "0\n");
}

TEST_F(HardwareProgramTest, OutputThatNobodyReadsLeaves) {
    write("amplifier", "1\n");
    Process process(invoke({"console", "--hardware", "board.toml"}));
    ASSERT_TRUE(process.waitFor("The radio is up."));
    process.closeOutput();
    process.type("tune tx 1 7442 MHz\ntune tx 1 7449 MHz\n");
    process.closeInput();
    static_cast<void>(process.finish());
    EXPECT_EQ(contentOf("amplifier"), "0\n");
}

TEST_F(HardwareProgramTest, AuditThatNobodyReadsEndsAndLeaves) {
    write("board.toml", boardOnFiles("\n[[raster]]\nname = \"R\"\ndirection = \"tx\"\nfirst = 7442000\n"
                                     "last = 7542000\nstep = 1\n"));
    write("amplifier", "1\n");
    Process process(invoke({"plan", "audit", "--hardware", "--csv", "-", "board.toml"}));
    ASSERT_TRUE(process.waitFor(",7442000,"));
    process.closeOutput();
    EXPECT_EQ(process.finish().exitCode, 3);
    EXPECT_EQ(contentOf("amplifier"), "0\n");
    EXPECT_LT(std::stoll(contentOf("tx")), 7'500'000'000); // with most of the carriers left
}

TEST_F(HardwareProgramTest, AuditHasNoDryRun) {
    // It shows no writes, and so nothing of what attributes would get.
    const Ending ending = run({"plan", "audit", "--dry-run", "board.toml"});
    EXPECT_EQ(ending.exitCode, 2);
    EXPECT_THAT(ending.errors, HasSubstr("--dry-run"));
}

TEST_F(HardwareProgramTest, ExitValueThatCannotBeWrittenMakesTheRunFail) {
    write("board.toml", std::string(rfModuleBoard) +
                            "[hardware.\"channel.1.tx.rf.frequency\"]\nwrite = \"/dev/full\"\non_exit = 0\n");
    const Ending ending = runOnHardware("");
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(
        ending.output,
        HasSubstr("  channel.1.tx.rf.frequency <- 0  FAILED 0x811c, no space left on device (ENOSPC)\n"));
    EXPECT_THAT(runOnHardware("").output, HasSubstr("The radio was left as it was by process "));
}

TEST_F(HardwareProgramTest, AfterAKillTheNextStartSaysThatTheRadioWasLeftAsItWas) {
    write("amplifier", "1\n");
    {
        Process process(invoke({"console", "--hardware", "board.toml"}));
        ASSERT_TRUE(process.waitFor("The radio is up."));
        process.signal(SIGKILL);
        EXPECT_EQ(process.finish().exitCode, -SIGKILL);
    }
    EXPECT_EQ(contentOf("amplifier"), "1\n");
    EXPECT_THAT(runOnHardware("").output,
                ContainsRegex("\nThe radio was left as it was by process [0-9]+ on "
                              "[0-9]{4}-[0-9]{2}-[0-9]{2} at [0-9:]{8}: nothing was switched off then.\n"));
    EXPECT_EQ(contentOf("amplifier"), "0\n");
    EXPECT_THAT(runOnHardware("").output, Not(HasSubstr("left as it was")));
}

TEST_F(HardwareProgramTest, OneProgramAtATimeDrivesTheHardwareOfABoard) {
    Process process(invoke({"console", "--hardware", "board.toml"}));
    ASSERT_TRUE(process.waitFor("The radio is up."));
    const Ending ending = runOnHardware("tune tx 1 7442 MHz\n");
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_THAT(ending.errors,
                ContainsRegex("^radioctl: board.toml: its hardware is driven by process [0-9]+ on .*, "
                              "expected one program at a time\n"));
    EXPECT_EQ(contentOf("tx"), "0\n");
    write("script", "");
    EXPECT_EQ(run({"run", "board.toml", "script"}).exitCode, 0);
    process.closeInput();
    EXPECT_EQ(process.finish().exitCode, 0);
}

// The sensor.

TEST_F(HardwareProgramTest, TemperatureIsTheSensors) {
    write("degrees", "21499\n");
    write("board.toml",
          boardOnFiles("[sensor]\nread = \"" + folder() + "/degrees\"\nscale = 0.001\ninterval = 20\n"));
    Process process(invoke({"console", "--hardware", "board.toml"}));
    ASSERT_TRUE(process.waitFor("sensor: 21 degrees, 1 observer told\n"));
    write("degrees", "45500\n");
    ASSERT_TRUE(process.waitFor("sensor: 46 degrees, 1 observer told\n"));
    std::filesystem::remove("degrees");
    ASSERT_TRUE(process.waitFor("no temperature: "));
    process.closeInput();
    EXPECT_EQ(process.finish().exitCode, 0);
}

// check --hardware.

TEST_F(HardwareProgramTest, CheckFindsEveryAttributeAndWritesNothing) {
    write("tx", "7442000000\n");
    write("amplifier", "1\n");
    const Ending ending = run({"check", "--hardware", "board.toml"});
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(ending.output, HasSubstr("  channel.1.tx.rf.frequency\n    write: " + folder() +
                                         "/tx\n      readable, writable, now 7442000000\n"));
    EXPECT_THAT(ending.output, EndsWith("board.toml: 3 attributes, all found\n"));
    EXPECT_EQ(contentOf("amplifier"), "1\n");
    EXPECT_FALSE(std::filesystem::exists("radioctl"));
}

TEST_F(HardwareProgramTest, CheckSaysWhatIsMissing) {
    std::filesystem::remove("rx");
    const Ending ending = run({"check", "--hardware", "board.toml"});
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_THAT(ending.output, HasSubstr("/rx\n      PROBLEM: "));
    EXPECT_THAT(ending.output, EndsWith("board.toml: 3 attributes, 1 problem\n"));
}

TEST_F(HardwareProgramTest, CheckOfABoardWithoutHardwareSaysSo) {
    write("board.toml", rfModuleBoard);
    const Ending ending = run({"check", "--hardware", "board.toml"});
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_THAT(ending.errors, HasSubstr("board.toml: no hardware, expected a section [hardware]"));
}

} // namespace
