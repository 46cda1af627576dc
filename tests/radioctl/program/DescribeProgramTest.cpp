// The manners of "radioctl describe"; what it describes is tried where recordings are made.

#include "tests/radio/support/MadeUpRecording.h"
#include "tests/radioctl/program/ProgramTest.h"

#include <algorithm>
#include <iterator>

namespace {

using Recording::Kind;
using Recording::ObjectKind;
using testing::HasSubstr;
using testing::StartsWith;

/** How a board begins that is described from a recording of 1970. */
constexpr const char* origin =
    "# Described from the recording radio.rec,\n# made 1970-01-01 00:00:00 UTC of ";

class DescribeProgramTest : public ProgramTest {
protected:
    /** An RF module that is initialised and tuned once. */
    static MadeUpRecording made() {
        MadeUpRecording recording(64, 64, 4);
        recording.name(ObjectKind::module, 1, "FrequencyHandler", 1, 1);
        recording.name(ObjectKind::driver, 2, "channel.1.tx.rf.frequency");
        recording.name(ObjectKind::driver, 3, "channel.1.rx.rf.frequency");
        recording.record(Kind::construct, 1, 0, 1, 1);
        recording.record(Kind::finished, 1, 0, static_cast<std::int32_t>(Kind::construct));
        recording.record(Kind::moduleInit, 1, 0);
        recording.record(Kind::driverLookup, 2, 0, 1, 15, 0, 0, 1);
        recording.record(Kind::driverLookup, 3, 0, 1, 15, 0, 0, 1);
        recording.record(Kind::finished, 1, 0, static_cast<std::int32_t>(Kind::moduleInit));
        recording.record(Kind::setTx, 1, 0, 7442000);
        recording.record(Kind::driverWrite, 2, 0, 7442000, 0, 0, 0, 1);
        recording.record(Kind::finished, 1, 0, static_cast<std::int32_t>(Kind::setTx));
        return recording;
    }
    static std::string textOf(const std::string& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static void expectRefusal(const std::vector<std::string>& arguments, const std::string& message) {
        const Ending ending = runProgram({arguments});
        EXPECT_EQ(ending.errors, "radioctl: " + message + "\n");
        EXPECT_EQ(ending.output, "");
        EXPECT_EQ(ending.exitCode, 3);
    }
};

} // namespace

TEST_F(DescribeProgramTest, BoardGoesToStandardOutputAndOneLineToStandardError) {
    write("radio.rec", made().bytes());
    const Ending ending = runProgram({{"describe", "radio.rec"}});
    EXPECT_THAT(ending.output, StartsWith(origin));
    EXPECT_THAT(ending.output, HasSubstr("\n[[channel]]\nnumber = 1\ntype = \"rf-module\"\n"));
    EXPECT_EQ(ending.errors, "radio.rec: 1 channel, 2 drivers, 0 variables, 0 tables\n");
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(DescribeProgramTest, ScriptRunsOnTheBoard) {
    write("radio.rec", made().bytes());
    write("described.toml", runProgram({{"describe", "radio.rec", "--script", "radio.script"}}).output);
    const Ending ending = runProgram({{"run", "described.toml", "radio.script"}});
    EXPECT_THAT(ending.output, HasSubstr("> tune tx 1 7442000 kHz\n"
                                         "  1  channel.1.tx.rf.frequency <- 7442000\n"));
    EXPECT_THAT(ending.output, HasSubstr("  held    expect writes channel.1.tx.rf.frequency=7442000"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(DescribeProgramTest, JsonHasBoardAndScriptInOneEvent) {
    write("radio.rec", made().bytes());
    const Ending ending = runProgram({{"describe", "--json", "radio.rec"}});
    EXPECT_THAT(ending.output,
                StartsWith(R"({"schema":1,"event":"described","file":"radio.rec","channels":1,"drivers":2,)"
                           R"("variables":0,"tables":0,"unknown":[],"board":"# Described )"));
    EXPECT_THAT(ending.output, HasSubstr(R"(\ntune tx 1 7442000 kHz\n)"));
    EXPECT_EQ(std::count(ending.output.begin(), ending.output.end(), '\n'), 1);
    EXPECT_EQ(ending.errors, "");
}

TEST_F(DescribeProgramTest, FileThatIsNotThereIsRefused) {
    expectRefusal({"describe", "nowhere.rec"}, "nowhere.rec: cannot be read: No such file or directory");
}

TEST_F(DescribeProgramTest, FileThatIsNoRecordingIsRefused) {
    expectRefusal({"describe", "board.toml"},
                  "board.toml: at byte 0: expected the word \"RADIOREC\" of a recording");
}

TEST_F(DescribeProgramTest, TruncatedRecordingIsRefused) {
    const std::string bytes = made().bytes();
    write("header.rec", bytes.substr(0, 4000));
    expectRefusal({"describe", "header.rec"}, "header.rec: at byte 4000: expected a header of 4096 bytes");
    // 64 + 64 + 4 slots of 32 bytes behind the header.
    write("slots.rec", bytes.substr(0, 5000));
    expectRefusal({"describe", "slots.rec"}, "slots.rec: at byte 5000: expected 8320 bytes of 132 slots");
}

TEST_F(DescribeProgramTest, RecordingWithoutAChannelIsRefused) {
    write("radio.rec", MadeUpRecording(64, 64, 4).bytes());
    expectRefusal({"describe", "radio.rec"},
                  "radio.rec: no channel is in it: expected one that was built or initialised");
}

TEST_F(DescribeProgramTest, RecordingThatIsBrokenLeavesTheScriptAsItWas) {
    MadeUpRecording recording = made();
    recording.record(static_cast<Kind>(38), 1, 0);
    write("radio.rec", recording.bytes());
    write("radio.script", "as it was\n");
    const Ending ending = runProgram({{"describe", "radio.rec", "--script", "radio.script"}});
    EXPECT_EQ(ending.errors, "radioctl: radio.rec: at byte 6436: expected a kind of record, found 38\n");
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_EQ(textOf("radio.script"), "as it was\n");
}

TEST_F(DescribeProgramTest, ScriptIsNotWrittenOverTheRecordingNorIntoTheBoard) {
    const std::string bytes = made().bytes();
    write("radio.rec", bytes);
    const Ending over = runProgram({{"describe", "radio.rec", "--script", "./radio.rec"}});
    EXPECT_EQ(over.errors, "radioctl: --script: ./radio.rec is the recording, expected a file of its own\n");
    EXPECT_EQ(over.exitCode, 2);
    EXPECT_EQ(textOf("radio.rec"), bytes);
    const Ending into = runProgram({{"describe", "radio.rec", "--script", "/dev/stdout"}});
    EXPECT_EQ(into.errors,
              "radioctl: --script: /dev/stdout is where the board goes, expected a file of its own\n");
    EXPECT_EQ(into.output, "");
    EXPECT_EQ(into.exitCode, 2);
}

TEST_F(DescribeProgramTest, ScriptThatCannotBeWrittenIsRefusedBeforeTheBoard) {
    write("radio.rec", made().bytes());
    expectRefusal({"describe", "radio.rec", "--script", "nowhere/radio.script"},
                  "nowhere/radio.script: cannot be written: No such file or directory");
}
