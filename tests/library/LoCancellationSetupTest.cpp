// How the canceller is published, and how it finds its drivers, detectors and tables.

#include "MicrowaveRadioTest.h"

using Standalone::Presence;

namespace {

class LoCancellationSetupTest : public MicrowaveRadioTest {
protected:
    /** Has the board the coarse DC drivers and the detectors of two ranges in the place of the usual ones. */
    void useAlternatives() {
        takeAwayDriver("channel.1.tx.rf.mixer.i");
        takeAwayDriver("channel.1.tx.rf.mixer.q");
        takeAwayDriver("channel.1.tx.rf.detector.v");
        addDriver("channel.1.tx.bb.iq.coarse.dc.i.v.adjust");
        addDriver("channel.1.tx.bb.iq.coarse.dc.q.v.adjust");
        addDriver("channel.1.tx.rf.detector.low.v.detect");
        addDriver("channel.1.tx.rf.detector.high.v.detect");
    }
    void addCoarseDcTable(const std::string& branch) {
        platform.tables().add(
            {"Channel.1.Tx.Bb.Frequency.To.Coarse.Dc." + branch + ".Compensation", {0}, {0}, {7}});
    }
};

} // namespace

// In the broker

TEST_F(LoCancellationSetupTest, ConstructionMakesNoCall) {
    const LoCancellation canceller(1);
    EXPECT_EQ(calls(), Lines{});
}

TEST_F(LoCancellationSetupTest, PublishedUnderItsChannel) {
    LoCancellation canceller(3);
    EXPECT_EQ(canceller.initialize(), ResultOk);
    EXPECT_EQ(calls(), (Lines{"broker-register ILoCancellation_3"}));
    EXPECT_EQ(dynamic_cast<ILoCancellation*>(platform.interfaces().find("ILoCancellation_3")), &canceller);
}

TEST_F(LoCancellationSetupTest, ChannelZeroIsPartOfTheName) {
    LoCancellation canceller(0);
    EXPECT_EQ(canceller.initialize(), ResultOk);
    EXPECT_EQ(calls(), (Lines{"broker-register ILoCancellation_0"}));
}

TEST_F(LoCancellationSetupTest, RefusedPublicationIsReported) {
    makeCanceller();
    LoCancellation second(1);
    EXPECT_EQ(second.initialize(), ResultFailed);
    EXPECT_EQ(traces(), (Lines{"error: LoCancellation failed to register ILoCancellation interface "
                               "[ILoCancellation_1] (EAFResult = 0x8002)"}));
}

TEST_F(LoCancellationSetupTest, DestructionWithdrawsTheEntry) {
    {
        LoCancellation canceller(1);
        canceller.initialize();
        forget();
    }
    EXPECT_EQ(calls(), (Lines{"broker-unregister ILoCancellation_1"}));
    EXPECT_EQ(traces(), Lines{});
    EXPECT_EQ(platform.interfaces().entries().count("ILoCancellation_1"), 0U);
}

TEST_F(LoCancellationSetupTest, RefusedWithdrawalIsReported) {
    { const LoCancellation neverPublished(1); }
    EXPECT_EQ(traces(), (Lines{"error: LoCancellation failed to unregister ILoCancellation interface "
                               "[ILoCancellation_1] (EAFResult = 0x8001)"}));
}

TEST_F(LoCancellationSetupTest, DeletionThroughTheInterfaceWithdrawsTheEntryToo) {
    std::unique_ptr<ILoCancellation> published = std::make_unique<LoCancellation>(1);
    published.reset();
    EXPECT_EQ(calls(), (Lines{"broker-unregister ILoCancellation_1"}));
}

// What is looked for, in order

TEST_F(LoCancellationSetupTest, MixerDriversDetectorAndTablesAreFoundInThisOrder) {
    EXPECT_EQ(makeCanceller().onModuleInit(), ResultOk);
    EXPECT_EQ(calls(),
              (Lines{"broker-lookup IDriverLayer", "driver-lookup channel.1.tx.rf.mixer.i",
                     "driver-lookup channel.1.tx.rf.mixer.q", "driver-lookup channel.1.tx.rf.detector.v",
                     "table-lookup Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I",
                     "table-lookup Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q"}));
    EXPECT_EQ(traces(), Lines{});
}

TEST_F(LoCancellationSetupTest, EveryAlternativeIsLookedForRightAfterWhatItStandsInFor) {
    useAlternatives();
    takeAwayTable(tableI);
    takeAwayTable(tableQ);
    addCoarseDcTable("I");
    addCoarseDcTable("Q");
    EXPECT_EQ(makeCanceller().onModuleInit(), ResultOk);
    EXPECT_EQ(calls(), (Lines{"broker-lookup IDriverLayer", "driver-lookup channel.1.tx.rf.mixer.i",
                              "driver-lookup channel.1.tx.bb.iq.coarse.dc.i.v.adjust",
                              "driver-lookup channel.1.tx.rf.mixer.q",
                              "driver-lookup channel.1.tx.bb.iq.coarse.dc.q.v.adjust",
                              "driver-lookup channel.1.tx.rf.detector.v",
                              "driver-lookup channel.1.tx.rf.detector.low.v.detect",
                              "driver-lookup channel.1.tx.rf.detector.high.v.detect",
                              "table-lookup Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I",
                              "table-lookup Channel.1.Tx.Bb.Frequency.To.Coarse.Dc.I.Compensation",
                              "table-lookup Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q",
                              "table-lookup Channel.1.Tx.Bb.Frequency.To.Coarse.Dc.Q.Compensation"}));
    EXPECT_EQ(traces(), Lines{});
}

TEST_F(LoCancellationSetupTest, MixerDriversWinOverTheCoarseDcDrivers) {
    addDriver("channel.1.tx.bb.iq.coarse.dc.i.v.adjust");
    addDriver("channel.1.tx.bb.iq.coarse.dc.q.v.adjust");
    LoCancellation& canceller = bootCanceller();
    EXPECT_EQ(canceller.setIQ(5, 6), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.mixer.i=5", "channel.1.tx.rf.mixer.q=6"}));
}

TEST_F(LoCancellationSetupTest, CoarseDcDriversAreWrittenInThePlaceOfTheMixerDrivers) {
    useAlternatives();
    EXPECT_EQ(bootCanceller().setIQ(5, 6), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.bb.iq.coarse.dc.i.v.adjust=5",
                               "channel.1.tx.bb.iq.coarse.dc.q.v.adjust=6"}));
}

TEST_F(LoCancellationSetupTest, DriverNamesAreLowerCaseAndTableNamesCapitalised) {
    for (const char* const name : {"mixer.i", "mixer.q", "detector.v"}) {
        addDriver(std::string("channel.3.tx.rf.") + name);
    }
    EXPECT_EQ(makeCanceller(3).onModuleInit(), ResultOk);
    EXPECT_EQ(calls()[1], "driver-lookup channel.3.tx.rf.mixer.i");
    EXPECT_EQ(calls()[4], "table-lookup Channel.3.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I");
}

TEST_F(LoCancellationSetupTest, HighestChannelIsSignedInTheBrokerAndUnsignedInDriverNames) {
    LoCancellation canceller(4'294'967'295U);
    EXPECT_EQ(canceller.initialize(), ResultOk);
    EXPECT_EQ(canceller.onModuleInit(), ResultFailed);
    EXPECT_EQ(calls()[0], "broker-register ILoCancellation_-1");
    EXPECT_EQ(calls()[2], "driver-lookup channel.4294967295.tx.rf.mixer.i");
}

// What it cannot do without

TEST_F(LoCancellationSetupTest, WithoutADriverLayerNothingIsLookedFor) {
    LoCancellation& canceller = makeCanceller();
    for (const Presence presence :
         {Presence::absent, Presence::null, Presence::foreign, Presence::nullRecord}) {
        platform.setPresence("IDriverLayer", presence);
        forget();
        EXPECT_EQ(canceller.onModuleInit(), ResultFailed);
        EXPECT_EQ(calls(), (Lines{"broker-lookup IDriverLayer"}));
        EXPECT_EQ(traces(), (Lines{"error: LoCancellation failed to get driverlayer interface"}));
    }
}

TEST_F(LoCancellationSetupTest, MissingIDriversEndTheSetUp) {
    takeAwayDriver("channel.1.tx.rf.mixer.i");
    EXPECT_EQ(makeCanceller().onModuleInit(), ResultFailed);
    EXPECT_EQ(calls().back(), "driver-lookup channel.1.tx.bb.iq.coarse.dc.i.v.adjust");
    EXPECT_EQ(traces(),
              (Lines{"error: LoCancellation failed to get driver interface [channel.1.tx.rf.mixer.i] "
                     "or interface [channel.1.tx.bb.iq.coarse.dc.i.v.adjust] "
                     "(EDriverResult = 0x8001)"}));
}

TEST_F(LoCancellationSetupTest, MissingQDriversEndTheSetUp) {
    takeAwayDriver("channel.1.tx.rf.mixer.q");
    EXPECT_EQ(makeCanceller().onModuleInit(), ResultFailed);
    EXPECT_EQ(calls().back(), "driver-lookup channel.1.tx.bb.iq.coarse.dc.q.v.adjust");
    EXPECT_EQ(traces(),
              (Lines{"error: LoCancellation failed to get driver interface [channel.1.tx.rf.mixer.q] "
                     "or interface [channel.1.tx.bb.iq.coarse.dc.q.v.adjust] "
                     "(EDriverResult = 0x8001)"}));
}

TEST_F(LoCancellationSetupTest, MissingDetectorsEndTheSetUp) {
    takeAwayDriver("channel.1.tx.rf.detector.v");
    EXPECT_EQ(makeCanceller().onModuleInit(), ResultFailed);
    EXPECT_EQ(calls().back(), "driver-lookup channel.1.tx.rf.detector.low.v.detect");
    EXPECT_EQ(traces(),
              (Lines{"error: LoCancellation failed to get driver interface [channel.1.tx.rf.detector.v] or "
                     "interface [channel.1.tx.rf.detector.low.v.detect] (EDriverResult = 0x8001)"}));
}

TEST_F(LoCancellationSetupTest, LowDetectorNeedsTheHighOne) {
    useAlternatives();
    takeAwayDriver("channel.1.tx.rf.detector.high.v.detect");
    EXPECT_EQ(makeCanceller().onModuleInit(), ResultFailed);
    EXPECT_EQ(calls().back(), "driver-lookup channel.1.tx.rf.detector.high.v.detect");
    EXPECT_EQ(traces(), (Lines{"error: LoCancellation failed to get driver interface "
                               "[channel.1.tx.rf.detector.high.v.detect] (EDriverResult = 0x8001)"}));
}

TEST_F(LoCancellationSetupTest, CodeOfTheSecondLookupIsShown) {
    fail(Operation::driverLookup, "channel.1.tx.rf.mixer.i", 0x8031);
    fail(Operation::driverLookup, "channel.1.tx.bb.iq.coarse.dc.i.v.adjust", 0x8032);
    EXPECT_EQ(makeCanceller().onModuleInit(), ResultFailed);
    EXPECT_EQ(traces(),
              (Lines{"error: LoCancellation failed to get driver interface [channel.1.tx.rf.mixer.i] "
                     "or interface [channel.1.tx.bb.iq.coarse.dc.i.v.adjust] "
                     "(EDriverResult = 0x8032)"}));
}

TEST_F(LoCancellationSetupTest, WhatWasFoundBeforeAFailureStays) {
    takeAwayDriver("channel.1.tx.rf.mixer.q");
    LoCancellation& canceller = makeCanceller();
    EXPECT_EQ(canceller.onModuleInit(), ResultFailed);
    EXPECT_EQ(canceller.setIQ(5, 6), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.mixer.i=5"}));
}

// Incomplete records

TEST_F(LoCancellationSetupTest, RecordWithoutContextOrWriteGivesWayToTheAlternative) {
    addDriver("channel.1.tx.bb.iq.coarse.dc.i.v.adjust");
    for (const unsigned missing : {Standalone::wordContext, Standalone::wordWrite}) {
        driver("channel.1.tx.rf.mixer.i").setMissingWords(missing);
        LoCancellation canceller(1);
        EXPECT_EQ(canceller.onModuleInit(), ResultOk);
        forget();
        EXPECT_EQ(canceller.setIQ(5, 6), ResultOk);
        EXPECT_EQ(writes().front(), "channel.1.tx.bb.iq.coarse.dc.i.v.adjust=5");
    }
}

TEST_F(LoCancellationSetupTest, NullRecordGivesWayToTheAlternative) {
    addDriver("channel.1.tx.bb.iq.coarse.dc.q.v.adjust");
    platform.drivers().giveNullRecord("channel.1.tx.rf.mixer.q");
    EXPECT_EQ(bootCanceller().setIQ(5, 6), ResultOk);
    EXPECT_EQ(writes().back(), "channel.1.tx.bb.iq.coarse.dc.q.v.adjust=6");
}

TEST_F(LoCancellationSetupTest, IncompleteAlternativeFailsWithTheSuccessCodeAsLevel) {
    useAlternatives();
    driver("channel.1.tx.bb.iq.coarse.dc.i.v.adjust").setMissingWords(Standalone::wordContext);
    EXPECT_EQ(makeCanceller().onModuleInit(), ResultFailed);
    EXPECT_EQ(traces(),
              (Lines{"warning: LoCancellation failed to get driver interface [channel.1.tx.rf.mixer.i] or "
                     "interface [channel.1.tx.bb.iq.coarse.dc.i.v.adjust] (EDriverResult = 0x0)"}));
}

TEST_F(LoCancellationSetupTest, IncompleteHighDetectorFailsWithTheSuccessCodeAsLevel) {
    useAlternatives();
    driver("channel.1.tx.rf.detector.high.v.detect").setMissingWords(Standalone::wordWrite);
    EXPECT_EQ(makeCanceller().onModuleInit(), ResultFailed);
    EXPECT_EQ(traces(), (Lines{"warning: LoCancellation failed to get driver interface "
                               "[channel.1.tx.rf.detector.high.v.detect] (EDriverResult = 0x0)"}));
}

TEST_F(LoCancellationSetupTest, DetectorIsJudgedByItsWriteWordToo) {
    driver("channel.1.tx.rf.detector.v").setMissingWords(Standalone::wordWrite);
    EXPECT_EQ(makeCanceller().onModuleInit(), ResultFailed);
}

TEST_F(LoCancellationSetupTest, DetectorIsNotJudgedByItsReadWord) {
    driver("channel.1.tx.rf.detector.v").setMissingWords(Standalone::wordRead);
    EXPECT_EQ(makeCanceller().onModuleInit(), ResultOk);
}

TEST_F(LoCancellationSetupTest, OneDetectorForAllRangesIsEnough) {
    addDriver("channel.1.tx.rf.detector.low.v.detect");
    addDriver("channel.1.tx.rf.detector.high.v.detect");
    EXPECT_EQ(makeCanceller().onModuleInit(), ResultOk);
    EXPECT_EQ(calls()[3], "driver-lookup channel.1.tx.rf.detector.v");
    EXPECT_EQ(calls()[4], std::string("table-lookup ") + tableI);
}

// Tables

TEST_F(LoCancellationSetupTest, MissingTablesAreReportedAndNoFailure) {
    takeAwayTable(tableI);
    takeAwayTable(tableQ);
    fail(Operation::tableLookup, "Channel.1.Tx.Bb.Frequency.To.Coarse.Dc.Q.Compensation", 0x8023);
    EXPECT_EQ(makeCanceller().onModuleInit(), ResultOk);
    EXPECT_EQ(
        traces(),
        (Lines{"error: Unable to fetch table Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I "
               "(ECHResult = 0x8001)",
               "error: Unable to fetch table Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q "
               "(ECHResult = 0x8023)"}));
}

TEST_F(LoCancellationSetupTest, MissingTablesDoNotSwitchTheCorrectionOff) {
    takeAwayTable(tableI);
    takeAwayTable(tableQ);
    EXPECT_EQ(bootCanceller().setLoCancellation(18'000'000, 25), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.mixer.i=0", "channel.1.tx.rf.mixer.q=0"}));
}

TEST_F(LoCancellationSetupTest, CoarseDcTableForISwitchesTheCorrectionOff) {
    takeAwayTable(tableI);
    addCoarseDcTable("I");
    EXPECT_EQ(bootCanceller().setLoCancellation(18'000'000, 25), ResultOk);
    EXPECT_EQ(calls(), Lines{});
}

TEST_F(LoCancellationSetupTest, CoarseDcTableForQSwitchesTheCorrectionOff) {
    takeAwayTable(tableQ);
    addCoarseDcTable("Q");
    EXPECT_EQ(bootCanceller().setLoCancellation(18'000'000, 25), ResultOk);
    EXPECT_EQ(calls(), Lines{});
}

TEST_F(LoCancellationSetupTest, CoarseDcTableForISwitchesTheCorrectionOffAlsoWithoutAnyTableForQ) {
    takeAwayTable(tableI);
    takeAwayTable(tableQ);
    addCoarseDcTable("I");
    EXPECT_EQ(bootCanceller().setLoCancellation(18'000'000, 25), ResultOk);
    EXPECT_EQ(calls(), Lines{});
}

TEST_F(LoCancellationSetupTest, CorrectionSwitchedOffStillWritesWhatItIsGiven) {
    takeAwayTable(tableI);
    addCoarseDcTable("I");
    EXPECT_EQ(bootCanceller().setIQ(5, 6), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.mixer.i=5", "channel.1.tx.rf.mixer.q=6"}));
}

TEST_F(LoCancellationSetupTest, CoarseDcTableBesideTheUsualOneIsNotLookedFor) {
    addCoarseDcTable("I");
    addCoarseDcTable("Q");
    EXPECT_EQ(bootCanceller().setLoCancellation(18'000'000, 25), ResultOk);
    EXPECT_EQ(writes(), (Lines{"channel.1.tx.rf.mixer.i=1025", "channel.1.tx.rf.mixer.q=-1025"}));
}
