// Once a radio operates, the library takes no memory, whether or not its messages are wanted.

#include "CTxIQImbalanceHandler.h"
#include "CallingObserver.h"
#include "FailingMemory.h"
#include "IFrequencyHandler.h"
#include "ILoCancellation.h"
#include "InterfaceBroker.h"
#include "ModuleTest.h"

#include <string>
#include <tuple>

namespace {

/** True when a repeated `operation` takes no memory. The platform, to which nobody listens, takes none then.
 */
template <typename Operation>
bool takesNoMemory(Standalone::Platform& platform, OrbiTraceLevel threshold, const Operation& operation) {
    platform.calls().setRecording(false);
    platform.calls().setListener({});
    platform.trace().setRecording(false);
    platform.trace().setSink({});
    platform.trace().setThreshold(threshold);
    operation(); // the stream of the trace keeps room for the longest message
    FailingMemory::failAt(1);
    operation();
    const bool hasTakenSome = (FailingMemory::failures() != 0);
    FailingMemory::failAt(0);
    return !hasTakenSome;
}

std::string thresholdName(OrbiTraceLevel threshold) {
    return "Threshold" + std::to_string(threshold);
}

/** Handler types, with messages off, filtered and on. */
class NoAllocationTest : public ModuleTest,
                         public testing::WithParamInterface<std::tuple<int, OrbiTraceLevel>> {
protected:
    NoAllocationTest() { boot(std::get<0>(GetParam())); }

    template <typename Operation>
    bool takesNone(const Operation& operation) {
        return takesNoMemory(platform, std::get<1>(GetParam()), operation);
    }
    static IFrequencyHandler& handler(const char* direction) {
        return *InterfaceBroker::getInstance().getInterface<IFrequencyHandler>(
            std::string("IFrequencyHandler_") + direction + "_1");
    }
};

INSTANTIATE_TEST_SUITE_P(TypesAndThresholds, NoAllocationTest,
                         testing::Combine(testing::Range(0, 6),
                                          testing::Values(Standalone::TraceLevel::off,
                                                          Standalone::TraceLevel::notice,
                                                          Standalone::TraceLevel::information)),
                         [](const auto& parameter) {
                             return "Type" + std::to_string(std::get<0>(parameter.param)) +
                                    thresholdName(std::get<1>(parameter.param));
                         });

} // namespace

TEST_P(NoAllocationTest, ChangeOfTheTransmitFrequencyTakesNoMemory) {
    EXPECT_TRUE(takesNone([this] { EXPECT_EQ(module->setTxFrequency(18'000'250), ResultOk); }));
}

TEST_P(NoAllocationTest, ChangeOfTheReceiveFrequencyTakesNoMemory) {
    EXPECT_TRUE(takesNone([this] { EXPECT_EQ(module->setRxFrequency(18'000'250), ResultOk); }));
}

TEST_P(NoAllocationTest, TellingObserversTakesNoMemory) {
    unsigned long told = 0;
    CallingObserver classObserver([&](IFrequencyHandler* subject) { told += subject->getFrequency(); });
    handler("Tx").registerObserver(&classObserver);
    IFrequencyObserver observer{&told, [](void* sum, unsigned long /*channel*/, unsigned long frequency) {
                                    *static_cast<unsigned long*>(sum) += frequency;
                                }};
    IFrequencyHandler::registerObserver(&handler("Tx"), &observer);
    EXPECT_TRUE(takesNone([this] { module->setTxFrequency(1000); }));
    EXPECT_EQ(told, 4000U);
}

TEST_P(NoAllocationTest, ChangeOfTheTemperatureTakesNoMemory) {
    EXPECT_TRUE(takesNone([this] { module->notifyTemperature(41); }));
}

TEST_P(NoAllocationTest, CalibrationTakesNoMemory) {
    auto* const canceller = InterfaceBroker::getInstance().getInterface<ILoCancellation>("ILoCancellation_1");
    if (canceller == nullptr) {
        EXPECT_THAT(std::get<0>(GetParam()), testing::AnyOf(1, 4)); // RF module and RAU
        return;
    }
    EXPECT_TRUE(takesNone([&] {
        int i = 0;
        int q = 0;
        int maxDelta = 0;
        unsigned int iterations = 0;
        EXPECT_EQ(canceller->calibrateLoCancellation(0, 4000, 0, 4000, 0.75, 1, 3, 0, &i, &q, &maxDelta,
                                                     &iterations, false),
                  ResultOk);
        EXPECT_EQ(iterations, 3U);
    }));
}

TEST_P(NoAllocationTest, MissingDriversTakeNoMemory) {
    for (const auto& [name, driver] : platform.drivers().drivers()) {
        driver->setMissingWords(Standalone::wordWrite | Standalone::wordWriteBuffer);
    }
    EXPECT_TRUE(takesNone([this] { module->setTxFrequency(1); }));
}

namespace {

class NoAllocationIQTest : public ModuleTest, public testing::WithParamInterface<OrbiTraceLevel> {};

INSTANTIATE_TEST_SUITE_P(Thresholds, NoAllocationIQTest,
                         testing::Values(Standalone::TraceLevel::off, Standalone::TraceLevel::notice,
                                         Standalone::TraceLevel::information),
                         [](const auto& parameter) { return thresholdName(parameter.param); });

} // namespace

TEST_P(NoAllocationIQTest, CompensationTakesNoMemory) {
    addCompensation(1);
    CTxIQImbalanceHandler compensation(1);
    CTxIQImbalanceHandler::onPhaseActivation(&compensation, 11, ECallbackPriority{0});
    EXPECT_TRUE(takesNoMemory(platform, GetParam(),
                              [&] { CTxIQImbalanceHandler::notifyTemperature(&compensation, 25); }));
    EXPECT_EQ(platform.drivers().find("channel.1.dsp.tx.dc.compensation.i")->writes(), 2U);
}
