// The shared library on another platform than the stand-alone one.

#include "BarePlatform.h"

#include "CTxIQImbalanceHandler.h"
#include "Cancellation.h"
#include "FrequencyHandler.h"
#include "FrequencyHandler_MicrowaveBoard.h"
#include "FrequencyHandler_Rau.h"
#include "FrequencyHandler_RfModule.h"
#include "IRauHandler.h"
#include "LoCancellation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

class RemoteRadio final : public IRauHandler {
public:
    EAFResult setTxRadioFrequency(unsigned long frequency) override { return set("Tx", frequency); }
    EAFResult setRxRadioFrequency(unsigned long frequency) override { return set("Rx", frequency); }

private:
    static EAFResult set(const std::string& direction, unsigned long frequency) {
        bare().writes.push_back(direction + " " + std::to_string(frequency));
        return ResultOk;
    }
};

class BarePlatformTest : public testing::Test {
protected:
    BarePlatformTest() { bare().reset(); }

    /** Where a platform does something for a message. */
    static std::vector<std::function<void()>*> tracePlaces() {
        return {&bare().atMapping, &bare().atBeginning, &bare().buffer.atText, &bare().atEnd};
    }

    const Lines& messages = bare().messages;
};

} // namespace

// Trace

TEST_F(BarePlatformTest, EveryTraceObjectIsBuiltWithTheSameNameAndLevel) {
    EXPECT_THAT(bare().traceObjects, AllOf(SizeIs(5), Each("QVX.FH 3")));
}

TEST_F(BarePlatformTest, MessageIsMappedBegunWrittenFlushedAndEnded) {
    ::FrequencyHandler module(1, ::FrequencyHandler::RfModule);
    EXPECT_EQ(module.onPhasePostFrameformatLoad(), ResultOk);
    EXPECT_THAT(messages, ElementsAre("map 2048", "begin -7", "text onPhasePostFrameformatLoad", "newline",
                                      "flush", "end"));
}

TEST_F(BarePlatformTest, MissingRauIsNeitherMappedNorEnded) {
    RL::FrequencyHandler::Rau::FrequencyHandler handler("Tx", 4);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    EXPECT_THAT(messages,
                ElementsAre("begin 1", "text onModuleInit(): Error getting interface to IRauHandler_4",
                            "newline", "flush"));
}

TEST_F(BarePlatformTest, CodeOfTheDriverLayerIsTheNumericLevel) {
    RL::FrequencyHandler::RfModule::FrequencyHandler handler("Tx", 1);
    bare().lookupCode = EDriverResult{0x8123};
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    bare().lookupCode = EDriverResult{17};
    bare().driver.context = nullptr;
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    ASSERT_THAT(messages, SizeIs(12));
    EXPECT_EQ(messages[0], "map 33059"); // 0x8123
    EXPECT_EQ(messages[6], "map 17");
}

TEST_F(BarePlatformTest, MessageThatCannotBeTracedIsLostAndNothingElseChanges) {
    const std::vector<std::function<void()>> throwers{[] { throw std::runtime_error("no trace"); },
                                                      [] { throw 7; }};
    for (const auto& thrower : throwers) {
        for (std::function<void()>* const place : tracePlaces()) {
            bare().reset();
            bare().stream.exceptions(std::ios::badbit);
            ::FrequencyHandler module(1, ::FrequencyHandler::RfModule);
            EXPECT_EQ(module.onModuleInit(), ResultOk);
            *place = thrower;
            EXPECT_EQ(module.setTxFrequency(18'000'000), ResultOk);
            EXPECT_THAT(bare().writes, ElementsAre("context 18000000"));
        }
    }
}

TEST_F(BarePlatformTest, MessageWhoseLevelCannotBeMappedIsNotBegun) {
    ::FrequencyHandler module(1, ::FrequencyHandler::RfModule);
    bare().atMapping = [] { throw 7; };
    EXPECT_EQ(module.onPhasePostFrameformatLoad(), ResultOk);
    EXPECT_THAT(messages, ElementsAre("map 2048"));
}

TEST_F(BarePlatformTest, ThreadIsCancelledWhereverAMessageIsWritten) {
    for (std::function<void()>* const place : tracePlaces()) {
        bare().reset();
        bare().stream.exceptions(std::ios::badbit);
        ::FrequencyHandler module(1, ::FrequencyHandler::RfModule);
        EXPECT_EQ(module.onModuleInit(), ResultOk);
        *place = cancelHere;
        EXPECT_TRUE(isCancelledIn([&module] { module.setTxFrequency(18'000'000); }));
        EXPECT_THAT(bare().writes, IsEmpty());

        *place = nullptr;
        bare().stream.clear();
        EXPECT_EQ(module.setTxFrequency(18'000'000), ResultOk);
        EXPECT_THAT(bare().writes, ElementsAre("context 18000000"));
    }
}

TEST_F(BarePlatformTest, ThreadIsCancelledWhileACalibrationWaits) {
    LoCancellation canceller(1);
    EXPECT_EQ(canceller.onModuleInit(), ResultOk);
    EXPECT_TRUE(isCancelledIn([&canceller] {
        int i = 0;
        int q = 0;
        int delta = 0;
        unsigned iterations = 0;
        pthread_cancel(pthread_self()); // the wait is the first place where that is looked at
        canceller.calibrateLoCancellation(0, 10, 0, 10, 0.5, 0, 1, 1, &i, &q, &delta, &iterations, false);
    }));
    EXPECT_THAT(bare().writes, ElementsAre("context 0", "context 0"));
}

// Broker

TEST_F(BarePlatformTest, RegistrationForWhichTheBrokerThrowsFails) {
    LoCancellation canceller(1);
    bare().brokerThrows = true;
    EXPECT_EQ(canceller.initialize(), ResultFailed);
    EXPECT_THAT(messages, Contains("text registerInterface failed: no broker"));
}

TEST_F(BarePlatformTest, WithdrawalForWhichTheBrokerThrowsIsToldOfOnce) {
    {
        const LoCancellation canceller(1);
        bare().brokerThrows = true;
    }
    EXPECT_THAT(messages, ElementsAre("map 32768", "begin -7", "text unregisterInterface failed: no broker",
                                      "newline", "flush", "end"));
}

// Module

TEST_F(BarePlatformTest, ModuleIsBuiltWithItsNumberNameChannelZeroAndThreePhases) {
    const ::FrequencyHandler module(2, ::FrequencyHandler::RfModule);
    EXPECT_THAT(bare().modules,
                ElementsAre("19000", "FrequencyHandler", "2", "0", "phase 11", "phase 5", "phase 20"));
}

TEST_F(BarePlatformTest, WithdrawalAsksForNothingBack) {
    { const ::FrequencyHandler module(1, ::FrequencyHandler::MicrowaveBoardIf); }
    EXPECT_THAT(bare().removedIsNull, ElementsAre(true, true, true));
}

// Database

TEST_F(BarePlatformTest, ContentAddressesAreAskedForWithZero) {
    RL::FrequencyHandler::MicrowaveBoard::FrequencyHandler handler("Rx", 1, false, false, true, true);
    EXPECT_EQ(handler.getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(handler.getFFVariablesFromDatabase(), ResultOk);
    EXPECT_THAT(bare().reservedOfAddresses, ElementsAre(0, 0, 0, 0));
}

// IQ-imbalance compensation, which knows flat functions only

TEST_F(BarePlatformTest, CompensationRegistersModuleCallbackAndInterface) {
    CTxIQImbalanceHandler handler(2);
    EXPECT_EQ(handler.initialize(), ResultOk);
    EXPECT_THAT(bare().flatCalls,
                ElementsAre("module 83002 CTxIqImbalanceHandler",
                            "callback 83002 CTxIQImbalanceHandler_OnPhaseActivation 100 3 0 11 1"));
    EXPECT_EQ(bare().interfaces["ITxIQImbalanceHandler_2"], &handler);
    EXPECT_EQ(bare().phaseCallback->context, &handler);
}

TEST_F(BarePlatformTest, CompensationIsSetUpWhenItsCallbackIsCalled) {
    CTxIQImbalanceHandler handler(2);
    handler.initialize();
    bare().flatCalls.clear();
    EXPECT_EQ(bare().phaseCallback->onPhaseActivation(bare().phaseCallback->context, 11, ECallbackPriority{}),
              ResultOk);
    EXPECT_THAT(bare().flatCalls,
                ElementsAre("open", "get IDriverLayer", "close", "driver channel.2.dsp.tx.dc.compensation.i",
                            "driver channel.2.dsp.tx.dc.compensation.q",
                            "driver channel.2.dsp.tx.quadrature.gain.offset.compensation",
                            "driver channel.2.dsp.tx.quadrature.phase.offset.compensation",
                            "table Channel.2.Tx.Dsp.Temperature.To.Dc.I.Compensation",
                            "table Channel.2.Tx.Dsp.Temperature.To.Dc.Q.Compensation",
                            "table Channel.2.Tx.Dsp.Temperature.To.Gain.Offset.Compensation",
                            "table Channel.2.Tx.Dsp.Temperature.To.Phase.Offset.Compensation", "open",
                            "get ITemperatureHandler", "close"));
    EXPECT_EQ(bare().temperatureObserver->context, &handler);
}

TEST_F(BarePlatformTest, CompensationHasNeitherHandleNorRecordOfABrokerThatStoresNone) {
    CTxIQImbalanceHandler handler(2);
    handler.initialize();
    bare().flatCalls.clear();
    bare().messages.clear();
    bare().brokerStoresNothing = true;
    EXPECT_EQ(bare().phaseCallback->onPhaseActivation(bare().phaseCallback->context, 11, ECallbackPriority{}),
              ResultFailed);
    EXPECT_THAT(bare().flatCalls, ElementsAre("open", "get IDriverLayer, no handle", "close, no handle"));
    EXPECT_THAT(bare().messages,
                Contains("text CTxFrequencyHandler failed to get IDriverLayer (EAFResult = 0x0)"));
}

TEST_F(BarePlatformTest, CompensationPassesTheRecordForOffsetsAndTheContextForGainAndPhase) {
    CTxIQImbalanceHandler handler(2);
    handler.initialize();
    bare().phaseCallback->onPhaseActivation(bare().phaseCallback->context, 11, ECallbackPriority{});
    bare().temperatureObserver->notifyTemperature(bare().temperatureObserver->context, 31);
    EXPECT_THAT(bare().writes, ElementsAre("record 31", "record 31", "context 31", "context 31"));
}

// All of it

TEST_F(BarePlatformTest, RemoteRadioUnitIsTunedInBothDirections) {
    RemoteRadio radio;
    bare().interfaces["IRauHandler_1"] = &radio;
    ::FrequencyHandler module(1, ::FrequencyHandler::Rau);
    EXPECT_EQ(module.onModuleInit(), ResultOk);
    EXPECT_EQ(module.setTxFrequency(18'000'000), ResultOk);
    EXPECT_EQ(module.setRxFrequency(17'000'000), ResultOk);
    EXPECT_THAT(bare().writes, ElementsAre("Tx 18000000", "Rx 17000000"));
}

TEST_F(BarePlatformTest, EveryTypeWithoutARauRunsItsPhasesAndTunes) {
    for (const int type : {0, 1, 2, 3, 5}) {
        ::FrequencyHandler module(1, static_cast<::FrequencyHandler::FrequencyHandlerType>(type));
        EXPECT_EQ(module.onModuleInit(), ResultOk) << type;
        EXPECT_EQ(module.onPhaseModuleStorageObjectsRetreived(), ResultOk) << type;
        EXPECT_EQ(module.onPhasePostFrameformatLoad(), ResultOk) << type;
        EXPECT_EQ(module.setTxFrequency(18'000'000), ResultOk) << type;
        EXPECT_EQ(module.setRxFrequency(17'000'000), ResultOk) << type;
        EXPECT_THAT(messages, AllOf(Contains("map 2048"), Not(Contains("map 32768")))) << type;
    }
}
