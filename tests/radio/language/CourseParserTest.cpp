#include "radio/language/CommandParser.h"
#include "radio/session/ScriptLine.h"
#include "radio/text/WordError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace Radio {
namespace {

using std::chrono::microseconds;
using testing::ElementsAre;

/** The commands that read and write drivers, take time or stand for other lines. */
class CourseParserTest : public testing::Test {
protected:
    template <typename Type>
    static Type parsed(const std::string& line) {
        return std::get<Type>(std::get<Action>(parseCommand(line).value()));
    }

    static std::string complaintAbout(const std::string& line) {
        try {
            parseCommand(line);
        } catch (const WordError& error) {
            return error.what();
        }
        return "";
    }
};

TEST_F(CourseParserTest, ReadsNamesOfDrivers) {
    EXPECT_EQ(parsed<ReadDriver>("read a.b").name, "a.b");
    const auto command = parsed<WriteDriver>("write a.b -0x10");
    EXPECT_EQ(command.name, "a.b");
    EXPECT_EQ(command.value, -16);
    EXPECT_FALSE(command.isForced);
    EXPECT_EQ(complaintAbout("read"), "read: DRIVER is missing, expected: read DRIVER");
    EXPECT_EQ(complaintAbout("read a b"), "read: \"b\" is one word too many, expected: read DRIVER");
    EXPECT_EQ(complaintAbout("write a"), "write: VALUE is missing, expected: write DRIVER VALUE [force]");
}

TEST_F(CourseParserTest, TakesForceAsTheLastWordAlone) {
    EXPECT_TRUE(parsed<WriteDriver>("write a.b 1 force").isForced);
    EXPECT_TRUE(parsed<Tune>("tune tx 1 7442000 force").isForced);
    EXPECT_TRUE(parsed<Tune>("tune tx 1 7442 MHz force").isForced);
    EXPECT_FALSE(parsed<Tune>("tune tx 1 7442 MHz").isForced);
    EXPECT_TRUE(parsed<Sweep>("sweep tx 1 1 2 1 force").isForced);
    EXPECT_TRUE(parsed<Sweep>("sweep tx 1 1 2 1 5 ms force").isForced);
    EXPECT_EQ(complaintAbout("tune tx 1 force 7442000"),
              "tune: \"force\" is not a frequency, expected a decimal number of kHz, or with kHz, MHz "
              "or GHz");
    EXPECT_EQ(complaintAbout("write a force"),
              "write: VALUE is missing, expected: write DRIVER VALUE [force]");
    EXPECT_EQ(complaintAbout("observe tx 1 force"),
              "observe: \"force\" is one word too many, expected: observe tx|rx CHANNEL");
}

TEST_F(CourseParserTest, WritesMoreThan32BitsToDriversInHzAlone) {
    EXPECT_EQ(parsed<WriteDriver>("write channel.1.tx.rf.lo.frequency.in.hz 7442000000000").value,
              7442000000000);
    EXPECT_EQ(parsed<WriteDriver>("write a 2147483647").value, 2147483647);
    EXPECT_EQ(complaintAbout("write a 2147483648"),
              "write: \"2147483648\" is no value, expected a number from -2147483648 to 2147483647");
    EXPECT_EQ(complaintAbout("write a.in.hz.b 2147483648"),
              "write: \"2147483648\" is no value, expected a number from -2147483648 to 2147483647");
    EXPECT_EQ(complaintAbout("write a.in.hz 9223372036854775808"),
              "write: \"9223372036854775808\" is no value, expected a number from -9223372036854775808 to "
              "9223372036854775807");
}

TEST_F(CourseParserTest, ReadsTimesWithAndWithoutUnits) {
    EXPECT_EQ(parsed<Wait>("wait 500 ms").time, microseconds(500'000));
    EXPECT_EQ(parsed<Wait>("wait 500ms").time, microseconds(500'000));
    EXPECT_EQ(parsed<Wait>("wait 2 s").time, microseconds(2'000'000));
    EXPECT_EQ(parsed<Wait>("wait 2").time, microseconds(2'000'000));
    EXPECT_EQ(parsed<Wait>("wait 0.25").time, microseconds(250'000));
    EXPECT_EQ(parsed<Wait>("wait 1.5 min").time, microseconds(90'000'000));
    EXPECT_EQ(parsed<Wait>("wait 60 min").time, microseconds(3'600'000'000));
    EXPECT_EQ(parsed<Wait>("wait 0").time, microseconds(0));
}

TEST_F(CourseParserTest, RefusesWhatIsNoTime) {
    for (const std::string word :
         {"x", "-1", "1e3", "ms", "0x10", "1 h", "1 MHz", "5 minutes", "inf", "nan", "+1"}) {
        EXPECT_EQ(complaintAbout("wait " + word),
                  "wait: \"" + word + "\" is no time, expected a number of seconds, or with ms, s or min");
    }
    EXPECT_EQ(complaintAbout("wait 3600.001"), "wait: \"3600.001\" is too long, expected at most one hour");
    EXPECT_EQ(complaintAbout("wait 61 min"), "wait: \"61 min\" is too long, expected at most one hour");
    EXPECT_EQ(complaintAbout("wait"), "wait: TIME is missing, expected: wait TIME [ms|s|min]");
    EXPECT_EQ(complaintAbout("wait 1 s 2"),
              "wait: \"2\" is one word too many, expected: wait TIME [ms|s|min]");
}

TEST_F(CourseParserTest, ReadsWhatToWatch) {
    const auto command = parsed<Watch>("watch a b c for 2.5 s");
    EXPECT_THAT(command.names, ElementsAre("a", "b", "c"));
    EXPECT_EQ(command.time, microseconds(2'500'000));
    EXPECT_EQ(parsed<Watch>("watch a").time, std::nullopt);
    EXPECT_EQ(complaintAbout("watch"),
              "watch: DRIVER is missing, expected: watch DRIVER... [for TIME [ms|s|min]]");
    EXPECT_EQ(complaintAbout("watch a for"),
              "watch: TIME is missing, expected: watch DRIVER... [for TIME [ms|s|min]]");
}

TEST_F(CourseParserTest, ReadsSweepWithUnitsOfItsOwnForEachFrequency) {
    const auto command = parsed<Sweep>("sweep rx 2 7.442 GHz 7442028 28000 kHz 10 ms");
    EXPECT_EQ(command.direction, Direction::rx);
    EXPECT_EQ(command.channel, 2);
    EXPECT_EQ(command.from, 7442000U);
    EXPECT_EQ(command.to, 7442028U);
    EXPECT_EQ(command.step, 28000U);
    EXPECT_EQ(command.dwell, microseconds(10'000));
    EXPECT_EQ(parsed<Sweep>("sweep tx 1 1 2 1").dwell, microseconds(0));
    EXPECT_EQ(parsed<Sweep>("sweep tx 1 1 2 1 kHz 3").dwell, microseconds(3'000'000));
}

TEST_F(CourseParserTest, SweepReachesAsFarAsItsStepsDo) {
    EXPECT_EQ(parsed<Sweep>("sweep tx 1 1000 2000 500").carriers(), 3U);
    EXPECT_EQ(parsed<Sweep>("sweep tx 1 1000 2000 300").carriers(), 4U);
    EXPECT_EQ(parsed<Sweep>("sweep tx 1 2000 1000 500").carriers(), 3U);
    EXPECT_EQ(parsed<Sweep>("sweep tx 1 1000 1000 5").carriers(), 1U);
    EXPECT_EQ(parsed<Sweep>("sweep tx 1 0 999999 1").carriers(), 1'000'000U);
    EXPECT_EQ(parsed<Sweep>("sweep tx 1 0 4294967295 4294967295").carriers(), 2U);
}

TEST_F(CourseParserTest, RefusesSweepThatGetsNowhereOrIsTooLong) {
    EXPECT_EQ(complaintAbout("sweep tx 1 1000 2000 0"),
              "sweep: a step of 0 gets nowhere, expected at least 1 kHz");
    EXPECT_EQ(complaintAbout("sweep tx 1 0 1000000 1"),
              "sweep: more than 1000000 carriers, expected a wider step or a narrower band");
    EXPECT_EQ(complaintAbout("sweep tx 1 4294967295 0 1"),
              "sweep: more than 1000000 carriers, expected a wider step or a narrower band");
    EXPECT_EQ(complaintAbout("sweep tx 1 1000 2000"),
              "sweep: STEP is missing, expected: sweep tx|rx CHANNEL FROM TO STEP [DWELL] [force]");
    EXPECT_EQ(complaintAbout("sweep tx 1 1000 2000 500 1 s now"),
              "sweep: \"now\" is one word too many, expected: sweep tx|rx CHANNEL FROM TO STEP [DWELL] "
              "[force]");
}

TEST_F(CourseParserTest, ReadsWhatToRepeat) {
    const auto command = parsed<Repeat>("repeat 3 tune tx 1 7442 MHz");
    EXPECT_EQ(command.count, 3U);
    EXPECT_EQ(command.line->text, "tune tx 1 7442 MHz");
    EXPECT_EQ(std::get<Tune>(std::get<Action>(command.line->command)).frequency, 7442000U);
    const auto expectation = parsed<Repeat>(R"(repeat 1000000 expect trace "a \"b\" c" # why)");
    EXPECT_EQ(expectation.count, 1'000'000U);
    EXPECT_EQ(expectation.line->text, R"(expect trace "a \"b\" c")");
    EXPECT_EQ(std::get<ExpectTrace>(std::get<Expectation>(expectation.line->command)).text, "a \"b\" c");
}

TEST_F(CourseParserTest, RefusesToRepeatWhatIsNoPlainCommand) {
    for (const std::string word : {"repeat", "include", "quit", "exit"}) {
        EXPECT_EQ(complaintAbout("repeat 2 " + word + " 1 x"),
                  "repeat: \"" + word + "\" cannot be repeated, expected another command");
    }
    for (const std::string count : {"0", "-1", "1000001", "x"}) {
        EXPECT_EQ(complaintAbout("repeat " + count + " wait 1"),
                  "repeat: \"" + count + "\" is no count, expected a number from 1 to 1000000");
    }
    EXPECT_EQ(complaintAbout("repeat 2"), "repeat: COMMAND is missing, expected: repeat COUNT COMMAND...");
    EXPECT_EQ(complaintAbout("repeat 2 tune up"), "repeat: tune: \"up\" is out of place, expected tx or rx");
}

TEST_F(CourseParserTest, ReadsWhatToInclude) {
    EXPECT_EQ(std::get<Include>(*parseCommand("include \"a b.script\"")).file, "a b.script");
    EXPECT_EQ(complaintAbout("include"), "include: FILE is missing, expected: include FILE");
    EXPECT_EQ(complaintAbout("include \"\""), "include: FILE is empty, expected the name of a script");
}

TEST_F(CourseParserTest, ReadsTheOtherNamesOfCommands) {
    EXPECT_NO_THROW(parsed<Quit>("exit"));
    EXPECT_EQ(parsed<Help>("?").about, "");
    EXPECT_EQ(parsed<Help>("? tune").about, "tune");
    EXPECT_EQ(complaintAbout("exit now"), "exit: \"now\" is one word too many, expected: exit");
}

} // namespace
} // namespace Radio
