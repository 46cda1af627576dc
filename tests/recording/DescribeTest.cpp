// Boards that were described from recordings do what the recorded ones did.

#include "tests/recording/RecordedProcess.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <utility>
#include <vector>

namespace {

using namespace Radio::Recordings;
using testing::HasSubstr;
using testing::StartsWith;

using Words = std::vector<std::pair<std::string, std::int64_t>>;

std::int64_t wordOf(const Record& record) {
    if (record.kind == Kind::driverWrite) {
        return record.a;
    }
    if (record.kind != Kind::driverWriteBuffer) {
        return static_cast<std::int64_t>(record.carrier());
    }
    std::uint64_t number = 0;
    for (std::size_t index = record.bytes.size(); index-- > 0;) {
        number = number << 8U | static_cast<std::uint8_t>(record.bytes[index]);
    }
    return static_cast<std::int64_t>(number);
}

/** What reached the hardware, in order. */
Words wordsOf(const std::string& recording) {
    RecordingFile file = readRecording(recording);
    Words words;
    while (const auto record = file.next()) {
        const bool isWrite = record->kind == Kind::driverWrite || record->kind == Kind::driverWriteBuffer ||
                             record->kind == Kind::rauTx || record->kind == Kind::rauRx;
        if (isWrite && record->outcome == Outcome::returned && (record->code & 0x8000) == 0) {
            words.emplace_back(record->object->name + (record->kind == Kind::rauRx ? ".rx" : ""),
                               wordOf(*record));
        }
    }
    return words;
}

/** A recording, and what is said of it beside its name. */
struct Kept {
    const char* name;
    const char* said;
    /** So many words the run gets: the first ones of the recording, which go as far as the script does. */
    std::size_t words;
    /** So many words more the recording has. */
    std::size_t wordsBehind = 0;
    /** The end of what check says of the board; what it refuses is in what is said. */
    const char* checked = "board.toml: good\n";
    /** Why the run does not get the recorded words; null: it does. */
    const char* whyOthers = nullptr;
};

constexpr const char* writtenPast = "what a script writes past the library is not recorded once more";

/** Of which no board can be described: the recorded process built no channel. */
constexpr std::array withoutChannel{"life-compensations", "minimal-phases"};

void PrintTo(const Kept& kept, std::ostream* out) {
    *out << kept.name;
}

class DescribeTest : public RecordedProcess {
protected:
    static std::string radioctl(const std::string& words) { return RADIOCTL_PROGRAM + (" " + words); }
    static std::string kept(const std::string& name) { return KEPT_RECORDINGS + ("/" + name + ".rec"); }
    /** Describes a recording to board.toml and radio.script; gives what is said. */
    Ending describe(const std::string& recording) const {
        Ending ending = unrecorded(radioctl("describe " + recording + " --script radio.script"));
        std::ofstream(directory() / "board.toml") << ending.output;
        return ending;
    }
    /** Runs what was described, and records it to "recording". */
    void expectSameWords(const std::string& recording) const {
        const Ending run = recorded(radioctl("run board.toml radio.script"));
        EXPECT_EQ(run.exitCode, 0) << run.output;
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(wordsOf((directory() / "recording").string()), wordsOf(recording));
    }
};

class DescribedRecordingTest : public DescribeTest, public testing::WithParamInterface<Kept> {};
class DescribedBoardTest : public DescribeTest, public testing::WithParamInterface<const char*> {};
class RecordingWithoutChannelTest : public DescribeTest, public testing::WithParamInterface<const char*> {};

} // namespace

TEST_P(DescribedRecordingTest, BoardIsGoodAndGetsTheSameWords) {
    const std::string recording = kept(GetParam().name);
    const Ending described = describe(recording);
    EXPECT_EQ(described.exitCode, 0);
    EXPECT_EQ(described.errors, recording + ": " + GetParam().said + "\n");
    EXPECT_THAT(unrecorded(radioctl("check board.toml")).output, testing::EndsWith(GetParam().checked));
    const Ending run = recorded(radioctl("run board.toml radio.script"));
    EXPECT_EQ(run.exitCode, 0) << run.output;
    EXPECT_EQ(run.errors, "");
    const Words words = wordsOf((directory() / "recording").string());
    Words first = wordsOf(recording);
    EXPECT_EQ(words.size(), GetParam().words);
    EXPECT_EQ(first.size(), GetParam().words + GetParam().wordsBehind);
    first.resize(std::min(first.size(), words.size()));
    if (GetParam().whyOthers == nullptr) {
        EXPECT_EQ(words, first);
    } else {
        EXPECT_NE(words, first) << "no longer: " << GetParam().whyOthers;
    }
}

namespace {

const std::vector<Kept>& allKept() {
    static const std::vector<Kept> s_all = {
        {"iq-compensation-18ghz.armhf", "2 channels, 26 drivers, 14 variables, 12 tables", 91},
        {"iq-compensation-18ghz", "2 channels, 26 drivers, 14 variables, 12 tables", 91},
        {"ka-band-28ghz", "1 channel, 9 drivers, 8 variables, 2 tables", 10},
        {"life-boards.armhf",
         "1 channel, 9 drivers, 10 variables, 4 tables; not known: what was done after channel 1 was built "
         "once more",
         24, 64},
        {"life-boards",
         "1 channel, 9 drivers, 10 variables, 4 tables; not known: what was done after channel 1 was built "
         "once more",
         24, 64},
        {"life-carriers",
         "2 channels, 11 drivers, 10 variables, 4 tables; not known: a raster of channel 0, receiver, a "
         "raster of channel 0, transmitter, a raster of channel 1, receiver, a raster of channel 1, "
         "transmitter, the start-up of some of the channels, a command for tune-rx, a command for tune-tx, a "
         "command for tune-handler, a command that is for some of the channels alone, what was done after "
         "channel 1 was built once more",
         20, 93, "board.toml: good\n", writtenPast},
        {"life-exceptions",
         "1 channel, 12 drivers, 12 variables, 4 tables; not known: what was done after channel 1 was built "
         "once more",
         9, 444},
        {"life-failures",
         "1 channel, 12 drivers, 12 variables, 4 tables; not known: what was done after channel 1 was built "
         "once more",
         9, 569},
        {"life-numbers",
         "1 channel, 9 drivers, 10 variables, 4 tables; not known: a raster of channel 1, receiver, a raster "
         "of channel 1, transmitter, what was done after channel 1 was built once more, a board that check "
         "accepts (variable \"channel.1.tx.mixer.multiplicationfactor\" is -2; it must be at least 1 for "
         "channel 1 (microwave-if))",
         34, 406, "board.toml: 1 error, 0 warnings\n"},
        {"life-observers",
         "1 channel, 2 drivers, 0 variables, 0 tables; not known: what was thrown, a command for a C client "
         "that is refused, what was done after channel 1 was built once more",
         6, 8},
        {"life-other-failures",
         "1 channel, 2 drivers, 0 variables, 0 tables; not known: what was done after channel 1 was built "
         "once more",
         2, 531},
        {"life-searches.armhf",
         "1 channel, 11 drivers, 8 variables, 4 tables; not known: a command for calibrate, what was thrown, "
         "a command for canceller-init, a command for cancel, what was done after channel 1 was built once "
         "more",
         18, 272, "board.toml: good\n", writtenPast},
        {"life-searches",
         "1 channel, 11 drivers, 8 variables, 4 tables; not known: a command for calibrate, what was thrown, "
         "a command for canceller-init, a command for cancel, what was done after channel 1 was built once "
         "more",
         18, 272, "board.toml: good\n", writtenPast},
        {"life-silences",
         "1 channel, 12 drivers, 12 variables, 4 tables; not known: what was done after channel 1 was built "
         "once more",
         9, 432},
        {"life-spacings",
         "1 channel, 10 drivers, 9 variables, 4 tables; not known: what was done after channel 1 was built "
         "once more",
         90, 158},
        {"lo-leakage-18ghz", "2 channels, 19 drivers, 14 variables, 4 tables", 29},
        {"microwave-dsp-offset-80ghz", "2 channels, 18 drivers, 15 variables, 8 tables", 52},
        {"microwave-hz-23ghz",
         "2 channels, 19 drivers, 14 variables, 4 tables; not known: what is in "
         "Channel.2.Tx.Bb.Frequency.To.Coarse.Dc.I.Compensation, what is in "
         "Channel.2.Tx.Bb.Frequency.To.Coarse.Dc.Q.Compensation",
         23},
        {"microwave-hz-cs-offset-18ghz", "2 channels, 20 drivers, 20 variables, 8 tables", 52},
        {"microwave-if-8ghz", "2 channels, 18 drivers, 18 variables, 8 tables", 61},
        {"minimal-cancel.armhf",
         "1 channel, 2 drivers, 0 variables, 0 tables; not known: that a thread was cancelled", 1},
        {"minimal-cancel",
         "1 channel, 2 drivers, 0 variables, 0 tables; not known: that a thread was cancelled", 1},
        {"minimal-loaded.armhf",
         "1 channel, 9 drivers, 10 variables, 2 tables; not known: the type of channel 1, which was "
         "concluded, which answers are those of "
         "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I, which answers are those of "
         "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q",
         8, 0, "board.toml: 0 errors, 1 warning\n"},
        {"minimal-loaded",
         "1 channel, 9 drivers, 10 variables, 2 tables; not known: the type of channel 1, which was "
         "concluded, which answers are those of "
         "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I, which answers are those of "
         "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q",
         8, 0, "board.toml: 0 errors, 1 warning\n"},
        {"minimal-throw.armhf", "1 channel, 2 drivers, 0 variables, 0 tables; not known: what was thrown", 0},
        {"minimal-throw", "1 channel, 2 drivers, 0 variables, 0 tables; not known: what was thrown", 0},
        {"minimal-tune-3", "1 channel, 2 drivers, 0 variables, 0 tables", 3},
        {"minimal-unit", "1 channel, 0 drivers, 0 variables, 0 tables", 1},
        {"rau-18ghz", "2 channels, 0 drivers, 0 variables, 0 tables", 5},
        {"rf-module-7ghz.armhf", "2 channels, 4 drivers, 0 variables, 0 tables", 5},
        {"rf-module-7ghz", "2 channels, 4 drivers, 0 variables, 0 tables", 5}};
    return s_all;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(All, DescribedRecordingTest, testing::ValuesIn(allKept()));

TEST_P(RecordingWithoutChannelTest, IsRefused) {
    const Ending described = describe(kept(GetParam()));
    EXPECT_EQ(described.exitCode, 3);
    EXPECT_THAT(described.errors,
                HasSubstr(": no channel is in it: expected one that was built or initialised\n"));
}

INSTANTIATE_TEST_SUITE_P(All, RecordingWithoutChannelTest, testing::ValuesIn(withoutChannel));

TEST(KeptRecordings, AreAllDescribed) {
    std::set<std::string> described(withoutChannel.begin(), withoutChannel.end());
    for (const Kept& kept : allKept()) {
        described.insert(kept.name);
    }
    std::set<std::string> there;
    for (const auto& entry : std::filesystem::directory_iterator(KEPT_RECORDINGS)) {
        there.insert(entry.path().stem().string());
    }
    EXPECT_EQ(described, there);
}

// Once more with what is recorded now: record the board's own script, describe, run, compare.
TEST_P(DescribedBoardTest, GetsTheSameWords) {
    const std::string board = std::string(RADIO_BOARDS) + "/" + GetParam();
    recorded(radioctl("run " + board + ".toml " + board + ".script"));
    std::filesystem::rename(directory() / "recording", directory() / "first.rec");
    EXPECT_EQ(describe("first.rec").exitCode, 0);
    EXPECT_EQ(unrecorded(radioctl("check board.toml")).output, "board.toml: good\n");
    expectSameWords((directory() / "first.rec").string());
}

INSTANTIATE_TEST_SUITE_P(All, DescribedBoardTest,
                         testing::Values("iq-compensation-18ghz", "ka-band-28ghz", "lo-leakage-18ghz",
                                         "microwave-dsp-offset-80ghz", "microwave-hz-23ghz",
                                         "microwave-hz-cs-offset-18ghz", "microwave-if-8ghz", "rau-18ghz",
                                         "rf-module-7ghz"));

TEST_F(DescribeTest, ScriptHasFaultsAndChangesBeforeTheCommandThatMetThem) {
    describe(kept("rf-module-7ghz"));
    const std::string script = contentOf("radio.script");
    EXPECT_THAT(script, HasSubstr("\n"
                                  "fault driver-write channel.2.tx.rf.frequency 0x8001 once\n"
                                  "tune tx 2 7484000 kHz\n"
                                  "expect writes 0\n"
                                  "\n"
                                  "tune tx 2 7484000 kHz\n"
                                  "expect writes channel.2.tx.rf.frequency=7484000\n"
                                  "\n"
                                  "interface IDriverLayer absent\n"
                                  "phase init\n"
                                  "expect result failed\n"
                                  "expect writes 0\n"
                                  "\n"
                                  "interface IDriverLayer present\n"
                                  "phase init\n"
                                  "expect writes 0\n"));
}

TEST_F(DescribeTest, VariablesThatChangeAreSetBeforeTheCommandThatReadsThem) {
    describe(kept("microwave-hz-cs-offset-18ghz"));
    EXPECT_THAT(contentOf("board.toml"),
                AllOf(HasSubstr("\n\"ChannelSpacing\" = 27 # changes later\n"),
                      HasSubstr("\n\"channel.1.rx.rf.frequency.cs.offset.array\" = [27, 15000, 55, 29000, "
                                "110, 57000] # changes later\n")));
    EXPECT_THAT(contentOf("radio.script"),
                HasSubstr("\n"
                          "set channel.1.rx.rf.frequency.cs.offset.arraysize 0\n"
                          "tune rx 1 18985000 kHz\n"
                          "expect writes channel.1.dsp.rx.freq.offset=0 "
                          "channel.1.rx.rf.lo.frequency.in.hz=9494000000 channel.1.rx.rf.pll.config=39\n"));
}

TEST_F(DescribeTest, WhatIsThrownFailsAndExpectsNothing) {
    describe(kept("minimal-throw"));
    EXPECT_THAT(contentOf("radio.script"),
                HasSubstr("\n# channel.1.tx.rf.frequency threw \"no hardware\": it fails in its place, and "
                          "what the library does then is not what it did.\n"
                          "fault driver-write channel.1.tx.rf.frequency 0x8000 once\n"
                          "tune tx 1 7442000 kHz\n"
                          "\n"));
}

TEST_F(DescribeTest, DriversHaveTheRangeOfWhatWasWritten) {
    describe(kept("iq-compensation-18ghz"));
    EXPECT_THAT(contentOf("board.toml"),
                AllOf(HasSubstr("\n\"channel.1.tx.rf.mixer.i\" = {} # written 7 times, 540 to 584\n"),
                      HasSubstr("\n\"channel.1.dsp.tx.quadrature.gain.offset.compensation\" = {} "
                                "# written 5 times, -142 to -89; refused 1 time\n")));
}

TEST_F(DescribeTest, RasterMeetsTheCarriersSeen) {
    describe(kept("rau-18ghz"));
    // 17727.5 and 17755 MHz.
    EXPECT_THAT(contentOf("board.toml"), HasSubstr("[[raster]]\n"
                                                   "name = \"seen: channel 1, transmitter\"\n"
                                                   "channels = [1]\n"
                                                   "direction = \"tx\"\n"
                                                   "first = 17727500\n"
                                                   "last = 17755000\n"
                                                   "step = 27500\n"));
}

TEST_F(DescribeTest, ScriptEndsAtTheGapAndSaysSo) {
    recorded(std::string(RECORDED_RADIO) + " tune 5000", "RADIO_RECORDING_SIZE=64K");
    EXPECT_EQ(
        describe("recording").errors,
        "recording: 1 channel, 2 drivers, 0 variables, 0 tables; not known: what happened in the gap of "
        "the recording (a larger RADIO_RECORDING_SIZE leaves none), what was done behind the gap of the "
        "recording\n");
    EXPECT_THAT(contentOf("board.toml"),
                HasSubstr("\n# The recording has a gap: the ring turned over. What happened in it is not "
                          "known.\n"));
    EXPECT_THAT(contentOf("radio.script"), testing::EndsWith("\n# Behind it the recording has a gap.\n"));
    EXPECT_EQ(unrecorded(radioctl("run board.toml radio.script")).exitCode, 0);
}
