#include "tests/radioctl/program/ProgramTest.h"

using testing::HasSubstr;

namespace {

/** The board is an RF-module radio with channels 1 and 0, of which the first has the compensation. */
class IqCompensationTest : public ProgramTest {
protected:
    IqCompensationTest() { write("board.toml", channels + drivers + tables + phaseTable); }

    const std::string channels = R"(name = "Test radio"

[[channel]]
number = 1
type = "rf-module"
iq_compensation = true

[[channel]]
number = 0
type = "rf-module"
)";
    const std::string drivers = R"(
[drivers]
"channel.1.tx.rf.frequency" = {}
"channel.1.rx.rf.frequency" = {}
"channel.0.tx.rf.frequency" = {}
"channel.0.rx.rf.frequency" = {}
"channel.1.dsp.tx.dc.compensation.i" = { without = ["context"] }
"channel.1.dsp.tx.dc.compensation.q" = {}
"channel.1.dsp.tx.quadrature.gain.offset.compensation" = {}
"channel.1.dsp.tx.quadrature.phase.offset.compensation" = {}
)";
    const std::string tables = R"(
[tables]
"Channel.1.Tx.Dsp.Temperature.To.Dc.I.Compensation" = { axis = [-10, 10], values = [-100, 100] }
"Channel.1.Tx.Dsp.Temperature.To.Dc.Q.Compensation" = { axis = [-10, 10], values = [0, 40] }
"Channel.1.Tx.Dsp.Temperature.To.Gain.Offset.Compensation" = { axis = [0], values = [7] }
)";
    const std::string phaseTable = R"("Channel.1.Tx.Dsp.Temperature.To.Phase.Offset.Compensation" = )"
                                   R"({ axis = [-10, 10], values = [1, 4] }
)";
};

TEST_F(IqCompensationTest, HasItsTurnInPhase11AfterAllFrequencyModules) {
    const Ending ending = runProgram({{"run", "board.toml"}});
    EXPECT_EQ(ending.output, R"(SIMULATION: nothing reaches hardware.
Test radio (board.toml)
  channels 1, 0: rf-module
phase 11: module initialisation
  FrequencyHandler, channels 1, 0: ok
  CTxIqImbalanceHandler, channel 1: ok
phase 5: storage objects retrieved
  FrequencyHandler, channels 1, 0: ok
phase 20: post frame-format load
  FrequencyHandler, channels 1, 0: ok
The radio is up.

0 commands, 0 expectations.
)");
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(IqCompensationTest, WritesTheFourCorrectionsWithEveryTemperature) {
    // A quarter of the way: -50, 10 and 1.75.
    const Ending ending = runScript("temperature -5\n");
    EXPECT_THAT(ending.output,
                HasSubstr("> temperature -5\n"
                          "  1  channel.1.dsp.tx.dc.compensation.i <- -50\n"
                          "  2  channel.1.dsp.tx.dc.compensation.q <- 10\n"
                          "  3  channel.1.dsp.tx.quadrature.gain.offset.compensation <- 7\n"
                          "  4  channel.1.dsp.tx.quadrature.phase.offset.compensation <- 2\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(IqCompensationTest, CarrierLeavesTheCorrectionsAlone) {
    const Ending ending = runScript("tune tx 1 7442 MHz\nexpect writes channel.1.tx.rf.frequency=7442000\n");
    EXPECT_EQ(ending.exitCode, 0) << ending.output;
}

TEST_F(IqCompensationTest, FailedGainWriteIsShownAndStopsThePhase) {
    const Ending ending =
        runScript("fault driver-write channel.1.dsp.tx.quadrature.gain.offset.compensation 0x8003 once\n"
                  "temperature 10\n"
                  "expect writes channel.1.dsp.tx.dc.compensation.i=100 "
                  "channel.1.dsp.tx.dc.compensation.q=40\n");
    EXPECT_THAT(ending.output,
                HasSubstr("  -  channel.1.dsp.tx.quadrature.gain.offset.compensation <- 7  FAILED 0x8003\n"
                          "     error: CTxIQImbalanceHandler_DoImbalanceCompensation failed to write to "
                          "pTxGainOffsetCompensationDriver driver\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(IqCompensationTest, RadioWithoutATableDoesNotBoot) {
    write("board.toml", channels + drivers + tables);
    const Ending ending = runProgram({{"run", "board.toml"}});
    EXPECT_THAT(ending.output, HasSubstr("     error: CTxIQImbalanceHandler failed to get calibration table\n"
                                         "  FrequencyHandler, channels 1, 0: ok\n"
                                         "  CTxIqImbalanceHandler, channel 1: FAILED 0x8000\n"
                                         "The radio did not boot."));
    EXPECT_EQ(ending.exitCode, 4);
}

TEST_F(IqCompensationTest, JsonNamesTheChannelOfTheModule) {
    const Ending ending = runScript("", {"--json"});
    EXPECT_THAT(ending.output,
                HasSubstr(R"({"schema":1,"event":"module","phase":11,"module":"CTxIqImbalanceHandler",)"
                          R"("id":83001,"channel":1,"code":0,"ok":true})"));
}

} // namespace
