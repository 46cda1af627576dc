#include "IRauHandler.h"
#include "ITemperatureHandler.h"
#include "PlatformFixture.h"

#include <stdexcept>

namespace {

using Standalone::Presence;

class PresenceTest : public PlatformFixture {
protected:
    IInterface* entry(const std::string& name) { return platform.interfaces().entries().at(name); }
    bool hasEntry(const std::string& name) { return platform.interfaces().entries().count(name) != 0; }
    template <typename InterfaceType>
    static InterfaceType* find(const std::string& name) {
        return InterfaceBroker::getInstance().getInterface<InterfaceType>(name);
    }
};

TEST_F(PresenceTest, DriverLayerIsThereAtFirst) {
    ASSERT_NE(find<IInterface_c>("IDriverLayer"), nullptr);
    EXPECT_NE(find<IInterface_c>("IDriverLayer")->getCStruct(), nullptr);
}

TEST_F(PresenceTest, AbsentInterfaceHasNoEntry) {
    platform.setPresence("IDriverLayer", Presence::absent);
    EXPECT_FALSE(hasEntry("IDriverLayer"));
}

TEST_F(PresenceTest, NullInterfaceHasAnEntryThatHoldsNothing) {
    platform.setPresence("IDriverLayer", Presence::null);
    EXPECT_EQ(entry("IDriverLayer"), nullptr);
}

TEST_F(PresenceTest, ForeignInterfaceHasNoCView) {
    platform.setPresence("IDriverLayer", Presence::foreign);
    EXPECT_NE(entry("IDriverLayer"), nullptr);
    EXPECT_EQ(find<IInterface_c>("IDriverLayer"), nullptr);
}

TEST_F(PresenceTest, InterfaceCanHaveANullRecord) {
    platform.setPresence("IDriverLayer", Presence::nullRecord);
    ASSERT_NE(find<IInterface_c>("IDriverLayer"), nullptr);
    EXPECT_EQ(find<IInterface_c>("IDriverLayer")->getCStruct(), nullptr);
}

TEST_F(PresenceTest, InterfaceCanComeBack) {
    IInterface* const before = entry("IDriverLayer");
    platform.setPresence("IDriverLayer", Presence::absent);
    platform.setPresence("IDriverLayer", Presence::present);
    EXPECT_EQ(entry("IDriverLayer"), before);
}

TEST_F(PresenceTest, TemperatureHandlerCanBeForeign) {
    platform.setPresence("ITemperatureHandler", Presence::foreign);
    EXPECT_NE(entry("ITemperatureHandler"), nullptr);
    EXPECT_EQ(find<ITemperatureHandler>("ITemperatureHandler"), nullptr);
}

TEST_F(PresenceTest, AbsentTemperatureHandlerStillRegistersThroughItsClass) {
    ITemperatureObserver observer{nullptr, [](void*, int) {}};
    platform.setPresence("ITemperatureHandler", Presence::absent);
    EXPECT_EQ(ITemperatureHandler::registerObserver(&observer), 0);
    EXPECT_EQ(platform.temperature().observerCount(), 1U);
}

TEST_F(PresenceTest, RemoteRadioUnitCanBeForeign) {
    platform.addRau(1);
    platform.setPresence("IRauHandler_1", Presence::foreign);
    EXPECT_NE(entry("IRauHandler_1"), nullptr);
    EXPECT_EQ(find<IRauHandler>("IRauHandler_1"), nullptr);
}

TEST_F(PresenceTest, RemoteRadioUnitWithNullRecordIsForeignToo) {
    platform.addRau(1);
    platform.setPresence("IRauHandler_1", Presence::nullRecord);
    EXPECT_EQ(find<IRauHandler>("IRauHandler_1"), nullptr);
}

TEST_F(PresenceTest, AddingAnAbsentUnitAgainDoesNotPublishIt) {
    platform.addRau(1);
    platform.setPresence("IRauHandler_1", Presence::absent);
    platform.addRau(1);
    EXPECT_FALSE(hasEntry("IRauHandler_1"));
}

TEST_F(PresenceTest, InterfaceThatThePlatformDoesNotHaveIsRefused) {
    EXPECT_THROW(platform.setPresence("IRauHandler_1", Presence::absent), std::invalid_argument);
    EXPECT_THROW(platform.setPresence("IFrequencyHandler_Tx", Presence::null), std::invalid_argument);
}

TEST_F(PresenceTest, ChangingThePresenceIsNotJournaled) {
    platform.setPresence("IDriverLayer", Presence::absent);
    platform.setPresence("IDriverLayer", Presence::present);
    EXPECT_THAT(platform.calls().journal(), ::testing::IsEmpty());
}

} // namespace
