// How the microwave-board handler finds its hardware: what it looks for and in which order, what it cannot do
// without, and what it writes on the way.

#include "MicrowaveRadioTest.h"

using Standalone::Presence;

namespace {

class MicrowaveBoardInitTest : public MicrowaveRadioTest {
protected:
    /** The one complaint of an initialisation that failed. */
    std::string complaintOf(Board& board) {
        EXPECT_EQ(board.onModuleInit(), ResultFailed);
        const Lines lines = complaints();
        EXPECT_EQ(lines.size(), 1U);
        return lines.empty() ? "" : lines.front();
    }
};

} // namespace

// What is looked for, in order

TEST_F(MicrowaveBoardInitTest, PlainBoardLooksForLoIfAndPllDriversAndTheChargePumpTable) {
    EXPECT_EQ(make("Tx", plainBoard).onModuleInit(), ResultOk);
    EXPECT_EQ(calls(),
              (Lines{"broker-lookup IDriverLayer", "driver-lookup channel.1.tx.rf.lo.frequency",
                     "driver-lookup channel.1.tx.if.frequency", "driver-lookup channel.1.tx.rf.lo.config",
                     "driver-lookup channel.1.tx.rf.pll.config",
                     "table-lookup Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting"}));
}

TEST_F(MicrowaveBoardInitTest, BoardWithIfWritesItsStartValueLast) {
    EXPECT_EQ(make("Tx", withIf).onModuleInit(), ResultOk);
    EXPECT_EQ(calls(),
              (Lines{"broker-lookup IDriverLayer", "driver-lookup channel.1.tx.rf.lo.frequency",
                     "driver-lookup channel.1.tx.if.frequency", "driver-lookup channel.1.tx.rf.lo.config",
                     "driver-lookup channel.1.tx.rf.pll.config",
                     "table-lookup Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting",
                     "driver-write channel.1.tx.if.frequency"}));
}

TEST_F(MicrowaveBoardInitTest, BoardWithHalfSpacingLooksForTheDspDriverOfTheChannel) {
    EXPECT_EQ(make("Rx", withHalfSpacing).onModuleInit(), ResultOk);
    EXPECT_EQ(calls(),
              (Lines{"broker-lookup IDriverLayer", "driver-lookup channel.1.rx.rf.lo.frequency",
                     "driver-lookup channel.1.rx.if.frequency", "driver-lookup channel.1.rx.rf.lo.config",
                     "driver-lookup channel.1.rx.rf.pll.config", "driver-lookup channel.1.dsp.rx.freq.offset",
                     "table-lookup Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting"}));
}

TEST_F(MicrowaveBoardInitTest, BoardWithLoInHzLooksForBothLoDrivers) {
    EXPECT_EQ(make("Tx", withHz).onModuleInit(), ResultOk);
    EXPECT_EQ(
        calls(),
        (Lines{"broker-lookup IDriverLayer", "driver-lookup channel.1.tx.rf.lo.frequency",
               "driver-lookup channel.1.tx.rf.lo.frequency.in.hz", "driver-lookup channel.1.tx.if.frequency",
               "driver-lookup channel.1.tx.rf.lo.config", "driver-lookup channel.1.tx.rf.pll.config",
               "table-lookup Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting"}));
}

TEST_F(MicrowaveBoardInitTest, BoardWithEverythingLooksForEverything) {
    EXPECT_EQ(make("Rx", withEverything).onModuleInit(), ResultOk);
    EXPECT_EQ(calls(),
              (Lines{"broker-lookup IDriverLayer", "driver-lookup channel.1.rx.rf.lo.frequency",
                     "driver-lookup channel.1.rx.rf.lo.frequency.in.hz",
                     "driver-lookup channel.1.rx.if.frequency", "driver-lookup channel.1.rx.rf.lo.config",
                     "driver-lookup channel.1.rx.rf.pll.config", "driver-lookup channel.1.dsp.rx.freq.offset",
                     "table-lookup Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting",
                     "driver-write channel.1.rx.if.frequency"}));
}

TEST_F(MicrowaveBoardInitTest, TransmitterWithOffsetArrayNeedsTheDspDriverToo) {
    takeAwayDriver("channel.1.dsp.rx.freq.offset");
    EXPECT_EQ(complaintOf(make("Tx", {false, false, true, false})),
              "error: onModuleInit failed to get driver interface [channel.1.dsp.rx.freq.offset] "
              "(EDriverResult = 0x8001)");
}

// The LO configuration driver

TEST_F(MicrowaveBoardInitTest, LoConfigurationDriverIsSwitchedOnAndStandsInForTheChargePump) {
    addDriver("channel.1.tx.rf.lo.config");
    EXPECT_EQ(make("Tx", plainBoard).onModuleInit(), ResultOk);
    EXPECT_EQ(calls(),
              (Lines{"broker-lookup IDriverLayer", "driver-lookup channel.1.tx.rf.lo.frequency",
                     "driver-lookup channel.1.tx.if.frequency", "driver-lookup channel.1.tx.rf.lo.config",
                     "driver-write channel.1.tx.rf.lo.config"}));
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.lo.config=1"}));
}

TEST_F(MicrowaveBoardInitTest, LoConfigurationDriverIsSwitchedOnBeforeTheDspDriverIsLookedFor) {
    addDriver("channel.1.rx.rf.lo.config");
    takeAwayDriver("channel.1.dsp.rx.freq.offset");
    EXPECT_EQ(make("Rx", withHalfSpacing).onModuleInit(), ResultFailed);
    EXPECT_EQ(writes(), (Lines{"channel.1.rx.rf.lo.config=1"}));
}

TEST_F(MicrowaveBoardInitTest, RefusedSwitchingOnIsIgnored) {
    addDriver("channel.1.tx.rf.lo.config");
    fail(Operation::driverWrite, "channel.1.tx.rf.lo.config", 0x8011);
    Board& board = make("Tx", plainBoard);
    EXPECT_EQ(board.onModuleInit(), ResultOk);
    EXPECT_EQ(complaints(), Lines{});
    EXPECT_EQ(platform.calls().journalOf(Operation::tableLookup).size(), 0U);
}

TEST_F(MicrowaveBoardInitTest, IncompleteLoConfigurationDriverGivesWayToThePllDriver) {
    Standalone::Driver& loConfig = addDriver("channel.1.tx.rf.lo.config");
    for (const unsigned missing : {Standalone::wordContext, Standalone::wordWrite}) {
        loConfig.setMissingWords(missing);
        Board& board = make("Tx", plainBoard);
        EXPECT_EQ(board.onModuleInit(), ResultOk);
        EXPECT_EQ(board.writeFrequencyToHW(17'000'000), ResultOk);
        EXPECT_EQ(writes().back(), "channel.1.tx.rf.pll.config=0");
    }
}

TEST_F(MicrowaveBoardInitTest, NullLoConfigurationRecordGivesWayToThePllDriver) {
    addDriver("channel.1.tx.rf.lo.config");
    platform.drivers().giveNullRecord("channel.1.tx.rf.lo.config");
    EXPECT_EQ(make("Tx", plainBoard).onModuleInit(), ResultOk);
    EXPECT_EQ(calls()[4], "driver-lookup channel.1.tx.rf.pll.config");
}

// Required drivers

TEST_F(MicrowaveBoardInitTest, MissingLoDriverEndsTheInitialisation) {
    takeAwayDriver("channel.1.tx.rf.lo.frequency");
    EXPECT_EQ(complaintOf(make("Tx", withIf)),
              "error: onModuleInit failed to get driver interface [channel.1.tx.rf.lo.frequency] "
              "(EDriverResult = 0x8001)");
    EXPECT_EQ(calls(), (Lines{"broker-lookup IDriverLayer", "driver-lookup channel.1.tx.rf.lo.frequency"}));
}

TEST_F(MicrowaveBoardInitTest, LoDriverInKiloHertzIsRequiredByABoardWithLoInHzToo) {
    takeAwayDriver("channel.1.tx.rf.lo.frequency");
    EXPECT_EQ(make("Tx", withHz).onModuleInit(), ResultFailed);
}

TEST_F(MicrowaveBoardInitTest, MissingLoDriverInHzEndsTheInitialisation) {
    takeAwayDriver("channel.1.tx.rf.lo.frequency.in.hz");
    EXPECT_EQ(complaintOf(make("Tx", withHz)),
              "error: onModuleInit failed to get driver interface [channel.1.tx.rf.lo.frequency.in.hz] "
              "(EDriverResult = 0x8001)");
    EXPECT_EQ(calls().back(), "driver-lookup channel.1.tx.rf.lo.frequency.in.hz");
}

TEST_F(MicrowaveBoardInitTest, MissingIfDriverEndsTheInitialisationOfABoardWithIf) {
    takeAwayDriver("channel.1.tx.if.frequency");
    EXPECT_EQ(complaintOf(make("Tx", withIf)),
              "error: onModuleInit failed to get driver interface [channel.1.tx.if.frequency] "
              "(EDriverResult = 0x8001)");
    EXPECT_EQ(calls().back(), "driver-lookup channel.1.tx.if.frequency");
}

TEST_F(MicrowaveBoardInitTest, MissingIfDriverIsNothingToABoardWithoutIf) {
    takeAwayDriver("channel.1.tx.if.frequency");
    EXPECT_EQ(make("Tx", plainBoard).onModuleInit(), ResultOk);
    EXPECT_EQ(complaints(), Lines{});
    EXPECT_EQ(writes(), Lines{});
}

TEST_F(MicrowaveBoardInitTest, MissingPllDriverEndsTheInitialisation) {
    takeAwayDriver("channel.1.tx.rf.pll.config");
    EXPECT_EQ(complaintOf(make("Tx", withIf)),
              "error: onModuleInit failed to get driver interface [channel.1.tx.rf.pll.config] "
              "(EDriverResult = 0x8001)");
    EXPECT_EQ(calls().back(), "driver-lookup channel.1.tx.rf.pll.config");
}

TEST_F(MicrowaveBoardInitTest, MissingDspDriverEndsTheInitialisation) {
    takeAwayDriver("channel.1.dsp.rx.freq.offset");
    EXPECT_EQ(complaintOf(make("Rx", withHalfSpacing)),
              "error: onModuleInit failed to get driver interface [channel.1.dsp.rx.freq.offset] "
              "(EDriverResult = 0x8001)");
    EXPECT_EQ(calls().back(), "driver-lookup channel.1.dsp.rx.freq.offset");
}

TEST_F(MicrowaveBoardInitTest, FoundRecordWithoutContextFailsWithTheSuccessCodeAsLevel) {
    driver("channel.1.tx.rf.lo.frequency").setMissingWords(Standalone::wordContext);
    EXPECT_EQ(complaintOf(make("Tx", plainBoard)),
              "warning: onModuleInit failed to get driver interface [channel.1.tx.rf.lo.frequency] "
              "(EDriverResult = 0x0)");
}

TEST_F(MicrowaveBoardInitTest, FoundRecordWithoutWriteFails) {
    driver("channel.1.rx.if.frequency").setMissingWords(Standalone::wordWrite);
    EXPECT_EQ(complaintOf(make("Rx", withIf)),
              "warning: onModuleInit failed to get driver interface [channel.1.rx.if.frequency] "
              "(EDriverResult = 0x0)");
}

TEST_F(MicrowaveBoardInitTest, IfDriverNeedsNoBufferWord) {
    driver("channel.1.rx.if.frequency").setMissingWords(Standalone::wordWriteBuffer);
    EXPECT_EQ(make("Rx", withIf).onModuleInit(), ResultOk);
}

TEST_F(MicrowaveBoardInitTest, NullRecordFails) {
    platform.drivers().giveNullRecord("channel.1.tx.rf.pll.config");
    EXPECT_EQ(complaintOf(make("Tx", plainBoard)),
              "warning: onModuleInit failed to get driver interface [channel.1.tx.rf.pll.config] "
              "(EDriverResult = 0x0)");
}

TEST_F(MicrowaveBoardInitTest, LoDriverInHzNeedsItsBufferWord) {
    driver("channel.1.tx.rf.lo.frequency.in.hz").setMissingWords(Standalone::wordWriteBuffer);
    EXPECT_EQ(complaintOf(make("Tx", withHz)),
              "warning: onModuleInit failed to get driver interface [channel.1.tx.rf.lo.frequency.in.hz] "
              "(EDriverResult = 0x0)");
}

TEST_F(MicrowaveBoardInitTest, LoDriverInHzNeedsNoWriteWord) {
    driver("channel.1.tx.rf.lo.frequency.in.hz").setMissingWords(Standalone::wordWrite);
    EXPECT_EQ(make("Tx", withHz).onModuleInit(), ResultOk);
}

TEST_F(MicrowaveBoardInitTest, LookupCodesBelow8000HexAreSuccess) {
    fail(Operation::driverLookup, "channel.1.tx.rf.lo.frequency", 0x7FFF);
    fail(Operation::driverLookup, "channel.1.tx.rf.pll.config", -1); // 0xFFFFFFFF
    EXPECT_EQ(make("Tx", plainBoard).onModuleInit(), ResultOk);
}

TEST_F(MicrowaveBoardInitTest, DriversBoundBeforeAFailureStayBound) {
    takeAwayDriver("channel.1.tx.rf.pll.config");
    Board& board = make("Tx", plainBoard);
    EXPECT_EQ(board.onModuleInit(), ResultFailed);
    board.writeFrequencyToHW(18'000'000);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.lo.frequency=18000000"}));
}

// No driver layer

TEST_F(MicrowaveBoardInitTest, WithoutADriverLayerOnlyTheTableIsFetched) {
    for (const Presence presence :
         {Presence::absent, Presence::null, Presence::foreign, Presence::nullRecord}) {
        platform.setPresence("IDriverLayer", presence);
        EXPECT_EQ(make("Rx", withEverything).onModuleInit(), ResultOk);
        EXPECT_EQ(calls(), (Lines{"broker-lookup IDriverLayer",
                                  "table-lookup Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting"}));
        EXPECT_EQ(traces(), (Lines{"information: channel.1.Rx.if.pll 0"}));
    }
}

// The charge-pump table

TEST_F(MicrowaveBoardInitTest, FirstChannelTakesItsFallbackWithoutANotice) {
    takeAwayTable("Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting");
    platform.tables().add({"Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb", {0}, {}, {5}});
    Board& board = make("Tx", plainBoard);
    EXPECT_EQ(board.onModuleInit(), ResultOk);
    EXPECT_EQ(calls().back(), "table-lookup Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb");
    EXPECT_EQ(complaints(), Lines{});
    EXPECT_EQ(board.writeFrequencyToHW(18'000'000), ResultOk);
    EXPECT_EQ(writes().back(), "channel.1.tx.rf.pll.config=5");
}

TEST_F(MicrowaveBoardInitTest, SecondChannelTakesTheTableOfTheFirstWithANotice) {
    platform.setPresence("IDriverLayer", Presence::absent);
    platform.tables().add({"Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb", {0}, {}, {5}});
    EXPECT_EQ(make("Rx", plainBoard, 2).onModuleInit(), ResultOk);
    EXPECT_EQ(calls(), (Lines{"broker-lookup IDriverLayer",
                              "table-lookup Channel.2.Rx.Rf.Pll.Frequency.To.Chargepump.Setting",
                              "table-lookup Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb"}));
    EXPECT_EQ(complaints(), (Lines{"notice: TODO: Channel.2.Rx.Rf.Pll.Frequency.To.Chargepump.Setting.pdb "
                                   "uses Channel.1 data for now"}));
}

TEST_F(MicrowaveBoardInitTest, ChannelZeroTakesTheTableOfTheFirstWithoutANotice) {
    platform.setPresence("IDriverLayer", Presence::absent);
    platform.tables().add({"Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb", {0}, {}, {5}});
    EXPECT_EQ(make("Rx", plainBoard, 0).onModuleInit(), ResultOk);
    EXPECT_EQ(calls().back(), "table-lookup Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb");
    EXPECT_EQ(complaints(), Lines{});
}

TEST_F(MicrowaveBoardInitTest, MissingFallbackIsReportedAndNoFailure) {
    takeAwayTable("Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting");
    fail(Operation::tableLookup, "Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb", 0x8022);
    EXPECT_EQ(make("Tx", plainBoard).onModuleInit(), ResultOk);
    EXPECT_EQ(complaints(),
              (Lines{"error: Unable to fetch table Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb "
                     "(EDriverResult = 0x8022)"}));
}

TEST_F(MicrowaveBoardInitTest, NoticeComesBeforeTheReportOfAMissingFallback) {
    platform.setPresence("IDriverLayer", Presence::absent);
    EXPECT_EQ(make("Tx", plainBoard, 3).onModuleInit(), ResultOk);
    EXPECT_EQ(complaints(),
              (Lines{"notice: TODO: Channel.3.Tx.Rf.Pll.Frequency.To.Chargepump.Setting.pdb uses Channel.1 "
                     "data for now",
                     "error: Unable to fetch table Channel.3.Tx.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb "
                     "(EDriverResult = 0x8001)"}));
}

// The start value of the IF synthesiser

TEST_F(MicrowaveBoardInitTest, IfStartsAtZeroBeforeTheDatabaseIsRead) {
    EXPECT_EQ(make("Tx", withIf).onModuleInit(), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.if.frequency=0"}));
    EXPECT_EQ(traces(), (Lines{"information: channel.1.Tx.if.pll 0"}));
}

TEST_F(MicrowaveBoardInitTest, IfStartsAtItsOwnFrequencyOnceThatIsKnown) {
    Board& board = boot("Tx", withIf);
    EXPECT_EQ(board.onModuleInit(), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.if.frequency=140000"}));
}

TEST_F(MicrowaveBoardInitTest, IfStartsWithItsBasebandOffset) {
    set("TxIfBb", {20});
    Board& board = boot("Tx", withIf);
    EXPECT_EQ(board.onModuleInit(), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.if.frequency=160000"}));
}

TEST_F(MicrowaveBoardInitTest, IfStartsAtItsOwnFrequencyWhateverTheCarrier) {
    Board& board = boot("Tx", withIf);
    board.setRfFrequency(18'000'250);
    forget();
    EXPECT_EQ(board.onModuleInit(), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.if.frequency=140000"}));
}

TEST_F(MicrowaveBoardInitTest, BoardWithoutIfComputesTheStartValueAndWritesNothing) {
    EXPECT_EQ(make("Tx", plainBoard).onModuleInit(), ResultOk);
    EXPECT_EQ(writes(), Lines{});
    EXPECT_EQ(traces(), (Lines{"information: channel.1.Tx.if.pll 0"}));
}

TEST_F(MicrowaveBoardInitTest, RefusedStartValueFailsTheInitialisation) {
    fail(Operation::driverWrite, "channel.1.tx.if.frequency", 0x8011);
    EXPECT_EQ(complaintOf(make("Tx", withIf)),
              "error: Write to driver failed for channel.1.Tx.if.frequency (EDriverResult = 0x8011)");
}
