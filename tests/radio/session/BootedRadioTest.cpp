#include "radio/session/BootedRadio.h"

#include "radio/board/PlatformWords.h"
#include "tests/radio/support/PlanBoards.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Radio {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/** An RF module with one driver for each direction, for a test to spoil. */
class BootedRadioTest : public testing::Test {
protected:
    /** The message with which `action` gives up. */
    template <typename Action>
    static std::string refusal(Action action) {
        try {
            action();
        } catch (const RadioError& error) {
            return error.what();
        }
        return "accepted";
    }
    static std::vector<std::string> lines(const std::vector<Standalone::Call>& calls) {
        std::vector<std::string> result;
        result.reserve(calls.size());
        for (const Standalone::Call& call : calls) {
            result.push_back(call.object + " = " + std::to_string(call.value) +
                             (call.code == 0 ? "" : " failed"));
        }
        return result;
    }
    /** The driver answers all writes with 0x8001, in place of writing. */
    static void refuseWrites(BootedRadio& booted) {
        booted.radio().platform().calls().inject(
            {Standalone::Operation::driverWrite, "channel.1.tx.rf.frequency", 0x8001, {}, {}});
    }

    Board board = PlanBoards::rfModule();
};

TEST_F(BootedRadioTest, RadioThatHasWhatItAsksForIsUp) {
    const BootedRadio booted(board);
    EXPECT_TRUE(booted.isUp());
    EXPECT_NO_THROW(booted.requireUp());
    EXPECT_THAT(booted.complaints(), IsEmpty());
}

TEST_F(BootedRadioTest, RadioOfWhichAPhaseFailedIsNotUp) {
    PlanBoards::remove(board, "channel.1.tx.rf.frequency");
    const BootedRadio booted(board);
    EXPECT_FALSE(booted.isUp());
    EXPECT_THAT(booted.complaints(),
                ElementsAre("onModuleInit failed to get driver interface [channel.1.tx.rf.frequency] "
                            "(EDriverResult = 0x8001)"));
}

TEST_F(BootedRadioTest, RadioThatIsNotUpIsRefusedWithItsBoardAndItsFirstComplaint) {
    PlanBoards::remove(board, "channel.1.tx.rf.frequency");
    const BootedRadio booted(board);
    EXPECT_EQ(refusal([&] { booted.requireUp(); }),
              "board.toml: the radio did not boot: onModuleInit failed to get driver interface "
              "[channel.1.tx.rf.frequency] (EDriverResult = 0x8001)");
}

TEST_F(BootedRadioTest, RadioThatSaidNothingIsRefusedWithItsBoardAlone) {
    // An incomplete record is a warning, and only errors are complaints.
    board.drivers.front().missingWords = Standalone::wordWrite;
    const BootedRadio booted(board);
    EXPECT_FALSE(booted.isUp());
    EXPECT_THAT(booted.complaints(), IsEmpty());
    EXPECT_EQ(refusal([&] { booted.requireUp(); }), "board.toml: the radio did not boot");
}

TEST_F(BootedRadioTest, NothingInTheNameOfTheBoardIsObeyedByATerminal) {
    board.file = "\x1b[2J.toml";
    const BootedRadio booted(board);
    EXPECT_EQ(refusal([&] { booted.fail("no carrier"); }), "\\x1b[2J.toml: no carrier");
}

TEST_F(BootedRadioTest, WritesAreNotedInTheirOrder) {
    BootedRadio booted(board);
    booted.radio().tune(Direction::tx, 1, 7'442'000);
    booted.radio().tune(Direction::rx, 1, 7'603'000);
    EXPECT_THAT(lines(booted.writes()),
                ElementsAre("channel.1.tx.rf.frequency = 7442000", "channel.1.rx.rf.frequency = 7603000"));
}

TEST_F(BootedRadioTest, FailedWriteIsNotedAndComplainedOf) {
    BootedRadio booted(board);
    refuseWrites(booted);
    booted.radio().tune(Direction::tx, 1, 7'442'000);
    EXPECT_THAT(lines(booted.writes()), ElementsAre("channel.1.tx.rf.frequency = 7442000 failed"));
    EXPECT_THAT(booted.complaints(), ElementsAre("Write to driver failed for channel.1.Tx.rf.frequency "
                                                 "(EDriverResult = 0x8001)"));
}

TEST_F(BootedRadioTest, WhatIsForgottenIsNotThereAnyMore) {
    BootedRadio booted(board);
    refuseWrites(booted);
    booted.radio().tune(Direction::tx, 1, 7'442'000);
    booted.forget();
    EXPECT_THAT(booted.writes(), IsEmpty());
    EXPECT_THAT(booted.complaints(), IsEmpty());
    EXPECT_EQ(refusal([&] { booted.fail("no carrier"); }), "board.toml: no carrier");
    booted.radio().tune(Direction::rx, 1, 7'603'000);
    EXPECT_THAT(lines(booted.writes()), ElementsAre("channel.1.rx.rf.frequency = 7603000"));
}

TEST_F(BootedRadioTest, ForgettingDoesNotTakeTheRadioDown) {
    PlanBoards::remove(board, "channel.1.tx.rf.frequency");
    BootedRadio down(board);
    down.forget();
    EXPECT_FALSE(down.isUp());
    EXPECT_EQ(refusal([&] { down.requireUp(); }), "board.toml: the radio did not boot");
}

TEST_F(BootedRadioTest, WritesThatAreNotNotedReachTheirDriversAllTheSame) {
    BootedRadio booted(board);
    booted.stopNotingWrites();
    booted.radio().tune(Direction::tx, 1, 7'442'000);
    EXPECT_THAT(booted.writes(), IsEmpty());
    EXPECT_EQ(booted.radio().platform().drivers().find("channel.1.tx.rf.frequency")->value(), 7'442'000);
}

TEST_F(BootedRadioTest, ComplaintsAreNotedAlsoWhenWritesAreNot) {
    BootedRadio booted(board);
    booted.stopNotingWrites();
    refuseWrites(booted);
    booted.radio().tune(Direction::tx, 1, 7'442'000);
    EXPECT_THAT(booted.complaints(), ElementsAre("Write to driver failed for channel.1.Tx.rf.frequency "
                                                 "(EDriverResult = 0x8001)"));
}

} // namespace
} // namespace Radio
