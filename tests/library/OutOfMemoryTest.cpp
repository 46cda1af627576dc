// What an observer's registration does when there is no memory for it.

#include "CallingObserver.h"
#include "FailingMemory.h"
#include "FrequencyHandler_RfModule.h"
#include "RadioTest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/** A handler to which nobody listens yet. */
class OutOfMemoryTest : public RadioTest {
protected:
    OutOfMemoryTest() { forget(); }

    /** Registers a C observer; the allocation of that number fails. */
    EAFResult subscribe(unsigned failing) {
        const auto& record = *static_cast<FrequencyHandlerCStruct*>(handler.getCStruct());
        FailingMemory::failAt(failing);
        const EAFResult result = record.registerObserver(record.handler, &observer);
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
    EXPECT_THAT(traces(), ElementsAre("error: registerObserver: out of memory"));
    handler.setRfFrequency(1);
    EXPECT_EQ(told, 0);
}

TEST_F(OutOfMemoryTest, WrappedObserverForWhichTheListCannotGrowIsTracedOnly) {
    EXPECT_EQ(subscribe(2), ResultOk);
    EXPECT_THAT(traces(), ElementsAre("error: registerObserver: out of memory for direction Tx"));
    handler.setRfFrequency(1);
    EXPECT_EQ(told, 0);
}

TEST_F(OutOfMemoryTest, ObserverForWhichTheListCannotGrowIsRefusedWithoutAnException) {
    CallingObserver classObserver([](IFrequencyHandler*) {});
    FailingMemory::failAt(1);
    EXPECT_EQ(handler.registerObserver(&classObserver), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre("error: registerObserver: out of memory for direction Tx"));
}

TEST_F(OutOfMemoryTest, ObserversFromBeforeAreStillTold) {
    EXPECT_EQ(subscribe(0), ResultOk);
    EXPECT_EQ(subscribe(2), ResultOk);
    handler.setRfFrequency(1);
    EXPECT_EQ(told, 1);
}

TEST_F(OutOfMemoryTest, RegistrationWorksOnceThereIsMemoryAgain) {
    EXPECT_EQ(subscribe(1), ResultFailed);
    forget();
    EXPECT_EQ(subscribe(0), ResultOk);
    EXPECT_THAT(traces(), IsEmpty());
    handler.setRfFrequency(1);
    EXPECT_EQ(told, 1);
}
