// The recorder before a process with the minimal platform, which neither links it nor knows of it.

#include "tests/recording/RecordedProcess.h"

#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <optional>
#include <thread>

namespace {

using namespace Radio::Recordings;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class RecorderTest : public RecordedProcess {
protected:
    /** The carriers to which the transmitter was tuned. */
    static std::vector<std::uint64_t> carriersIn(RecordingFile& file) {
        std::vector<std::uint64_t> carriers;
        while (const auto record = file.next()) {
            if (record->kind == Kind::setTx) {
                carriers.push_back(record->carrier());
            }
        }
        return carriers;
    }

    /** The words of the beginning. */
    static constexpr const char* booted = "\n> build channel 1: rf-module\n"
                                          "\n> phase 11, channel 1: module initialisation\n"
                                          "\n> phase 5, channel 1: storage objects retrieved\n"
                                          "\n> phase 20, channel 1: post frame-format load\n"
                                          "\n> phase 11 by itself, channel 1\n";
};

} // namespace

TEST_F(RecorderTest, MinimalPlatformIsRecorded) {
    EXPECT_EQ(recorded(radio("tune 2")).errors, "");
    EXPECT_EQ(shown(), booted + std::string("\n> observe tx 1\n"
                                            "\n> observe tx 1 as a C client\n"
                                            "\n> tune tx 1 7442000 kHz\n"
                                            "  1  channel.1.tx.rf.frequency <- 7442000\n"
                                            "     tx 1 told its observer: 7442000 kHz\n"
                                            "     tx 1 told its C observer: 7442000 kHz\n"
                                            "\n> tune tx 1 7442001 kHz\n"
                                            "  1  channel.1.tx.rf.frequency <- 7442001\n"
                                            "     tx 1 told its observer: 7442001 kHz\n"
                                            "     tx 1 told its C observer: 7442001 kHz\n"
                                            "\n> destroy channel 1\n"
                                            "\n64 records\n"));
}

TEST_F(RecorderTest, EveryCallOfAFrequencyChangeIsInIt) {
    recorded(radio("tune 1"));
    const std::string all = shown({}, true);
    const std::size_t begin = all.find("> tune tx 1");
    EXPECT_EQ(all.substr(begin, all.find("\n\n", begin) - begin),
              "> tune tx 1 7442000 kHz\n"
              "     trace-level 2048 = -7\n"
              "     information: setTxFrequency 7442000 [FrequencyHandler.cpp]\n"
              "     trace-end\n"
              "     trace-level 2048 = -7\n"
              "     information: Write frequency to HW 7442000 for direction Tx "
              "[FrequencyHandler_RfModule.cpp]\n"
              "     trace-end\n"
              "  1  channel.1.tx.rf.frequency <- 7442000\n"
              "     tx 1 told its observer: 7442000 kHz\n"
              "     tx 1 told its C observer: 7442000 kHz");
}

TEST_F(RecorderTest, EveryArgumentOfARegistrationIsInIt) {
    recorded(radio("tune 1"));
    const std::string all = shown({}, true);
    EXPECT_THAT(all,
                HasSubstr("     module-register FrequencyHandler 19000 FrequencyHandler, phases 11,5,20\n"));
    EXPECT_THAT(all, HasSubstr("     broker-lookup IDriverLayer\n     driver-layer-record\n"));
}

TEST_F(RecorderTest, EveryArgumentOfACallbackIsInIt) {
    recorded(radio("compensate 1"));
    EXPECT_THAT(shown({}, true),
                HasSubstr("     callback-register CTxIQImbalanceHandler_OnPhaseActivation 83001, order 100, "
                          "priority 3, phases 11\n"));
    RecordingFile file = recording();
    std::size_t seen = 0;
    while (const auto record = file.next()) {
        if (record->kind == Kind::brokerGet) {
            EXPECT_EQ(record->b, 1);
            ++seen;
        }
    }
    EXPECT_EQ(seen, 2U);
}

TEST_F(RecorderTest, WhatIsGoneGivesItsRoomBack) {
    EXPECT_EQ(recorded(radio("compensate 400"), "RADIO_RECORDING_SIZE=16M").output,
              unrecorded(radio("compensate 400")).output);
    EXPECT_EQ(recording().header().passedOver, 0U);
}

TEST_F(RecorderTest, OnlyTheLibrarysUseOfThePlatformIsRecorded) {
    recorded(radio("tune 1"));
    RecordingFile file = recording();
    while (const auto record = file.next()) {
        EXPECT_NE(record->kind, Kind::tableLinear);
        EXPECT_NE(record->kind, Kind::variableGet);
    }
}

TEST_F(RecorderTest, ProcessDoesTheSameWithAndWithoutIt) {
    for (const char* const what : {"tune 3", "unit", "throw", "cancel"}) {
        const Ending with = recorded(radio(what));
        const Ending without = unrecorded(radio(what));
        EXPECT_EQ(with.output, without.output) << what;
        EXPECT_EQ(with.errors, without.errors) << what;
        EXPECT_EQ(with.exitCode, 0) << what;
    }
}

TEST_F(RecorderTest, RemoteRadioUnitIsRecorded) {
    recorded(radio("unit"));
    EXPECT_THAT(shown(), HasSubstr("\n> tune tx 1 18000000 kHz\n"
                                   "  1  IRauHandler_1.tx <- 18000000\n"
                                   "\n> tune rx 1 19000000 kHz\n"
                                   "  -  IRauHandler_1.rx <- 19000000  FAILED 0x8000\n"));
}

TEST_F(RecorderTest, WhatThePlatformThrowsPassesAndIsRecorded) {
    EXPECT_THAT(recorded(radio("throw")).output,
                StartsWith("answered 0\n"
                           "answered 0\n"
                           "text onModuleInit\n"
                           "text setTxFrequency 7442000\n"
                           "text Write frequency to HW 7442000 for direction Tx\n"
                           "text writeFrequencyToHW failed: no hardware\n"));
    EXPECT_THAT(shown(),
                HasSubstr("\n> tune tx 1 7442000 kHz\n"
                          "  -  channel.1.tx.rf.frequency <- 7442000  threw: no hardware\n"
                          "     error: writeFrequencyToHW failed: no hardware\n"
                          "\n> tune tx 1 7442001 kHz\n"
                          "  -  channel.1.tx.rf.frequency <- 7442001  threw something that is no exception "
                          "of the standard library\n"
                          "     error: writeFrequencyToHW failed: unknown exception\n"));
}

TEST_F(RecorderTest, CancelledThreadPassesAndIsRecorded) {
    EXPECT_THAT(recorded(radio("cancel")).output,
                StartsWith("cancelled\nanswered 0\nwrite context 7442001\n"));
    EXPECT_THAT(shown(), HasSubstr("\n> tune tx 1 7442000 kHz\n"
                                   "  -  channel.1.tx.rf.frequency <- 7442000  the thread was cancelled\n"
                                   "     result  the thread was cancelled\n"
                                   "\n> tune tx 1 7442001 kHz\n"
                                   "  1  channel.1.tx.rf.frequency <- 7442001\n"));
}

TEST_F(RecorderTest, LibraryThatIsLoadedAtRunTimeIsRecorded) {
    EXPECT_EQ(recorded(LOADING_PROCESS).output, "tuned\n");
    EXPECT_THAT(shown(), HasSubstr("\n> tune tx 1 18000000 kHz\n"
                                   "  1  channel.1.tx.if.frequency <- 1000\n"
                                   "  2  channel.1.tx.rf.lo.frequency <- 18000000\n"
                                   "  3  channel.1.tx.rf.mixer.i <- 18000000\n"
                                   "  4  channel.1.tx.rf.mixer.q <- 18000000\n"
                                   "\n> destroy channel 1\n"));
}

TEST_F(RecorderTest, PlugInThatHasLibraryAndPlatformForItselfIsRecorded) {
    const Ending ending = recorded(PLUG_IN_PROCESS);
    EXPECT_EQ(ending.output, "answered 0\nanswered 0\n");
    EXPECT_EQ(ending.errors, "");
    RecordingFile file = recording();
    EXPECT_THAT(carriersIn(file), testing::ElementsAre(7442000U, 7442000U));
}

TEST_F(RecorderTest, PlugInIsItselfWhenNothingIsRecorded) {
    const Ending ending = shell(std::string("env ") + PRELOAD, PLUG_IN_PROCESS);
    EXPECT_EQ(ending.output, "answered 0\nanswered 0\n");
    EXPECT_EQ(ending.errors, "");
}

TEST_F(RecorderTest, WithoutTheVariableNothingIsRecorded) {
    const Ending ending = shell(std::string("env ") + PRELOAD, radio("tune 2"));
    EXPECT_EQ(ending.output, unrecorded(radio("tune 2")).output);
    EXPECT_EQ(ending.errors, "");
    EXPECT_FALSE(isRecorded());
}

TEST_F(RecorderTest, HeaderSaysWhatIsRecorded) {
    recorded(radio("tune 1"), "RADIO_RECORDING_UNIT='unit 7' RADIO_RECORDING_BOARD=board.toml");
    const RecordingFile file = recording();
    EXPECT_EQ(file.header().unit, "unit 7");
    EXPECT_EQ(file.header().board, "board.toml");
    EXPECT_EQ(file.header().program, "recorded_radio");
    EXPECT_THAT(file.header().library, StartsWith("libFrequencyHandler.so."));
    EXPECT_EQ(file.header().buildId.size(), 40U);
    EXPECT_EQ(file.header().wordBits, sizeof(void*) * 8);
}

TEST_F(RecorderTest, BeginningStaysAndTheRingKeepsTheNewest) {
    recorded(radio("tune 5000"), "RADIO_RECORDING_SIZE=64K");
    EXPECT_EQ(std::filesystem::file_size(directory() / "recording"), 65536U);
    RecordingFile file = recording();
    const std::vector<std::uint64_t> carriers = carriersIn(file);
    ASSERT_GT(carriers.size(), 40U);
    EXPECT_EQ(carriers.front(), 7442000U);
    EXPECT_EQ(carriers.back(), 7446999U);
    EXPECT_GT(file.losses().overwritten, 20000U);
    EXPECT_EQ(file.losses().unfinished, 0U);
    EXPECT_THAT(shown(), StartsWith(booted));
    EXPECT_THAT(shown(), EndsWith(" are overwritten\n"));
}

TEST_F(RecorderTest, ProcessThatIsKilledLeavesWholeRecords) {
    const pid_t process = fork();
    if (process == 0) {
        // Carried out by a shell that becomes the process.
        const std::string command = "cd " + directory().string() + "; exec " + environment() +
                                    "RADIO_RECORDING_SIZE=256K " + EMULATOR + " " + radio("for-ever");
        execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        _exit(127);
    }
    const auto isInTheRing = [this] {
        const std::string bytes = contentOf("recording");
        std::uint64_t claimed = 0;
        if (bytes.size() >= 4096) {
            bytes.copy(reinterpret_cast<char*>(&claimed), sizeof claimed, Recording::At::claimed);
        }
        return claimed > 20000;
    };
    for (int tenths = 0; tenths < 300 && !isInTheRing(); ++tenths) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    kill(process, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(process, &status, 0), process);
    EXPECT_TRUE(WIFSIGNALED(status));

    RecordingFile file = recording();
    std::optional<Record> last;
    std::uint64_t records = 0;
    while (auto record = file.next()) {
        last = std::move(record);
        ++records;
    }
    EXPECT_GT(records, 4000U);
    // One thread was at work: at most one record was being written.
    EXPECT_LE(file.losses().unfinished, 20U);
    EXPECT_GT(last->sequence, 20000U - 20U);
}

TEST_F(RecorderTest, ChildOfTheProcessIsNotRecorded) {
    EXPECT_EQ(recorded(radio("fork")).output, "answered 0\nanswered 0\n");
    RecordingFile file = recording();
    EXPECT_THAT(carriersIn(file), testing::ElementsAre(7442000U, 7442001U));
    EXPECT_EQ(shown({{}, "channel.1.tx.rf.frequency", {}, {}}).find("7442009"), std::string::npos);
}

TEST_F(RecorderTest, ChildIsRecordedWhenItIsTheOneWithARadio) {
    EXPECT_EQ(recorded(radio("build-in-child")).output, "answered 0\n");
    RecordingFile file = recording();
    EXPECT_THAT(carriersIn(file), testing::ElementsAre(7442000U));
}

TEST_F(RecorderTest, SizeThatATerminalWouldObeyIsShownHarmless) {
    EXPECT_EQ(recorded(radio("tune 1"), "RADIO_RECORDING_SIZE=4\x1b[31m\xc2\x9bK").errors,
              "librecordingplatform.so: RADIO_RECORDING_SIZE is \"4\\x1b[31m\\xc2\\x9bK\", expected 64K to "
              "256M; taken as 4M\n");
}

TEST_F(RecorderTest, SizeThatIsNoneIsToldAndTheUsualOneTaken) {
    for (const char* const size : {"63K", "257M", "much", "-64K", "64k"}) {
        const Ending ending = recorded(radio("tune 1"), std::string("RADIO_RECORDING_SIZE=") + size);
        EXPECT_EQ(ending.errors, std::string("librecordingplatform.so: RADIO_RECORDING_SIZE is \"") + size +
                                     "\", expected 64K to 256M; taken as 4M\n");
        EXPECT_EQ(std::filesystem::file_size(directory() / "recording"), 4194304U);
    }
}
