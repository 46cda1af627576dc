#include "CallingObserver.h"
#include "FrequencyHandler_Common.h"
#include "InterfaceBroker.h"
#include "RadioTest.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

using Standalone::Operation;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/** A board whose hardware does what the test says. */
class Handler final : public RL::FrequencyHandler::Common::FrequencyHandler {
public:
    using FrequencyHandler::FrequencyHandler;

    EAFResult writeFrequencyToHW(unsigned long frequency) override { return write(frequency); }

    std::function<EAFResult(unsigned long)> write = [](unsigned long) { return ResultOk; };
};

class CommonFrequencyHandlerTest : public RadioTest {
protected:
    /** Notes who was told, and the carrier. */
    CallingObserver noting(const std::string& name) {
        return CallingObserver([this, name](IFrequencyHandler* subject) {
            told.push_back(name + " " + std::to_string(subject->getFrequency()));
        });
    }
    bool isPublished(const std::string& name) {
        return InterfaceBroker::getInstance().findInterface(name) != nullptr;
    }

    Lines told;
};

} // namespace

TEST_F(CommonFrequencyHandlerTest, FrequencyIsZeroBeforeTheFirstChange) {
    const Handler handler("Tx", 1);
    EXPECT_EQ(handler.getFrequency(), 0U);
}

TEST_F(CommonFrequencyHandlerTest, FrequencyIsTheNewOneWhileHardwareIsWritten) {
    Handler handler("Tx", 1);
    unsigned long seen = 0;
    handler.write = [&](unsigned long) {
        seen = handler.getFrequency();
        return ResultOk;
    };
    handler.setRfFrequency(7442000);
    EXPECT_EQ(seen, 7442000U);
}

TEST_F(CommonFrequencyHandlerTest, HardwareIsWrittenOnceWithTheFrequency) {
    Handler handler("Tx", 1);
    std::vector<unsigned long> written;
    handler.write = [&](unsigned long frequency) {
        written.push_back(frequency);
        return ResultOk;
    };
    EXPECT_EQ(handler.setRfFrequency(7442000), ResultOk);
    EXPECT_THAT(written, ElementsAre(7442000U));
}

TEST_F(CommonFrequencyHandlerTest, FailedWriteStillStoresTheFrequency) {
    Handler handler("Tx", 1);
    handler.write = [](unsigned long) { return ResultFailed; };
    handler.setRfFrequency(7442000);
    EXPECT_EQ(handler.getFrequency(), 7442000U);
}

TEST_F(CommonFrequencyHandlerTest, FailedWriteStillNotifiesEveryObserver) {
    Handler handler("Tx", 1);
    CallingObserver first = noting("first");
    CallingObserver second = noting("second");
    handler.registerObserver(&first);
    handler.registerObserver(&second);
    handler.write = [](unsigned long) { return ResultFailed; };
    handler.setRfFrequency(7442000);
    EXPECT_THAT(told, ElementsAre("first 7442000", "second 7442000"));
}

TEST_F(CommonFrequencyHandlerTest, FailedWriteIsReportedAsSuccessWithoutAMessage) {
    Handler handler("Tx", 1);
    handler.write = [](unsigned long) { return ResultFailed; };
    EXPECT_EQ(handler.setRfFrequency(7442000), ResultOk);
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(CommonFrequencyHandlerTest, FrequencyWrapsAt32Bits) {
    Handler handler("Tx", 1);
    CallingObserver observer = noting("observer");
    handler.registerObserver(&observer);
    handler.write = [this](unsigned long frequency) {
        told.push_back("write " + std::to_string(frequency));
        return ResultOk;
    };
    handler.setRfFrequency(static_cast<unsigned long>(4302409296ULL)); // 2^32 + 7442000
    EXPECT_EQ(handler.getFrequency(), 7442000U);
    EXPECT_THAT(told, ElementsAre("write 7442000", "observer 7442000"));
}

TEST_F(CommonFrequencyHandlerTest, ObserversAreToldAfterTheHardwareWasWritten) {
    Handler handler("Tx", 1);
    CallingObserver observer = noting("observer");
    handler.registerObserver(&observer);
    handler.write = [this](unsigned long) {
        told.emplace_back("write");
        return ResultOk;
    };
    handler.setRfFrequency(7442000);
    EXPECT_THAT(told, ElementsAre("write", "observer 7442000"));
}

TEST_F(CommonFrequencyHandlerTest, ObserversAreToldInOrderOfRegistration) {
    Handler handler("Tx", 1);
    CallingObserver first = noting("first");
    CallingObserver second = noting("second");
    CallingObserver third = noting("third");
    handler.registerObserver(&third);
    handler.registerObserver(&first);
    handler.registerObserver(&second);
    handler.setRfFrequency(1);
    EXPECT_THAT(told, ElementsAre("third 1", "first 1", "second 1"));
}

TEST_F(CommonFrequencyHandlerTest, ObserverIsToldWithTheHandlerItself) {
    Handler handler("Tx", 1);
    IFrequencyHandler* subject = nullptr;
    CallingObserver observer([&](IFrequencyHandler* changed) { subject = changed; });
    EXPECT_EQ(handler.registerObserver(&observer), ResultOk);
    handler.setRfFrequency(1);
    EXPECT_EQ(subject, &handler);
}

TEST_F(CommonFrequencyHandlerTest, ObserverRegisteredTwiceIsToldTwice) {
    Handler handler("Tx", 1);
    CallingObserver observer = noting("observer");
    handler.registerObserver(&observer);
    handler.registerObserver(&observer);
    handler.setRfFrequency(1);
    EXPECT_THAT(told, ElementsAre("observer 1", "observer 1"));
}

TEST_F(CommonFrequencyHandlerTest, ObserversAreToldAlsoWhenTheFrequencyStaysTheSame) {
    Handler handler("Tx", 1);
    CallingObserver observer = noting("observer");
    handler.registerObserver(&observer);
    handler.setRfFrequency(1);
    handler.setRfFrequency(1);
    EXPECT_THAT(told, ElementsAre("observer 1", "observer 1"));
}

TEST_F(CommonFrequencyHandlerTest, ObserversRegisteredDuringANotificationAreToldInTheSameOne) {
    Handler handler("Tx", 1);
    CallingObserver late = noting("late");
    CallingObserver registering([&](IFrequencyHandler* subject) {
        // Enough of them for the list to be moved while it is walked.
        for (int i = 0; i < 100; ++i) {
            subject->registerObserver(&late);
        }
    });
    handler.registerObserver(&registering);
    handler.setRfFrequency(1);
    EXPECT_EQ(told, Lines(100, "late 1"));
}

TEST_F(CommonFrequencyHandlerTest, NullObserverIsPassedOverWithOneErrorMessage) {
    Handler handler("Tx", 1);
    CallingObserver observer = noting("observer");
    EXPECT_EQ(handler.registerObserver(static_cast<Observer<IFrequencyHandler>*>(nullptr)), ResultOk);
    handler.registerObserver(&observer);
    EXPECT_EQ(handler.setRfFrequency(1), ResultOk);
    EXPECT_THAT(told, ElementsAre("observer 1"));
    EXPECT_THAT(traces(), ElementsAre("error: setRfFrequency: observer 0 of direction Tx is null"));
}

TEST_F(CommonFrequencyHandlerTest, ObserversAreNotDeletedWithTheHandler) {
    const auto heldByObserver = std::make_shared<int>();
    const auto observer = std::make_unique<CallingObserver>([heldByObserver](IFrequencyHandler*) {});
    auto handler = std::make_unique<Handler>("Tx", 1);
    handler->registerObserver(observer.get());
    handler.reset();
    EXPECT_EQ(heldByObserver.use_count(), 2);
}

TEST_F(CommonFrequencyHandlerTest, IsPublishedUnderDirectionAndChannel) {
    Handler handler("Tx", 1);
    auto& broker = InterfaceBroker::getInstance();
    EXPECT_EQ(broker.getInterface<IFrequencyHandler>("IFrequencyHandler_Tx_1"), &handler);
}

TEST_F(CommonFrequencyHandlerTest, NameOfChannelZeroHasNoChannelSuffix) {
    const Handler handler("Rx", 0);
    EXPECT_THAT(calls(), ElementsAre("broker-register IFrequencyHandler_Rx"));
}

TEST_F(CommonFrequencyHandlerTest, ChannelIsASignedNumberInTheName) {
    const Handler handler("Rx", static_cast<unsigned long>(-1));
    EXPECT_THAT(calls(), ElementsAre("broker-register IFrequencyHandler_Rx_-1"));
}

TEST_F(CommonFrequencyHandlerTest, DirectionStandsInTheNameAsGiven) {
    const Handler handler("tX", 12);
    EXPECT_THAT(calls(), ElementsAre("broker-register IFrequencyHandler_tX_12"));
}

TEST_F(CommonFrequencyHandlerTest, NameOfAnyLengthCountsToItsEnd) {
    const std::string beginning(150, 'x');
    const Handler first(beginning + "a", 1);
    auto second = std::make_unique<Handler>(beginning + "b", 1);
    EXPECT_TRUE(isPublished("IFrequencyHandler_" + beginning + "a_1"));
    EXPECT_TRUE(isPublished("IFrequencyHandler_" + beginning + "b_1"));
    second.reset();
    EXPECT_TRUE(isPublished("IFrequencyHandler_" + beginning + "a_1"));
    EXPECT_FALSE(isPublished("IFrequencyHandler_" + beginning + "b_1"));
}

TEST_F(CommonFrequencyHandlerTest, IsWithdrawnUnderTheSameNameAtDestruction) {
    auto handler = std::make_unique<Handler>("Tx", 1);
    forget();
    handler.reset();
    EXPECT_THAT(calls(), ElementsAre("broker-unregister IFrequencyHandler_Tx_1"));
    EXPECT_FALSE(isPublished("IFrequencyHandler_Tx_1"));
}

TEST_F(CommonFrequencyHandlerTest, RefusedRegistrationAndWithdrawalAreIgnoredWithoutAMessage) {
    fail(Operation::brokerRegister, "IFrequencyHandler_Tx_1", 0x8005);
    fail(Operation::brokerUnregister, "IFrequencyHandler_Tx_1", 0x8005);
    {
        Handler handler("Tx", 1);
        EXPECT_EQ(handler.setRfFrequency(1), ResultOk);
    }
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(CommonFrequencyHandlerTest, SecondHandlerOfTheSameNameLeavesTheFirstPublished) {
    Handler first("Tx", 1);
    const Handler second("Tx", 1);
    auto& broker = InterfaceBroker::getInstance();
    EXPECT_EQ(broker.getInterface<IFrequencyHandler>("IFrequencyHandler_Tx_1"), &first);
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(CommonFrequencyHandlerTest, SecondHandlerOfTheSameNameWithdrawsTheFirstAtDestruction) {
    const Handler first("Tx", 1);
    std::make_unique<Handler>("Tx", 1).reset();
    EXPECT_FALSE(isPublished("IFrequencyHandler_Tx_1"));
}

TEST_F(CommonFrequencyHandlerTest, PhaseOperationsDoNothingUnlessABoardOverridesThem) {
    Handler handler("Tx", 1);
    forget();
    EXPECT_EQ(handler.onModuleInit(), ResultOk);
    EXPECT_EQ(handler.getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(handler.getFFVariablesFromDatabase(), ResultOk);
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(CommonFrequencyHandlerTest, RecordHoldsHandlerEntryAndChannel) {
    Handler handler("Tx", 7);
    const auto* const record = static_cast<FrequencyHandlerCStruct*>(handler.getCStruct());
    EXPECT_EQ(record->handler, static_cast<void*>(&handler));
    EXPECT_NE(record->registerObserver, nullptr);
    EXPECT_EQ(record->m_channel, 7U);
}

TEST_F(CommonFrequencyHandlerTest, ChannelInTheRecordIsA32BitNumber) {
    Handler handler("Tx", static_cast<unsigned long>(-1));
    EXPECT_EQ(static_cast<FrequencyHandlerCStruct*>(handler.getCStruct())->m_channel, 4294967295U);
}

TEST_F(CommonFrequencyHandlerTest, InterfaceAloneRegistersNobodyAndHasNoFrequency) {
    IFrequencyHandler plain;
    CallingObserver observer = noting("observer");
    EXPECT_EQ(plain.registerObserver(&observer), ResultOk);
    EXPECT_EQ(plain.getFrequency(), 0U);
}
