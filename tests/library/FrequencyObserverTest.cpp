#include "FrequencyHandler_RfModule.h"
#include "RadioTest.h"

#include <array>
#include <memory>
#include <string>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/** A client written in C of the transmitter of channel 3. */
class FrequencyObserverTest : public RadioTest {
protected:
    FrequencyObserverTest() {
        platform.drivers().add("channel.3.tx.rf.frequency");
        handler.onModuleInit();
        forget();
    }

    /** What the C view of the broker would give. */
    FrequencyHandlerCStruct& record() { return *static_cast<FrequencyHandlerCStruct*>(handler.getCStruct()); }
    EAFResult subscribe(IFrequencyObserver* client) {
        return record().registerObserver(record().handler, client);
    }

    /** Notes "channel frequency" in the Lines that are its context. */
    static void note(void* context, unsigned long channel, unsigned long frequency) {
        static_cast<Lines*>(context)->push_back(std::to_string(channel) + " " + std::to_string(frequency));
    }

    RL::FrequencyHandler::RfModule::FrequencyHandler handler{"Tx", 3};
    Lines told;
    IFrequencyObserver observer{&told, note};
};

/** A handler that takes no observers. */
class RefusingHandler final : public IFrequencyHandler {
public:
    using IFrequencyHandler::registerObserver;
    EAFResult registerObserver(Observer<IFrequencyHandler>* /*observer*/) override {
        ++refused;
        return ResultFailed;
    }

    int refused = 0;
};

constexpr const char* complaintAboutArguments =
    "error: registerObserver called without handler, observer or function";

} // namespace

TEST_F(FrequencyObserverTest, IsCalledWithChannelAndFrequency) {
    EXPECT_EQ(subscribe(&observer), ResultOk);
    handler.setRfFrequency(7442000);
    EXPECT_THAT(told, ElementsAre("3 7442000"));
}

TEST_F(FrequencyObserverTest, IsNotCalledAtRegistration) {
    subscribe(&observer);
    EXPECT_THAT(told, IsEmpty());
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(FrequencyObserverTest, FrequencyIsTheNewOneAlsoWhenTheWriteFailed) {
    subscribe(&observer);
    fail(Standalone::Operation::driverWrite, "channel.3.tx.rf.frequency", 0x8001);
    handler.setRfFrequency(7442000);
    EXPECT_THAT(told, ElementsAre("3 7442000"));
}

TEST_F(FrequencyObserverTest, FrequencyIsTheOneAtTheTimeOfTheCall) {
    subscribe(&observer);
    handler.setRfFrequency(7442000);
    handler.setRfFrequency(7470000);
    EXPECT_THAT(told, ElementsAre("3 7442000", "3 7470000"));
}

TEST_F(FrequencyObserverTest, ChannelIsTheOneFromRegistrationTime) {
    subscribe(&observer);
    record().m_channel = 9;
    handler.setRfFrequency(1);
    record().m_channel = 3; // under which it is withdrawn
    EXPECT_THAT(told, ElementsAre("3 1"));
}

TEST_F(FrequencyObserverTest, EachRegistrationIsToldInItsTurn) {
    static int s_told;
    s_told = 0;
    std::array<int, 5> turns{};
    for (int& turn : turns) {
        observer = {&turn, [](void* context, unsigned long /*channel*/, unsigned long /*frequency*/) {
                        *static_cast<int*>(context) = ++s_told;
                    }};
        subscribe(&observer);
    }
    handler.setRfFrequency(1);
    EXPECT_THAT(turns, ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(FrequencyObserverTest, RecordMayBeFreedAfterRegistration) {
    auto shortLived = std::make_unique<IFrequencyObserver>(observer);
    subscribe(shortLived.get());
    shortLived.reset();
    handler.setRfFrequency(1);
    EXPECT_THAT(told, ElementsAre("3 1"));
}

TEST_F(FrequencyObserverTest, RecordMayBeReusedAfterRegistration) {
    Lines others;
    subscribe(&observer);
    observer.context = &others;
    subscribe(&observer);
    handler.setRfFrequency(1);
    EXPECT_THAT(told, ElementsAre("3 1"));
    EXPECT_THAT(others, ElementsAre("3 1"));
}

TEST_F(FrequencyObserverTest, RecordRegisteredTwiceIsCalledTwice) {
    subscribe(&observer);
    subscribe(&observer);
    handler.setRfFrequency(1);
    EXPECT_THAT(told, ElementsAre("3 1", "3 1"));
}

TEST_F(FrequencyObserverTest, ContextMayBeNull) {
    static int calls;
    calls = 0;
    observer = {nullptr, [](void* context, unsigned long, unsigned long) { calls += context == nullptr; }};
    EXPECT_EQ(subscribe(&observer), ResultOk);
    handler.setRfFrequency(1);
    EXPECT_EQ(calls, 1);
}

TEST_F(FrequencyObserverTest, ResultOfTheHandlersRegistrationIsIgnored) {
    RefusingHandler refusing;
    EXPECT_EQ(IFrequencyHandler::registerObserver(static_cast<IFrequencyHandler*>(&refusing), &observer),
              ResultOk);
    EXPECT_EQ(refusing.refused, 1);
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(FrequencyObserverTest, NullHandlerFailsWithOneErrorMessage) {
    EXPECT_EQ(IFrequencyHandler::registerObserver(nullptr, &observer), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre(complaintAboutArguments));
}

TEST_F(FrequencyObserverTest, NullRecordFailsWithOneErrorMessageAndRegistersNobody) {
    EXPECT_EQ(subscribe(nullptr), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre(complaintAboutArguments));
    forget();
    handler.setRfFrequency(1);
    EXPECT_THAT(complaints(), IsEmpty());
}

TEST_F(FrequencyObserverTest, NullFunctionFailsWithOneErrorMessageAndRegistersNobody) {
    observer.onFrequencyChanged = nullptr;
    EXPECT_EQ(subscribe(&observer), ResultFailed);
    EXPECT_THAT(traces(), ElementsAre(complaintAboutArguments));
    forget();
    handler.setRfFrequency(1);
    EXPECT_THAT(complaints(), IsEmpty());
}
