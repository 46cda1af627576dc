// What an observer's registration does when there is no memory for it.

#include "CallingObserver.h"
#include "FailingMemory.h"
#include "FrequencyHandler.h"
#include "FrequencyHandler_MicrowaveBoard.h"
#include "FrequencyHandler_Rau.h"
#include "FrequencyHandler_RfModule.h"
#include "FrequencyHandler_c.h"
#include "LoCancellation.h"
#include "RadioTest.h"

#include <optional>
#include <string>
#include <utility>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/** A handler to which nobody listens yet. */
class OutOfMemoryTest : public RadioTest {
protected:
    OutOfMemoryTest() {
        forget();
        platform.calls().setRecording(false); // what the platform wants for itself does not count
    }

    /** Registers a C observer; the allocation of that number fails. */
    EAFResult subscribe(unsigned failing) {
        const auto& record = *static_cast<FrequencyHandlerCStruct*>(handler.getCStruct());
        FailingMemory::failAt(failing);
        const EAFResult result = record.registerObserver(record.handler, &observer);
        FailingMemory::failAt(0);
        return result;
    }

    /** What `operation` answers when there is no memory for the first thing that it wants. */
    template <typename Operation>
    static EAFResult withoutFirstMemory(Operation operation) {
        FailingMemory::failAt(1);
        const EAFResult result = operation();
        FailingMemory::failAt(0);
        return result;
    }

    static void count(void* context, unsigned long /*channel*/, unsigned long /*frequency*/) {
        ++*static_cast<int*>(context);
    }

    RL::FrequencyHandler::RfModule::FrequencyHandler handler{"Tx", 1};
    int told = 0;
    IFrequencyObserver observer{&told, count};
};

} // namespace

TEST_F(OutOfMemoryTest, ObserverThatCannotBeWrappedIsRefusedWithOneErrorMessage) {
    EXPECT_EQ(subscribe(1), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre("error: registerObserver failed: std::bad_alloc"));
    handler.setRfFrequency(1);
    EXPECT_EQ(told, 0);
}

TEST_F(OutOfMemoryTest, WrappedObserverForWhichTheListCannotGrowIsRefusedWithOneErrorMessage) {
    EXPECT_EQ(subscribe(2), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre("error: registerObserver failed: std::bad_alloc"));
    handler.setRfFrequency(1);
    EXPECT_EQ(told, 0);
}

TEST_F(OutOfMemoryTest, ObserverForWhichTheListCannotGrowIsRefusedWithoutAnException) {
    CallingObserver classObserver([](IFrequencyHandler*) {});
    FailingMemory::failAt(1);
    EXPECT_EQ(handler.registerObserver(&classObserver), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre("error: registerObserver failed: std::bad_alloc"));
}

TEST_F(OutOfMemoryTest, NothingIsTracedOfARefusedObserverWhenNoMessageIsWanted) {
    platform.trace().setThreshold(Standalone::TraceLevel::off);
    CallingObserver classObserver([](IFrequencyHandler*) {});
    EXPECT_EQ(subscribe(1), ResultFailed);
    EXPECT_EQ(subscribe(2), ResultFailed);
    EXPECT_EQ(withoutFirstMemory([&] { return handler.registerObserver(&classObserver); }), ResultFailed);
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(OutOfMemoryTest, NothingIsKeptOfARefusedObserver) {
    platform.trace().setThreshold(Standalone::TraceLevel::off); // a message would be kept
    const std::size_t before = FailingMemory::inUse();
    EXPECT_EQ(subscribe(1), ResultFailed);
    EXPECT_EQ(subscribe(2), ResultFailed);
    EXPECT_EQ(FailingMemory::inUse(), before);
}

TEST_F(OutOfMemoryTest, ObserversFromBeforeAreStillTold) {
    EXPECT_EQ(subscribe(0), ResultOk);
    EXPECT_EQ(subscribe(2), ResultFailed);
    handler.setRfFrequency(1);
    EXPECT_EQ(told, 1);
}

TEST_F(OutOfMemoryTest, ListOfObserversInCGrowsToTwiceItsLengthAndOne) {
    const std::size_t before = FailingMemory::taken();
    for (int count = 0; count < 8; ++count) {
        EXPECT_EQ(subscribe(0), ResultOk);
    }
    // Eight wrappers, and lists for 1, 3, 7 and 15 of them.
    EXPECT_EQ(FailingMemory::taken() - before, 12U);
}

TEST_F(OutOfMemoryTest, RegistrationWorksOnceThereIsMemoryAgain) {
    EXPECT_EQ(subscribe(1), ResultFailed);
    forget();
    EXPECT_EQ(subscribe(0), ResultOk);
    EXPECT_THAT(traces(), IsEmpty());
    handler.setRfFrequency(1);
    EXPECT_EQ(told, 1);
}

TEST_F(OutOfMemoryTest, HandlerIsWithdrawnWithoutMemoryHoweverLongItsName) {
    const std::string direction(150, 'x');
    const std::string name = "IFrequencyHandler_" + direction + "_-2000000000";
    std::optional<RL::FrequencyHandler::RfModule::FrequencyHandler> longest(std::in_place, direction,
                                                                            -2'000'000'000);
    EXPECT_EQ(platform.interfaces().entries().count(name), 1U);
    FailingMemory::failAt(1, true);
    longest.reset();
    FailingMemory::failAt(0);
    EXPECT_EQ(platform.interfaces().entries().count(name), 0U);
}

TEST_F(OutOfMemoryTest, CancellerIsWithdrawnWithoutMemory) {
    std::optional<LoCancellation> canceller(std::in_place, 0x80000000U);
    EXPECT_EQ(canceller->initialize(), ResultOk);
    EXPECT_EQ(platform.interfaces().entries().count("ILoCancellation_-2147483648"), 1U);
    FailingMemory::failAt(1, true);
    canceller.reset();
    FailingMemory::failAt(0);
    EXPECT_EQ(platform.interfaces().entries().count("ILoCancellation_-2147483648"), 0U);
}

TEST_F(OutOfMemoryTest, ModuleWhoseHandlersCannotBeMadeSaysSoAndHasNone) {
    FailingMemory::failAt(2); // the first is for the platform's copy of the module's name
    ::FrequencyHandler module(1, ::FrequencyHandler::RfModule);
    EXPECT_THAT(traces(), ElementsAre("error: FrequencyHandler failed: std::bad_alloc"));
    EXPECT_EQ(module.setTxFrequency(7'442'000), ResultFailed);
}

TEST_F(OutOfMemoryTest, ModuleUnderItsCNameForWhichThereIsNoMemoryIsNone) {
    const auto modules = platform.modules().moduleCount();
    FrequencyHandlerModule* module = nullptr;
    // For the module itself, and for its handlers; between them the platform does without a copy of its name.
    for (const unsigned failing : {1U, 3U}) {
        module = reinterpret_cast<FrequencyHandlerModule*>(this);
        FailingMemory::failAt(failing);
        const EAFResult result = FrequencyHandler_Create(2, FrequencyHandlerRfModule, &module);
        FailingMemory::failAt(0);
        EXPECT_EQ(result, ResultFailed) << failing;
        EXPECT_EQ(module, nullptr) << failing;
        EXPECT_EQ(platform.modules().moduleCount(), modules) << failing;
        EXPECT_EQ(platform.interfaces().entries().count("IFrequencyHandler_Tx_2"), 0U) << failing;
    }
    EXPECT_EQ(FrequencyHandler_Create(2, FrequencyHandlerRfModule, &module), ResultOk);
    FrequencyHandler_Destroy(module);
}

TEST_F(OutOfMemoryTest, NoExceptionLeavesTheInitialisationOfAnyHandler) {
    RL::FrequencyHandler::MicrowaveBoard::FrequencyHandler board("Tx", 2, true, false, false, false);
    RL::FrequencyHandler::Rau::FrequencyHandler remote("Tx", -2000000000);
    EXPECT_EQ(withoutFirstMemory([&] { return board.onModuleInit(); }), ResultFailed);
    EXPECT_EQ(withoutFirstMemory([&] { return remote.onModuleInit(); }), ResultFailed);
    EXPECT_EQ(withoutFirstMemory([&] { return handler.onModuleInit(); }), ResultFailed);
    const std::string message = "error: onModuleInit failed: std::bad_alloc";
    EXPECT_THAT(traces(), ElementsAre(message, message, message));
}

TEST_F(OutOfMemoryTest, NoExceptionLeavesTheReadingOfVariables) {
    RL::FrequencyHandler::MicrowaveBoard::FrequencyHandler board("a longer name", 2, true, false, false,
                                                                 false);
    EXPECT_EQ(withoutFirstMemory([&] { return board.getVariablesFromDatabase(); }), ResultFailed);
    EXPECT_EQ(withoutFirstMemory([&] { return board.getFFVariablesFromDatabase(); }), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre("error: getVariablesFromDatabase failed: std::bad_alloc",
                                      "error: getFFVariablesFromDatabase failed: std::bad_alloc"));
}

TEST_F(OutOfMemoryTest, InitialisationFailsAlsoWhenNoMessageIsWanted) {
    platform.trace().setThreshold(Standalone::TraceLevel::off);
    EXPECT_EQ(withoutFirstMemory([&] { return handler.onModuleInit(); }), ResultFailed);
    EXPECT_THAT(traces(), IsEmpty());
}
