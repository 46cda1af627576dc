// What the frequency module does in each phase, and where a phase stops.

#include "ModuleTest.h"

#include <algorithm>

using Standalone::Operation;
using Standalone::Presence;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Range;

namespace {

using FrequencyModulePhaseTest = ModuleTest;
using EveryType = ModuleTypeTest;

class TemperatureServicePresence : public ModuleTest, public testing::WithParamInterface<Presence> {};

} // namespace

// Module initialisation

TEST_F(FrequencyModulePhaseTest, InitialisesTransmitterThenReceiverThenSubscribesToTheTemperature) {
    build(1);
    forget();
    startStory();
    EXPECT_EQ(module->onModuleInit(), ResultOk);
    EXPECT_THAT(story,
                ElementsAre("trace onModuleInit", "broker-lookup IDriverLayer",
                            "driver-lookup channel.1.tx.rf.frequency", "broker-lookup IDriverLayer",
                            "driver-lookup channel.1.rx.rf.frequency", "broker-lookup ITemperatureHandler",
                            "temperature-register ITemperatureHandler"));
    EXPECT_THAT(traces(), ElementsAre("information: onModuleInit"));
}

TEST_F(FrequencyModulePhaseTest, FailedTransmitterStopsTheInitialisation) {
    fail(Operation::driverLookup, "channel.1.tx.rf.frequency", 0x8001);
    build(1);
    EXPECT_EQ(module->onModuleInit(), ResultFailed);
    EXPECT_THAT(objectsOf(Operation::driverLookup), ElementsAre("tx.rf.frequency"));
    EXPECT_EQ(platform.temperature().observerCount(), 0U);
}

TEST_F(FrequencyModulePhaseTest, FailedReceiverStopsTheInitialisation) {
    fail(Operation::driverLookup, "channel.1.rx.rf.lo.frequency", 0x8001);
    build(0);
    EXPECT_EQ(module->onModuleInit(), ResultFailed);
    EXPECT_EQ(objectsOf(Operation::driverLookup).back(), "rx.rf.lo.frequency");
    EXPECT_EQ(platform.temperature().observerCount(), 0U);
}

TEST_F(FrequencyModulePhaseTest, FailedCancellerStopsTheInitialisationLast) {
    fail(Operation::driverLookup, "channel.1.tx.rf.mixer.i", 0x8001);
    build(0);
    EXPECT_EQ(module->onModuleInit(), ResultFailed);
    EXPECT_THAT(complaints(),
                ElementsAre("error: LoCancellation failed to get driver interface "
                            "[channel.1.tx.rf.mixer.i] or interface "
                            "[channel.1.tx.bb.iq.coarse.dc.i.v.adjust] (EDriverResult = 0x8001)"));
    EXPECT_EQ(platform.temperature().observerCount(), 0U);
}

TEST_F(FrequencyModulePhaseTest, FailedPhaseAddsNoMessageToThatOfTheHandler) {
    fail(Operation::driverLookup, "channel.1.rx.rf.frequency", 0x8001);
    build(1);
    module->onModuleInit();
    EXPECT_THAT(traces(), ElementsAre("information: onModuleInit",
                                      "error: onModuleInit failed to get driver interface "
                                      "[channel.1.rx.rf.frequency] (EDriverResult = 0x8001)"));
}

TEST_F(FrequencyModulePhaseTest, RefusedTemperatureSubscriptionIsIgnoredWithoutAMessage) {
    fail(Operation::temperatureRegister, "ITemperatureHandler", 0x8000);
    build(1);
    EXPECT_EQ(module->onModuleInit(), ResultOk);
    EXPECT_THAT(complaints(), IsEmpty());
}

TEST_P(TemperatureServicePresence, DoesNotMatterToTheSubscription) {
    platform.setPresence("ITemperatureHandler", GetParam());
    build(1);
    EXPECT_EQ(module->onModuleInit(), ResultOk);
    EXPECT_EQ(platform.temperature().observerCount(), 1U);
    EXPECT_THAT(complaints(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(InTheBroker, TemperatureServicePresence,
                         testing::Values(Presence::absent, Presence::null, Presence::foreign));

// Which drivers each type asks for shows the flags of its two handlers.

TEST_F(FrequencyModulePhaseTest, Type0AsksForTheIfSynthesiserInBothDirections) {
    build(0);
    run(11);
    EXPECT_THAT(objectsOf(Operation::driverLookup),
                ElementsAre("tx.rf.lo.frequency", "tx.if.frequency", "tx.rf.lo.config", "tx.rf.pll.config",
                            "rx.rf.lo.frequency", "rx.if.frequency", "rx.rf.lo.config", "rx.rf.pll.config",
                            "tx.rf.mixer.i", "tx.rf.mixer.q", "tx.rf.detector.v"));
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.if.frequency=0", "channel.1.rx.if.frequency=0"));
}

TEST_F(FrequencyModulePhaseTest, Type2AsksForTheDspOffsetForItsReceiverOnly) {
    build(2);
    run(11);
    EXPECT_THAT(objectsOf(Operation::driverLookup),
                ElementsAre("tx.rf.lo.frequency", "tx.if.frequency", "tx.rf.lo.config", "tx.rf.pll.config",
                            "rx.rf.lo.frequency", "rx.if.frequency", "rx.rf.lo.config", "rx.rf.pll.config",
                            "dsp.rx.freq.offset", "tx.rf.mixer.i", "tx.rf.mixer.q", "tx.rf.detector.v"));
    EXPECT_THAT(writes(), IsEmpty());
}

TEST_F(FrequencyModulePhaseTest, Type3AsksForTheLoInHzAndForItsReceiverForTheDspOffset) {
    build(3);
    run(11);
    EXPECT_THAT(objectsOf(Operation::driverLookup),
                ElementsAre("tx.rf.lo.frequency", "tx.rf.lo.frequency.in.hz", "tx.if.frequency",
                            "tx.rf.lo.config", "tx.rf.pll.config", "rx.rf.lo.frequency",
                            "rx.rf.lo.frequency.in.hz", "rx.if.frequency", "rx.rf.lo.config",
                            "rx.rf.pll.config", "dsp.rx.freq.offset", "tx.rf.mixer.i", "tx.rf.mixer.q",
                            "tx.rf.detector.v"));
    EXPECT_THAT(writes(), IsEmpty());
}

TEST_F(FrequencyModulePhaseTest, Type5AsksForTheLoInHzInBothDirections) {
    build(5);
    run(11);
    EXPECT_THAT(objectsOf(Operation::driverLookup),
                ElementsAre("tx.rf.lo.frequency", "tx.rf.lo.frequency.in.hz", "tx.if.frequency",
                            "tx.rf.lo.config", "tx.rf.pll.config", "rx.rf.lo.frequency",
                            "rx.rf.lo.frequency.in.hz", "rx.if.frequency", "rx.rf.lo.config",
                            "rx.rf.pll.config", "tx.rf.mixer.i", "tx.rf.mixer.q", "tx.rf.detector.v"));
    EXPECT_THAT(writes(), IsEmpty());
}

TEST_F(FrequencyModulePhaseTest, RfModuleAsksForOneDriverInEachDirectionAndNoTable) {
    build(1);
    run(11);
    EXPECT_THAT(objectsOf(Operation::driverLookup), ElementsAre("tx.rf.frequency", "rx.rf.frequency"));
    EXPECT_THAT(objectsOf(Operation::tableLookup), IsEmpty());
}

TEST_F(FrequencyModulePhaseTest, RauAsksForItsInterfaceInEachDirectionAndNoDriver) {
    build(4);
    run(11);
    EXPECT_THAT(objectsOf(Operation::brokerLookup),
                ElementsAre("IRauHandler_1", "IRauHandler_1", "ITemperatureHandler"));
    EXPECT_THAT(objectsOf(Operation::driverLookup), IsEmpty());
    EXPECT_THAT(objectsOf(Operation::tableLookup), IsEmpty());
}

// Storage objects retrieved

TEST_F(FrequencyModulePhaseTest, StoragePhaseReadsTransmitterThenReceiver) {
    build(0);
    forget();
    EXPECT_EQ(module->onPhaseModuleStorageObjectsRetreived(), ResultOk);
    EXPECT_THAT(objectsOf(Operation::variableGet),
                ElementsAre("tx.mixer.multiplicationfactor", "tx.rf.spectruminverted",
                            "tx.baseband.spectruminverted", "tx.if.frequency", "TxIfBb",
                            "rx.mixer.multiplicationfactor", "rx.rf.spectruminverted",
                            "rx.baseband.spectruminverted", "rx.if.frequency", "RxIfBb"));
    EXPECT_THAT(traces(), ElementsAre("information: onPhaseModuleStorageObjectsRetreived"));
}

TEST_F(FrequencyModulePhaseTest, Type2ReadsNeitherIfNorOffsetArray) {
    build(2);
    run(5);
    EXPECT_THAT(objectsOf(Operation::variableGet),
                ElementsAre("tx.mixer.multiplicationfactor", "tx.rf.spectruminverted",
                            "tx.baseband.spectruminverted", "TxIfBb", "rx.mixer.multiplicationfactor",
                            "rx.rf.spectruminverted", "rx.baseband.spectruminverted", "RxIfBb"));
    EXPECT_THAT(objectsOf(Operation::variableAddress), IsEmpty());
}

TEST_F(FrequencyModulePhaseTest, Type3ReadsTheOffsetArrayForItsReceiverOnly) {
    build(3);
    run(5);
    EXPECT_EQ(objectsOf(Operation::variableGet).size(), 8U);
    EXPECT_THAT(
        objectsOf(Operation::variableAddress),
        ElementsAre("HwCodeDsp", "rx.rf.frequency.cs.offset.arraysize", "rx.rf.frequency.cs.offset.array"));
}

TEST_F(FrequencyModulePhaseTest, Type5ReadsNeitherIfNorOffsetArray) {
    build(5);
    run(5);
    EXPECT_EQ(objectsOf(Operation::variableGet).size(), 8U);
    EXPECT_THAT(objectsOf(Operation::variableAddress), IsEmpty());
}

TEST_F(FrequencyModulePhaseTest, StoragePhaseIsTracedBeforeItsWork) {
    build(5);
    startStory();
    EXPECT_EQ(module->onPhaseModuleStorageObjectsRetreived(), ResultOk);
    EXPECT_EQ(story[0], "trace onPhaseModuleStorageObjectsRetreived");
    EXPECT_EQ(story[1], "variable-get channel.1.tx.mixer.multiplicationfactor");
    EXPECT_EQ(story.size(), 9U);
}

TEST_F(FrequencyModulePhaseTest, FailedTransmitterStopsTheStoragePhase) {
    fail(Operation::variableGet, "channel.1.tx.mixer.multiplicationfactor", 0x8001);
    build(0);
    forget();
    EXPECT_EQ(module->onPhaseModuleStorageObjectsRetreived(), ResultFailed);
    EXPECT_THAT(objectsOf(Operation::variableGet), ElementsAre("tx.mixer.multiplicationfactor"));
    EXPECT_THAT(complaints(), ElementsAre("error: Could not get the variable "
                                          "channel.1.tx.mixer.multiplicationfactor from the database"));
}

TEST_F(FrequencyModulePhaseTest, FailedReceiverFailsTheStoragePhase) {
    fail(Operation::variableGet, "RxIfBb", 0x8001);
    build(0);
    EXPECT_EQ(module->onPhaseModuleStorageObjectsRetreived(), ResultFailed);
}

// Post frame-format load

TEST_F(FrequencyModulePhaseTest, FrameFormatPhaseReadsTransmitterThenReceiver) {
    build(0);
    startStory();
    EXPECT_EQ(module->onPhasePostFrameformatLoad(), ResultOk);
    EXPECT_THAT(
        story, ElementsAre("trace onPhasePostFrameformatLoad", "variable-get TxIfBb", "variable-get RxIfBb"));
    EXPECT_THAT(traces(), ElementsAre("information: onPhasePostFrameformatLoad"));
}

TEST_F(FrequencyModulePhaseTest, OnlyReceiversOfTypes2And3ReadTheChannelSpacing) {
    for (const int type : {0, 1, 4, 5}) {
        build(type);
        run(20);
        EXPECT_THAT(objectsOf(Operation::variableAddress), IsEmpty()) << type;
    }
    for (const int type : {2, 3}) {
        build(type);
        run(20);
        EXPECT_THAT(objectsOf(Operation::variableAddress), ElementsAre("ChannelSpacing")) << type;
    }
}

TEST_F(FrequencyModulePhaseTest, FailedTransmitterStopsTheFrameFormatPhase) {
    fail(Operation::variableGet, "TxIfBb", 0x8001);
    build(0);
    forget();
    EXPECT_EQ(module->onPhasePostFrameformatLoad(), ResultFailed);
    EXPECT_THAT(calls(), ElementsAre("variable-get TxIfBb"));
}

TEST_F(FrequencyModulePhaseTest, FailedReceiverFailsTheFrameFormatPhase) {
    fail(Operation::variableGet, "RxIfBb", 0x8001);
    build(0);
    EXPECT_EQ(module->onPhasePostFrameformatLoad(), ResultFailed);
}

// The phases as the module manager runs them

TEST_F(FrequencyModulePhaseTest, StorageAndFrameFormatPhasesOfRfModuleAndRauCallNothing) {
    for (const int type : {1, 4}) {
        build(type);
        forget();
        EXPECT_TRUE(run(5));
        EXPECT_TRUE(run(20));
        EXPECT_THAT(calls(), IsEmpty()) << type;
    }
}

TEST_P(EveryType, TunesAfterItsThreePhases) {
    boot(GetParam());
    EXPECT_EQ(module->setTxFrequency(7442000), ResultOk);
    EXPECT_EQ(module->setRxFrequency(7603000), ResultOk);
    EXPECT_THAT(complaints(), IsEmpty());
    EXPECT_FALSE(writes().empty());
}

TEST_P(EveryType, WritesTheSameAfterItsPhasesAreRunAgain) {
    boot(GetParam());
    module->setTxFrequency(7442000);
    const Lines before = writes();
    EXPECT_TRUE(run(11) && run(5) && run(20));
    forget();
    module->setTxFrequency(7442000);
    EXPECT_EQ(writes(), before);
}

TEST_P(EveryType, HearsATemperatureOnceAfterItsInitialisationIsRunAgain) {
    boot(GetParam());
    EXPECT_TRUE(run(11));
    forget();
    platform.temperature().set(25);
    const Lines all = traces();
    EXPECT_EQ(std::count(all.begin(), all.end(), "information: notifyTemperature called with temp = 25"), 1);
}

TEST_F(FrequencyModulePhaseTest, InitialisationRunAgainStartsTheIfSynthesiserOnItsFrequency) {
    boot(0);
    EXPECT_TRUE(run(11));
    EXPECT_THAT(writes(),
                ElementsAre("channel.1.tx.if.frequency=140000", "channel.1.rx.if.frequency=140000"));
}

INSTANTIATE_TEST_SUITE_P(Booted, EveryType, Range(0, 6));
