#include "radio/recording/RecordingFile.h"

#include "radio/files/InputError.h"
#include "radio/recording/RecordingWords.h"
#include "tests/radio/support/MadeUpRecording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Radio::Recordings {

namespace {

using testing::ElementsAre;

constexpr auto driver = ObjectKind::driver;
constexpr auto module = ObjectKind::module;

RecordingFile read(const MadeUpRecording& recording) {
    return {recording.bytes(), "a.rec"};
}

/** What the reader says of bytes that no recorder wrote; "" when it reads them to the end. */
std::string complaintAbout(const std::string& bytes) {
    try {
        RecordingFile file(bytes, "a.rec");
        while (file.next()) {
        }
        return "";
    } catch (const InputError& error) {
        return error.what();
    }
}

/** A name in slots 0 and 1, and a record in slot 0 of those behind the 8 of names. */
MadeUpRecording small() {
    MadeUpRecording recording(8, 4, 4);
    recording.name(driver, 1, "channel.2.tx.rf.frequency");
    recording.record(Kind::driverWrite, 1, 0, 7442000);
    return recording;
}

std::string withWord(const MadeUpRecording& recording, std::size_t at, std::uint32_t number) {
    return MadeUpRecording(recording).word(at, number).bytes();
}

std::vector<std::int32_t> valuesIn(RecordingFile& file) {
    std::vector<std::int32_t> values;
    while (const auto record = file.next()) {
        values.push_back(record->a);
    }
    return values;
}

} // namespace

TEST(RecordingFile, RecordHasWhatWasWritten) {
    MadeUpRecording made(8, 4, 4);
    made.name(driver, 1, "channel.2.tx.rf.frequency");
    made.record(Kind::driverWriteBuffer, 1, 0x8001, 8, 1, 0, 0, 3, "12345678");
    RecordingFile file = read(made);
    const auto record = file.next();
    ASSERT_TRUE(record);
    EXPECT_EQ(record->sequence, 0U);
    EXPECT_EQ(record->kind, Kind::driverWriteBuffer);
    EXPECT_EQ(record->thread, 1U);
    EXPECT_EQ(record->depth, 3U);
    EXPECT_EQ(record->object->name, "channel.2.tx.rf.frequency");
    EXPECT_EQ(record->outcome, Outcome::returned);
    EXPECT_EQ(record->code, 0x8001);
    EXPECT_EQ(record->a, 8);
    EXPECT_EQ(record->b, 1);
    EXPECT_EQ(record->bytes, "12345678");
    EXPECT_FALSE(file.next());
}

TEST(RecordingFile, HeaderSaysWhatIsRecorded) {
    MadeUpRecording made(8, 4, 4);
    made.text(::Recording::At::unit, "unit 7").text(::Recording::At::machine, "arm");
    made.word(::Recording::At::buildIdLength, 2).text(::Recording::At::buildId, "\x0A\xF1");
    const RecordingFile file = read(made);
    EXPECT_EQ(file.header().version, 1U);
    EXPECT_EQ(file.header().wordBits, 32U);
    EXPECT_EQ(file.header().unit, "unit 7");
    EXPECT_EQ(file.header().board, "");
    EXPECT_EQ(file.header().machine, "arm");
    EXPECT_EQ(file.header().buildId, "0af1");
}

TEST(RecordingFile, CarrierAndTimeHave64Bits) {
    MadeUpRecording made(8, 4, 4);
    made.record(Kind::setTx, 0, 0, -1, 1, 2, 3);
    const auto record = read(made).next();
    EXPECT_EQ(record->carrier(), 0x1FFFFFFFFU);
    EXPECT_EQ(record->nanoseconds(), 0x300000002U);
}

TEST(RecordingFile, BeginningStaysAndTheRingHasTheNewest) {
    MadeUpRecording made(8, 2, 4);
    for (std::int32_t value = 0; value < 13; ++value) {
        made.record(Kind::driverWrite, 0, 0, value);
    }
    RecordingFile file = read(made);
    EXPECT_THAT(valuesIn(file), ElementsAre(0, 1, 9, 10, 11, 12));
    EXPECT_EQ(file.losses().overwritten, 7U);
    EXPECT_EQ(file.losses().unfinished, 0U);
}

TEST(RecordingFile, OldestOfTheRingMayHaveLostItsHead) {
    MadeUpRecording made(8, 2, 4);
    made.record(Kind::driverWrite, 0, 0, 0);
    made.record(Kind::driverWrite, 0, 0, 1);
    made.record(Kind::driverWriteBuffer, 0, 0, 2, 0, 0, 0, 0, "ab"); // slots 2 and 3
    made.record(Kind::driverWrite, 0, 0, 3);
    made.record(Kind::driverWrite, 0, 0, 4);
    made.record(Kind::driverWrite, 0, 0, 5); // in the place of slot 2
    RecordingFile file = read(made);
    EXPECT_THAT(valuesIn(file), ElementsAre(0, 1, 3, 4, 5));
    EXPECT_EQ(file.losses().unfinished, 0U);
}

TEST(RecordingFile, SlotThatWasNotFinishedIsPassedOver) {
    MadeUpRecording made(8, 4, 4);
    made.record(Kind::driverWrite, 0, 0, 0);
    made.record(Kind::driverWrite, 0, 0, 1);
    made.record(Kind::driverWrite, 0, 0, 2);
    made.word(made.offsetOf(1), 0);
    RecordingFile file = read(made);
    EXPECT_THAT(valuesIn(file), ElementsAre(0, 2));
    EXPECT_EQ(file.losses().unfinished, 1U);
}

TEST(RecordingFile, RecordWhoseBytesAreNotAllThereIsPassedOver) {
    MadeUpRecording made(8, 4, 4);
    made.record(Kind::driverWriteBuffer, 0, 0, 2, 0, 0, 0, 0, "ab");
    made.record(Kind::driverWrite, 0, 0, 1);
    made.word(made.offsetOf(1), 0);
    RecordingFile file = read(made);
    EXPECT_THAT(valuesIn(file), ElementsAre(1));
    EXPECT_EQ(file.losses().unfinished, 2U);
}

TEST(RecordingFile, CanBeReadAgain) {
    MadeUpRecording made(8, 1, 2);
    for (std::int32_t value = 0; value < 5; ++value) {
        made.record(Kind::driverWrite, 0, 0, value);
    }
    RecordingFile file = read(made);
    EXPECT_THAT(valuesIn(file), ElementsAre(0, 3, 4));
    file.rewind();
    EXPECT_THAT(valuesIn(file), ElementsAre(0, 3, 4));
    EXPECT_EQ(file.losses().overwritten, 2U);
}

TEST(RecordingFile, WhatIsNoRecordingIsRefusedAtItsByte) {
    EXPECT_EQ(complaintAbout(""), "a.rec: at byte 0: expected the word \"RADIOREC\" of a recording");
    EXPECT_EQ(complaintAbout("RADIOREC"), "a.rec: at byte 8: expected a header of 4096 bytes");
    EXPECT_EQ(complaintAbout(withWord(small(), 8, 2)), "a.rec: at byte 8: expected version 1, found 2");
    EXPECT_EQ(complaintAbout(withWord(small(), 12, 0x04030201)),
              "a.rec: at byte 12: expected little-endian numbers");
    EXPECT_EQ(complaintAbout(withWord(small(), 16, 31)),
              "a.rec: at byte 16: expected 32 or 64 bits, found 31");
    EXPECT_EQ(complaintAbout(withWord(small(), 20, 64)), "a.rec: at byte 20: expected slots of 32 bytes");
    EXPECT_EQ(complaintAbout(withWord(small(), 24, 9)),
              "a.rec: at byte 4608: expected 4640 bytes of 17 slots");
    EXPECT_EQ(complaintAbout(withWord(small(), 32, 3)), "a.rec: at byte 32: expected a power of two");
    EXPECT_EQ(complaintAbout(withWord(small(), 32, 0)), "a.rec: at byte 32: expected a power of two");
    EXPECT_EQ(complaintAbout(withWord(small(), 52, 0x40000000)),
              "a.rec: at byte 48: expected fewer slots than any radio lives to claim");
    EXPECT_EQ(complaintAbout(withWord(small(), 56, 9)),
              "a.rec: at byte 56: expected at most 8 slots of names");
    EXPECT_EQ(complaintAbout(withWord(small(), 64, 45)),
              "a.rec: at byte 64: expected at most 44 bytes of build id");
    EXPECT_EQ(complaintAbout(small().bytes().substr(0, 4607)),
              "a.rec: at byte 4607: expected 4608 bytes of 16 slots");
}

TEST(RecordingFile, NamesThatNobodyWritesAreRefused) {
    // Kind 14, no thread, no depth, one slot behind it; then the name's number 0; then one of 29 bytes.
    EXPECT_EQ(complaintAbout(withWord(small(), 4100, 0x0100000E)),
              "a.rec: at byte 4100: expected a kind of object, found 14");
    EXPECT_EQ(complaintAbout(withWord(small(), 4104, 0x00190000)),
              "a.rec: at byte 4104: expected the number of an object, found 0");
    EXPECT_EQ(complaintAbout(withWord(small(), 4104, 0x001D0001)),
              "a.rec: at byte 4103: expected as many slots as a name of 29 bytes takes");
    EXPECT_EQ(complaintAbout(withWord(small(), 4128, 0)), "a.rec: at byte 4128: expected the name to go on");
    EXPECT_EQ(complaintAbout(small().name(driver, 1, "again").bytes()),
              "a.rec: at byte 4096: expected each number of an object once, found 1 twice");
}

TEST(RecordingFile, RecordsThatNobodyWritesAreRefused) {
    // The record lies behind 8 slots of names, at byte 4352.
    EXPECT_EQ(complaintAbout(withWord(small(), 4356, 0x000001FF)),
              "a.rec: at byte 4356: expected a kind of record, found 255");
    EXPECT_EQ(complaintAbout(withWord(small(), 4360, 2)),
              "a.rec: at byte 4360: expected the number of an object, found 2");
    EXPECT_EQ(complaintAbout(withWord(small(), 4360, 0x00040001)),
              "a.rec: at byte 4362: expected an outcome, found 4");
    EXPECT_EQ(complaintAbout(withWord(small(), 4360, 0x00100001)),
              "a.rec: at byte 4359: expected as many slots as 1 bytes take");
    EXPECT_EQ(
        complaintAbout(MadeUpRecording(8, 4, 4).record(Kind::driverWrite, 0, 0, 0, 0, 0, 0, 0, "x").bytes()),
        "a.rec: at byte 4362: expected as many bytes as the kind 41 has, found 1");
    // Two phases take 8 bytes, and there are whole ones only.
    EXPECT_EQ(complaintAbout(MadeUpRecording(8, 4, 4)
                                 .record(Kind::moduleRegister, 0, 0, 19000, 2, 0, 0, 0, "1234567")
                                 .bytes()),
              "a.rec: at byte 4362: expected as many bytes as the kind 55 has, found 7");
    EXPECT_EQ(
        complaintAbout(
            MadeUpRecording(8, 4, 4).record(Kind::callbackRegister, 0, 0, 0, 0, 0, 0, 0, "12345").bytes()),
        "a.rec: at byte 4362: expected as many bytes as the kind 58 has, found 5");
    EXPECT_EQ(complaintAbout(MadeUpRecording(8, 4, 4).record(Kind::finished, 0, 0, 31).bytes()),
              "a.rec: at byte 4368: expected the kind of what has ended, found 31");
    EXPECT_EQ(complaintAbout(MadeUpRecording(8, 4, 4)
                                 .record(Kind::calibrate, 0, 0, 0, 0, 0, 0, 0, "", Outcome::unwound)
                                 .bytes()),
              "a.rec: at byte 4362: expected the beginning of an operation, without an outcome, found 3");
    EXPECT_EQ(
        complaintAbout(MadeUpRecording(8, 4, 4)
                           .record(Kind::variableContent, 0, 0, 0, 0, 0, 0, 0, "", Outcome::threwSomething)
                           .bytes()),
        "a.rec: at byte 4362: expected a content, without an outcome, found 2");
}

TEST(RecordingFile, CallThatDidNotReturnHasTheTextOfItsExceptionOrNothing) {
    const auto ended = [](Kind kind, Outcome outcome) {
        return complaintAbout(
            MadeUpRecording(8, 4, 4).record(kind, 0, 0, 0, 0, 0, 0, 0, "12345", outcome).bytes());
    };
    const std::string tooMany = "a.rec: at byte 4362: expected as many bytes as the kind ";
    EXPECT_EQ(ended(Kind::driverWrite, Outcome::threwException), "");
    EXPECT_EQ(ended(Kind::driverWrite, Outcome::threwSomething), tooMany + "41 has, found 5");
    EXPECT_EQ(ended(Kind::driverWriteBuffer, Outcome::unwound), tooMany + "42 has, found 5");
    // The text was written before its stream ended it.
    EXPECT_EQ(ended(Kind::traceMessage, Outcome::threwSomething), "");
    EXPECT_EQ(ended(Kind::traceMessage, Outcome::unwound), "");
}

TEST(RecordingFile, WhatIsNoFileIsNotOpened) {
    const std::string pipe = testing::TempDir() + "recording-pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    try {
        static_cast<void>(readRecording(pipe));
        ADD_FAILURE() << "it was read";
    } catch (const InputError& error) {
        EXPECT_EQ(error.what(), pipe + ": is no file, expected a recording");
    }
    static_cast<void>(unlink(pipe.c_str()));
}

TEST(RecordingFile, RecordIsFoundByItsNumber) {
    MadeUpRecording made(8, 4, 4);
    made.record(Kind::driverWriteBuffer, 0, 0, 2, 0, 0, 0, 0, "ab");
    made.record(Kind::driverWrite, 0, 0, 7);
    const RecordingFile file = read(made);
    EXPECT_EQ(file.at(0).bytes, "ab");
    EXPECT_EQ(file.at(0).slots(), 2U);
    EXPECT_EQ(file.at(2).a, 7);
    EXPECT_EQ(file.at(2).slots(), 1U);
}

TEST(RecordingWords, EveryKindHasAWord) {
    for (int kind = 1; kind <= static_cast<int>(::Recording::lastKind); ++kind) {
        const bool isOne = kind <= static_cast<int>(Kind::compensationCarrier) ||
                           kind == static_cast<int>(Kind::finished) ||
                           kind >= static_cast<int>(Kind::driverLookup);
        EXPECT_EQ(toString(static_cast<Kind>(kind)).empty(), !isOne) << kind;
    }
    for (int kind = 1; kind <= static_cast<int>(::Recording::lastObjectKind); ++kind) {
        EXPECT_NE(toString(static_cast<ObjectKind>(kind)), "") << kind;
    }
}

TEST(RecordingWords, ChannelIsThatOfTheNameOrOfTheOwner) {
    MadeUpRecording made(64, 4, 4);
    made.name(driver, 1, "channel.2.tx.rf.frequency");
    made.name(ObjectKind::table, 2, "Channel.3.Tx.Table");
    made.name(ObjectKind::variable, 3, "TxIfBb");
    made.name(module, 4, "FrequencyHandler", 5, 1);
    made.name(ObjectKind::handler, 5, "IFrequencyHandler_Tx_6");
    made.name(ObjectKind::handler, 6, "IFrequencyHandler_Rx");
    made.name(ObjectKind::observer, 7, "", 5, 0);
    made.name(ObjectKind::temperatureObserver, 8, "", 4);
    made.name(ObjectKind::callback, 9, "OnPhaseActivation", 83007);
    made.name(ObjectKind::interface, 10, "IRauHandler_8");
    made.name(ObjectKind::interface, 11, "IDriverLayer");
    // Owners in a circle, which no recorder writes.
    made.name(ObjectKind::observer, 12, "", 12, 0);
    const RecordingFile file = read(made);
    std::vector<std::optional<int>> channels;
    for (const Object& object : file.objects()) {
        channels.push_back(channelOf(file, object));
    }
    EXPECT_THAT(channels, ElementsAre(2, 3, std::nullopt, 5, 6, 0, 6, 5, 7, 8, std::nullopt, std::nullopt));
}

} // namespace Radio::Recordings
