// Recordings that are written record by record: what stands in no kept one.

#include "radio/description/Description.h"

#include "radio/board/BoardCheck.h"
#include "radio/board/BoardFile.h"
#include "radio/files/InputError.h"
#include "tests/radio/support/MadeUpRecording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Radio::Describing {

namespace {

using Recordings::Kind;
using Recordings::ObjectKind;
using Recordings::Outcome;
using testing::AllOf;
using testing::AnyOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr std::int32_t whole = 15;

/** A radio with RF modules, numbered by their channels: the objects of channel N are 10 N and above. */
class Radio {
public:
    Radio() : m_made(256, 2048, 4) { m_made.name(ObjectKind::interface, 1, "IDriverLayer"); }

    Radio& build(std::int32_t channel, std::int32_t type = 1) {
        const std::uint16_t first = number(channel);
        const std::string prefix = "channel." + std::to_string(channel);
        m_made.name(ObjectKind::module, first, "FrequencyHandler", channel, type);
        m_made.name(ObjectKind::driver, at(channel, 1), prefix + ".tx.rf.frequency");
        m_made.name(ObjectKind::driver, at(channel, 2), prefix + ".rx.rf.frequency");
        m_made.name(ObjectKind::temperatureObserver, at(channel, 3), "", first);
        m_made.name(ObjectKind::canceller, at(channel, 4), "ILoCancellation_" + std::to_string(channel));
        m_made.name(ObjectKind::handler, at(channel, 5), "IFrequencyHandler_Tx_" + std::to_string(channel));
        begin(Kind::construct, first, channel, type).end(Kind::construct, first);
        return *this;
    }
    /** Phase 11, with both drivers and the observer of temperatures. */
    Radio& init(std::int32_t channel) {
        begin(Kind::moduleInit, number(channel));
        call(Kind::brokerLookup, 1, 0, 1);
        call(Kind::driverLookup, at(channel, 1), 0, 1, whole);
        call(Kind::driverLookup, at(channel, 2), 0, 1, whole);
        call(Kind::temperatureRegister, at(channel, 3));
        return end(Kind::moduleInit, number(channel));
    }
    Radio& tune(std::int32_t channel, std::int32_t carrier) {
        begin(Kind::setTx, number(channel), carrier);
        call(Kind::driverWrite, at(channel, 1), 0, carrier);
        return end(Kind::setTx, number(channel));
    }
    Radio& tell(std::int32_t channel, std::int32_t degrees) {
        begin(Kind::temperature, at(channel, 3), degrees);
        return end(Kind::temperature, at(channel, 3));
    }

    Radio& begin(Kind kind, std::uint16_t object, std::int32_t a = 0, std::int32_t b = 0) {
        m_made.record(kind, object, 0, a, b, 0, 0, m_depth++);
        return *this;
    }
    Radio& end(Kind kind, std::uint16_t object, std::int32_t code = 0) {
        m_made.record(Kind::finished, object, code, static_cast<std::int32_t>(kind), 0, 0, 0, --m_depth);
        return *this;
    }
    Radio& call(Kind kind, std::uint16_t object, std::int32_t code = 0, std::int32_t a = 0,
                std::int32_t b = 0, std::int32_t c = 0) {
        m_made.record(kind, object, code, a, b, c, 0, m_depth);
        return *this;
    }
    MadeUpRecording& made() { return m_made; }

    static std::uint16_t number(std::int32_t channel) { return at(channel, 0); }
    static std::uint16_t at(std::int32_t channel, std::int32_t which) {
        return static_cast<std::uint16_t>(channel * 10 + which);
    }

    Description describe() const {
        Recordings::RecordingFile file(m_made.bytes(), "a.rec");
        return Describing::describe(file, "a.rec", "today");
    }
    std::string complaint() const {
        try {
            static_cast<void>(describe());
            return "";
        } catch (const InputError& error) {
            return error.what();
        }
    }
    /** The script from the start-up on. */
    std::string script() const {
        const std::string text = describe().script;
        return text.substr(text.find("\n\n") + 1);
    }

private:
    MadeUpRecording m_made;
    unsigned m_depth = 0;
};

constexpr const char* start = "\n# The start-up, which a run makes by itself.\n"
                              "expect result ok\n"
                              "expect writes 0\n";

std::vector<Finding> findingsOn(const Description& description) {
    return checkBoard(readBoard(description.board, "board.toml", [](const auto&) { return std::nullopt; }));
}

} // namespace

TEST(Description, RecordingWithoutAChannelIsRefused) {
    EXPECT_EQ(Radio().complaint(), "a.rec: no channel is in it: expected one that was built or initialised");
}

TEST(Description, ChannelWhoseTypeNothingTellsIsRefused) {
    EXPECT_EQ(Radio().build(1, -1).complaint(), "a.rec: nothing in it tells of which type its channels are");
}

TEST(Description, ChannelWhoseTypeNothingTellsIsLeftOutBesideOthers) {
    Radio radio;
    radio.build(1).build(2, -1).init(1).tune(1, 7442000);
    const Description description = radio.describe();
    EXPECT_EQ(description.channels, 1U);
    EXPECT_THAT(description.unknown, ElementsAre("the type of channel 2, which is left out"));
    EXPECT_THAT(findingsOn(description), IsEmpty());
}

TEST(Description, TypeIsThatWhichAsksForWhatWasAskedFor) {
    const Description description = Radio().build(1, -1).init(1).describe();
    EXPECT_THAT(description.board, HasSubstr("\ntype = \"rf-module\"\n"));
    EXPECT_THAT(description.unknown, ElementsAre("the type of channel 1, which was concluded"));
}

TEST(Description, UnitAndBoardAreSerialAndName) {
    Radio radio;
    radio.build(1).init(1);
    radio.made().text(::Recording::At::unit, "7-\"0042\"").text(::Recording::At::board, "C:\\radio");
    EXPECT_THAT(radio.describe().board, HasSubstr("\nname = \"C:\\\\radio\"\nserial = \"7-\\\"0042\\\"\"\n"));
    EXPECT_THAT(findingsOn(radio.describe()), IsEmpty());
}

TEST(Description, DriverIsWithoutWhatItsRecordLacks) {
    Radio radio;
    radio.build(1);
    radio.begin(Kind::moduleInit, 10)
        .call(Kind::driverLookup, 11, 0, 1, 3)
        .call(Kind::driverLookup, 12, 0x8001);
    radio.end(Kind::moduleInit, 10, 0x8000);
    EXPECT_THAT(radio.describe().board,
                HasSubstr("\n[drivers]\n"
                          "\"channel.1.tx.rf.frequency\" = { without = [\"write-buffer\", \"read\"] }\n"
                          "# Asked for, and not there:\n"
                          "#     channel.1.rx.rf.frequency\n"));
}

TEST(Description, DriverHasTheValueThatWasReadFirst) {
    Radio radio;
    radio.build(1).init(1).begin(Kind::cancel, 14);
    radio.call(Kind::driverRead, 12, 0, 396).call(Kind::driverRead, 12, 0, 411).end(Kind::cancel, 14);
    EXPECT_THAT(radio.describe().board,
                HasSubstr("\n\"channel.1.rx.rf.frequency\" = { value = 396 } # read 2 times, 396 to 411\n"));
}

TEST(Description, StartUpThatFailedIsExpectedTo) {
    Radio radio;
    radio.build(1).begin(Kind::moduleInit, 10).call(Kind::driverLookup, 11, 0x8001);
    radio.end(Kind::moduleInit, 10, 0x8000);
    EXPECT_EQ(radio.script(), "\n# The start-up, which a run makes by itself.\n"
                              "expect result failed\n"
                              "expect writes 0\n");
}

TEST(Description, TemperatureThatAllAreToldIsOneCommand) {
    Radio radio;
    radio.build(1).build(2).init(1).init(2).tell(1, 25).tell(2, 25);
    EXPECT_EQ(radio.script(), std::string(start) + "\ntemperature 25\nexpect writes 0\n");
}

TEST(Description, TemperatureThatSomeAreToldExpectsNothing) {
    Radio radio;
    radio.build(1).build(2).init(1).init(2).tell(2, 25);
    EXPECT_EQ(radio.script(), std::string(start) + "\n# It was told to 1 of 2; a run tells all of them.\n"
                                                   "temperature 25\n");
    EXPECT_THAT(radio.describe().unknown, ElementsAre("a command that is for some of the channels alone"));
}

TEST(Description, SameTemperatureAgainIsToldByWhatItWrote) {
    Radio radio;
    radio.build(1).init(1).tell(1, 25).begin(Kind::temperature, 13, 25);
    radio.call(Kind::driverWrite, 11, 0, 5).end(Kind::temperature, 13);
    EXPECT_THAT(
        radio.script(),
        EndsWith("\n# temperature, channel 1. The same temperature again, which a run tells nobody: what it "
                 "wrote is written past the library.\n"
                 "write channel.1.tx.rf.frequency 5\n"));
}

TEST(Description, WhatNoCommandDoesIsToldByWhatItWrote) {
    Radio radio;
    radio.build(1).init(1).begin(Kind::setRf, 15, 7442000);
    radio.call(Kind::driverWrite, 11, 0, 7442000).call(Kind::driverWrite, 12, 0x8001, 7603000);
    radio.end(Kind::setRf, 15);
    EXPECT_THAT(radio.script(),
                EndsWith("\n# tune-handler, channel 1. No command does it: what it wrote is written past the "
                         "library.\n"
                         "write channel.1.tx.rf.frequency 7442000\n"));
    EXPECT_THAT(radio.describe().unknown, ElementsAre("a command for tune-handler"));
}

TEST(Description, CarrierThatNoCommandTakesIsToldByWhatItWrote) {
    Radio radio;
    radio.build(1).init(1).begin(Kind::setTx, 10, 1, 1); // 2^32 + 1
    radio.call(Kind::driverWrite, 11, 0, 1).end(Kind::setTx, 10);
    EXPECT_THAT(
        radio.script(),
        EndsWith("\n# tune-tx, channel 1. No command tunes to 4294967297 kHz: what it wrote is written past "
                 "the library.\n"
                 "write channel.1.tx.rf.frequency 1\n"));
    EXPECT_THAT(
        radio.describe().board,
        HasSubstr("\n# No raster has the carriers of channel 1, transmitter: 4294967297 to 4294967297 "
                  "kHz.\n"));
}

// The last fault given decides until it has spent itself: the first two calls succeed, the third fails.
TEST(Description, CallThatFailsBehindOthersOfTheSameCommandFailsThere) {
    Radio radio;
    radio.build(1).init(1).begin(Kind::setTx, 10, 7442000);
    radio.call(Kind::driverWrite, 11, 0, 1).call(Kind::driverWrite, 11, 0, 2);
    radio.call(Kind::driverWrite, 11, 0x8001, 3).call(Kind::driverWrite, 11, 0, 4);
    radio.end(Kind::setTx, 10);
    EXPECT_THAT(radio.script(), EndsWith("\n"
                                         "fault driver-write channel.1.tx.rf.frequency 0x8001 once\n"
                                         "fault driver-write channel.1.tx.rf.frequency 0x0 2 times\n"
                                         "tune tx 1 7442000 kHz\n"
                                         "expect writes channel.1.tx.rf.frequency=1 "
                                         "channel.1.tx.rf.frequency=2 channel.1.tx.rf.frequency=4\n"));
}

TEST(Description, WhatIsDoneInsideSomethingElseStandsBehindIt) {
    Radio radio;
    radio.build(1).init(1).begin(Kind::setTx, 10, 7442000).call(Kind::driverWrite, 11, 0, 7442000);
    radio.tell(1, 30).end(Kind::setTx, 10);
    EXPECT_THAT(radio.script(), EndsWith("\ntune tx 1 7442000 kHz\n"
                                         "expect writes channel.1.tx.rf.frequency=7442000\n"
                                         "\n# It was done inside what stands before it.\n"
                                         "temperature 30\n"
                                         "expect writes 0\n"));
}

TEST(Description, WhatWasGoingOnAtTheEndExpectsNothing) {
    Radio radio;
    radio.build(1).init(1).begin(Kind::setTx, 10, 7442000).call(Kind::driverWrite, 11, 0, 7442000);
    EXPECT_THAT(radio.script(), EndsWith("\n# It was not over when the recording ends.\n"
                                         "tune tx 1 7442000 kHz\n"));
}

TEST(Description, ScriptEndsWhereAChannelIsBuiltOnceMore) {
    Radio radio;
    radio.build(1).init(1).tune(1, 7442000);
    radio.begin(Kind::construct, 10, 1, 1).end(Kind::construct, 10).tune(1, 7449000);
    EXPECT_THAT(radio.script(),
                AllOf(EndsWith("\n# Behind it channel 1 is built once more, which no script does.\n"),
                      Not(HasSubstr("7449000"))));
    EXPECT_THAT(radio.describe().unknown, ElementsAre("what was done after channel 1 was built once more"));
}

TEST(Description, BoardHasNothingOfWhatAChannelThatIsBuiltOnceMoreFinds) {
    Radio radio;
    radio.build(1).init(1);
    radio.made().name(ObjectKind::driver, 17, "channel.1.other");
    radio.begin(Kind::construct, 10, 1, 1).end(Kind::construct, 10);
    radio.begin(Kind::moduleInit, 10).call(Kind::driverLookup, 17, 0, 1, whole).end(Kind::moduleInit, 10);
    radio.build(2).init(2);
    const Description description = radio.describe();
    EXPECT_THAT(description.board, Not(AnyOf(HasSubstr("other"), HasSubstr("number = 2"))));
    EXPECT_EQ(description.channels, 1U);
    EXPECT_EQ(description.drivers, 2U);
}

TEST(Description, WhatTheStartUpDidNotFindIsNotThereAndEndsTheScript) {
    Radio radio;
    radio.build(1);
    radio.made().name(ObjectKind::table, 17, "Channel.1.Table");
    radio.begin(Kind::moduleInit, 10).call(Kind::tableLookup, 17, 0x8001);
    radio.call(Kind::driverLookup, 11, 0, 1, whole).call(Kind::driverLookup, 12, 0, 1, whole);
    radio.end(Kind::moduleInit, 10).tune(1, 7442000);
    radio.begin(Kind::setTx, 10, 7449000).call(Kind::tableLookup, 17, 0, 1).end(Kind::setTx, 10);
    const Description description = radio.describe();
    EXPECT_EQ(description.tables, 0U);
    EXPECT_THAT(description.board,
                HasSubstr("\n# Asked for, and not there: Channel.1.Table when the radio started; later it "
                          "was\n"));
    EXPECT_THAT(description.unknown, ElementsAre("Channel.1.Table, which the start-up did not find",
                                                 "what was done once there was Channel.1.Table"));
    EXPECT_EQ(radio.script(),
              std::string(start) +
                  "\ntune tx 1 7442000 kHz\nexpect writes channel.1.tx.rf.frequency=7442000\n"
                  "\n# Behind it there is Channel.1.Table, which the start-up did not find; no "
                  "script adds it.\n");
}

// A script can have the lookup of a command fail.
TEST(Description, WhatACommandDoesNotFindAtFirstIsThere) {
    Radio radio;
    radio.build(1).init(1);
    radio.made().name(ObjectKind::table, 17, "Channel.1.Table");
    radio.begin(Kind::setTx, 10, 7442000).call(Kind::tableLookup, 17, 0x8001).end(Kind::setTx, 10);
    radio.begin(Kind::setTx, 10, 7449000).call(Kind::tableLookup, 17, 0, 1).end(Kind::setTx, 10);
    EXPECT_EQ(radio.describe().tables, 1U);
    EXPECT_THAT(radio.script(), HasSubstr("\nfault table-lookup Channel.1.Table 0x8001 once\n"));
}

TEST(Description, OperationsOfThreadsStandInTheOrderInWhichTheyBegan) {
    Radio radio;
    radio.build(1).build(2).init(1).init(2).begin(Kind::setTx, 10, 7442000);
    // The second thread begins later and ends earlier.
    MadeUpRecording& made = radio.made();
    const auto onSecondThread = [&made](std::uint64_t slot) {
        made.word(made.offsetOf(slot) + 4, made.wordAt(made.offsetOf(slot) + 4) + 0x100);
    };
    const std::uint64_t next = made.claimed();
    made.record(Kind::setTx, 20, 0, 7477000);
    made.record(Kind::finished, 20, 0, static_cast<std::int32_t>(Kind::setTx));
    onSecondThread(next);
    onSecondThread(next + 1);
    radio.end(Kind::setTx, 10);
    EXPECT_EQ(radio.script(), std::string(start) + "\ntune tx 1 7442000 kHz\nexpect writes 0\n"
                                                   "\ntune tx 2 7477000 kHz\nexpect writes 0\n");
}

TEST(Description, TableThatGivesSomethingElseLaterIsToldOf) {
    Radio radio;
    radio.build(1).init(1);
    radio.made().name(ObjectKind::table, 17, "Channel.1.Table");
    radio.begin(Kind::setTx, 10, 7442000).call(Kind::tableLookup, 17, 0, 1);
    radio.call(Kind::tableLinear, 17, 0, 5, 50).call(Kind::tableLinear, 17, 0, 5, 51).end(Kind::setTx, 10);
    const Description description = radio.describe();
    EXPECT_THAT(description.board, HasSubstr("# Fitted from 2 answers at 1 place.\n"
                                             "# Other answers than the first one at the same place: 1.\n"
                                             "[tables.\"Channel.1.Table\"]\n"
                                             "axis = [5]\n"
                                             "values = [50]\n"));
    EXPECT_THAT(description.unknown, ElementsAre("that Channel.1.Table changed"));
}

TEST(Description, NameThatNoLibraryAsksForIsPassedOver) {
    Radio radio;
    radio.build(1).init(1);
    radio.made().name(ObjectKind::driver, 17, "a\nb = {}\n[x]");
    radio.begin(Kind::setTx, 10, 7442000).call(Kind::driverWrite, 17, 0, 1).end(Kind::setTx, 10);
    EXPECT_THAT(radio.describe().board, Not(HasSubstr("[x]")));
    EXPECT_THAT(radio.describe().unknown, ElementsAre("what has 1 name that nothing on a board can have"));
    EXPECT_THAT(radio.script(), EndsWith("\ntune tx 1 7442000 kHz\n"));
}

// How a platform writes its levels is its own: the library asks for one for most messages, and then says the
// answer.
TEST(Description, RemoteRadioUnitOfWhichTheLibraryComplainsIsForeign) {
    Radio radio;
    radio.build(1).init(1);
    radio.made().name(ObjectKind::interface, 2, "IRauHandler_1");
    radio.made().name(ObjectKind::interface, 3, "IRauHandler_2");
    radio.made().name(ObjectKind::interface, 4, "IRauHandler_3");
    radio.begin(Kind::moduleInit, 10);
    radio.call(Kind::brokerLookup, 2, 0, 1).call(Kind::traceMessage, 0, 0, 0x4, 30); // no level was asked for
    radio.call(Kind::brokerLookup, 3, 0, 1).call(Kind::traceLevel, 0, 0x800, 9);
    radio.call(Kind::traceMessage, 0, 0, 0x4, 30); // another one than it was answered
    radio.call(Kind::brokerLookup, 4, 0, 1).call(Kind::traceLevel, 0, 0x800, 9);
    radio.call(Kind::traceMessage, 0, 0, 0x800, 30).end(Kind::moduleInit, 10);
    EXPECT_THAT(radio.describe().board, HasSubstr("\n\"IRauHandler_1\" = \"foreign\"\n"
                                                  "\"IRauHandler_2\" = \"foreign\"\n"
                                                  "\"IRauHandler_3\" = \"present\"\n"));
}

TEST(Description, DriverLayerWithoutARecordIsSaidToBe) {
    Radio radio;
    radio.build(1).init(1).begin(Kind::moduleInit, 10);
    radio.call(Kind::brokerLookup, 1, 0, 1).call(Kind::driverLayerRecord, 0, 0, 0);
    radio.end(Kind::moduleInit, 10, 0x8000);
    EXPECT_THAT(radio.script(), EndsWith("\ninterface IDriverLayer null-record\n"
                                         "phase init\n"
                                         "expect result failed\n"
                                         "expect writes 0\n"));
}

TEST(Description, InterfaceThatIsAbsentForOneLookupExpectsNothing) {
    Radio radio;
    radio.build(1).init(1).begin(Kind::moduleInit, 10);
    radio.call(Kind::brokerLookup, 1, 0x8001).call(Kind::brokerLookup, 1, 0, 1);
    radio.end(Kind::moduleInit, 10, 0x8000);
    EXPECT_THAT(radio.script(),
                EndsWith("\n# IDriverLayer changed inside it, which no script does: nothing is expected.\n"
                         "interface IDriverLayer present\n"
                         "phase init\n"));
    EXPECT_THAT(radio.describe().unknown, ElementsAre("what changed inside a command"));
}

// A run stops at the first module that fails.
TEST(Description, PhaseThatWentOnBehindAFailureExpectsNoWrites) {
    Radio radio;
    radio.build(1).build(2).init(1).init(2);
    radio.begin(Kind::moduleInit, 10).end(Kind::moduleInit, 10, 0x8000).init(2);
    EXPECT_EQ(radio.script(), std::string(start) + "\n# It went on behind what failed; a run does not.\n"
                                                   "phase init\n"
                                                   "expect result failed\n");
}

TEST(Description, PhaseThatFailedForTheFirstChannelIsNotToldToTheOthers) {
    Radio radio;
    radio.build(1).build(2).init(1).init(2);
    radio.begin(Kind::moduleInit, 10).end(Kind::moduleInit, 10, 0x8000);
    EXPECT_EQ(radio.script(), std::string(start) + "\nphase init\nexpect result failed\nexpect writes 0\n");
}

TEST(Description, PhaseThatFailedForAnotherChannelAloneExpectsNoWrites) {
    Radio radio;
    radio.build(1).build(2).init(1).init(2);
    radio.begin(Kind::moduleInit, 20).end(Kind::moduleInit, 20, 0x8000);
    EXPECT_EQ(radio.script(), std::string(start) + "\n# It was told to 1 of 2; a run tells all of them.\n"
                                                   "phase init\nexpect result failed\n");
}

TEST(Description, StartUpOfSomeChannelsExpectsNoWrites) {
    Radio radio;
    radio.build(1).build(2).init(1).tune(1, 7442000);
    EXPECT_EQ(radio.script(), "\n# The start-up, which a run makes by itself.\n"
                              "# Not all channels were started; a run starts all of them.\n"
                              "expect result ok\n"
                              "\ntune tx 1 7442000 kHz\nexpect writes channel.1.tx.rf.frequency=7442000\n");
}

// The second channel has not registered its observer yet; that of a run has.
TEST(Description, TemperatureIsToldToAllChannelsOfTheBoard) {
    Radio radio;
    radio.build(1).build(2).init(1).tell(1, 25).init(2);
    EXPECT_THAT(radio.script(),
                HasSubstr("\n# It was told to 1 of 2; a run tells all of them.\ntemperature 25\n\n"));
}

TEST(Description, StartUpThatMetAFailureIsNotFollowedByExpectedWrites) {
    Radio radio;
    radio.build(1).begin(Kind::moduleInit, 10);
    radio.call(Kind::brokerLookup, 1, 0, 1).call(Kind::driverLookup, 11, 0, 1, whole);
    radio.call(Kind::driverLookup, 12, 0, 1, whole).call(Kind::temperatureRegister, 13, 0x8001);
    radio.end(Kind::moduleInit, 10).tune(1, 7442000);
    EXPECT_EQ(radio.script(),
              "\n# The start-up, which a run makes by itself.\n"
              "# It met answers that no script gives it: what is written is not expected from here on.\n"
              "expect result ok\n"
              "\ntune tx 1 7442000 kHz\n");
    EXPECT_THAT(radio.describe().unknown, ElementsAre("the answers that failed during the start-up"));
}

TEST(Description, ScriptEndsAtAStartUpThatFailedForWhatNoScriptSays) {
    Radio radio;
    radio.build(1).begin(Kind::moduleInit, 10);
    radio.call(Kind::brokerLookup, 1, 0, 1).call(Kind::driverLookup, 11, 0, 1, whole);
    radio.call(Kind::driverLookup, 12, 0, 1, whole).call(Kind::temperatureRegister, 13, 0x8001);
    radio.end(Kind::moduleInit, 10, 0x8000).tune(1, 7442000);
    EXPECT_EQ(radio.script(), "\n# The start-up, which a run makes by itself.\n"
                              "\n# It failed for answers that no script gives it; that of a run may not.\n");
}

TEST(Description, ClientThatIsRefusedHasNoCommand) {
    Radio radio;
    radio.build(1).init(1).begin(Kind::registerObserverC, 15).end(Kind::registerObserverC, 15, 0x8000);
    EXPECT_EQ(radio.script(), std::string(start) +
                                  "\n# A C client of channel 1 was refused, for which there is "
                                  "no command.\n");
    EXPECT_THAT(radio.describe().unknown, ElementsAre("a command for a C client that is refused"));
}

TEST(Description, BoardThatCheckRefusesIsNamed) {
    Radio radio;
    radio.build(1).begin(Kind::moduleInit, 10).call(Kind::driverLookup, 12, 0, 1, whole);
    radio.call(Kind::driverLookup, 11, 0x8001).end(Kind::moduleInit, 10, 0x8000);
    EXPECT_THAT(radio.describe().unknown,
                ElementsAre("a board that check accepts (driver \"channel.1.tx.rf.frequency\" is missing; "
                            "channel 1 (rf-module) cannot start without it)"));
}

TEST(Description, NamesStayAsTheyAreInUtf8) {
    Radio radio;
    radio.build(1).init(1);
    radio.made().text(::Recording::At::unit, "7-\xff").text(::Recording::At::board, "Hochf\xc3\xbchler");
    EXPECT_THAT(radio.describe().board,
                HasSubstr("\nname = \"Hochf\xc3\xbchler\"\nserial = \"7-\\\\xff\"\n"));
    EXPECT_THAT(findingsOn(radio.describe()), IsEmpty());
}

TEST(Description, ObserverThatThrewHasNoNameButIsCalledOne) {
    Radio radio;
    radio.build(1).init(1);
    radio.made().name(ObjectKind::observer, 17, "", 15);
    radio.begin(Kind::setTx, 10, 7442000);
    radio.made().record(Kind::observerTold, 17, 0, 7442000, 0, 0, 0, 1, "out of order",
                        Outcome::threwException);
    radio.end(Kind::setTx, 10);
    EXPECT_THAT(radio.script(), HasSubstr("\n# an observer threw \"out of order\": it fails"));
}

} // namespace Radio::Describing
