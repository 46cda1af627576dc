#include "tests/radio/support/MadeUpRecording.h"
#include "tests/radioctl/program/ProgramTest.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

using Kind = Recording::Kind;

/** "radioctl record diff" as its user meets it. */
class RecordProgramTest : public ProgramTest {
protected:
    RecordProgramTest() {
        write("a.rec", radio(7442000, 1000000000));
        write("b.rec", radio(7442025, 2000000000));
    }

    /** Writes to the transmitter of channel 1, and to that of channel 2 `value`. */
    static std::string radio(std::int32_t value, std::int32_t nanoseconds) {
        MadeUpRecording made(32, 16, 4);
        made.text(Recording::At::unit, value == 7442000 ? "7" : "8");
        made.name(Recording::ObjectKind::driver, 1, "channel.1.tx.rf.frequency");
        made.name(Recording::ObjectKind::driver, 2, "channel.2.tx.rf.frequency");
        made.name(Recording::ObjectKind::module, 3, "FrequencyHandler", 1, 0);
        made.record(Kind::setTx, 3, 0, 7442000, 0, nanoseconds, 0);
        made.record(Kind::driverWrite, 1, 0, 7442000, 0, 0, 0, 1);
        made.record(Kind::driverWrite, 2, 0, value, 0, 0, 0, 1);
        made.record(Kind::finished, 3, 0, static_cast<std::int32_t>(Kind::setTx), 0, nanoseconds, 0);
        return made.bytes();
    }
    static Ending diff(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"record", "diff"});
        return runProgram({arguments});
    }
};

} // namespace

TEST_F(RecordProgramTest, SameRecordingsAreExitCode0) {
    const Ending ending = diff({"a.rec", "a.rec"});
    EXPECT_EQ(ending.output, "a.rec -> a.rec\n\n"
                             "1 operation the same, 0 different, 0 only in a.rec, 0 only in a.rec\n");
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(RecordProgramTest, DifferentOnesAreExitCode1) {
    const Ending ending = diff({"a.rec", "b.rec"});
    EXPECT_EQ(ending.output, "a.rec -> b.rec\n"
                             "  unit: 7 -> 8\n\n"
                             "> tune tx 1 7442000 kHz  (1.000000 s; 2.000000 s)\n"
                             "    - channel.2.tx.rf.frequency <- 7442000\n"
                             "    + channel.2.tx.rf.frequency <- 7442025\n\n"
                             "0 operations the same, 1 different, 0 only in a.rec, 0 only in b.rec\n");
    EXPECT_EQ(ending.exitCode, 1);
    EXPECT_EQ(diff({"--json", "a.rec", "b.rec"}).exitCode, 1);
}

TEST_F(RecordProgramTest, OtherUnitAloneIsExitCode0) {
    EXPECT_THAT(diff({"--channel", "1", "a.rec", "b.rec"}).output, HasSubstr("  unit: 7 -> 8\n"));
    EXPECT_EQ(diff({"--channel", "1", "a.rec", "b.rec"}).exitCode, 0);
    EXPECT_EQ(diff({"--driver", "channel.1.tx.rf.frequency", "a.rec", "b.rec"}).exitCode, 0);
    EXPECT_EQ(diff({"--driver", "channel.2.tx.rf.frequency", "a.rec", "b.rec"}).exitCode, 1);
}

TEST_F(RecordProgramTest, TimesAreCountedFromEachBeginning) {
    EXPECT_THAT(diff({"--from", "1.5", "a.rec", "b.rec"}).output,
                EndsWith("\n0 operations the same, 0 different, 0 only in a.rec, 1 only in b.rec\n"));
    EXPECT_THAT(diff({"--to", "0.5", "a.rec", "b.rec"}).output,
                EndsWith("\n0 operations the same, 0 different, 0 only in a.rec, 0 only in b.rec\n"));
}

TEST_F(RecordProgramTest, NothingThatWasComparedIsNoSuccess) {
    const Ending ending = diff({"--driver", "nonsense", "a.rec", "b.rec"});
    EXPECT_THAT(ending.output,
                EndsWith("\n0 operations the same, 0 different, 0 only in a.rec, 0 only in b.rec\n"));
    EXPECT_EQ(ending.errors,
              "radioctl: a.rec and b.rec: nothing was compared, expected operations that were asked "
              "for in one of them\n");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(RecordProgramTest, LimitOfNothingLeavesTheSummary) {
    EXPECT_EQ(diff({"--limit", "0", "a.rec", "b.rec"}).output,
              "a.rec -> b.rec\n"
              "  unit: 7 -> 8\n\n"
              "and 1 more\n\n"
              "0 operations the same, 1 different, 0 only in a.rec, 0 only in b.rec\n");
}

TEST_F(RecordProgramTest, UnusableFileIsExitCode3) {
    write("text", "no recording");
    for (const auto& files : std::vector<std::vector<std::string>>{{"a.rec", "text"}, {"text", "a.rec"}}) {
        const Ending ending = diff(files);
        EXPECT_EQ(ending.output, "");
        EXPECT_THAT(ending.errors, StartsWith("radioctl: text: at byte 0: expected the word \"RADIOREC\""));
        EXPECT_EQ(ending.exitCode, 3);
    }
    EXPECT_EQ(diff({"a.rec", "nowhere"}).exitCode, 3);
    EXPECT_EQ(diff({"a.rec"}).exitCode, 2);
}
