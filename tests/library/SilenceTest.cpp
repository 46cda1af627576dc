// What says nothing at the threshold with which the library begins, as docs/loading.md lists it, and what
// says more than one expects. The numbers stand for themselves: a carrier of 7442 MHz, an IF of 140 MHz.

#include "CTxIQImbalanceHandler.h"
#include "CallingObserver.h"
#include "FrequencyHandler_c.h"
#include "IFrequencyHandler.h"
#include "InterfaceBroker.h"
#include "ModuleTest.h"

using Standalone::Operation;
using Standalone::Presence;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class SilenceTest : public ModuleTest {
protected:
    // That of the library's sources, which wants notices and errors.
    SilenceTest() { platform.trace().setThreshold(Standalone::TraceLevel::notice); }
};

TEST_F(SilenceTest, RfModuleTunedBeforePhase11AnswersZeroAndWritesAndSaysNothing) {
    build(FrequencyHandlerRfModule);
    forget();
    EXPECT_EQ(module->setTxFrequency(7442000), ResultOk);
    EXPECT_EQ(module->setRxFrequency(7603000), ResultOk);
    EXPECT_THAT(writes(), IsEmpty());
    EXPECT_THAT(traces(), IsEmpty());
    EXPECT_EQ(frequencyOf("Tx"), 7442000U);
}

TEST_F(SilenceTest, RfModuleWithoutADriverSaysSoAtTheInformationLevelAlone) {
    platform.trace().setThreshold(Standalone::TraceLevel::information);
    build(FrequencyHandlerRfModule);
    forget();
    EXPECT_EQ(module->setTxFrequency(7442000), ResultOk);
    EXPECT_THAT(traces(), ElementsAre("information: setTxFrequency 7442000",
                                      "information: Write frequency to HW 7442000 for direction Tx",
                                      "information: Unable to write to rfFrequencyDriver for direction Tx"));
}

TEST_F(SilenceTest, WhatWasNotWrittenForWantOfADriverWasNotRefusedEither) {
    FrequencyHandlerModule* cModule = nullptr;
    ASSERT_EQ(FrequencyHandler_Create(1, FrequencyHandlerRfModule, &cModule), ResultOk);
    FrequencyHandlerTuning tuning{1, ResultFailed, 3, 4};
    EXPECT_EQ(FrequencyHandler_Tune(cModule, FrequencyHandlerTx, 7442000), ResultOk);
    EXPECT_EQ(FrequencyHandler_GetTuning(cModule, FrequencyHandlerTx, &tuning), ResultOk);
    EXPECT_EQ(tuning.result, ResultOk);
    EXPECT_EQ(tuning.code, 0);
    EXPECT_EQ(tuning.written, 0); // the one sign of it
    FrequencyHandler_Destroy(cModule);
    EXPECT_THAT(writes(), IsEmpty());
}

TEST_F(SilenceTest, RemoteUnitThatRefusesIsNotSaidAtAnyThreshold) {
    platform.trace().setThreshold(Standalone::TraceLevel::information);
    FrequencyHandlerModule* cModule = nullptr;
    ASSERT_EQ(FrequencyHandler_Create(1, FrequencyHandlerRau, &cModule), ResultOk);
    EXPECT_TRUE(run(11));
    fail(Operation::rauTx, "IRauHandler_1", 0x8010);
    forget();
    FrequencyHandlerTuning tuning{};
    EXPECT_EQ(FrequencyHandler_Tune(cModule, FrequencyHandlerTx, 7442000), ResultOk);
    EXPECT_EQ(FrequencyHandler_GetTuning(cModule, FrequencyHandlerTx, &tuning), ResultOk);
    EXPECT_EQ(tuning.result, ResultFailed);
    EXPECT_EQ(tuning.code, 0x8010);
    EXPECT_EQ(tuning.written, 0);
    FrequencyHandler_Destroy(cModule);
    EXPECT_THAT(complaints(), IsEmpty());
}

TEST_F(SilenceTest, DriverWhoseLookupFailedIsWrittenThroughAllTheSameWhenARecordWasLeft) {
    Standalone::Fault fault{Operation::driverLookup, "channel.1.tx.rf.frequency", 0x8001};
    fault.isCarriedOut = true;
    platform.calls().inject(fault);
    build(FrequencyHandlerRfModule);
    EXPECT_FALSE(run(11));
    EXPECT_EQ(module->setTxFrequency(7442000), ResultOk);
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.frequency=7442000"));
}

TEST_F(SilenceTest, ReceiverWithOffsetArrayTunedBeforePhase11MissesItsArrayAlone) {
    build(FrequencyHandlerMicrowaveBoardHzCsOffset);
    forget();
    EXPECT_EQ(module->setRxFrequency(7603000), ResultOk);
    EXPECT_THAT(writes(), IsEmpty());
    EXPECT_THAT(traces(), ElementsAre("error: channel.1.rx.rf.frequency.cs.offset.array was not found"));
}

TEST_F(SilenceTest, ReceiverWithoutTheContentOfHwCodeDspTakesTheDefaultOffsetWithoutAWord) {
    platform.variables().find("ChannelSpacing")->set({250});
    platform.variables().find("HwCodeDsp")->set({3});
    Standalone::Fault fault{Operation::variableAddress, "HwCodeDsp", 0};
    fault.givesNull = true;
    platform.calls().inject(fault);
    boot(FrequencyHandlerMicrowaveBoardHzCsOffset);
    EXPECT_EQ(module->setRxFrequency(7603000), ResultOk);
    EXPECT_THAT(traces(), IsEmpty());
    // The 3 would have it be half of 250, 125000. The default of 3000 kHz raises the LO, 7603 MHz.
    EXPECT_THAT(writes(),
                ElementsAre("channel.1.dsp.rx.freq.offset=0", "channel.1.rx.rf.lo.frequency.in.hz=7606000000",
                            "channel.1.rx.rf.pll.config=5"));
}

TEST_F(SilenceTest, TemperatureServiceThatRefusesIsNeverHeardAndNotMissed) {
    fail(Operation::temperatureRegister, "ITemperatureHandler", 0x8001);
    boot(FrequencyHandlerMicrowaveBoardIf);
    platform.temperature().set(30);
    EXPECT_THAT(traces(), IsEmpty());
    EXPECT_THAT(corrections(), IsEmpty());
    EXPECT_EQ(module->setTxFrequency(7442000), ResultOk);
    EXPECT_THAT(corrections(), ElementsAre("I at 7442000, 0", "Q at 7442000, 0"));
}

TEST_F(SilenceTest, TemperatureServiceThatIsNotPublishedIsNotMissed) {
    platform.setPresence("ITemperatureHandler", Presence::absent);
    boot(FrequencyHandlerMicrowaveBoardIf);
    platform.temperature().set(30);
    EXPECT_THAT(corrections(), ElementsAre("I at 0, 30", "Q at 0, 30"));
}

TEST_F(SilenceTest, CoarseDcTablesInThePlaceOfTheMixersEndAllCorrectionsWithoutAWord) {
    for (const std::string branch : {"I", "Q"}) {
        fail(Operation::tableLookup, "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer." + branch,
             0x8001);
        platform.tables().add(
            {"Channel.1.Tx.Bb.Frequency.To.Coarse.Dc." + branch + ".Compensation", {0}, {0}, {7}});
    }
    boot(FrequencyHandlerMicrowaveBoardIf);
    EXPECT_EQ(module->setTxFrequency(7442000), ResultOk);
    platform.temperature().set(30);
    EXPECT_THAT(corrections(), IsEmpty());
    EXPECT_THAT(writes(),
                ElementsAre("channel.1.tx.if.frequency=140000", "channel.1.tx.rf.lo.frequency=7302000",
                            "channel.1.tx.rf.pll.config=5"));
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(SilenceTest, LoConfigurationThatRefusesIsNotSaid) {
    platform.drivers().add("channel.1.tx.rf.lo.config");
    fail(Operation::driverWrite, "channel.1.tx.rf.lo.config", 0x8001);
    build(FrequencyHandlerMicrowaveBoardIf);
    EXPECT_TRUE(run(11));
    EXPECT_EQ(platform.drivers().find("channel.1.tx.rf.lo.config")->value(), 0);
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(SilenceTest, CarrierThatAnObserverSetsHasTheCorrectionOfTheOneBefore) {
    boot(FrequencyHandlerMicrowaveBoardIf);
    CallingObserver again([this](IFrequencyHandler* subject) {
        if (subject->getFrequency() == 7442000) {
            EXPECT_EQ(module->setTxFrequency(7470000), ResultOk);
        }
    });
    InterfaceBroker::getInstance()
        .getInterface<IFrequencyHandler>("IFrequencyHandler_Tx_1")
        ->registerObserver(&again);
    EXPECT_EQ(module->setTxFrequency(7442000), ResultOk);
    EXPECT_THAT(corrections(),
                ElementsAre("I at 7470000, 0", "Q at 7470000, 0", "I at 7442000, 0", "Q at 7442000, 0"));
    forget();
    platform.temperature().set(25); // which puts it right
    EXPECT_THAT(corrections(), ElementsAre("I at 7470000, 25", "Q at 7470000, 25"));
}

TEST_F(SilenceTest, ReceiverOfAMicrowaveBoardTunedBeforePhase11MissesItsTableAlone) {
    build(FrequencyHandlerMicrowaveBoardHz);
    forget();
    EXPECT_EQ(module->setRxFrequency(7603000), ResultOk);
    EXPECT_THAT(writes(), IsEmpty());
    EXPECT_THAT(traces(),
                ElementsAre("error: Unable to fetch value from table "
                            "Channel.1.Rx.Rf.Pll.Frequency.To.Chargepump.Setting (ECHResult = 0x8003)"));
}

TEST_F(SilenceTest, TransmitterOfAMicrowaveBoardTunedBeforePhase11MissesItsTables) {
    build(FrequencyHandlerMicrowaveBoardHz);
    forget();
    EXPECT_EQ(module->setTxFrequency(7442000), ResultOk);
    EXPECT_THAT(writes(), IsEmpty());
    EXPECT_THAT(
        traces(),
        ElementsAre("error: Unable to fetch value from table "
                    "Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting (ECHResult = 0x8003)",
                    "error: Unable to fetch value from table "
                    "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I (ECHResult = 0x8003)",
                    "error: Unable to fetch value from table "
                    "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q (ECHResult = 0x8003)"));
}

TEST_F(SilenceTest, Phase5OfAReceiverWithOffsetArrayFailsWithoutAWordAtAnyThreshold) {
    platform.trace().setThreshold(Standalone::TraceLevel::information);
    for (const char* const variable : {"HwCodeDsp", "channel.1.rx.rf.frequency.cs.offset.arraysize",
                                       "channel.1.rx.rf.frequency.cs.offset.array"}) {
        build(FrequencyHandlerMicrowaveBoardHzCsOffset);
        EXPECT_TRUE(run(11));
        fail(Operation::variableAddress, variable, 0x8001);
        forget();
        EXPECT_FALSE(run(5)) << variable;
        EXPECT_THAT(traces(), ElementsAre("information: onPhaseModuleStorageObjectsRetreived")) << variable;
        platform.calls().clearAll();
    }
}

TEST_F(SilenceTest, DriverThatLosesItsWriteAfterPhase11IsNotSaid) {
    boot(FrequencyHandlerMicrowaveBoardIf);
    for (const char* const driver : {"rf.lo.frequency", "if.frequency", "rf.pll.config", "rf.mixer.i"}) {
        platform.drivers().find(std::string("channel.1.tx.") + driver)->record()->write = nullptr;
    }
    EXPECT_EQ(module->setTxFrequency(7442000), ResultOk);
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.mixer.q=12"));
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(SilenceTest, CompensationNamesNeitherDriverNorTableThatItMisses) {
    addCompensation(1);
    CTxIQImbalanceHandler handler(1);
    fail(Operation::driverLookup, "channel.1.dsp.tx.dc.compensation.q", 0x8001);
    EXPECT_EQ(CTxIQImbalanceHandler::onPhaseActivation(&handler, 11, ECallbackPriority{3}), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre("error: CTxIQImbalanceHandler failed to get driver interface"));
}

TEST_F(SilenceTest, UnknownTypeIsSaidAtTheInformationLevelAlone) {
    build(6);
    EXPECT_THAT(traces(), IsEmpty());
    EXPECT_EQ(module->setTxFrequency(7442000), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre("error: setTxFrequency called on a module without handlers"));
}

TEST_F(SilenceTest, OptionalVariablesThatAreMissingAreErrorsAtEachBoot) {
    fail(Operation::variableGet, "channel.1.tx.rf.spectruminverted", 0x8001);
    fail(Operation::variableGet, "channel.1.tx.baseband.spectruminverted", 0x8001);
    build(FrequencyHandlerMicrowaveBoardHz);
    EXPECT_TRUE(run(11));
    forget();
    EXPECT_TRUE(run(5));
    EXPECT_THAT(traces(),
                ElementsAre("error: Could not get the variable channel.1.tx.rf.spectruminverted from "
                            "the database",
                            "error: Could not get the variable "
                            "channel.1.tx.baseband.spectruminverted from the database"));
}

TEST_F(SilenceTest, TwoModulesOfOneChannelHaveOneNameAndTheFirstToGoTakesItAway) {
    build(FrequencyHandlerRfModule);
    auto second = std::make_unique<::FrequencyHandler>(1, ::FrequencyHandler::RfModule);
    EXPECT_EQ(module->setTxFrequency(7442000), ResultOk);
    EXPECT_EQ(second->setTxFrequency(7484000), ResultOk);
    EXPECT_EQ(frequencyOf("Tx"), 7442000U);
    second.reset();
    EXPECT_EQ(InterfaceBroker::getInstance().findInterface("IFrequencyHandler_Tx_1"), nullptr);
}

} // namespace
