#include "FrequencyHandler_RfModule.h"
#include "RadioTest.h"

#include <memory>
#include <string>

using Standalone::Operation;
using Standalone::Presence;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* txDriver = "channel.1.tx.rf.frequency";

/** The transmit handler of channel 1, whose driver is there. */
class RfModuleTest : public RadioTest {
protected:
    using Handler = RL::FrequencyHandler::RfModule::FrequencyHandler;

    RfModuleTest() { forget(); }

    /** Another handler looks its driver up: the names that it asks for. */
    Lines lookups(const std::string& direction, int channel) {
        Handler other(direction, channel);
        forget();
        other.onModuleInit();
        return calls();
    }

    Standalone::Driver& driver = platform.drivers().add(txDriver);
    Handler handler{"Tx", 1};
};

} // namespace

// Construction and destruction

TEST_F(RfModuleTest, ConstructionLooksNothingUp) {
    const Handler other("Rx", 1);
    EXPECT_THAT(calls(), ElementsAre("broker-register IFrequencyHandler_Rx_1"));
}

TEST_F(RfModuleTest, DestructionOnlyWithdrawsTheHandler) {
    auto other = std::make_unique<Handler>("Rx", 1);
    forget();
    other.reset();
    EXPECT_THAT(calls(), ElementsAre("broker-unregister IFrequencyHandler_Rx_1"));
}

// Lookup

TEST_F(RfModuleTest, LooksUpTheDriverOfItsDirectionAndChannel) {
    EXPECT_EQ(handler.onModuleInit(), ResultOk);
    EXPECT_THAT(calls(),
                ElementsAre("broker-lookup IDriverLayer", "driver-lookup channel.1.tx.rf.frequency"));
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(RfModuleTest, ReceiverOfChannelThreeLooksUpItsOwnDriver) {
    EXPECT_THAT(lookups("Rx", 3),
                ElementsAre("broker-lookup IDriverLayer", "driver-lookup channel.3.rx.rf.frequency"));
}

TEST_F(RfModuleTest, ChannelZeroStandsInTheDriverName) {
    EXPECT_THAT(lookups("Rx", 0),
                ElementsAre("broker-lookup IDriverLayer", "driver-lookup channel.0.rx.rf.frequency"));
}

TEST_F(RfModuleTest, DirectionOfAnyCaseIsLookedUpInLowerCase) {
    EXPECT_THAT(lookups("TX", 0),
                ElementsAre("broker-lookup IDriverLayer", "driver-lookup channel.0.tx.rf.frequency"));
}

TEST_F(RfModuleTest, NegativeChannelKeepsItsMinusSign) {
    EXPECT_THAT(lookups("Tx", -2),
                ElementsAre("broker-lookup IDriverLayer", "driver-lookup channel.-2.tx.rf.frequency"));
}

class RfModuleWithoutDriverLayerTest : public RfModuleTest, public testing::WithParamInterface<Presence> {};

TEST_P(RfModuleWithoutDriverLayerTest, InitialisationFailsAndSaysSo) {
    platform.setPresence("IDriverLayer", GetParam());
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre("error: Unable to get DriverLayer Interface"));
    EXPECT_THAT(calls(), ElementsAre("broker-lookup IDriverLayer"));
}

INSTANTIATE_TEST_SUITE_P(AbsentNullForeignNullRecord, RfModuleWithoutDriverLayerTest,
                         testing::Values(Presence::absent, Presence::null, Presence::foreign,
                                         Presence::nullRecord));

TEST_F(RfModuleTest, FailedLookupIsTracedWithNameAndCode) {
    fail(Operation::driverLookup, txDriver, 0x8123);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre("error: onModuleInit failed to get driver interface "
                                      "[channel.1.tx.rf.frequency] (EDriverResult = 0x8123)"));
}

TEST_F(RfModuleTest, LookupAnswering0x8000HasFailed) {
    fail(Operation::driverLookup, txDriver, 0x8000);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
}

TEST_F(RfModuleTest, LookupAnswering0x7FFFHasSucceeded) {
    fail(Operation::driverLookup, txDriver, 0x7FFF);
    EXPECT_EQ(handler.onModuleInit(), ResultOk);
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(RfModuleTest, LookupAnswering0xFFFFFFFFHasSucceeded) {
    fail(Operation::driverLookup, txDriver, -1);
    EXPECT_EQ(handler.onModuleInit(), ResultOk);
}

// A success that came with too little is traced at the level of the success code: here a warning.

TEST_F(RfModuleTest, NullRecordFailsTheInitialisation) {
    platform.drivers().giveNullRecord(txDriver);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre("warning: onModuleInit failed to get driver interface "
                                      "[channel.1.tx.rf.frequency] (EDriverResult = 0x0)"));
}

TEST_F(RfModuleTest, RecordWithoutContextFailsTheInitialisation) {
    driver.setMissingWords(Standalone::wordContext);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre("warning: onModuleInit failed to get driver interface "
                                      "[channel.1.tx.rf.frequency] (EDriverResult = 0x0)"));
}

TEST_F(RfModuleTest, RecordWithoutWriteFailsTheInitialisation) {
    driver.setMissingWords(Standalone::wordWrite);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre("warning: onModuleInit failed to get driver interface "
                                      "[channel.1.tx.rf.frequency] (EDriverResult = 0x0)"));
}

TEST_F(RfModuleTest, RecordNeedsNeitherWriteBufferNorRead) {
    driver.setMissingWords(Standalone::wordWriteBuffer | Standalone::wordRead);
    EXPECT_EQ(handler.onModuleInit(), ResultOk);
}

TEST_F(RfModuleTest, IncompleteRecordIsTracedAtTheLevelOfTheLookupCode) {
    driver.setMissingWords(Standalone::wordContext);
    fail(Operation::driverLookup, txDriver, 256);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre("notice: onModuleInit failed to get driver interface "
                                      "[channel.1.tx.rf.frequency] (EDriverResult = 0x100)"));
}

TEST_F(RfModuleTest, FailureDoesNotDependOnItsMessageBeingWanted) {
    platform.trace().setThreshold(Standalone::TraceLevel::error);
    driver.setMissingWords(Standalone::wordContext);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(RfModuleTest, InitialisationMayBeRepeatedAndLooksUpAgain) {
    driver.setMissingWords(Standalone::wordWrite);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    driver.setMissingWords(0);
    forget();
    EXPECT_EQ(handler.onModuleInit(), ResultOk);
    EXPECT_THAT(calls(),
                ElementsAre("broker-lookup IDriverLayer", "driver-lookup channel.1.tx.rf.frequency"));
}

// Variables

TEST_F(RfModuleTest, ReadsNoVariables) {
    EXPECT_EQ(handler.getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(handler.getFFVariablesFromDatabase(), ResultOk);
    EXPECT_THAT(calls(), IsEmpty());
}

// Write

TEST_F(RfModuleTest, WritesTheFrequencyUnchanged) {
    handler.onModuleInit();
    EXPECT_EQ(handler.writeFrequencyToHW(7442000), ResultOk);
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.frequency=7442000"));
    EXPECT_THAT(traces(), ElementsAre("information: Write frequency to HW 7442000 for direction Tx"));
}

TEST_F(RfModuleTest, FrequencyAbove31BitsIsWrittenAsItsBitPattern) {
    handler.onModuleInit();
    EXPECT_EQ(handler.writeFrequencyToHW(4294967295UL), ResultOk);
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.frequency=-1"));
    EXPECT_THAT(traces(), ElementsAre("information: Write frequency to HW -1 for direction Tx"));
}

TEST_F(RfModuleTest, WriteBeforeInitialisationIsASuccessThatWritesNothing) {
    EXPECT_EQ(handler.writeFrequencyToHW(7442000), ResultOk);
    EXPECT_THAT(writes(), IsEmpty());
    EXPECT_THAT(traces(), ElementsAre("information: Write frequency to HW 7442000 for direction Tx",
                                      "information: Unable to write to rfFrequencyDriver for direction Tx"));
}

TEST_F(RfModuleTest, WriteAfterAFailedLookupIsASuccessThatWritesNothing) {
    fail(Operation::driverLookup, txDriver, 0x8001);
    handler.onModuleInit();
    EXPECT_EQ(handler.writeFrequencyToHW(7442000), ResultOk);
    EXPECT_THAT(writes(), IsEmpty());
}

TEST_F(RfModuleTest, RecordThatFailedTheChecksIsStillWrittenTo) {
    driver.setMissingWords(Standalone::wordContext);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    driver.setMissingWords(0);
    EXPECT_EQ(handler.writeFrequencyToHW(7442000), ResultOk);
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.frequency=7442000"));
}

TEST_F(RfModuleTest, RecordWithoutContextIsStillWrittenTo) {
    driver.setMissingWords(Standalone::wordContext);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    forget();
    EXPECT_EQ(handler.writeFrequencyToHW(7442000), ResultFailed); // this platform's drivers refuse it
    EXPECT_THAT(complaints(), ElementsAre("error: Write to driver failed for channel.1.Tx.rf.frequency "
                                          "(EDriverResult = 0x8003)"));
}

TEST_F(RfModuleTest, FailedRepeatedLookupKeepsTheDriver) {
    EXPECT_EQ(handler.onModuleInit(), ResultOk);
    fail(Operation::driverLookup, txDriver, 0x8001);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    handler.writeFrequencyToHW(7442000);
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.frequency=7442000"));
}

TEST_F(RfModuleTest, RepeatedInitialisationWithoutDriverLayerKeepsTheDriver) {
    EXPECT_EQ(handler.onModuleInit(), ResultOk);
    platform.setPresence("IDriverLayer", Presence::absent);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    handler.writeFrequencyToHW(7442000);
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.frequency=7442000"));
}

TEST_F(RfModuleTest, WriteWithoutAWriteOperationIsASuccessThatWritesNothing) {
    handler.onModuleInit();
    driver.setMissingWords(Standalone::wordWrite);
    forget();
    EXPECT_EQ(handler.writeFrequencyToHW(7442000), ResultOk);
    EXPECT_THAT(writes(), IsEmpty());
    EXPECT_THAT(traces(), ElementsAre("information: Write frequency to HW 7442000 for direction Tx",
                                      "information: Unable to write to rfFrequencyDriver for direction Tx"));
}

TEST_F(RfModuleTest, FailedWriteIsTracedWithTheDirectionAsGivenAndTheCode) {
    platform.drivers().add("channel.3.rx.rf.frequency");
    fail(Operation::driverWrite, "channel.3.rx.rf.frequency", 0x8001);
    Handler receiver("Rx", 3);
    receiver.onModuleInit();
    EXPECT_EQ(receiver.writeFrequencyToHW(7442000), ResultFailed);
    EXPECT_THAT(
        complaints(),
        ElementsAre("error: Write to driver failed for channel.3.Rx.rf.frequency (EDriverResult = 0x8001)"));
}

TEST_F(RfModuleTest, FailedWriteYields0x8000WhateverTheCode) {
    handler.onModuleInit();
    fail(Operation::driverWrite, txDriver, 0x7FFFFFFF);
    EXPECT_EQ(static_cast<int>(handler.writeFrequencyToHW(1)), 0x8000);
}

TEST_F(RfModuleTest, FailedWriteDoesNotDependOnItsMessageBeingWanted) {
    handler.onModuleInit();
    fail(Operation::driverWrite, txDriver, 0x8001);
    platform.trace().setThreshold(Standalone::TraceLevel::off);
    EXPECT_EQ(handler.writeFrequencyToHW(1), ResultFailed);
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(RfModuleTest, WriteAnswering0x8000HasFailed) {
    handler.onModuleInit();
    fail(Operation::driverWrite, txDriver, 0x8000);
    EXPECT_EQ(handler.writeFrequencyToHW(1), ResultFailed);
}

TEST_F(RfModuleTest, WriteAnswering0x7FFFHasSucceeded) {
    handler.onModuleInit();
    fail(Operation::driverWrite, txDriver, 0x7FFF);
    EXPECT_EQ(handler.writeFrequencyToHW(1), ResultOk);
    EXPECT_THAT(complaints(), IsEmpty());
}

TEST_F(RfModuleTest, WriteAnswering0xFFFFFFFFHasSucceeded) {
    handler.onModuleInit();
    fail(Operation::driverWrite, txDriver, -1);
    EXPECT_EQ(handler.writeFrequencyToHW(1), ResultOk);
    EXPECT_THAT(complaints(), IsEmpty());
}

TEST_F(RfModuleTest, FailedWriteIsNotRepeated) {
    handler.onModuleInit();
    fail(Operation::driverWrite, txDriver, 0x8001);
    handler.setRfFrequency(1);
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.frequency=1"));
}
