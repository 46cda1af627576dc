// Carriers and temperatures given to the frequency module, and what follows from them.

#include "CallingObserver.h"
#include "IFrequencyHandler.h"
#include "InterfaceBroker.h"
#include "ModuleTest.h"

using Standalone::Operation;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Values;

namespace {

class FrequencyModuleTuneTest : public ModuleTest {
protected:
    /** Has the observer tell of itself in the story. */
    void observe(const std::string& direction) {
        auto& broker = InterfaceBroker::getInstance();
        broker.getInterface<IFrequencyHandler>("IFrequencyHandler_" + direction + "_1")
            ->registerObserver(&m_observer);
        forget();
    }

private:
    CallingObserver m_observer{[this](IFrequencyHandler* subject) {
        story.push_back("told " + std::to_string(subject->getFrequency()));
    }};
};

using TypeThatCorrects = ModuleTypeTest;
using TypeThatDoesNotCorrect = ModuleTypeTest;

} // namespace

// Order

TEST_F(FrequencyModuleTuneTest, TransmitCarrierIsWrittenThenObserversAreToldThenTheLeakageIsCorrected) {
    boot(5);
    observe("Tx");
    startStory();
    EXPECT_EQ(module->setTxFrequency(7442000), ResultOk);
    EXPECT_THAT(story,
                ElementsAre("trace setTxFrequency 7442000", "trace channel.1.Tx.if.pll 0",
                            "trace channel.1.Tx.rf.pll 7442000000", "trace channel.1.Tx.ifSideband -1",
                            "trace channel.1.Tx.rfSideband -1", "trace TxIfBb 0",
                            "driver-write-buffer channel.1.tx.rf.lo.frequency.in.hz",
                            "table-linear Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting",
                            "driver-write channel.1.tx.rf.pll.config", "told 7442000",
                            "table-bilinear Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I",
                            "table-bilinear Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q",
                            "driver-write channel.1.tx.rf.mixer.i", "driver-write channel.1.tx.rf.mixer.q"));
}

TEST_F(FrequencyModuleTuneTest, ReceiveCarrierIsWrittenThenObserversAreTold) {
    boot(1);
    observe("Rx");
    startStory();
    EXPECT_EQ(module->setRxFrequency(7603000), ResultOk);
    EXPECT_THAT(story, ElementsAre("trace setRxFrequency 7603000",
                                   "trace Write frequency to HW 7603000 for direction Rx",
                                   "driver-write channel.1.rx.rf.frequency", "told 7603000"));
}

TEST_F(FrequencyModuleTuneTest, TemperatureIsTracedAfterTheCorrection) {
    boot(0);
    startStory();
    module->notifyTemperature(25);
    EXPECT_THAT(story,
                ElementsAre("table-bilinear Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I",
                            "table-bilinear Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q",
                            "driver-write channel.1.tx.rf.mixer.i", "driver-write channel.1.tx.rf.mixer.q",
                            "trace notifyTemperature called with temp = 25"));
}

// Values

TEST_F(FrequencyModuleTuneTest, TransmitCarrierReachesTheTransmitterOnly) {
    boot(1);
    module->setTxFrequency(7442000);
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.frequency=7442000"));
    EXPECT_EQ(frequencyOf("Tx"), 7442000U);
    EXPECT_EQ(frequencyOf("Rx"), 0U);
}

TEST_F(FrequencyModuleTuneTest, ReceiveCarrierReachesTheReceiverOnly) {
    boot(1);
    module->setRxFrequency(7603000);
    EXPECT_THAT(writes(), ElementsAre("channel.1.rx.rf.frequency=7603000"));
    EXPECT_EQ(frequencyOf("Tx"), 0U);
    EXPECT_EQ(frequencyOf("Rx"), 7603000U);
}

TEST_F(FrequencyModuleTuneTest, CarriersReachTheRauAsTheyAre) {
    boot(4);
    module->setTxFrequency(7450000);
    module->setRxFrequency(7611000);
    EXPECT_THAT(calls(), ElementsAre("rau-tx IRauHandler_1", "rau-rx IRauHandler_1"));
    EXPECT_THAT(writes(), ElementsAre("IRauHandler_1=7450000", "IRauHandler_1=7611000"));
}

TEST_F(FrequencyModuleTuneTest, LargestCarrierIsTracedAsANegative32BitNumber) {
    boot(1);
    module->setTxFrequency(4294967295UL);
    EXPECT_THAT(traces(), ElementsAre("information: setTxFrequency -1",
                                      "information: Write frequency to HW -1 for direction Tx"));
    EXPECT_EQ(frequencyOf("Tx"), 4294967295U);
}

TEST_F(FrequencyModuleTuneTest, CarrierWrapsAt32Bits) {
    boot(0);
    module->setTxFrequency(static_cast<unsigned long>(4302409296ULL)); // 2^32 + 7442000
    EXPECT_EQ(traces().front(), "information: setTxFrequency 7442000");
    EXPECT_EQ(frequencyOf("Tx"), 7442000U);
    EXPECT_THAT(corrections(), ElementsAre("I at 7442000, 0", "Q at 7442000, 0"));
}

TEST_F(FrequencyModuleTuneTest, ReceiveCarrierWrapsAt32Bits) {
    boot(1);
    module->setRxFrequency(static_cast<unsigned long>(4302409296ULL)); // 2^32 + 7442000
    EXPECT_THAT(traces(), ElementsAre("information: setRxFrequency 7442000",
                                      "information: Write frequency to HW 7442000 for direction Rx"));
    EXPECT_EQ(frequencyOf("Rx"), 7442000U);
}

// Failing hardware

TEST_F(FrequencyModuleTuneTest, FailedTransmitWriteIsReportedAsSuccessAndShownByTheHandlerOnly) {
    boot(1);
    fail(Operation::driverWrite, "channel.1.tx.rf.frequency", 0x8001);
    EXPECT_EQ(module->setTxFrequency(7442000), ResultOk);
    EXPECT_THAT(
        complaints(),
        ElementsAre("error: Write to driver failed for channel.1.Tx.rf.frequency (EDriverResult = 0x8001)"));
    EXPECT_EQ(frequencyOf("Tx"), 7442000U);
}

TEST_F(FrequencyModuleTuneTest, FailedReceiveWriteIsReportedAsSuccess) {
    boot(4);
    fail(Operation::rauRx, "IRauHandler_1", 0x8001);
    EXPECT_EQ(module->setRxFrequency(7603000), ResultOk);
    EXPECT_EQ(frequencyOf("Rx"), 7603000U);
}

TEST_F(FrequencyModuleTuneTest, FailedTransmitWriteDoesNotKeepTheLeakageFromBeingCorrected) {
    boot(0);
    fail(Operation::driverWrite, "channel.1.tx.rf.lo.frequency", 0x8001);
    module->setTxFrequency(7442000);
    EXPECT_THAT(corrections(), ElementsAre("I at 7442000, 0", "Q at 7442000, 0"));
}

TEST_F(FrequencyModuleTuneTest, FailedCorrectionIsReportedAsSuccess) {
    boot(0);
    fail(Operation::driverWrite, "channel.1.tx.rf.mixer.i", 0x8001);
    EXPECT_EQ(module->setTxFrequency(7442000), ResultOk);
    EXPECT_THAT(complaints(), ElementsAre("error: Unable to write to driver Channel.1.tx.rf.mixer.i "
                                          "(EDriverResult = 0x8001)"));
}

// Correction of the leakage

TEST_P(TypeThatCorrects, TransmitCarrierIsFollowedByACorrectionAtTheLastTemperature) {
    boot(GetParam());
    platform.temperature().set(25);
    platform.temperature().set(-40);
    forget();
    module->setTxFrequency(7442000);
    EXPECT_THAT(corrections(), ElementsAre("I at 7442000, -40", "Q at 7442000, -40"));
}

TEST_P(TypeThatCorrects, TemperatureIsZeroBeforeTheFirstNotification) {
    boot(GetParam());
    module->setTxFrequency(7442000);
    EXPECT_THAT(corrections(), ElementsAre("I at 7442000, 0", "Q at 7442000, 0"));
}

TEST_P(TypeThatCorrects, TemperatureIsFollowedByACorrectionAtTheTransmitCarrier) {
    boot(GetParam());
    module->setTxFrequency(7442000);
    module->setRxFrequency(7603000);
    forget();
    platform.temperature().set(25);
    EXPECT_THAT(corrections(), ElementsAre("I at 7442000, 25", "Q at 7442000, 25"));
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.mixer.i=11", "channel.1.tx.rf.mixer.q=12"));
}

TEST_P(TypeThatCorrects, TemperatureBeforeAnyCarrierIsCorrectedAtFrequencyZero) {
    boot(GetParam());
    platform.temperature().set(25);
    EXPECT_THAT(corrections(), ElementsAre("I at 0, 25", "Q at 0, 25"));
}

TEST_P(TypeThatCorrects, ReceiveCarrierIsNotFollowedByACorrection) {
    boot(GetParam());
    module->setRxFrequency(7603000);
    EXPECT_THAT(corrections(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(MicrowaveBoards, TypeThatCorrects, Values(0, 2, 3, 5));

TEST_P(TypeThatDoesNotCorrect, CarriersAndTemperaturesTouchNoCanceller) {
    boot(GetParam());
    module->setTxFrequency(7442000);
    forget();
    platform.temperature().set(25);
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_THAT(traces(), ElementsAre("information: notifyTemperature called with temp = 25"));
    module->setTxFrequency(7442000);
    EXPECT_EQ(writes().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(RfModuleAndRau, TypeThatDoesNotCorrect, Values(1, 4));

// The temperature service's way in

TEST_F(FrequencyModuleTuneTest, NotificationReachesTheModuleThatIsItsContext) {
    boot(1);
    ::FrequencyHandler::staticNotifyTemperature(module.get(), 25);
    EXPECT_THAT(traces(), ElementsAre("information: notifyTemperature called with temp = 25"));
}

TEST_F(FrequencyModuleTuneTest, NotificationWithoutContextDoesNothing) {
    boot(0);
    ::FrequencyHandler::staticNotifyTemperature(nullptr, 25);
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_THAT(traces(), IsEmpty());
}
