#include "CInterfaceBroker.h"
#include "PlatformFixture.h"

#include <type_traits>

namespace {

namespace Codes = Standalone::Codes;

class PlainInterface : public virtual IInterface {};

class RecordInterface : public IInterface_c {
public:
    explicit RecordInterface(void* record) { m_pCStruct = record; }
};

class BrokerTest : public PlatformFixture {
protected:
    EAFResult publish(const std::string& name, IInterface* iface) {
        return broker.registerInterface(name, iface);
    }

    InterfaceBroker& broker = InterfaceBroker::getInstance();
    PlainInterface first;
    PlainInterface second;
};

TEST_F(BrokerTest, IsOneObjectForTheProcess) {
    EXPECT_EQ(&broker, &InterfaceBroker::getInstance());
    EXPECT_FALSE(std::is_copy_constructible_v<InterfaceBroker> || std::is_copy_assignable_v<InterfaceBroker>);
}

TEST_F(BrokerTest, FindsWhatWasPublished) {
    EXPECT_EQ(publish("IThing", &first), 0);
    EXPECT_EQ(broker.findInterface("IThing"), &first);
}

TEST_F(BrokerTest, AbsentNameFindsNothing) {
    EXPECT_EQ(broker.findInterface("IThing"), nullptr);
}

TEST_F(BrokerTest, NamesAreCaseSensitive) {
    publish("IThing", &first);
    EXPECT_EQ(broker.findInterface("ithing"), nullptr);
}

TEST_F(BrokerTest, DuplicateNameIsRefusedAndTheFirstEntryStays) {
    publish("IThing", &first);
    EXPECT_EQ(publish("IThing", &second), Codes::alreadyThere);
    EXPECT_EQ(broker.findInterface("IThing"), &first);
}

TEST_F(BrokerTest, OneObjectMayHaveTwoNames) {
    publish("IThing", &first);
    EXPECT_EQ(publish("IThing_1", &first), 0);
    EXPECT_EQ(broker.findInterface("IThing_1"), &first);
}

TEST_F(BrokerTest, EntryThatHoldsNothingIsNotAvailable) {
    EXPECT_EQ(publish("IThing", nullptr), 0);
    EXPECT_EQ(broker.findInterface("IThing"), nullptr);
}

TEST_F(BrokerTest, EntryThatHoldsNothingTakesItsName) {
    publish("IThing", nullptr);
    EXPECT_EQ(publish("IThing", &first), Codes::alreadyThere);
}

TEST_F(BrokerTest, WithdrawnNameIsNotFound) {
    publish("IThing", &first);
    EXPECT_EQ(broker.unregisterInterface("IThing", nullptr), 0);
    EXPECT_EQ(broker.findInterface("IThing"), nullptr);
}

TEST_F(BrokerTest, WithdrawnNameCanBeTakenAgain) {
    publish("IThing", &first);
    broker.unregisterInterface("IThing", nullptr);
    EXPECT_EQ(publish("IThing", &second), 0);
    EXPECT_EQ(broker.findInterface("IThing"), &second);
}

TEST_F(BrokerTest, WithdrawingTellsWhatTheEntryHeld) {
    IInterface* removed = nullptr;
    publish("IThing", &first);
    EXPECT_EQ(broker.unregisterInterface("IThing", &removed), 0);
    EXPECT_EQ(removed, &first);
}

TEST_F(BrokerTest, WithdrawingAnAbsentNameFailsAndLeavesTheOutputUntouched) {
    IInterface* removed = &second;
    EXPECT_EQ(broker.unregisterInterface("IThing", &removed), Codes::notFound);
    EXPECT_EQ(removed, &second);
}

TEST_F(BrokerTest, ObjectOfAnotherTypeIsNotGivenOut) {
    publish("IThing", &first);
    EXPECT_EQ(broker.getInterface<PlainInterface>("IThing"), &first);
    EXPECT_EQ(broker.getInterface<IInterface_c>("IThing"), nullptr);
}

class CBrokerTest : public BrokerTest {
protected:
    void SetUp() override { ASSERT_EQ(CInterfaceBroker_GetInstance(&handle), 0); }

    void* handle = nullptr;
    void* record = &second;
    int words = 0;
    RecordInterface withRecord{&words};
    RecordInterface withoutRecord{nullptr};
};

TEST_F(CBrokerTest, YieldsTheRecordOfAnInterface) {
    publish("IThing", &withRecord);
    EXPECT_EQ(CInterfaceBroker_GetInterface(handle, "IThing", &record), 0);
    EXPECT_EQ(record, &words);
}

TEST_F(CBrokerTest, YieldsTheDriverLayersRecord) {
    DriverInterface* found = nullptr;
    platform.drivers().add("channel.1.tx.rf.frequency");
    ASSERT_EQ(CInterfaceBroker_GetInterface(handle, "IDriverLayer", &record), 0);
    EXPECT_EQ(
        static_cast<DriverLayerInterface*>(record)->getDriverInterface(&found, "channel.1.tx.rf.frequency"),
        0);
    EXPECT_EQ(found, platform.drivers().find("channel.1.tx.rf.frequency")->record());
}

TEST_F(CBrokerTest, AbsentNameGivesNoRecord) {
    EXPECT_EQ(CInterfaceBroker_GetInterface(handle, "IThing", &record), Codes::notFound);
    EXPECT_EQ(record, nullptr);
}

TEST_F(CBrokerTest, EntryThatHoldsNothingGivesNoRecord) {
    publish("IThing", nullptr);
    EXPECT_EQ(CInterfaceBroker_GetInterface(handle, "IThing", &record), Codes::notFound);
    EXPECT_EQ(record, nullptr);
}

TEST_F(CBrokerTest, InterfaceWithoutCViewGivesNoRecord) {
    publish("IThing", &first);
    EXPECT_EQ(CInterfaceBroker_GetInterface(handle, "IThing", &record), Codes::notFound);
    EXPECT_EQ(record, nullptr);
}

TEST_F(CBrokerTest, NullRecordIsAFailure) {
    publish("IThing", &withoutRecord);
    EXPECT_EQ(CInterfaceBroker_GetInterface(handle, "IThing", &record), Codes::notFound);
    EXPECT_EQ(record, nullptr);
}

TEST_F(CBrokerTest, RecordOutlivesTheHandle) {
    publish("IThing", &withRecord);
    CInterfaceBroker_GetInterface(handle, "IThing", &record);
    CInterfaceBroker_DestroyInstance(handle);
    EXPECT_EQ(record, withRecord.getCStruct());
}

TEST_F(CBrokerTest, NullNameIsRefused) {
    EXPECT_EQ(CInterfaceBroker_GetInterface(handle, nullptr, &record), Codes::badArgument);
}

TEST_F(CBrokerTest, NullPlaceForTheRecordIsRefused) {
    EXPECT_EQ(CInterfaceBroker_GetInterface(handle, "IDriverLayer", nullptr), Codes::badArgument);
}

TEST_F(CBrokerTest, NullPlaceForTheHandleIsRefused) {
    EXPECT_EQ(CInterfaceBroker_GetInstance(nullptr), Codes::badArgument);
    EXPECT_EQ(platform.interfaces().openHandles(), 1U);
}

TEST_F(CBrokerTest, NullHandleIsRefused) {
    EXPECT_EQ(CInterfaceBroker_GetInterface(nullptr, "IDriverLayer", &record), Codes::badArgument);
    EXPECT_EQ(record, nullptr);
    EXPECT_EQ(CInterfaceBroker_DestroyInstance(nullptr), Codes::badArgument);
}

TEST_F(CBrokerTest, UnknownHandleIsRefused) {
    EXPECT_EQ(CInterfaceBroker_GetInterface(&words, "IDriverLayer", &record), Codes::badArgument);
    EXPECT_EQ(CInterfaceBroker_DestroyInstance(&words), Codes::badArgument);
}

TEST_F(CBrokerTest, HandleGivenBackIsNotUsableAnyMore) {
    EXPECT_EQ(CInterfaceBroker_DestroyInstance(handle), 0);
    EXPECT_EQ(CInterfaceBroker_GetInterface(handle, "IDriverLayer", &record), Codes::badArgument);
    EXPECT_EQ(CInterfaceBroker_DestroyInstance(handle), Codes::badArgument);
}

TEST_F(CBrokerTest, OpenHandlesAreCounted) {
    void* another = nullptr;
    CInterfaceBroker_GetInstance(&another);
    EXPECT_EQ(platform.interfaces().openHandles(), 2U);
    CInterfaceBroker_DestroyInstance(another);
    EXPECT_EQ(platform.interfaces().openHandles(), 1U);
}

} // namespace
