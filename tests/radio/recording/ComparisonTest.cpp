#include "radio/recording/Comparison.h"

#include "radio/files/InputError.h"
#include "radio/recording/RecordingWords.h"
#include "tests/radio/support/MadeUpRecording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Radio::Recordings {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Lines = std::vector<std::string>;

constexpr std::int32_t tx = static_cast<std::int32_t>(Kind::setTx);

/** Tunes module 1 to `khz`, which writes `value` to driver 2. */
MadeUpRecording& tune(MadeUpRecording& made, std::int32_t khz, std::int32_t value, std::int32_t code = 0) {
    made.record(Kind::setTx, 1, 0, khz);
    made.record(Kind::driverWrite, 2, code, value, 0, 0, 0, 1);
    return made.record(Kind::finished, 1, code, tx);
}

MadeUpRecording radio() {
    MadeUpRecording made(32, 64, 4);
    made.name(ObjectKind::module, 1, "FrequencyHandler", 1, 0);
    made.name(ObjectKind::driver, 2, "channel.1.tx.rf.frequency");
    return made;
}

/** What is compared, which has to stay where it is. */
struct Two {
    Two(const MadeUpRecording& one, const MadeUpRecording& other, const Wanted& wanted = {})
        : before(one.bytes(), "a.rec"),
          after(other.bytes(), "b.rec"),
          comparison(before, after, wanted) {}

    RecordingFile before;
    RecordingFile after;
    Comparison comparison;
};

std::string shown(const std::optional<Seen>& seen) {
    return !seen ? "-"
                 : std::string(toString(seen->record.kind)) + " " + std::to_string(seen->record.a) +
                       (seen->record.code != 0 ? "!" : "");
}

std::string shown(const Difference& difference) {
    return shown(difference.before) + " | " + shown(difference.after);
}

/** Operations that differ, each followed by its calls that do. */
Lines differences(const Two& two) {
    Lines lines;
    two.comparison.operations([&](const Difference& operation) {
        lines.push_back(shown(operation));
        two.comparison.calls(operation, [&](const Difference& call) {
            lines.push_back("  " + shown(call));
            return true;
        });
        return true;
    });
    return lines;
}

Lines differences(const MadeUpRecording& one, const MadeUpRecording& other, const Wanted& wanted = {}) {
    return differences(Two(one, other, wanted));
}

} // namespace

TEST(RecordingComparison, OneRecordingIsTheSame) {
    MadeUpRecording made = radio();
    tune(tune(made, 7442000, 1), 7442025, 2);
    const Two two(made, made);
    EXPECT_THAT(differences(two), IsEmpty());
    EXPECT_FALSE(two.comparison.operations().isDifferent());
    EXPECT_EQ(two.comparison.operations().same, 2U);
}

TEST(RecordingComparison, OtherValueIsADifferenceOfItsOperation) {
    MadeUpRecording before = radio();
    MadeUpRecording after = radio();
    tune(tune(tune(before, 7442000, 1), 7442025, 2), 7442050, 3);
    tune(tune(tune(after, 7442000, 1), 7442025, 9), 7442050, 3);
    const Two two(before, after);
    EXPECT_THAT(differences(two),
                ElementsAre("tune-tx 7442025 | tune-tx 7442025", "  driver-write 2 | driver-write 9"));
    EXPECT_EQ(two.comparison.operations().same, 2U);
    EXPECT_EQ(two.comparison.operations().different, 1U);
}

TEST(RecordingComparison, OtherAnswerIsADifference) {
    MadeUpRecording before = radio();
    MadeUpRecording after = radio();
    tune(before, 7442000, 1);
    tune(after, 7442000, 1, 0x8001);
    EXPECT_THAT(differences(before, after),
                ElementsAre("tune-tx 7442000 | tune-tx 7442000", "  driver-write 1 | driver-write 1!",
                            "  finished 7 | finished 7!"));
}

TEST(RecordingComparison, OperationThatOneHasAloneIsADifference) {
    MadeUpRecording before = radio();
    MadeUpRecording after = radio();
    tune(tune(before, 7442000, 1), 7442025, 2);
    tune(tune(tune(after, 7442000, 1), 7442010, 4), 7442025, 2);
    const Two two(before, after);
    EXPECT_THAT(differences(two),
                ElementsAre("- | tune-tx 7442010", "  - | driver-write 4", "  - | finished 7"));
    EXPECT_EQ(two.comparison.operations().onlyAfter, 1U);
    EXPECT_EQ(two.comparison.operations().onlyBefore, 0U);
}

TEST(RecordingComparison, OperationWithOtherArgumentsIsOneThatDiffers) {
    MadeUpRecording before = radio();
    MadeUpRecording after = radio();
    tune(before, 7442000, 1);
    tune(after, 7442025, 1);
    EXPECT_THAT(differences(before, after), ElementsAre("tune-tx 7442000 | tune-tx 7442025"));
}

TEST(RecordingComparison, TimesThreadsNumbersOfObjectsAndSourcesDoNotCount) {
    MadeUpRecording before(32, 64, 4);
    before.name(ObjectKind::module, 1, "FrequencyHandler", 1, 0);
    before.name(ObjectKind::driver, 2, "channel.1.tx.rf.frequency");
    before.name(ObjectKind::sourceFile, 3, "old/FrequencyHandler.cpp");
    before.record(Kind::setTx, 1, 0, 7442000, 0, 1000, 0);
    before.record(Kind::traceMessage, 3, 0, 4, 17, 0, 0, 1, "hello");
    before.record(Kind::driverRead, 2, 0, 5, 0, 77, 0, 1); // 77 stood in the place of the answer
    before.record(Kind::finished, 1, 0, tx, 0, 2000, 0);
    MadeUpRecording after(32, 64, 4);
    after.name(ObjectKind::sourceFile, 1, "FrequencyHandler.cpp");
    after.name(ObjectKind::driver, 3, "channel.1.tx.rf.frequency");
    after.name(ObjectKind::module, 5, "FrequencyHandler", 1, -1);
    after.record(Kind::setTx, 5, 0, 7442000, 0, 9000, 1);
    after.record(Kind::traceMessage, 1, 0, 4, 18, 0, 0, 1, "hello");
    after.record(Kind::driverRead, 3, 0, 5, 0, -1, 0, 1);
    after.record(Kind::finished, 5, 0, tx, 0, 9500, 1);
    EXPECT_THAT(differences(before, after), IsEmpty());
}

TEST(RecordingComparison, TextAndLevelOfAMessageCount) {
    MadeUpRecording before = radio();
    MadeUpRecording after = radio();
    before.record(Kind::traceMessage, 0, 0, 4, 0, 0, 0, 0, "hello");
    after.record(Kind::traceMessage, 0, 0, 4, 0, 0, 0, 0, "goodbye");
    EXPECT_THAT(differences(before, after), ElementsAre("trace-message 4 | trace-message 4"));
    MadeUpRecording louder = radio();
    louder.record(Kind::traceMessage, 0, 0, 7, 0, 0, 0, 0, "hello");
    EXPECT_THAT(differences(before, louder), ElementsAre("trace-message 4 | trace-message 7"));
}

TEST(RecordingComparison, ContentsAndCallsOutsideOfOperationsStandAlone) {
    MadeUpRecording before = radio();
    MadeUpRecording after = radio();
    before.name(ObjectKind::variable, 3, "ChannelSpacing");
    after.name(ObjectKind::variable, 3, "ChannelSpacing");
    tune(before.record(Kind::variableContent, 3, 0, 1, 0, 0, 0, 0, std::string("\x1B\0\0\0", 4)), 7442000, 1);
    tune(after.record(Kind::variableContent, 3, 0, 1, 0, 0, 0, 0, std::string("\x37\0\0\0", 4)), 7442000, 1);
    EXPECT_THAT(differences(before, after), ElementsAre("variable-content 1 | variable-content 1"));
}

TEST(RecordingComparison, HeadersAreComparedAndDoNotCount) {
    MadeUpRecording before = radio();
    MadeUpRecording after = radio();
    before.text(::Recording::At::library, "lib.so.1").text(::Recording::At::unit, "7");
    after.text(::Recording::At::library, "lib.so.2").word(::Recording::At::wordBits, 64);
    const Two two(before, after);
    Lines lines;
    for (const HeaderDifference& one : two.comparison.header()) {
        lines.push_back(one.what + ": " + one.before + " | " + one.after);
    }
    EXPECT_THAT(lines, ElementsAre("library: lib.so.1 | lib.so.2", "unit: 7 | ", "bits: 32 | 64"));
    EXPECT_FALSE(two.comparison.operations().isDifferent());
}

TEST(RecordingComparison, WhatOnlyOneRadioHasIsNamed) {
    MadeUpRecording before = radio();
    MadeUpRecording after = radio();
    before.name(ObjectKind::table, 3, "Channel.1.Tx.I").name(ObjectKind::variable, 4, "TxIfBb");
    after.name(ObjectKind::table, 3, "Channel.1.Tx.Q").name(ObjectKind::variable, 4, "TxIfBb");
    before.record(Kind::tableLookup, 3, 0, 1).record(Kind::variableGet, 4, 0, 1, 1, 140);
    after.record(Kind::tableLookup, 3, 0, 1).record(Kind::variableGet, 4, 0x8001);
    const Two two(before, after);
    Lines lines;
    for (const ObjectDifference& one : two.comparison.objects()) {
        lines.push_back((one.isInBefore ? "- " : "+ ") + std::string(toString(one.kind)) + " " + one.name +
                        (one.isAskedForByTheOther ? "?" : ""));
    }
    EXPECT_THAT(lines, ElementsAre("- variable TxIfBb?", "- table Channel.1.Tx.I", "+ table Channel.1.Tx.Q"));
}

TEST(RecordingComparison, OnlyWhatIsWantedCounts) {
    MadeUpRecording before = radio();
    MadeUpRecording after = radio();
    for (MadeUpRecording* const made : {&before, &after}) {
        const bool isBefore = made == &before;
        made->name(ObjectKind::driver, 3, "channel.2.tx.rf.frequency");
        made->record(Kind::setTx, 1, 0, 7442000, 0, 500000000);
        made->record(Kind::driverWrite, 2, 0, 1, 0, 0, 0, 1);
        made->record(Kind::driverWrite, 3, 0, isBefore ? 1 : 2, 0, 0, 0, 1);
        made->record(Kind::traceMessage, 0, 0, isBefore ? 1 : 2, 0, 0, 0, 1, "hello");
        made->record(Kind::finished, 1, 0, tx, 0, 600000000);
    }
    EXPECT_THAT(differences(before, after),
                ElementsAre("tune-tx 7442000 | tune-tx 7442000", "  driver-write 1 | driver-write 2",
                            "  trace-message 1 | trace-message 2"));
    EXPECT_THAT(differences(before, after, {1, "", {}, {}}),
                ElementsAre("tune-tx 7442000 | tune-tx 7442000", "  trace-message 1 | trace-message 2"));
    EXPECT_THAT(differences(before, after, {{}, "channel.2.tx.rf.frequency", {}, {}}),
                ElementsAre("tune-tx 7442000 | tune-tx 7442000", "  driver-write 1 | driver-write 2"));
    EXPECT_THAT(differences(before, after, {{}, "channel.1.tx.rf.frequency", {}, {}}), IsEmpty());
    EXPECT_THAT(differences(before, after, {{}, "", 0.6, {}}), IsEmpty());
    EXPECT_THAT(differences(before, after, {{}, "", {}, 0.4}), IsEmpty());
    EXPECT_EQ(Two(before, after, {{}, "", 0.6, {}}).comparison.operations().same, 0U);
}

TEST(RecordingComparison, OperationEndsWhereNewerRecordsTookThePlaceOfItsOwn) {
    MadeUpRecording made(32, 2, 2);
    made.name(ObjectKind::module, 1, "FrequencyHandler", 1, 0);
    made.name(ObjectKind::driver, 2, "channel.1.tx.rf.frequency");
    tune(tune(tune(made, 7442000, 1), 7442025, 2), 7442050, 3);
    // There are the first write, with its operation, and the last one, with its end.
    MadeUpRecording other = radio();
    other.record(Kind::setTx, 1, 0, 7442000);
    other.record(Kind::driverWrite, 2, 0, 1, 0, 0, 0, 1);
    const Two two(made, other);
    EXPECT_THAT(differences(two), ElementsAre("driver-write 3 | -", "finished 7 | -"));
    EXPECT_EQ(two.comparison.before().losses().overwritten, 5U);
    EXPECT_EQ(two.comparison.operations().same, 1U);
}

TEST(RecordingComparison, FileThatNoRecorderWroteIsRefused) {
    MadeUpRecording made = radio();
    tune(made, 7442000, 1);
    MadeUpRecording other(made);
    other.word(other.offsetOf(1) + 4, 0x000001FF);
    EXPECT_THROW(Two(made, other), InputError);
}

} // namespace Radio::Recordings
