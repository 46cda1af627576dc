// Recordings that are lived again: as they were made, and changed by hand.

#include "radioctl/replay/Verdict.h"
#include "tests/recording/RecordedProcess.h"

#include <algorithm>
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
        m_slots.resize(static_cast<std::size_t>(claimed));
        std::memcpy(m_slots.data(), &m_bytes[m_begin], m_slots.size() * Recording::slotBytes);
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
    std::size_t count() const { return m_slots.size(); }
    /** The first that tells of `kind`, and what follows it. */
    Recording::Slot* first(Kind kind) {
        const auto found = std::find_if(m_slots.begin(), m_slots.end(), [&](const Recording::Slot& slot) {
            return slot.kind == static_cast<std::uint8_t>(kind) && (slot.commit & 0x40000000U) == 0;
        });
        if (found == m_slots.end()) {
            throw std::runtime_error("there is no such record");
        }
        return &*found;
    }
    Recording::Slot& at(std::size_t place) { return m_slots[place]; }
    void remove(std::size_t place) { m_slots.erase(m_slots.begin() + static_cast<std::ptrdiff_t>(place)); }
    void repeat(std::size_t place) {
        const Recording::Slot copy = m_slots[place];
        m_slots.insert(m_slots.begin() + static_cast<std::ptrdiff_t>(place), copy);
    }

    /** Nothing is behind the first that `isLast` holds for. */
    void cutBehind(const std::function<bool(const Recording::Slot&)>& isLast) {
        const auto last = std::find_if(m_slots.begin(), m_slots.end(), isLast);
        m_slots.erase(last != m_slots.end() ? last + 1 : last, m_slots.end());
    }
    void append(const Recording::Slot& slot) { m_slots.push_back(slot); }
    void setPassedOver(std::uint32_t count) {
        std::memcpy(&m_bytes[Recording::At::passedOver], &count, sizeof count);
    }
    /** The slot at `place` is never finished. */
    void leaveUnfinished(std::size_t place) { m_unfinished = place; }

    /** The recording with them, numbered anew. */
    std::string bytes() {
        for (std::size_t place = 0; place < m_slots.size(); ++place) {
            std::uint32_t& commit = m_slots[place].commit;
            commit = place == m_unfinished ? 0 : Recording::commitMark(place, (commit & 0x40000000U) != 0);
        }
        const std::uint64_t claimed = m_slots.size();
        std::memcpy(&m_bytes[Recording::At::claimed], &claimed, sizeof claimed);
        std::memset(&m_bytes[m_begin], 0, (m_slots.size() + 1) * Recording::slotBytes);
        std::memcpy(&m_bytes[m_begin], m_slots.data(), m_slots.size() * Recording::slotBytes);
        return m_bytes;
    }

private:
    std::string m_bytes;
    std::size_t m_begin;
    std::vector<Recording::Slot> m_slots;
    std::size_t m_unfinished = std::string::npos;
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

#ifdef FAULTY_LIBRARY
/** The library does what a radio would not survive. */
class FaultyReplayTest : public ReplayTest {
protected:
    FaultyReplayTest() { recorded(radio("tune 1")); }

    /** What comes of the recording when a module that is built ends in `fault`. */
    Ending replayWith(const std::string& fault, const std::string& words = "recording") const {
        return shell(std::string("env LD_PRELOAD=") + FAULTY_LIBRARY + " REPLAY_FAULT=" + fault,
                     std::string(RADIOCTL_PROGRAM) + " replay " + words);
    }
    /** The same, without times. */
    std::string saidOf(const std::string& fault, const std::string& words = "recording") const {
        const Ending ending = replayWith(fault, words);
        EXPECT_EQ(ending.exitCode, 1);
        EXPECT_EQ(ending.errors, "");
        return std::regex_replace(ending.output, std::regex("  \\([0-9]+\\.[0-9]{6} s\\)"), "");
    }

    static constexpr const char* inTheFirst = "recording: different after 1 call\n"
                                              "  in operation 1: build channel 1: rf-module\n"
                                              "    > build channel 1: rf-module\n"
                                              "  recorded: broker-instance\n"
                                              "  now:      ";
};
#endif

class ReplayedBoardTest : public ReplayTest, public testing::WithParamInterface<const char*> {};
/** A board, and how many calls it makes when all goes wrong. */
struct FaultyBoard {
    const char* board;
    const char* calls;
};
class FaultyBoardTest : public ReplayTest, public testing::WithParamInterface<FaultyBoard> {};
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
                         testing::Values("tune 3", "unit", "throw", "cancel", "phases", "fork"));

/** Arguments that a compensation gives its platform, each another one than it was. */
struct OtherArgument {
    Kind kind;
    void (*change)(Recording::Slot*);
};

class OtherArgumentTest : public ReplayTest, public testing::WithParamInterface<OtherArgument> {};

TEST_P(OtherArgumentTest, IsFound) {
    recorded(radio("compensate 1"));
    write("whole", contentOf("recording"));
    Slots slots(contentOf("recording"));
    GetParam().change(slots.first(GetParam().kind));
    write("changed", slots.bytes());
    EXPECT_THAT(replay("whole").output, StartsWith("whole: identical"));
    EXPECT_THAT(replay("changed").output, StartsWith("changed: different"));
}

INSTANTIATE_TEST_SUITE_P(
    All, OtherArgumentTest,
    testing::Values(OtherArgument{Kind::callbackRegister, [](Recording::Slot* slot) { slot->d = 1; }},
                    // The phase stands behind the commit word of what goes on from the record.
                    OtherArgument{Kind::callbackRegister, [](Recording::Slot* slot) { slot[1].kind = 5; }},
                    OtherArgument{Kind::brokerGet, [](Recording::Slot* slot) { slot->b = 0; }},
                    OtherArgument{Kind::brokerClose, [](Recording::Slot* slot) { slot->a = 0; }}));

TEST_F(ReplayTest, OtherModuleIsFound) {
    recordAndChange([](Slots& slots) { ++slots.first(Kind::moduleRegister)->a; });
    EXPECT_THAT(replay("changed").output, StartsWith("changed: different"));
    recordAndChange([](Slots& slots) { ++slots.first(Kind::moduleRegister)[1].kind; });
    EXPECT_THAT(replay("changed").output, StartsWith("changed: different"));
}

TEST_F(ReplayTest, OtherReservedWordOfAVariableIsFound) {
    recorded(board("microwave-hz-cs-offset-18ghz"));
    Slots slots(contentOf("recording"));
    slots.first(Kind::variableAddress)->c = 1;
    write("changed", slots.bytes());
    EXPECT_THAT(replay("changed").output, StartsWith("changed: different"));
}

TEST_F(ReplayTest, DriverLayerWithoutARecordIsLivedAsSuch) {
    recordAndChange([](Slots& slots) { slots.first(Kind::driverLayerRecord)->a = 0; });
    EXPECT_THAT(replay("changed").output, StartsWith("changed: different"));
}

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
    EXPECT_EQ(saidOfTheChange(), "changed: different after 34 calls\n"
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
    EXPECT_EQ(saidOfTheChange(), "changed: different after 34 calls\n"
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

// Each of these differs in something that the line of the call does not show.

TEST_F(ReplayTest, ChannelThatACObserverIsToldIsNamed) {
    recordAndChange([](Slots& slots) {
        std::size_t place = slots.find(Kind::observerTold, 7442000);
        while (slots.at(place).b == 0) {
            ++place; // that of a C client comes behind the other
        }
        slots.at(place).b = 2;
    });
    EXPECT_THAT(saidOfTheChange(),
                EndsWith("  recorded: tx 1 told its C observer: 7442000 kHz (channel 2)\n"
                         "  now:      tx 1 told its C observer: 7442000 kHz (channel 1)\n"));
}

TEST_F(ReplayTest, WayInWhichAnObserverOfTemperaturesRegistersIsNamed) {
    recordAndChange([](Slots& slots) { slots.at(slots.find(Kind::temperatureRegister, 0)).a = 1; });
    EXPECT_THAT(saidOfTheChange(), EndsWith("  recorded: temperature-register by its record\n"
                                            "  now:      temperature-register\n"));
}

TEST_F(ReplayTest, LevelOfAMessageIsNotTakenFromTheRecordedOne) {
    recordAndChange([](Slots& slots) { slots.at(slots.find(Kind::traceMessage, -7)).a = -8; });
    EXPECT_THAT(saidOfTheChange(), HasSubstr("\n  now:      level -7: "));
}

TEST_F(ReplayTest, WhatNobodyHasAnsweredHasNoAnswer) {
    recordAndChange([](Slots& slots) { slots.at(slots.find(Kind::traceLevel, 2048)).a = 2049; });
    EXPECT_THAT(saidOfTheChange(), EndsWith("  recorded: trace-level 2049 = -7\n"
                                            "  now:      trace-level 2048\n"));
}

#ifdef FAULTY_LIBRARY
TEST_F(FaultyReplayTest, CrashIsTheDifferenceWhereItHappens) {
    EXPECT_EQ(saidOf("address"), std::string(inTheFirst) +
                                     "the library ended the process with signal 11 (Segmentation fault)\n");
    EXPECT_EQ(saidOf("abort"),
              std::string(inTheFirst) + "the library ended the process with signal 6 (Aborted)\n");
}

TEST_F(FaultyReplayTest, CrashForWantOfStackIsToldFromAnotherStack) {
    EXPECT_EQ(saidOf("stack"), std::string(inTheFirst) +
                                   "the library ended the process with signal 11 (Segmentation fault)\n");
}

TEST_F(FaultyReplayTest, EndOfTheProcessThatNobodyCouldTellOfIsADifference) {
    EXPECT_EQ(saidOf("killed"), "recording: different after 0 calls\n"
                                "  now:      the library ended the process with signal 9 (Killed)\n");
    EXPECT_EQ(saidOf("exit"), "recording: different after 0 calls\n"
                              "  now:      the library ended the process with 0 without a report\n");
}

TEST_F(FaultyReplayTest, LibraryThatTurnsForEverDoesNotComeBack) {
    EXPECT_EQ(saidOf("turns", "--timeout 5 recording"),
              std::string(inTheFirst) + "the library does not come back\n");
}

TEST_F(FaultyReplayTest, LibraryThatWaitsForEverDoesNotComeBack) {
    EXPECT_EQ(saidOf("nothing", "--timeout 5 recording"),
              std::string(inTheFirst) + "the library does not come back\n");
}

TEST_F(FaultyReplayTest, CrashOfOneLeavesTheOthersAlone) {
    write("text", "no recording");
    const Ending ending = replayWith("address", "recording text recording");
    EXPECT_THAT(ending.output, EndsWith("\n3 recordings: 0 identical, 0 identical up to a gap, 2 different, "
                                        "0 stopped, 1 unusable; 2 calls\n"));
    EXPECT_THAT(ending.errors, StartsWith("radioctl: text: at byte 0: expected "));
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(FaultyReplayTest, CtrlCEndsWhatIsAtWorkAndTellsWhatWasDone) {
    // Nowhere is no recording; the others wait for ever.
    write("interrupt",
          "env --default-signal=INT LD_PRELOAD=" FAULTY_LIBRARY " REPLAY_FAULT=nothing " RADIOCTL_PROGRAM
          " replay --jobs 2 nowhere recording recording recording > output 2> errors &\n"
          "program=$!\n"
          "for turn in $(seq 200); do [ -s errors ] || sleep 0.05; done\n"
          "pgrep -P $program > children\n"
          "kill -INT $program\n"
          "wait $program\n"
          "code=$?\n"
          "for child in $(cat children); do kill -0 $child 2> still && exit 99; done\n"
          "exit $code\n");
    const int status = std::system(("cd " + directory().string() + "; sh interrupt").c_str());
    EXPECT_EQ(WEXITSTATUS(status), 130);
    EXPECT_NE(contentOf("children"), "");
    EXPECT_EQ(contentOf("output"), "1 recording: 0 identical, 0 identical up to a gap, 0 different, "
                                   "0 stopped, 1 unusable; 0 calls\n"
                                   "Interrupted: 1 of 4 recordings was replayed.\n");
}
#endif

TEST_F(ReplayTest, UnreadableOneAmongHundredsIsNamedAndTheOthersAreReplayed) {
    recorded(radio("tune 1"));
    for (int number = 100; number < 500; ++number) {
        std::filesystem::create_symlink("recording", directory() / (std::to_string(number) + ".rec"));
    }
    std::filesystem::remove(directory() / "300.rec");
    std::filesystem::create_directory(directory() / "300.rec");
    const Ending ending = replay("*.rec");
    EXPECT_THAT(ending.errors, MatchesRegex("radioctl: 300.rec: [^\n]*\n"));
    EXPECT_THAT(ending.output,
                AllOf(StartsWith("100.rec: identical, 44 calls\n101.rec: identical, 44 calls\n"),
                      HasSubstr("\n299.rec: identical, 44 calls\n301.rec: identical, 44 calls\n"),
                      EndsWith("\n400 recordings: 399 identical, 0 identical up to a gap, "
                               "0 different, 0 stopped, 1 unusable; 17556 calls\n")));
    EXPECT_EQ(ending.exitCode, 3);
}

TEST(ReplayVerdict, ProcessWhoseLibraryLacksSomethingIsNoDifference) {
    const auto verdict = Radio::Replaying::readVerdict("radio.rec", "", 127);
    EXPECT_EQ(verdict.outcome, Radio::Replaying::Outcome::unusable);
    EXPECT_EQ(verdict.reason, "radioctl-replay: cannot be carried out with the library beside it");
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
                MatchesRegex(
                    "(recording: identical, 44 calls\n){3}"
                    "3 recordings: 3 identical, 0 identical up to a gap, 0 different, 0 stopped, 0 unusable; "
                    "132 calls\n"));
    EXPECT_EQ(good.exitCode, 0);
    const Ending mixed = replay("recording changed recording");
    EXPECT_THAT(mixed.output, AllOf(StartsWith("recording: identical, "), HasSubstr("\nchanged: different "),
                                    HasSubstr("3 recordings: 2 identical, 0 identical up to a gap, "
                                              "1 different, 0 stopped, 0 unusable; ")));
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
    EXPECT_THAT(ending.output,
                HasSubstr(R"({"schema":1,"event":"replayed_recordings","recordings":2,)"
                          R"("identical":1,"identical_until_gap":0,"different":1,)"
                          R"("stopped":0,"unusable":0,"calls":78,"not_compared":0,"interrupted":false})"));
    EXPECT_EQ(ending.exitCode, 1);
}

// What was not compared

TEST_F(ReplayTest, CallOutsideOfEveryOperationIsSaidToBeNotCompared) {
    recordAndChange([](Slots& slots) {
        Recording::Slot write = slots.at(slots.find(Kind::driverWrite, 7442000));
        write.a = 99;
        write.depth = 0;
        slots.append(write);
    });
    const Ending ending = replay("changed changed");
    EXPECT_EQ(ending.output, "changed: identical, 44 calls, 1 not compared\n"
                             "changed: identical, 44 calls, 1 not compared\n"
                             "2 recordings: 2 identical, 0 identical up to a gap, 0 different, 0 stopped, "
                             "0 unusable; 88 calls, 2 not compared\n");
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(replay("--json changed").output,
                HasSubstr(R"("outcome":"identical","calls":44,"recorded_calls":45,"not_compared":1,)"));
}

TEST_F(ReplayTest, CallOfAnObjectWithoutANumberIsSaidToBeNotCompared) {
    recordAndChange([](Slots& slots) { slots.at(slots.find(Kind::driverWrite, 7442000)).object = 0; });
    EXPECT_EQ(replay("changed").output, "changed: identical, 43 calls, 1 not compared\n");
}

TEST_F(ReplayTest, WhatThereWasNoRoomForIsToldWithIdentityToo) {
    recordAndChange([](Slots& slots) { slots.setPassedOver(3); });
    const Ending ending = replay("changed");
    EXPECT_EQ(ending.output, "changed: identical, 44 calls\n"
                             "  The recording lacks 3 things for which it had no room; that can look like a "
                             "difference, and hide one.\n");
    EXPECT_EQ(ending.exitCode, 0);
    EXPECT_THAT(replay("--json changed").output, HasSubstr(R"("passed_over":3)"));
}

TEST_F(ReplayTest, RecordingWithoutACallIsNotIdentical) {
    recordAndChange([](Slots& slots) {
        for (std::size_t left = slots.count(); left-- > 0;) {
            slots.remove(left);
        }
    });
    const Ending ending = replay("changed changed");
    EXPECT_EQ(ending.output, "changed: stopped after 0 calls of 0: there is no call in it\n"
                             "changed: stopped after 0 calls of 0: there is no call in it\n"
                             "2 recordings: 0 identical, 0 identical up to a gap, 0 different, 2 stopped, "
                             "0 unusable; 0 calls\n");
    EXPECT_EQ(ending.exitCode, 3);
}

TEST_F(ReplayTest, GapBeforeTheFirstCallIsNotIdentical) {
    recordAndChange([](Slots& slots) { slots.leaveUnfinished(0); });
    const Ending ending = replay("changed");
    EXPECT_EQ(ending.output, "changed: stopped after 0 calls of 43: the gap is before the first call that "
                             "could be compared\n");
    EXPECT_EQ(ending.exitCode, 3);
}

// Boards for which things go wrong

namespace {

/** A life in which each interface is taken away in each way, and each operation of the platform fails. */
std::string lifeWithFaults(bool hasRemoteUnit) {
    const std::string life = "phase init\nphase storage\nphase frame-format\ntune tx 1 17975000\n"
                             "tune rx 1 19000000\ntemperature 40\ntune tx 1 7442000\ntemperature 10\n";
    std::string script;
    for (const char* const name : {"IDriverLayer", "ITemperatureHandler", "IRauHandler_1"}) {
        if (!hasRemoteUnit && std::string(name) == "IRauHandler_1") {
            continue; // the program has no such interface
        }
        for (const char* const state : {"absent", "null", "foreign", "null-record"}) {
            script += std::string("interface ") + name + " " + state + "\n" + life + "interface " + name +
                      " present\n" + life;
        }
    }
    for (const char* const operation :
         {"broker-lookup", "broker-open", "broker-get", "broker-close", "driver-lookup", "driver-write",
          "driver-write-buffer", "driver-read", "variable-get", "variable-address", "table-lookup",
          "table-linear", "table-bilinear", "temperature-register", "rau-tx", "rau-rx"}) {
        for (const char* const code : {"0x8001", "0x1", "0x8000"}) {
            script +=
                std::string("fault ") + operation + " " + code + " always\n" + life + "clear all\n" + life;
        }
    }
    return script;
}

} // namespace

TEST_P(FaultyBoardTest, IsIdentical) {
    write("script", lifeWithFaults(std::string(GetParam().board) == "rau-18ghz"));
    recorded(std::string(RADIOCTL_PROGRAM) + " run --trace off " + RADIO_BOARDS + "/" + GetParam().board +
                 ".toml script",
             "RADIO_RECORDING_SIZE=16M");
    const Ending ending = replay("recording");
    EXPECT_EQ(ending.output, std::string("recording: identical, ") + GetParam().calls + " calls\n");
    EXPECT_EQ(ending.exitCode, 0);
}

INSTANTIATE_TEST_SUITE_P(All, FaultyBoardTest,
                         testing::Values(FaultyBoard{"rf-module-7ghz", "6991"},
                                         FaultyBoard{"rau-18ghz", "6244"},
                                         FaultyBoard{"lo-leakage-18ghz", "17409"},
                                         FaultyBoard{"microwave-dsp-offset-80ghz", "18861"},
                                         FaultyBoard{"iq-compensation-18ghz", "24973"}),
                         [](const auto& tried) { return std::to_string(tried.index); });

// What becomes of the processes that replay

namespace {

/** radioctl with a script beside it in the place of the program that lives a recording. */
class ReplayersTest : public ReplayTest {
protected:
    void replaceReplayer(const std::string& script) const {
        const std::filesystem::path program = RADIOCTL_PROGRAM;
        std::filesystem::create_directory(directory() / "bin");
        std::filesystem::copy_file(program, directory() / "bin/radioctl");
        std::filesystem::create_directory_symlink(
            std::filesystem::canonical(program.parent_path() / "../lib"), directory() / "lib");
        write("bin/radioctl-replay", "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(directory() / "bin/radioctl-replay", std::filesystem::perms::owner_all);
    }
    Ending replayWith(const std::string& script, const std::string& words) const {
        replaceReplayer(script);
        return unrecorded("bin/radioctl replay " + words);
    }
};

constexpr const char* comesNotBack = "radio.rec: different after 0 calls\n"
                                     "  now:      the library does not come back\n";

} // namespace

TEST_F(ReplayersTest, WhatDoesNotSayThatItsTimeIsOverIsKilled) {
    const Ending ending = replayWith("sleep 60", "--timeout 1 radio.rec");
    EXPECT_EQ(ending.output, comesNotBack);
    EXPECT_EQ(ending.exitCode, 1);
}

TEST_F(ReplayersTest, WhatEndsWithoutAReportIsADifference) {
    const Ending ending = replayWith("exit 0", "radio.rec");
    EXPECT_EQ(ending.output, "radio.rec: different after 0 calls\n"
                             "  now:      the library ended the process with 0 without a report\n");
    EXPECT_EQ(ending.exitCode, 1);
}

TEST_F(ReplayersTest, FileThatHasChangedMeanwhileDoesNotEndTheOthers) {
    const Ending ending =
        replayWith("echo 'outcome different'; echo 'why call'; echo 'calls 5'; echo 'at 3'\n"
                   "echo 'now 41 0 0 7 0 0 1 0'",
                   "radio.rec radio.rec");
    const std::string one = "radio.rec: different after 5 calls\n"
                            "  now:      not told, since the file has changed: radio.rec: cannot be read: No "
                            "such file or directory\n";
    EXPECT_EQ(ending.output,
              one + one +
                  "2 recordings: 0 identical, 0 identical up to a gap, 2 different, 0 stopped, "
                  "0 unusable; 10 calls\n");
    EXPECT_EQ(ending.exitCode, 1);
}

TEST_F(ReplayersTest, FewerAtATimeWhenThereIsNoRoomForSoMany) {
    replaceReplayer("sleep 0.1; echo 'outcome identical'; echo 'calls 7'");
    std::string files;
    for (int file = 0; file < 20; ++file) {
        files += " radio.rec";
    }
    const Ending ending = shell("ulimit -n 16;", "bin/radioctl replay --jobs 200" + files);
    EXPECT_THAT(ending.output,
                EndsWith("\n20 recordings: 20 identical, 0 identical up to a gap, 0 different, "
                         "0 stopped, 0 unusable; 140 calls\n"));
    EXPECT_EQ(ending.exitCode, 0);
}

TEST_F(ReplayersTest, ReplayerEndsWhenRadioctlIsKilled) {
    replaceReplayer("echo $$ > pid.new; mv pid.new pid; exec sleep 1000");
    const Ending ending =
        shell("", "bin/radioctl replay radio.rec & radioctl=$!\n"
                  "for wait in $(seq 300); do [ -s pid ] && break; sleep 0.1; done\n"
                  "kill -KILL $radioctl\n"
                  "for wait in $(seq 100); do\n"
                  "    grep -qs '^State:[[:space:]]*[^Z]' /proc/$(cat pid)/status || exit 0\n"
                  "    sleep 0.1\n"
                  "done; exit 1; true");
    EXPECT_EQ(ending.exitCode, 0);
}

// The library ends the thread in the middle of the call, and nobody wrote the end of the operation.
TEST_F(ReplayTest, RecordingThatEndsWithACancelledCallIsLived) {
    recorded(radio("cancel"));
    Slots slots(contentOf("recording"));
    slots.cutBehind([](const Recording::Slot& slot) { return (slot.second & 15U) == 3; });
    write("changed", slots.bytes());
    EXPECT_EQ(replay("changed").output, "changed: identical, 33 calls\n");
}

TEST(ReplayVerdict, ProcessThatEndedWithoutAReportHasItsEnding) {
    const auto verdict = Radio::Replaying::readVerdict("radio.rec", "a line of the library\n", 3);
    EXPECT_EQ(verdict.difference, Radio::Replaying::Difference::crash);
    EXPECT_EQ(verdict.signal, 0);
    EXPECT_EQ(verdict.ending, 3);
}
