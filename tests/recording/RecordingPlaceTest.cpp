// Where a recording is put, what stands there, and what becomes of the radio when it cannot be.

#include "tests/recording/RecordedProcess.h"

#include <sys/stat.h>

namespace {

using testing::ElementsAre;

/** What is told of a place, which is "recording" if not said otherwise. */
std::string told(const std::string& what, const std::string& place = "recording") {
    return "librecordingplatform.so: " + place + ": " + what + "; the radio goes on unrecorded\n";
}

class RecordingPlaceTest : public RecordedProcess {
protected:
    /** The radio does what it does unrecorded, but for what is told. */
    void expectUnrecorded(const Ending& ending, const std::string& errors) const {
        EXPECT_EQ(ending.output, unrecorded(radio("tune 2")).output);
        EXPECT_EQ(ending.errors, errors);
        EXPECT_EQ(ending.exitCode, 0);
    }

    static constexpr const char* cutShort =
        "librecordingplatform.so: recording: cut short by somebody, or its disk is full; the radio went on "
        "unrecorded\n";
};

} // namespace

TEST_F(RecordingPlaceTest, EachMarkInItsNameIsTheNumberOfTheProcess) {
    EXPECT_EQ(shell(std::string("env ") + PRELOAD + " RADIO_RECORDING=%p-of-%p.rec", radio("tune 1")).errors,
              "");
    ASSERT_EQ(files().size(), 1U);
    std::smatch numbers;
    const std::string name = *files().begin();
    ASSERT_TRUE(std::regex_match(name, numbers, std::regex("([0-9]+)-of-([0-9]+)\\.rec")));
    EXPECT_EQ(numbers[1], numbers[2]);
}

TEST_F(RecordingPlaceTest, ProcessWithoutARadioTouchesNothing) {
    put("recording", "another one");
    EXPECT_EQ(recorded(radio("nothing")).exitCode, 0);
    EXPECT_EQ(contentOf("recording"), "another one");
}

TEST_F(RecordingPlaceTest, RecordingIsLookedAtWithTheRecorderStillAtHand) {
    recorded(radio("tune 1"));
    const std::string content = contentOf("recording");
    EXPECT_EQ(recorded(std::string(RADIOCTL_PROGRAM) + " record show recording").exitCode, 0);
    EXPECT_EQ(recorded(std::string(RADIOCTL_PROGRAM) + " --help").exitCode, 0);
    EXPECT_TRUE(contentOf("recording") == content);
}

TEST_F(RecordingPlaceTest, FileThatIsThereIsReplacedAndNothingIsLeftBesideIt) {
    put("recording", "another one");
    EXPECT_EQ(recorded(radio("tune 1")).errors, "");
    EXPECT_THAT(files(), ElementsAre("recording"));
    EXPECT_EQ(recording().header().program, "recorded_radio");
}

TEST_F(RecordingPlaceTest, FileLargerThanAllowedLetsTheRadioGoOnAndTheOldOneStay) {
    put("recording", "another one");
    // In blocks of 512 bytes: 4 KiB, where a recording takes 64.
    expectUnrecorded(shell("ulimit -f 8; " + environment() + "RADIO_RECORDING_SIZE=64K", radio("tune 2")),
                     told("File too large"));
    EXPECT_EQ(contentOf("recording"), "another one");
    EXPECT_THAT(files(), ElementsAre("recording"));
}

#ifdef OWN_FILE_SYSTEMS
TEST_F(RecordingPlaceTest, FullDiskLetsTheRadioGoOnAndTheOldOneStay) {
    std::filesystem::create_directory(directory() / "disk");
    const std::string inside =
        "mount -t tmpfs -o size=128k none disk; echo another one > disk/recording; env " +
        std::string(PRELOAD) + " RADIO_RECORDING=disk/recording " + EMULATOR + " " + radio("tune 2") +
        "; ls disk; cat disk/recording";
    const Ending ending = shell("", "unshare -rm sh -c '" + inside + "'");
    EXPECT_EQ(ending.output, unrecorded(radio("tune 2")).output + "recording\nanother one\n");
    EXPECT_EQ(ending.errors, told("No space left on device", "disk/recording"));
}
#endif

TEST_F(RecordingPlaceTest, PlaceThatCannotBeWrittenLetsTheRadioGoOn) {
    expectUnrecorded(
        shell(std::string("env ") + PRELOAD + " RADIO_RECORDING=missing/recording", radio("tune 2")),
        told("No such file or directory", "missing/recording"));
}

TEST_F(RecordingPlaceTest, WhatIsNoFileIsLeftAsItIs) {
    ASSERT_EQ(mkfifo((directory() / "recording").c_str(), 0600), 0);
    expectUnrecorded(recorded(radio("tune 2")), told("no regular file, and left as it is"));
    EXPECT_TRUE(std::filesystem::is_fifo(directory() / "recording"));
    EXPECT_THAT(files(), ElementsAre("recording"));
}

TEST_F(RecordingPlaceTest, DeviceIsLeftAsItIs) {
    expectUnrecorded(shell(std::string("env ") + PRELOAD + " RADIO_RECORDING=/dev/null", radio("tune 2")),
                     told("no regular file, and left as it is", "/dev/null"));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(RecordingPlaceTest, RadioGoesOnWhenSomebodyCutsItShort) {
    const Ending ending = recorded(radio("cut-short"));
    put("recording", "");
    EXPECT_EQ(ending.output, unrecorded(radio("cut-short")).output);
    EXPECT_EQ(ending.errors, cutShort);
    EXPECT_EQ(ending.exitCode, 0);
}

// An emulator does not hand on such faults as they are.
constexpr bool isEmulated = sizeof EMULATOR > 1;
constexpr const char* notHandedOn = "an emulator does not hand such faults on";

TEST_F(RecordingPlaceTest, HandlerOfTheProcessKeepsItsFaults) {
    if (isEmulated) {
        GTEST_SKIP() << notHandedOn;
    }
    const Ending ending = recorded(radio("own-fault"));
    EXPECT_EQ(ending.output, "answered 0\nown\nanswered 0\n");
    EXPECT_EQ(ending.errors, cutShort);
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(RecordingPlaceTest, FaultOfTheProcessIsStillItsEnd) {
    if (isEmulated) {
        GTEST_SKIP() << notHandedOn;
    }
    EXPECT_EQ(recorded(radio("fault")).exitCode, 128 + SIGBUS);
}
