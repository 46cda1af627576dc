// A thread may be cancelled wherever the library calls others. Its unwinding passes the library unharmed: the
// thread ends as cancelled, nobody takes its unwinding for an exception, and what it was at can be used
// again. While something is destroyed, a cancellation waits.

#include "CTxIQImbalanceHandler.h"
#include "CallingObserver.h"
#include "Cancellation.h"
#include "FrequencyHandler.h"
#include "FrequencyHandler_RfModule.h"
#include "MicrowaveRadioTest.h"
#include "TxIQImbalanceTest.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

using Standalone::Call;
using Standalone::Operation;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

template <typename Test>
class Cancelling : public Test {
protected:
    ~Cancelling() override { cancelNowhere(); }

    /** Cancels the thread at the next call of `operation`. */
    void cancelAt(Operation operation) {
        Test::platform.calls().setListener([this, operation](const Call& call) {
            if (call.operation == operation) {
                cancelNowhere();
                cancelHere();
            }
        });
    }
    void cancelNowhere() { Test::platform.calls().setListener({}); }
};

class CancelledThreadTest : public Cancelling<MicrowaveRadioTest> {
protected:
    CancelledThreadTest() : module(std::in_place, 1UL, ::FrequencyHandler::MicrowaveBoardHz) {
        EXPECT_EQ(module->onModuleInit(), ResultOk);
        forget();
    }

    std::optional<::FrequencyHandler> module;
};

class CancelledCompensationTest : public Cancelling<TxIQImbalanceTest> {
protected:
    void SetUp() override {
        if (!isUnwindingSeen()) {
            GTEST_SKIP() << "AddressSanitizer does not see what is unwound here";
        }
    }
};

} // namespace

TEST_F(CancelledThreadTest, UnwindsOutOfTheWriteToADriver) {
    cancelAt(Operation::driverWriteBuffer);
    EXPECT_TRUE(isCancelledIn([this] { module->setTxFrequency(18'000'000); }));
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.lo.frequency.in.hz=18000000000"));
    EXPECT_THAT(complaints(), IsEmpty());

    EXPECT_EQ(module->setTxFrequency(18'000'000), ResultOk);
    EXPECT_EQ(writes().back(), "channel.1.tx.rf.mixer.q=-1000");
}

TEST_F(CancelledThreadTest, UnwindsOutOfTheCorrection) {
    cancelAt(Operation::tableBilinear);
    EXPECT_TRUE(isCancelledIn([this] { module->notifyTemperature(25); }));
    EXPECT_THAT(writes(), IsEmpty());
    EXPECT_THAT(complaints(), IsEmpty());
}

TEST_F(CancelledThreadTest, UnwindsOutOfEveryPhase) {
    cancelAt(Operation::driverLookup);
    EXPECT_TRUE(isCancelledIn([this] { module->onModuleInit(); }));
    cancelAt(Operation::variableGet);
    EXPECT_TRUE(isCancelledIn([this] { module->onPhaseModuleStorageObjectsRetreived(); }));
    cancelAt(Operation::variableGet);
    EXPECT_TRUE(isCancelledIn([this] { module->onPhasePostFrameformatLoad(); }));
    EXPECT_THAT(complaints(), IsEmpty());
}

TEST_F(CancelledThreadTest, UnwindsOutOfTheLookupOfAContent) {
    Board& board = boot("Rx", withOffsetArray);
    cancelAt(Operation::variableAddress);
    EXPECT_TRUE(isCancelledIn([&board] { board.getVariablesFromDatabase(); }));
    EXPECT_THAT(complaints(), IsEmpty());
}

TEST_F(CancelledThreadTest, UnwindsOutOfAnObserver) {
    RL::FrequencyHandler::RfModule::FrequencyHandler handler("Tx", 3);
    CallingObserver observer([](IFrequencyHandler*) { cancelHere(); });
    handler.registerObserver(&observer);
    EXPECT_TRUE(isCancelledIn([&handler] { handler.setRfFrequency(7'442'000); }));
    EXPECT_EQ(handler.getFrequency(), 7'442'000U);
    EXPECT_THAT(complaints(), IsEmpty());
}

TEST_F(CancelledThreadTest, UnwindsOutOfACObserver) {
    RL::FrequencyHandler::RfModule::FrequencyHandler handler("Tx", 3);
    IFrequencyObserver observer{nullptr, [](void* /*context*/, unsigned long /*channel*/,
                                            unsigned long /*frequency*/) { cancelHere(); }};
    EXPECT_EQ(IFrequencyHandler::registerObserver(&handler, &observer), ResultOk);
    EXPECT_TRUE(isCancelledIn([&handler] { handler.setRfFrequency(7'442'000); }));
    EXPECT_THAT(complaints(), IsEmpty());
}

TEST_F(CancelledThreadTest, UnwindsOutOfACalibration) {
    module.reset(); // and its canceller
    LoCancellation& canceller = bootCanceller();
    cancelAt(Operation::driverRead);
    EXPECT_TRUE(isCancelledIn([&canceller] {
        int i = 0;
        int q = 0;
        int delta = 0;
        unsigned iterations = 0;
        canceller.calibrateLoCancellation(0, 10, 0, 10, 0.5, 0, 1, 0, &i, &q, &delta, &iterations, false);
    }));
    EXPECT_THAT(writes(), ElementsAre("channel.1.tx.rf.mixer.i=0", "channel.1.tx.rf.mixer.q=0"));
    EXPECT_THAT(complaints(), IsEmpty());
}

TEST_F(CancelledThreadTest, BuildsAModuleBeforeItIsCancelled) {
    for (const Operation operation : {Operation::brokerRegister, Operation::moduleRegister}) {
        module.reset();
        cancelAt(operation);
        EXPECT_TRUE(isCancelledIn([this] {
            module.emplace(1UL, ::FrequencyHandler::MicrowaveBoardHz);
            pthread_testcancel();
        }));
        EXPECT_TRUE(module.has_value());
        EXPECT_EQ(module->onModuleInit(), ResultOk);
    }
    EXPECT_THAT(complaints(), IsEmpty());
}

TEST_F(CancelledThreadTest, PublishesAHandlerBeforeItIsCancelled) {
    std::optional<RL::FrequencyHandler::RfModule::FrequencyHandler> handler;
    cancelAt(Operation::brokerRegister);
    EXPECT_TRUE(isCancelledIn([&handler] {
        handler.emplace("Tx", 3);
        pthread_testcancel();
    }));
    EXPECT_EQ(platform.interfaces().entries().count("IFrequencyHandler_Tx_3"), 1U);
    handler.reset();
    EXPECT_EQ(platform.interfaces().entries().count("IFrequencyHandler_Tx_3"), 0U);
}

TEST_F(CancelledThreadTest, PublishesACancellerBeforeItIsCancelled) {
    LoCancellation canceller(3);
    cancelAt(Operation::brokerRegister);
    EXPECT_TRUE(isCancelledIn([&canceller] {
        EXPECT_EQ(canceller.initialize(), ResultOk);
        pthread_testcancel();
    }));
    EXPECT_EQ(platform.interfaces().entries().count("ILoCancellation_3"), 1U);
}

TEST_F(CancelledThreadTest, UnwindsOutOfAMessage) {
    if (!isUnwindingSeen()) {
        GTEST_SKIP() << "AddressSanitizer does not see what is unwound here";
    }
    platform.trace().setSink([this](const Standalone::TraceMessage& /*message*/) {
        platform.trace().setSink({});
        cancelHere();
    });
    EXPECT_TRUE(isCancelledIn([this] { module->setTxFrequency(18'000'000); }));
    EXPECT_THAT(writes(), IsEmpty());

    EXPECT_EQ(module->setTxFrequency(18'000'000), ResultOk);
    EXPECT_EQ(traces().back(), "information: TxIfBb 0");
}

TEST_F(CancelledThreadTest, IsCancelledOnlyAfterTheMessageAboutAnException) {
    Standalone::Fault fault{Operation::driverWriteBuffer, "", 0x8000};
    fault.thrown = std::make_exception_ptr(7);
    platform.calls().inject(std::move(fault));
    platform.trace().setSink([](const Standalone::TraceMessage& message) {
        if (message.text == "writeFrequencyToHW failed: unknown exception") {
            cancelHere();
        }
    });
    EXPECT_TRUE(isCancelledIn([this] {
        module->setTxFrequency(18'000'000);
        pthread_testcancel();
    }));
    platform.trace().setSink({});
    EXPECT_THAT(complaints(), ElementsAre("error: writeFrequencyToHW failed: unknown exception"));
}

TEST_F(CancelledThreadTest, DestroysAModuleBeforeItIsCancelled) {
    cancelAt(Operation::moduleUnregister);
    EXPECT_TRUE(isCancelledIn([this] {
        module.reset();
        pthread_testcancel();
    }));
    EXPECT_THAT(calls(),
                ElementsAre("module-unregister FrequencyHandler", "broker-unregister IFrequencyHandler_Tx_1",
                            "broker-unregister IFrequencyHandler_Rx_1",
                            "broker-unregister ILoCancellation_1"));
}

TEST_F(CancelledThreadTest, DestroysAHandlerBeforeItIsCancelled) {
    std::optional<RL::FrequencyHandler::RfModule::FrequencyHandler> handler(std::in_place, "Tx", 3);
    cancelAt(Operation::brokerUnregister);
    EXPECT_TRUE(isCancelledIn([&handler] {
        handler.reset();
        pthread_testcancel();
    }));
    EXPECT_EQ(calls().back(), "broker-unregister IFrequencyHandler_Tx_3");
}

TEST_F(CancelledThreadTest, DestroysACancellerBeforeItIsCancelled) {
    std::optional<LoCancellation> canceller(std::in_place, 3U);
    cancelAt(Operation::brokerUnregister);
    EXPECT_TRUE(isCancelledIn([&canceller] {
        canceller.reset();
        pthread_testcancel();
    }));
    EXPECT_EQ(calls().back(), "broker-unregister ILoCancellation_3");
}

TEST_F(CancelledThreadTest, MayBeCancelledAgainOnceADestructorIsThrough) {
    int state = PTHREAD_CANCEL_DISABLE;
    module.reset();
    EXPECT_EQ(pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &state), 0);
    EXPECT_EQ(state, PTHREAD_CANCEL_ENABLE);
}

TEST_F(CancelledCompensationTest, UnwindsOutOfTheInitialisation) {
    cancelAt(Operation::moduleRegisterC);
    EXPECT_TRUE(isCancelledIn([this] { handler.initialize(); }));
    EXPECT_THAT(complaints(), IsEmpty());
}

TEST_F(CancelledCompensationTest, GivesTheHandleOfTheBrokerBackAsItUnwinds) {
    cancelAt(Operation::brokerGet);
    EXPECT_TRUE(isCancelledIn([this] { activate(11); }));
    EXPECT_THAT(calls(), ElementsAre("broker-open ", "broker-get IDriverLayer", "broker-close "));
    EXPECT_THAT(complaints(), IsEmpty());
}

TEST_F(CancelledCompensationTest, UnwindsOutOfTheNotificationOfATemperature) {
    setUp();
    cancelAt(Operation::driverWrite);
    EXPECT_TRUE(isCancelledIn([this] { heat(25); }));
    EXPECT_THAT(written(), ElementsAre("dsp.tx.dc.compensation.i=251"));
    EXPECT_THAT(complaints(), IsEmpty());
}
