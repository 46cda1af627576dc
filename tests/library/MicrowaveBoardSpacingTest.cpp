// How the receive side of a microwave board follows the channel spacing: the array of offsets, half the
// spacing when the array has nothing, the default, and the half-spacing table of the DSP.

#include "MicrowaveRadioTest.h"

namespace {

class MicrowaveBoardSpacingTest : public MicrowaveRadioTest {
protected:
    /** What a receiver with offset array writes: DSP offset, LO in Hz (half the carrier), charge pump. */
    Lines writesWithArray(unsigned long frequency = carrier) {
        EXPECT_EQ(boot("Rx", withOffsetArray).writeFrequencyToHW(frequency), ResultOk);
        return writes();
    }

    /** Raised by 3000 kHz, which the DSP is not told. */
    const Lines raisedByTheDefault{"channel.1.dsp.rx.freq.offset=0",
                                   "channel.1.rx.rf.lo.frequency.in.hz=9001625000",
                                   "channel.1.rx.rf.pll.config=1003250"};
    /** Lowered by 4000 kHz, which the DSP gives back. */
    const Lines loweredBy4000{"channel.1.dsp.rx.freq.offset=4000",
                              "channel.1.rx.rf.lo.frequency.in.hz=8998125000",
                              "channel.1.rx.rf.pll.config=996250"};
    /** The other way round. */
    const Lines raisedBy4000{"channel.1.dsp.rx.freq.offset=-4000",
                             "channel.1.rx.rf.lo.frequency.in.hz=9002125000",
                             "channel.1.rx.rf.pll.config=1004250"};
};

} // namespace

// The array

TEST_F(MicrowaveBoardSpacingTest, EntryLowersTheCarrierWithSidebandMinusOne) {
    EXPECT_EQ(writesWithArray(), loweredBy4000);
}

TEST_F(MicrowaveBoardSpacingTest, EntryRaisesTheCarrierWithSidebandPlusOne) {
    set("channel.1.rx.rf.spectruminverted", {1});
    EXPECT_EQ(writesWithArray(), raisedBy4000);
}

TEST_F(MicrowaveBoardSpacingTest, StoredSignIsIgnored) {
    setOffsetArray({100, 4000});
    EXPECT_EQ(writesWithArray(), loweredBy4000);
}

TEST_F(MicrowaveBoardSpacingTest, FirstMatchingEntryWins) {
    setOffsetArray({100, -4000, 100, -9000});
    EXPECT_EQ(writesWithArray(), loweredBy4000);
}

TEST_F(MicrowaveBoardSpacingTest, OffsetsAreNotTakenForSpacings) {
    setOffsetArray({50, 100, 9000, 9000});
    EXPECT_EQ(writesWithArray(), raisedByTheDefault);
}

TEST_F(MicrowaveBoardSpacingTest, WithoutAMatchTheCarrierIsRaisedBy3000) {
    setOffsetArray({50, 2000});
    EXPECT_EQ(writesWithArray(), raisedByTheDefault);
    EXPECT_EQ(traces().front(),
              "information: writeFrequencyToHW: channelSpacingOffsetkHz=3000, m_rfSideband=-1");
}

TEST_F(MicrowaveBoardSpacingTest, EntryOfZeroCountsAsNone) {
    setOffsetArray({100, 0});
    EXPECT_EQ(writesWithArray(), raisedByTheDefault);
    EXPECT_EQ(traces().front(), "information: writeFrequencyToHW: Array(CS)=100, Array(Foffset)=0");
}

TEST_F(MicrowaveBoardSpacingTest, SizeZeroMeansNoEntry) {
    set("channel.1.rx.rf.frequency.cs.offset.arraysize", {0});
    EXPECT_EQ(writesWithArray(), raisedByTheDefault);
}

TEST_F(MicrowaveBoardSpacingTest, NegativeSizeMeansNoEntry) {
    set("channel.1.rx.rf.frequency.cs.offset.arraysize", {-4});
    EXPECT_EQ(writesWithArray(), raisedByTheDefault);
}

TEST_F(MicrowaveBoardSpacingTest, OddSizeIsNoMatterToTheEntriesThatAreWhole) {
    setOffsetArray({100, -4000, 50});
    EXPECT_EQ(writesWithArray(), loweredBy4000);
}

TEST_F(MicrowaveBoardSpacingTest, MatchWithoutItsOffsetFailsBeforeAnythingIsWritten) {
    setOffsetArray({50, 2000, 100});
    EXPECT_EQ(boot("Rx", withOffsetArray).writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(writes(), Lines{});
    EXPECT_EQ(traces(), (Lines{"error: channel.1.rx.rf.frequency.cs.offset.array ends inside a pair"}));
}

TEST_F(MicrowaveBoardSpacingTest, UnknownArrayFailsBeforeAnythingIsWritten) {
    Board& board = make("Rx", withOffsetArray);
    EXPECT_EQ(board.onModuleInit(), ResultOk);
    forget();
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(writes(), Lines{});
    EXPECT_EQ(traces(), (Lines{"error: channel.1.rx.rf.frequency.cs.offset.array was not found"}));
}

TEST_F(MicrowaveBoardSpacingTest, ArrayWhoseAddressCameWithAFailingCodeIsUnknown) {
    Board& board = boot("Rx", withOffsetArray);
    platform.calls().inject({Operation::variableAddress, "channel.1.rx.rf.frequency.cs.offset.array", 0x8001,
                             std::nullopt, std::nullopt, true});
    EXPECT_EQ(board.getVariablesFromDatabase(), ResultFailed);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(writes(), Lines{});
    EXPECT_EQ(traces(), (Lines{"error: channel.1.rx.rf.frequency.cs.offset.array was not found"}));
}

TEST_F(MicrowaveBoardSpacingTest, ArrayWithoutContentFailsBeforeAnythingIsWritten) {
    platform.variables().find("channel.1.rx.rf.frequency.cs.offset.array")->setContentMissing(true);
    EXPECT_EQ(boot("Rx", withOffsetArray).writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(calls(), Lines{});
    EXPECT_EQ(traces(), (Lines{"error: channel.1.rx.rf.frequency.cs.offset.array was not found"}));
}

TEST_F(MicrowaveBoardSpacingTest, ArrayOfOneWithoutContentFailsToo) {
    set("channel.1.rx.rf.frequency.cs.offset.arraysize", {1});
    platform.variables().find("channel.1.rx.rf.frequency.cs.offset.array")->setContentMissing(true);
    EXPECT_EQ(boot("Rx", withOffsetArray).writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(traces(), (Lines{"error: channel.1.rx.rf.frequency.cs.offset.array was not found"}));
}

TEST_F(MicrowaveBoardSpacingTest, EmptyArrayNeedsNoContent) {
    set("channel.1.rx.rf.frequency.cs.offset.arraysize", {0});
    platform.variables().find("channel.1.rx.rf.frequency.cs.offset.array")->setContentMissing(true);
    EXPECT_EQ(writesWithArray(), raisedByTheDefault);
}

TEST_F(MicrowaveBoardSpacingTest, OffsetOfExactly3000TellsTheDspNothing) {
    set("channel.1.rx.rf.spectruminverted", {1});
    setOffsetArray({100, 3000});
    EXPECT_EQ(writesWithArray(), raisedByTheDefault);
}

TEST_F(MicrowaveBoardSpacingTest, OffsetOfMinus3000IsToldToTheDsp) {
    setOffsetArray({100, 3000});
    EXPECT_EQ(writesWithArray(),
              (Lines{"channel.1.dsp.rx.freq.offset=3000", "channel.1.rx.rf.lo.frequency.in.hz=8998625000",
                     "channel.1.rx.rf.pll.config=997250"}));
}

TEST_F(MicrowaveBoardSpacingTest, LowestOffsetIsItsOwnMagnitudeAndItsOwnNegative) {
    setOffsetArray({100, -2'147'483'647 - 1});
    EXPECT_EQ(writesWithArray(),
              (Lines{"channel.1.dsp.rx.freq.offset=-2147483648",
                     "channel.1.rx.rf.lo.frequency.in.hz=1082741949000", "channel.1.rx.rf.pll.config=0"}));
}

TEST_F(MicrowaveBoardSpacingTest, CarrierWrapsAroundAtTheTop) {
    setOffsetArray({50, 2000});
    EXPECT_EQ(writesWithArray(4'294'967'295UL),
              (Lines{"channel.1.dsp.rx.freq.offset=0", "channel.1.rx.rf.lo.frequency.in.hz=1499500",
                     "channel.1.rx.rf.pll.config=0"}));
}

TEST_F(MicrowaveBoardSpacingTest, CarrierWrapsAroundAtTheBottom) {
    EXPECT_EQ(writesWithArray(0),
              (Lines{"channel.1.dsp.rx.freq.offset=4000", "channel.1.rx.rf.lo.frequency.in.hz=2147481648000",
                     "channel.1.rx.rf.pll.config=0"}));
}

TEST_F(MicrowaveBoardSpacingTest, WithoutADspDriverTheCarrierIsShiftedAllTheSame) {
    Board& board = boot("Rx", withOffsetArray);
    driver("channel.1.dsp.rx.freq.offset").setMissingWords(Standalone::wordWrite);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes(),
              (Lines{"channel.1.rx.rf.lo.frequency.in.hz=8998125000", "channel.1.rx.rf.pll.config=996250"}));
}

TEST_F(MicrowaveBoardSpacingTest, FailedDspWriteEndsTheWriting) {
    Board& board = boot("Rx", withOffsetArray);
    fail(Operation::driverWrite, "channel.1.dsp.rx.freq.offset", 0x8015);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(writes(), (Lines{"channel.1.dsp.rx.freq.offset=4000"}));
    EXPECT_EQ(complaints(), (Lines{"error: Write to driver failed for channel.1.dsp.rx.freq.offset "
                                   "(EDriverResult = 0x8015)"}));
}

// Half the spacing in the place of an entry

TEST_F(MicrowaveBoardSpacingTest, HwCodeThreeShiftsSpacing125ByHalfOfIt) {
    set("HwCodeDsp", {3});
    set("ChannelSpacing", {125});
    EXPECT_EQ(writesWithArray(),
              (Lines{"channel.1.dsp.rx.freq.offset=62500", "channel.1.rx.rf.lo.frequency.in.hz=8968875000",
                     "channel.1.rx.rf.pll.config=937750"}));
}

TEST_F(MicrowaveBoardSpacingTest, HwCodeThreeShiftsSpacing250ByHalfOfIt) {
    set("HwCodeDsp", {3});
    set("ChannelSpacing", {250});
    EXPECT_EQ(writesWithArray(),
              (Lines{"channel.1.dsp.rx.freq.offset=125000", "channel.1.rx.rf.lo.frequency.in.hz=8937625000",
                     "channel.1.rx.rf.pll.config=875250"}));
}

TEST_F(MicrowaveBoardSpacingTest, HwCodeThreeShiftsSpacing500ByHalfOfIt) {
    set("HwCodeDsp", {3});
    set("ChannelSpacing", {500});
    set("channel.1.rx.rf.spectruminverted", {1});
    EXPECT_EQ(writesWithArray(),
              (Lines{"channel.1.dsp.rx.freq.offset=-250000", "channel.1.rx.rf.lo.frequency.in.hz=9125125000",
                     "channel.1.rx.rf.pll.config=1250250"}));
}

TEST_F(MicrowaveBoardSpacingTest, HwCodeThreeShiftsNoOtherSpacing) {
    set("HwCodeDsp", {3});
    setOffsetArray({7, 2000});
    for (const std::int32_t spacing : {0, 50, 100, 124, 126, 200, 300, 1000, 3000, -250}) {
        set("ChannelSpacing", {spacing});
        EXPECT_EQ(writesWithArray(), raisedByTheDefault) << spacing;
    }
}

TEST_F(MicrowaveBoardSpacingTest, OtherHwCodesShiftNothing) {
    set("ChannelSpacing", {250});
    for (const std::int32_t hwCode : {0, 2, 4, -3}) {
        set("HwCodeDsp", {hwCode});
        EXPECT_EQ(writesWithArray(), raisedByTheDefault) << hwCode;
    }
}

TEST_F(MicrowaveBoardSpacingTest, HwCodeWithoutContentShiftsNothing) {
    platform.variables().find("HwCodeDsp")->setContentMissing(true);
    set("ChannelSpacing", {250});
    EXPECT_EQ(writesWithArray(), raisedByTheDefault);
}

TEST_F(MicrowaveBoardSpacingTest, EntryWinsOverHalfTheSpacing) {
    set("HwCodeDsp", {3});
    set("ChannelSpacing", {250});
    setOffsetArray({250, 4000});
    EXPECT_EQ(writesWithArray(), loweredBy4000);
}

TEST_F(MicrowaveBoardSpacingTest, HalfTheSpacingStandsInForAnEntryOfZero) {
    set("HwCodeDsp", {3});
    set("ChannelSpacing", {250});
    setOffsetArray({250, 0});
    EXPECT_EQ(writesWithArray().front(), "channel.1.dsp.rx.freq.offset=125000");
}

// The half-spacing table of the DSP

TEST_F(MicrowaveBoardSpacingTest, EverySpacingHasItsDspOffset) {
    const std::vector<std::pair<std::int32_t, std::string>> rows{
        {50, "25000"},  {100, "50000"}, {150, "75000"}, {200, "100000"}, {250, "125000"},
        {300, "25000"}, {350, "50000"}, {400, "75000"}, {450, "100000"}, {600, "125000"}};
    for (const auto& [spacing, offset] : rows) {
        set("ChannelSpacing", {spacing});
        EXPECT_EQ(boot("Rx", withHalfSpacing).writeFrequencyToHW(carrier), ResultOk);
        EXPECT_EQ(writes().front(), "channel.1.dsp.rx.freq.offset=" + offset) << spacing;
    }
}

TEST_F(MicrowaveBoardSpacingTest, LoIsLoweredByTheDspOffsetAndTheChargePumpIsNot) {
    set("ChannelSpacing", {600});
    EXPECT_EQ(boot("Rx", withHalfSpacing).writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.dsp.rx.freq.offset=125000", "channel.1.rx.rf.lo.frequency=8937500",
                               "channel.1.rx.rf.pll.config=1000250"}));
}

TEST_F(MicrowaveBoardSpacingTest, IfPllIsNotLoweredByTheDspOffset) {
    set("ChannelSpacing", {50});
    // The LO is 10300 kHz: 300 remain. Lowered by 25 MHz it would fold to 14700 kHz: 300 would be missing.
    boot("Rx", {true, true, false, false}).writeFrequencyToHW(150'300);
    EXPECT_EQ(writes()[1], "channel.1.rx.if.frequency=140300");
}

TEST_F(MicrowaveBoardSpacingTest, SpacingsOutsideTheTableFailBeforeAnythingIsWritten) {
    for (const std::int32_t spacing : {500, 550, 0, 49, 125, 650, 3000, -50}) {
        set("ChannelSpacing", {spacing});
        EXPECT_EQ(boot("Rx", withHalfSpacing).writeFrequencyToHW(carrier), ResultFailed) << spacing;
        EXPECT_EQ(writes(), Lines{});
        EXPECT_EQ(complaints(), (Lines{"error: Unhandled channelspacetype " + std::to_string(spacing)}));
    }
}

TEST_F(MicrowaveBoardSpacingTest, SpacingIsUnknownBeforeTheDatabaseIsRead) {
    Board& board = make("Rx", withHalfSpacing);
    EXPECT_EQ(board.onModuleInit(), ResultOk);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(complaints(), (Lines{"error: Unhandled channelspacetype 3000"}));
}

TEST_F(MicrowaveBoardSpacingTest, UnknownSpacingIsFoundAfterTheArrayWasApplied) {
    set("ChannelSpacing", {500});
    setOffsetArray({500, -4000});
    EXPECT_EQ(boot("Rx", withEverything).writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(writes(), (Lines{"channel.1.dsp.rx.freq.offset=4000"}));
}

TEST_F(MicrowaveBoardSpacingTest, WithoutADspDriverTheSpacingDoesNotMatter) {
    set("ChannelSpacing", {500});
    Board& board = boot("Rx", withHalfSpacing);
    driver("channel.1.dsp.rx.freq.offset").setMissingWords(Standalone::wordWrite);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultOk);
    EXPECT_EQ(writes(),
              (Lines{"channel.1.rx.rf.lo.frequency=9000000", "channel.1.rx.rf.pll.config=1000250"}));
}

TEST_F(MicrowaveBoardSpacingTest, FailedDspWriteOfTheHalfSpacingEndsTheWriting) {
    Board& board = boot("Rx", withHalfSpacing);
    fail(Operation::driverWrite, "channel.1.dsp.rx.freq.offset", 0x8016);
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(writes(), (Lines{"channel.1.dsp.rx.freq.offset=50000"}));
    EXPECT_EQ(complaints(), (Lines{"error: Write to driver failed for channel.1.dsp.rx.freq.offset "
                                   "(EDriverResult = 0x8016)"}));
}

TEST_F(MicrowaveBoardSpacingTest, SecondOfTwoDspWritesCanFailAfterTheFirst) {
    Board& board = boot("Rx", withEverything);
    platform.calls().setListener([this](const Standalone::Call& call) {
        if (call.object == "channel.1.dsp.rx.freq.offset" && call.value == 4000) {
            fail(Operation::driverWrite, "channel.1.dsp.rx.freq.offset", 0x8016);
        }
    });
    EXPECT_EQ(board.writeFrequencyToHW(carrier), ResultFailed);
    EXPECT_EQ(writes(), (Lines{"channel.1.dsp.rx.freq.offset=4000", "channel.1.dsp.rx.freq.offset=50000"}));
    EXPECT_EQ(driver("channel.1.dsp.rx.freq.offset").value(), 4000);
}
