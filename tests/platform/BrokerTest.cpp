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

TEST_F(BrokerTest, WithdrawingAnAbsentNameFailsAndLeavesTheOutputUntouched) {
    IInterface* removed = &second;
    EXPECT_EQ(broker.unregisterInterface("IThing", &removed), Codes::notFound);
    EXPECT_EQ(removed, &second);
}

class CBrokerTest : public BrokerTest {
protected:
    void SetUp() override { ASSERT_EQ(CInterfaceBroker_GetInstance(&handle), 0); }

    void* handle = nullptr;
    void* record = &second;
    int words = 0;
    RecordInterface withoutRecord{nullptr};
};

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
