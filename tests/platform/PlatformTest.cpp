#include "CCalibrationHandler.h"
#include "CInterfaceBroker.h"
#include "CModuleManager.h"
#include "CStorageManager.h"
#include "ITemperatureHandler.h"
#include "OrbiTrace.h"
#include "PlatformFixture.h"

#include <array>
#include <stdexcept>

namespace {

using Standalone::Platform;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Key;
namespace Codes = Standalone::Codes;

TEST(PlatformTest, IsTheCurrentOneWhileItLives) {
    EXPECT_EQ(Platform::current(), nullptr);
    {
        Platform platform;
        EXPECT_EQ(Platform::current(), &platform);
    }
    EXPECT_EQ(Platform::current(), nullptr);
}

TEST(PlatformTest, SecondOneIsRefusedAndTheFirstStays) {
    Platform first;
    EXPECT_THROW(Platform(), std::logic_error);
    EXPECT_EQ(Platform::current(), &first);
    EXPECT_NE(InterfaceBroker::getInstance().findInterface("IDriverLayer"), nullptr);
}

TEST(PlatformTest, RefusedSecondOneLeavesTheTraceThresholdAlone) {
    OrbiTrace trace("QVX.FH", Standalone::TraceLevel::notice);
    Platform first;
    first.trace().setThreshold(Standalone::TraceLevel::error);
    EXPECT_THROW(Platform(), std::logic_error);
    EXPECT_EQ(trace.getLevel(), Standalone::TraceLevel::error);
}

TEST(PlatformTest, NewOnePublishesTwoInterfacesAndNothingElse) {
    Platform platform;
    EXPECT_THAT(platform.interfaces().entries(),
                ElementsAre(Key("IDriverLayer"), Key("ITemperatureHandler")));
}

/** A platform in which everything was used, gone again. */
class AfterAnotherPlatformTest : public ::testing::Test {
protected:
    void SetUp() override {
        Platform before;
        ITemperatureObserver observer{nullptr, [](void*, int) {}};
        before.drivers().add("lo");
        before.variables().add("v", {1});
        before.tables().add({"T", {0}, {}, {0}});
        before.addRau(1);
        before.temperature().set(25);
        before.calls().inject({Standalone::Operation::brokerOpen, "", 0x8000, std::nullopt, std::nullopt});
        InterfaceBroker::getInstance().registerInterface("IThing", &thing);
        ITemperatureHandler::registerObserver(&observer);
        CModuleManager_RegisterModule(83000, "module");
    }

    IInterface thing;
};

TEST_F(AfterAnotherPlatformTest, StoresAreEmpty) {
    Platform platform;
    EXPECT_THAT(platform.drivers().drivers(), IsEmpty());
    EXPECT_THAT(platform.variables().variables(), IsEmpty());
    EXPECT_THAT(platform.tables().tables(), IsEmpty());
    EXPECT_THAT(platform.raus(), IsEmpty());
}

TEST_F(AfterAnotherPlatformTest, NothingIsRegistered) {
    Platform platform;
    EXPECT_EQ(platform.interfaces().entries().count("IThing"), 0U);
    EXPECT_EQ(platform.modules().moduleCount(), 0U);
    EXPECT_EQ(platform.temperature().observerCount(), 0U);
}

TEST_F(AfterAnotherPlatformTest, NothingHasHappened) {
    Platform platform;
    EXPECT_EQ(platform.temperature().temperature(), std::nullopt);
    EXPECT_THAT(platform.calls().faults(), IsEmpty());
    EXPECT_THAT(platform.calls().journal(), IsEmpty());
    EXPECT_THAT(platform.trace().messages(), IsEmpty());
}

constexpr std::array<unsigned long, 1> phases{11};

TEST(WithoutPlatformTest, BrokerAnswersNoPlatform) {
    IInterface thing;
    InterfaceBroker& broker = InterfaceBroker::getInstance();
    EXPECT_EQ(broker.registerInterface("IThing", &thing), Codes::noPlatform);
    EXPECT_EQ(broker.unregisterInterface("IThing", nullptr), Codes::noPlatform);
    EXPECT_EQ(broker.findInterface("IThing"), nullptr);
}

TEST(WithoutPlatformTest, CViewOfTheBrokerAnswersNoPlatformAndGivesNothing) {
    int word = 0;
    void* handle = &word;
    void* record = &word;
    EXPECT_EQ(CInterfaceBroker_GetInstance(&handle), Codes::noPlatform);
    EXPECT_EQ(CInterfaceBroker_GetInterface(&word, "IDriverLayer", &record), Codes::noPlatform);
    EXPECT_EQ(CInterfaceBroker_DestroyInstance(&word), Codes::noPlatform);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(record, nullptr);
}

TEST(WithoutPlatformTest, ModuleManagerAnswersNoPlatform) {
    ModuleInterface module(1, "Module", 0, 0, phases.data(), 1);
    ModuleCallbackRecord record{nullptr, [](void*, unsigned long, ECallbackPriority) { return ResultOk; }};
    EXPECT_EQ(CModuleManager::GetInstance().RegisterModule(&module), Codes::noPlatform);
    EXPECT_EQ(CModuleManager::GetInstance().UnRegisterModule(&module), Codes::noPlatform);
    EXPECT_EQ(CModuleManager_RegisterModule(1, "Module"), Codes::noPlatform);
    EXPECT_EQ(
        CModuleManager_RegisterCallback(1, "callback", 1, &record, ECallbackPriority{3}, 0, phases.data(), 1),
        Codes::noPlatform);
}

TEST(WithoutPlatformTest, StorageManagerAnswersNoPlatform) {
    StorageVariable* record = nullptr;
    void* address = nullptr;
    EXPECT_EQ(CStorageManager_GetVariableByName("v", &record), Codes::noPlatform);
    EXPECT_EQ(CStorageManager_GetVariableContentAddressByName("v", &address, 0), Codes::noPlatform);
}

TEST(WithoutPlatformTest, CalibrationHandlerAnswersNoPlatform) {
    CalibrationTable table{"T", {0}, {}, {0}};
    CalibrationTableHandle handle = nullptr;
    int y = 0;
    EXPECT_EQ(CCalibrationHandler_GetTable("T", &handle), Codes::noPlatform);
    EXPECT_EQ(CCalibrationTable_LinearInterpolate(&table, 0, &y), Codes::noPlatform);
    EXPECT_EQ(CCalibrationTable_BiLinearInterpolate(&table, 0, 0, &y), Codes::noPlatform);
}

TEST(WithoutPlatformTest, TemperatureHandlerAnswersNoPlatform) {
    ITemperatureObserver observer{nullptr, [](void*, int) {}};
    EXPECT_EQ(ITemperatureHandler::registerObserver(&observer), Codes::noPlatform);
}

TEST(WithoutPlatformTest, DriverLookupAnswersNoPlatform) {
    DriverInterface* found = nullptr;
    decltype(DriverLayerInterface::getDriverInterface) getDriverInterface = nullptr;
    {
        Platform platform;
        auto* const layer = InterfaceBroker::getInstance().getInterface<IInterface_c>("IDriverLayer");
        getDriverInterface = static_cast<DriverLayerInterface*>(layer->getCStruct())->getDriverInterface;
    }
    EXPECT_EQ(getDriverInterface(&found, "lo"), Codes::noPlatform);
}

TEST(WithoutPlatformTest, ModuleMayOutliveThePlatform) {
    ModuleInterface module(1, "Module", 0, 0, phases.data(), 1);
    {
        Platform platform;
        CModuleManager::GetInstance().RegisterModule(&module);
    }
    EXPECT_EQ(CModuleManager::GetInstance().UnRegisterModule(&module), Codes::noPlatform);
}

} // namespace
