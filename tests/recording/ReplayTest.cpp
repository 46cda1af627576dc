// Recordings that are lived again: as they were made, and changed by hand.

#include "radioctl/replay/Verdict.h"
#include "tests/recording/RecordedProcess.h"

#include <cstring>
#include <functional>

namespace {

using namespace Radio::Recordings;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

/** The slots of a recording whose ring was not reached, to be changed. */
class Slots {
public:
    explicit Slots(std::string bytes) : m_bytes(std::move(bytes)) {
        std::uint32_t names = 0;
        std::uint64_t claimed = 0;
        std::memcpy(&names, &m_bytes[Recording::At::nameSlots], sizeof names);
        std::memcpy(&claimed, &m_bytes[Recording::At::claimed], sizeof claimed);
        m_begin = Recording::headerBytes + names * Recording::slotBytes;
        m_slots.resize(claimed);
        std::memcpy(m_slots.data(), &m_bytes[m_begin], claimed * Recording::slotBytes);
    }

    /** The first that tells of `kind` with `a`. */
    std::size_t find(Kind kind, std::int32_t a) const {
        for (std::size_t place = 0; place < m_slots.size(); ++place) {
            const Recording::Slot& slot = m_slots[place];
            if (slot.kind == static_cast<std::uint8_t>(kind) && slot.a == a &&
                (slot.commit & 0x40000000U) == 0) {
                return place;
            }
        }
        throw std::runtime_error("there is no such record");
    }
    Recording::Slot& at(std::size_t place) { return m_slots[place]; }
    void remove(std::size_t place) { m_slots.erase(m_slots.begin() + static_cast<std::ptrdiff_t>(place)); }
    void repeat(std::size_t place) {
        const Recording::Slot copy = m_slots[place];
        m_slots.insert(m_slots.begin() + static_cast<std::ptrdiff_t>(place), copy);
    }

    /** The recording with them, numbered anew. */
    std::string bytes() {
        for (std::size_t place = 0; place < m_slots.size(); ++place) {
            std::uint32_t& commit = m_slots[place].commit;
            commit = Recording::commitMark(place, (commit & 0x40000000U) != 0);
        }
        const std::uint64_t claimed = m_slots.size();
        std::memcpy(&m_bytes[Recording::At::claimed], &claimed, sizeof claimed);
        std::memset(&m_bytes[m_begin], 0, (claimed + 1) * Recording::slotBytes);
        std::memcpy(&m_bytes[m_begin], m_slots.data(), claimed * Recording::slotBytes);
        return m_bytes;
    }

private:
    std::string m_bytes;
    std::size_t m_begin;
    std::vector<Recording::Slot> m_slots;
};

class ReplayTest : public RecordedProcess {
protected:
    static std::string board(const std::string& name) {
        const std::string path = std::string(RADIO_BOARDS) + "/" + name;
        return std::string(RADIOCTL_PROGRAM) + " run " + path + ".toml " + path + ".script";
    }
    Ending replay(const std::string& words) const {
        return unrecorded(std::string(RADIOCTL_PROGRAM) + " replay " + words);
    }
    void write(const std::string& file, const std::string& bytes) const {
        std::ofstream(directory() / file, std::ios::binary) << bytes;
    }
    /** Records a radio that is tuned once, and writes the recording to "changed" with a change. */
    void recordAndChange(const std::function<void(Slots&)>& change) const {
        recorded(radio("tune 1"));
        Slots slots(contentOf("recording"));
        change(slots);
        write("changed", slots.bytes());
    }
    /** What is said of "changed", without times. */
    std::string saidOfTheChange() const {
        const Ending ending = replay("changed");
        EXPECT_EQ(ending.exitCode, 1);
        const std::string timeless =
            std::regex_replace(ending.output, std::regex("  \\([0-9]+\\.[0-9]{6} s\\)"), "");
        return std::regex_replace(timeless, std::regex("\\.cpp:[0-9]+\\]"), ".cpp]");
    }
};

class ReplayedBoardTest : public ReplayTest, public testing::WithParamInterface<const char*> {};
class ReplayedRadioTest : public ReplayTest, public testing::WithParamInterface<const char*> {};

constexpr const char* identical = "recording: identical, [0-9]+ calls\n";

} // namespace

TEST_P(ReplayedBoardTest, IsIdentical) {
    recorded(board(GetParam()));
    const Ending ending = replay("recording");
    EXPECT_THAT(ending.output, MatchesRegex(identical));
    EXPECT_EQ(ending.errors, "");
    EXPECT_EQ(ending.exitCode, 0);
}

INSTANTIATE_TEST_SUITE_P(All, ReplayedBoardTest,
                         testing::Values("iq-compensation-18ghz", "ka-band-28ghz", "lo-leakage-18ghz",
                                         "microwave-dsp-offset-80ghz", "microwave-hz-23ghz",
                                         "microwave-hz-cs-offset-18ghz", "microwave-if-8ghz", "rau-18ghz",
                                         "rf-module-7ghz"));

// A platform that throws, one that cancels the thread, a remote radio unit, a child of the process.
TEST_P(ReplayedRadioTest, IsIdentical) {
    recorded(radio(GetParam()));
    const Ending ending = replay("recording");
    EXPECT_THAT(ending.output, MatchesRegex(identical));
    EXPECT_EQ(ending.exitCode, 0);
}

INSTANTIATE_TEST_SUITE_P(All, ReplayedRadioTest,
                         testing::Values("tune 3", "unit", "throw", "cancel", "fork"));

TEST_F(ReplayTest, RecorderThatIsStillAtHandDoesNotRecordIt) {
    recorded(radio("tune 1"));
    const std::string content = contentOf("recording");
    EXPECT_THAT(recorded(std::string(RADIOCTL_PROGRAM) + " replay recording").output,
                MatchesRegex(identical));
    EXPECT_TRUE(contentOf("recording") == content);
}

TEST_F(ReplayTest, TypeOfAModuleThatNobodySawBeingBuiltIsFound) {
    recorded(LOADING_PROCESS);
    EXPECT_THAT(replay("recording").output, MatchesRegex(identical));
}

TEST_F(ReplayTest, OtherValueIsFoundWithWhatCameBeforeIt) {
    recordAndChange([](Slots& slots) { slots.at(slots.find(Kind::driverWrite, 7442000)).a = 7442025; });
    EXPECT_EQ(saidOfTheChange(), "changed: different after 32 calls\n"
                                 "  in operation 8: tune tx 1 7442000 kHz\n"
                                 "         temperature-register\n"
                                 "    > observe tx 1\n"
                                 "    > observe tx 1 as a C client\n"
                                 "    > tune tx 1 7442000 kHz\n"
                                 "         trace-level 2048 = -7\n"
                                 "         information: setTxFrequency 7442000 [FrequencyHandler.cpp]\n"
                                 "         trace-end\n"
                                 "         trace-level 2048 = -7\n"
                                 "         information: Write frequency to HW 7442000 for direction Tx "
                                 "[FrequencyHandler_RfModule.cpp]\n"
                                 "         trace-end\n"
                                 "  recorded: channel.1.tx.rf.frequency <- 7442025\n"
                                 "  now:      channel.1.tx.rf.frequency <- 7442000\n");
}

TEST_F(ReplayTest, CallThatTheRecordingDoesNotHaveIsNamed) {
    recordAndChange([](Slots& slots) { slots.remove(slots.find(Kind::driverWrite, 7442000)); });
    EXPECT_EQ(saidOfTheChange(), "changed: different after 32 calls\n"
                                 "  in operation 8: tune tx 1 7442000 kHz\n"
                                 "         temperature-register\n"
                                 "    > observe tx 1\n"
                                 "    > observe tx 1 as a C client\n"
                                 "    > tune tx 1 7442000 kHz\n"
                                 "         trace-level 2048 = -7\n"
                                 "         information: setTxFrequency 7442000 [FrequencyHandler.cpp]\n"
                                 "         trace-end\n"
                                 "         trace-level 2048 = -7\n"
                                 "         information: Write frequency to HW 7442000 for direction Tx "
                                 "[FrequencyHandler_RfModule.cpp]\n"
                                 "         trace-end\n"
                                 "  recorded: tx 1 told its observer: 7442000 kHz\n"
                                 "  now:      channel.1.tx.rf.frequency <- 7442000\n"
                                 "  The library asks for more: the recording has no answer to it.\n");
}

TEST_F(ReplayTest, CallThatIsMadeNoMoreIsNamed) {
    recordAndChange([](Slots& slots) { slots.repeat(slots.find(Kind::observerTold, 7442000)); });
    EXPECT_THAT(saidOfTheChange(), EndsWith("         tx 1 told its observer: 7442000 kHz\n"
                                            "  recorded: tx 1 told its observer: 7442000 kHz\n"
                                            "  now:      tx 1 told its C observer: 7442000 kHz\n"));
}

TEST_F(ReplayTest, OtherAnswerOfAnOperationIsNamed) {
    recordAndChange([](Slots& slots) {
        slots.at(slots.find(Kind::finished, static_cast<std::int32_t>(Kind::setTx))).code = 0x8000;
    });
    EXPECT_THAT(saidOfTheChange(), EndsWith("  recorded: the operation was over and answered 0x8000\n"
                                            "  now:      the operation was over and answered 0x0\n"));
}

TEST_F(ReplayTest, OperationThatEndsSoonerIsNamed) {
    recordAndChange([](Slots& slots) {
        const std::size_t end = slots.find(Kind::finished, static_cast<std::int32_t>(Kind::setTx));
        const Recording::Slot write = slots.at(slots.find(Kind::driverWrite, 7442000));
        slots.repeat(end);
        slots.at(end) = write;
    });
    EXPECT_THAT(saidOfTheChange(), EndsWith("  recorded: channel.1.tx.rf.frequency <- 7442000\n"
                                            "  now:      the operation was over and answered 0x0\n"));
}

TEST(ReplayVerdict, ProcessThatSaidNothingHasCrashed) {
    const auto verdict = Radio::Replaying::readVerdict("radio.rec", "", -11);
    EXPECT_EQ(verdict.outcome, Radio::Replaying::Outcome::different);
    EXPECT_EQ(verdict.difference, Radio::Replaying::Difference::crash);
    EXPECT_EQ(verdict.signal, 11);
}

TEST(ReplayVerdict, WhatTheLibraryDidIsRead) {
    const auto verdict = Radio::Replaying::readVerdict(
        "radio.rec", "outcome different\nwhy call\ncalls 5\nat 12\nnow 41 0 0 7 1 0 1 0\nnow_name a.b\n", 1);
    EXPECT_EQ(verdict.difference, Radio::Replaying::Difference::call);
    EXPECT_EQ(verdict.calls, 5U);
    EXPECT_EQ(verdict.at, 12U);
    EXPECT_EQ(verdict.now.kind, Kind::driverWrite);
    EXPECT_EQ(verdict.now.a, 7);
    EXPECT_EQ(verdict.now.b, 1);
    EXPECT_EQ(verdict.object->name, "a.b");
}

TEST_F(ReplayTest, FileThatIsNoRecordingIsRefused) {
    write("text", "no recording");
    const Ending ending = replay("text");
    EXPECT_EQ(ending.exitCode, 3);
    EXPECT_THAT(ending.errors, HasSubstr("text"));
    EXPECT_EQ(replay("nowhere").exitCode, 3);
}

TEST_F(ReplayTest, ManyAreToldInTheirOrderAndSummedUp) {
    recordAndChange([](Slots& slots) { slots.at(slots.find(Kind::driverWrite, 7442000)).a = 1; });
    const Ending good = replay("--jobs 2 recording recording recording");
    EXPECT_THAT(good.output,
                MatchesRegex("(recording: identical, [0-9]+ calls\n){3}"
                             "3 recordings: 3 identical, 0 identical up to a gap, 0 different, 0 unusable; "
                             "[0-9]+ calls\n"));
    EXPECT_EQ(good.exitCode, 0);
    const Ending mixed = replay("recording changed recording");
    EXPECT_THAT(mixed.output, AllOf(StartsWith("recording: identical, "), HasSubstr("\nchanged: different "),
                                    HasSubstr("3 recordings: 2 identical, 0 identical up to a gap, "
                                              "1 different, 0 unusable; ")));
    EXPECT_EQ(mixed.exitCode, 1);
    EXPECT_EQ(replay("changed nowhere recording").exitCode, 3);
}

TEST_F(ReplayTest, RingThatHasTurnedOverIsReplayedUpToTheGap) {
    recorded(radio("tune 5000"), "RADIO_RECORDING_SIZE=64K");
    const Ending ending = replay("recording");
    EXPECT_THAT(ending.output, MatchesRegex("recording: identical up to the gap, [0-9]+ calls of [0-9]+\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(ReplayTest, JsonHasAnEventForEachAndOneForAll) {
    recordAndChange([](Slots& slots) { slots.at(slots.find(Kind::driverWrite, 7442000)).a = 7442025; });
    const Ending ending = replay("--json recording changed");
    EXPECT_THAT(ending.output, HasSubstr(R"({"schema":1,"event":"replayed_recording","file":"recording",)"
                                         R"("outcome":"identical",)"));
    EXPECT_THAT(ending.output, HasSubstr(R"("difference":"call")"));
    EXPECT_THAT(ending.output, HasSubstr(R"({"schema":1,"event":"replayed_recordings","recordings":2,)"
                                         R"("identical":1,"identical_until_gap":0,"different":1,)"
                                         R"("unusable":0,)"));
    EXPECT_EQ(ending.exitCode, 1);
}
