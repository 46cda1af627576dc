#include "tests/radioctl/program/ProgramTest.h"

using testing::EndsWith;
using testing::HasSubstr;

namespace {

/** An RF-module radio whose channel 1 leaks at -20 dBc, or at -40 dBc with I at -90; channel 2 is not
 * modelled. */
class LeakageProgramTest : public ProgramTest {
protected:
    LeakageProgramTest() {
        write("board.toml", R"(name = "Test radio"

[[channel]]
number = 1
type = "rf-module"

[[channel]]
number = 2
type = "rf-module"

[[leakage]]
channel = 1
reference = 7440000
paths = [{ level = -20, level_per_degree = 0.1, phase = 0 }]
i = { driver = "i", gain = 1e-3, range = [-1000, 1000] }
q = { driver = "q", gain = 1e-3, range = [-1000, 1000] }
detector = { driver = "detector", slope = 25, zero = -95, range = [0, 4095] }

[drivers]
"channel.1.tx.rf.frequency" = {}
"channel.1.rx.rf.frequency" = {}
"channel.2.tx.rf.frequency" = {}
"channel.2.rx.rf.frequency" = {}
"i" = { value = -90 }
"q" = {}
"detector" = {}
)");
    }
};

TEST_F(LeakageProgramTest, ShowListsModelledTransmitters) {
    EXPECT_THAT(runScript("tune tx 1 7442 MHz\nshow leakage\n").output,
                HasSubstr("     channel  carrier_khz  degrees  i    q  level_dbc\n"
                          "     1        7442000      25       -90  0  -40.00\n"));
}

TEST_F(LeakageProgramTest, ChannelThatIsNotTunedHasNoLevel) {
    EXPECT_THAT(runScript("show leakage\n").output,
                HasSubstr("     channel  carrier_khz  degrees  i    q  level_dbc\n"
                          "     1        -            25       -90  0  -\n"));
}

TEST_F(LeakageProgramTest, PatternChoosesChannels) {
    EXPECT_THAT(runScript("show leakage 2\n").output, HasSubstr("     no leakage\n"));
}

TEST_F(LeakageProgramTest, JsonHasNumbersAndNull) {
    const std::string output =
        runScript("show leakage\ntune tx 1 7442 MHz\nshow leakage\n", {"--json"}).output;
    EXPECT_THAT(
        output,
        HasSubstr(
            R"({"schema":1,"event":"list","of":"leakage","rows":[{"channel":1,"carrier_khz":null,"degrees":25,"i":-90,"q":0,"level_dbc":null}]})"));
    EXPECT_THAT(
        output,
        HasSubstr(
            R"("rows":[{"channel":1,"carrier_khz":7442000,"degrees":25,"i":-90,"q":0,"level_dbc":-40.0}]})"));
}

TEST_F(LeakageProgramTest, ExpectationHoldsBelowItsLimitOnly) {
    // At 35 degrees the path is 1 dB stronger: 0.112202 - 0.09, 20 log10 of which is -33.07.
    const Ending ending = runScript("tune tx 1 7442 MHz\ntemperature 35\n"
                                    "expect leakage 1 below -33.06\nexpect leakage 1 below -33.08\n");
    EXPECT_THAT(ending.output, HasSubstr("  held    expect leakage 1 below -33.06\n"
                                         "  FAILED  expect leakage 1 below -33.08  (script:4)\n"
                                         "          expected less than -33.08 dBc, found -33.07 dBc\n"));
    EXPECT_EQ(ending.exitCode, 1);
}

TEST_F(LeakageProgramTest, ExpectationFailsWithoutACarrier) {
    EXPECT_THAT(runScript("expect leakage 1 below 100\n").output,
                HasSubstr("expected less than 100.00 dBc, found no carrier\n"));
}

TEST_F(LeakageProgramTest, ChannelWithoutModelIsRefusedBeforeAnythingBoots) {
    const Ending ending = runScript("expect leakage 2 below -30\n");
    EXPECT_EQ(ending.output, "");
    EXPECT_THAT(ending.errors, EndsWith("script:1: the board models no LO leakage of channel 2, expected "
                                        "channel 1\n"));
    EXPECT_EQ(ending.exitCode, 3);
}

} // namespace
