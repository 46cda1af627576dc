#include "ITemperatureHandler.h"
#include "PlatformFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
namespace Codes = Standalone::Codes;

struct Thermometer {
    static void note(void* context, int temperature) {
        static_cast<Thermometer*>(context)->seen.push_back(temperature);
    }

    std::vector<int> seen;
    ITemperatureObserver record{this, &Thermometer::note};
};

class TemperatureTest : public PlatformFixture {
protected:
    static ETHResult observe(Thermometer& thermometer) {
        return ITemperatureHandler::registerObserver(&thermometer.record);
    }

    Standalone::TemperatureService& service = platform.temperature();
    Thermometer first;
    Thermometer second;
};

TEST_F(TemperatureTest, IsPublishedAsTheInterfaceOfItsName) {
    EXPECT_EQ(InterfaceBroker::getInstance().getInterface<ITemperatureHandler>("ITemperatureHandler"),
              &service);
}

TEST_F(TemperatureTest, ObserversAreToldOfAChange) {
    EXPECT_EQ(observe(first), 0);
    EXPECT_EQ(observe(second), 0);
    EXPECT_EQ(service.set(-5), 2U);
    EXPECT_THAT(first.seen, ElementsAre(-5));
    EXPECT_THAT(second.seen, ElementsAre(-5));
}

TEST_F(TemperatureTest, ObserversAreToldInTheOrderOfTheirRegistration) {
    std::vector<int*> order;
    struct Entry {
        std::vector<int*>& order;
        int id;
        static void note(void* context, int /*temperature*/) {
            auto* const entry = static_cast<Entry*>(context);
            entry->order.push_back(&entry->id);
        }
    };
    Entry late{order, 0};
    Entry early{order, 0};
    ITemperatureObserver earlyRecord{&early, &Entry::note};
    ITemperatureObserver lateRecord{&late, &Entry::note};
    ITemperatureHandler::registerObserver(&earlyRecord);
    ITemperatureHandler::registerObserver(&lateRecord);
    service.set(20);
    EXPECT_THAT(order, ElementsAre(&early.id, &late.id));
}

TEST_F(TemperatureTest, FirstTemperatureCountsAsAChangeEvenIfItIsZero) {
    observe(first);
    EXPECT_EQ(service.temperature(), std::nullopt);
    EXPECT_EQ(service.set(0), 1U);
    EXPECT_THAT(first.seen, ElementsAre(0));
}

TEST_F(TemperatureTest, SameTemperatureAgainIsNoChange) {
    observe(first);
    service.set(25);
    EXPECT_EQ(service.set(25), 0U);
    EXPECT_EQ(service.set(26), 1U);
    EXPECT_THAT(first.seen, ElementsAre(25, 26));
    EXPECT_EQ(service.temperature(), 26);
}

TEST_F(TemperatureTest, RegistrationAloneTellsNothing) {
    service.set(25);
    observe(first);
    EXPECT_THAT(first.seen, IsEmpty());
}

TEST_F(TemperatureTest, RecordRegisteredTwiceIsToldOnce) {
    observe(first);
    EXPECT_EQ(observe(first), 0);
    service.set(25);
    EXPECT_THAT(first.seen, ElementsAre(25));
    EXPECT_EQ(service.observerCount(), 1U);
}

TEST_F(TemperatureTest, IncompleteRecordIsRefused) {
    ITemperatureObserver withoutFunction{&first, nullptr};
    EXPECT_EQ(ITemperatureHandler::registerObserver(nullptr), Codes::badArgument);
    EXPECT_EQ(ITemperatureHandler::registerObserver(&withoutFunction), Codes::badArgument);
    EXPECT_EQ(service.observerCount(), 0U);
}

TEST_F(TemperatureTest, RecordWhoseFunctionWasTakenOutIsNotCalled) {
    observe(first);
    observe(second);
    first.record.notifyTemperature = nullptr;
    EXPECT_EQ(service.set(25), 1U); // only those that were told count
    EXPECT_THAT(first.seen, IsEmpty());
    EXPECT_THAT(second.seen, ElementsAre(25));
}

TEST_F(TemperatureTest, ForgottenObserversAreNotTold) {
    observe(first);
    service.forgetObservers();
    EXPECT_EQ(service.set(25), 0U);
    EXPECT_THAT(first.seen, IsEmpty());
}

TEST_F(TemperatureTest, ForgottenObserverMayRegisterAgain) {
    observe(first);
    service.forgetObservers();
    EXPECT_EQ(service.observerCount(), 0U);
    EXPECT_EQ(observe(first), 0);
    EXPECT_EQ(service.observerCount(), 1U);
    EXPECT_EQ(service.set(25), 1U);
    EXPECT_THAT(first.seen, ElementsAre(25));
}

TEST_F(TemperatureTest, ThousandObserversAreToldInTheOrderOfTheirRegistrationEachOnce) {
    struct Entry {
        std::vector<int>& order;
        int number;
        static void note(void* context, int /*temperature*/) {
            auto* const entry = static_cast<Entry*>(context);
            entry->order.push_back(entry->number);
        }
    };
    std::vector<int> order;
    std::vector<int> expected;
    std::vector<Entry> entries;
    std::vector<ITemperatureObserver> records(1000);
    for (int number = 0; number < 1000; ++number) {
        entries.push_back({order, number});
        expected.push_back(number);
    }
    for (std::size_t number = 0; number < 1000; ++number) {
        // Their addresses neither rise nor fall: each of 1000 records once, as 7 and 1000 share no factor.
        records[number * 7 % 1000] = {&entries[number], &Entry::note};
        EXPECT_EQ(ITemperatureHandler::registerObserver(&records[number * 7 % 1000]), 0);
    }
    for (ITemperatureObserver& record : records) {
        EXPECT_EQ(ITemperatureHandler::registerObserver(&record), 0); // is there already and keeps its place
    }
    EXPECT_EQ(service.observerCount(), 1000U);
    EXPECT_EQ(service.set(25), 1000U);
    EXPECT_EQ(order, expected);
}

TEST_F(TemperatureTest, ObserverMayRegisterAnotherOne) {
    struct Recruiter {
        static void note(void* context, int /*temperature*/) { observe(*static_cast<Thermometer*>(context)); }
    };
    ITemperatureObserver recruiter{&first, &Recruiter::note};
    ITemperatureHandler::registerObserver(&recruiter);
    EXPECT_EQ(service.set(1), 1U);
    EXPECT_EQ(service.set(2), 2U);
    EXPECT_THAT(first.seen, ElementsAre(2));
}

/** Sets another temperature as soon as it is told of one. */
struct Controller {
    static void react(void* context, int temperature) {
        auto* const self = static_cast<Controller*>(context);
        if (temperature == 20) {
            self->service->set(25);
        }
    }

    Standalone::TemperatureService* service;
    ITemperatureObserver record{this, &Controller::react};
};

TEST_F(TemperatureTest, OlderTemperatureIsNotTheLastThatAnObserverIsToldOf) {
    Controller controller{&service};
    observe(first);
    ITemperatureHandler::registerObserver(&controller.record);
    observe(second);
    EXPECT_EQ(service.set(20), 2U);
    EXPECT_THAT(first.seen, ElementsAre(20, 25));
    EXPECT_THAT(second.seen, ElementsAre(25));
    EXPECT_EQ(service.temperature(), 25);
}

} // namespace
