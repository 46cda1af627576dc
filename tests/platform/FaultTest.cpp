#include "CCalibrationHandler.h"
#include "CInterfaceBroker.h"
#include "CModuleManager.h"
#include "CStorageManager.h"
#include "ITemperatureHandler.h"
#include "PlatformFixture.h"

#include <array>

namespace {

using Standalone::Operation;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class FaultTest : public PlatformFixture {
protected:
    EDriverResult write(int value) { return lo.write(lo.context, value); }
    std::int64_t value() { return platform.drivers().find("lo")->value(); }
    Standalone::Calls& calls() { return platform.calls(); }

    DriverInterface& lo = driver("lo");
    DriverInterface& other = driver("other");
};

TEST_F(FaultTest, FaultAnswersItsCodeUntilItIsCleared) {
    fail(Operation::driverWrite, "lo", 0x8001);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(write(1), 0x8001);
    }
    EXPECT_EQ(calls().clear(Operation::driverWrite, "lo"), 1U);
    EXPECT_EQ(write(1), 0);
}

TEST_F(FaultTest, FaultOfOneTimeAnswersOnce) {
    fail(Operation::driverWrite, "lo", 0x8001, 1);
    EXPECT_EQ(write(1), 0x8001);
    EXPECT_EQ(write(1), 0);
    EXPECT_THAT(calls().faults(), IsEmpty());
}

TEST_F(FaultTest, FaultOfThreeTimesAnswersThreeTimes) {
    fail(Operation::driverWrite, "lo", 0x8001, 3);
    EXPECT_EQ(write(1), 0x8001);
    EXPECT_EQ(write(1), 0x8001);
    EXPECT_EQ(write(1), 0x8001);
    EXPECT_EQ(write(1), 0);
}

TEST_F(FaultTest, FaultOfNoTimesIsNone) {
    fail(Operation::driverWrite, "lo", 0x8001, 0);
    EXPECT_EQ(write(1), 0);
    EXPECT_THAT(calls().faults(), IsEmpty());
}

TEST_F(FaultTest, FailedWriteDoesNotChangeTheValue) {
    write(5);
    fail(Operation::driverWrite, "lo", 0x8000);
    write(6);
    EXPECT_EQ(value(), 5);
    EXPECT_EQ(platform.drivers().find("lo")->writes(), 1U);
}

TEST_F(FaultTest, FaultOnOneObjectLeavesTheOthersAlone) {
    fail(Operation::driverWrite, "lo", 0x8001);
    EXPECT_EQ(other.write(other.context, 1), 0);
}

TEST_F(FaultTest, FaultOnOneOperationLeavesTheOthersAlone) {
    fail(Operation::driverWrite, "lo", 0x8001);
    EXPECT_EQ(lo.writeBuffer(lo.context, "x", 1), 0);
}

TEST_F(FaultTest, FaultWithoutObjectMeetsEveryObject) {
    fail(Operation::driverWrite, "", 0x8001, 2);
    EXPECT_EQ(write(1), 0x8001);
    EXPECT_EQ(other.write(other.context, 1), 0x8001);
    EXPECT_EQ(write(1), 0);
}

TEST_F(FaultTest, FaultAddedLastDecides) {
    fail(Operation::driverWrite, "lo", 0x8001);
    fail(Operation::driverWrite, "", 0x8002, 1);
    EXPECT_EQ(write(1), 0x8002);
    EXPECT_EQ(write(1), 0x8001);
}

TEST_F(FaultTest, SuccessCodeCarriesTheCallOut) {
    fail(Operation::driverWrite, "lo", 0x7FFF);
    EXPECT_EQ(write(9), 0x7FFF);
    EXPECT_EQ(value(), 9);
}

TEST_F(FaultTest, MinusOneIsASuccessCode) {
    fail(Operation::driverWrite, "lo", -1);
    EXPECT_EQ(write(9), -1);
    EXPECT_EQ(value(), 9);
}

TEST_F(FaultTest, FailedReadLeavesTheOutputUntouched) {
    platform.drivers().find("lo")->setValue(5);
    fail(Operation::driverRead, "lo", 0x8001);
    int read = 77;
    EXPECT_EQ(lo.read(lo.context, &read), 0x8001);
    EXPECT_EQ(read, 77);
}

TEST_F(FaultTest, FailedReadCanLeaveAValueBehind) {
    calls().inject({Operation::driverRead, "lo", 0x8001, std::nullopt, -12});
    int read = 77;
    EXPECT_EQ(lo.read(lo.context, &read), 0x8001);
    EXPECT_EQ(read, -12);
    EXPECT_EQ(calls().journal().back().value, -12);
}

TEST_F(FaultTest, FailedLookupCanLeaveTheRecordBehind) {
    platform.variables().add("level", {5});
    calls().inject({Operation::variableGet, "level", 0x8001, std::nullopt, std::nullopt, true});
    StorageVariable* variable = nullptr;
    EXPECT_EQ(CStorageManager_GetVariableByName("level", &variable), 0x8001);
    EXPECT_EQ(variable, platform.variables().find("level")->record());
    EXPECT_EQ(calls().journal().back().value, 5);
}

TEST_F(FaultTest, LookupCanSucceedAndGiveNull) {
    platform.variables().add("level", {5});
    calls().inject({Operation::variableGet, "level", 0, 1, std::nullopt, false, true});
    StorageVariable* variable = platform.variables().find("level")->record();
    EXPECT_EQ(CStorageManager_GetVariableByName("level", &variable), 0);
    EXPECT_EQ(variable, nullptr);
    EXPECT_EQ(CStorageManager_GetVariableByName("level", &variable), 0);
    EXPECT_NE(variable, nullptr);
}

TEST_F(FaultTest, LookupCanSucceedAndStoreNothing) {
    platform.variables().add("level", {5});
    Standalone::Fault fault{Operation::variableAddress, "level", 0, 1};
    fault.isLeftUndone = true;
    calls().inject(fault);
    int content = 7;
    void* address = &content;
    EXPECT_EQ(CStorageManager_GetVariableContentAddressByName("level", &address, 0), 0);
    EXPECT_EQ(address, &content);
    EXPECT_EQ(CStorageManager_GetVariableContentAddressByName("level", &address, 0), 0);
    EXPECT_NE(address, &content);
}

TEST_F(FaultTest, WriteCanSucceedAndBeLeftUndone) {
    Standalone::Fault fault{Operation::driverWrite, "lo", 0x7FFF, 1};
    fault.isLeftUndone = true;
    calls().inject(fault);
    EXPECT_EQ(write(9), 0x7FFF);
    EXPECT_EQ(platform.drivers().find("lo")->writes(), 0U);
}

TEST_F(FaultTest, FailedReadThatIsCarriedOutMayStillLeaveAnotherValue) {
    platform.drivers().find("lo")->setValue(5);
    calls().inject({Operation::driverRead, "lo", 0x8001, 1, std::nullopt, true});
    calls().inject({Operation::driverRead, "lo", 0x8001, 1, -12, true});
    int read = 77;
    EXPECT_EQ(lo.read(lo.context, &read), 0x8001);
    EXPECT_EQ(read, -12);
    EXPECT_EQ(lo.read(lo.context, &read), 0x8001);
    EXPECT_EQ(read, 5);
}

TEST_F(FaultTest, FailedReadWithoutPlaceForItsValueStoresNothing) {
    calls().inject({Operation::driverRead, "lo", 0x8001, std::nullopt, -12});
    EXPECT_EQ(lo.read(lo.context, nullptr), 0x8001);
}

TEST_F(FaultTest, OutputOfASuccessCodeIsNotUsed) {
    platform.drivers().find("lo")->setValue(5);
    calls().inject({Operation::driverRead, "lo", 1, std::nullopt, -12});
    EXPECT_EQ(read(lo), 5);
}

TEST_F(FaultTest, ClearingAnObjectKeepsTheFaultsOfOthers) {
    fail(Operation::driverWrite, "lo", 0x8001);
    fail(Operation::driverWrite, "other", 0x8001);
    fail(Operation::driverWrite, "", 0x8002);
    EXPECT_EQ(calls().clear(Operation::driverWrite, "lo"), 1U);
    EXPECT_THAT(calls().faults(), SizeIs(2));
}

TEST_F(FaultTest, ClearingWithoutObjectTakesBackAllFaultsOfTheOperation) {
    fail(Operation::driverWrite, "lo", 0x8001);
    fail(Operation::driverWrite, "", 0x8002);
    fail(Operation::driverRead, "lo", 0x8003);
    EXPECT_EQ(calls().clear(Operation::driverWrite, ""), 2U);
    EXPECT_THAT(calls().faults(), SizeIs(1));
}

TEST_F(FaultTest, AllFaultsCanBeTakenBack) {
    fail(Operation::driverWrite, "lo", 0x8001);
    fail(Operation::driverRead, "lo", 0x8003);
    calls().clearAll();
    EXPECT_EQ(write(1), 0);
    EXPECT_EQ(read(lo), 1);
}

TEST_F(FaultTest, FaultsWorkWithoutRecording) {
    calls().setRecording(false);
    fail(Operation::driverWrite, "lo", 0x8001, 1);
    EXPECT_EQ(write(1), 0x8001);
    EXPECT_EQ(write(1), 0);
}

// One call of each operation, with a fault on its object.
constexpr std::int32_t toldCode = 0x8123;

TEST_F(FaultTest, DriverLookupCanBeToldToFail) {
    DriverInterface* found = &other;
    fail(Operation::driverLookup, "lo", toldCode);
    EXPECT_EQ(lookUpDriver(&found, "lo"), toldCode);
    EXPECT_EQ(found, &other);
}

TEST_F(FaultTest, BufferWriteCanBeToldToFail) {
    fail(Operation::driverWriteBuffer, "lo", toldCode);
    EXPECT_EQ(lo.writeBuffer(lo.context, "x", 1), toldCode);
    EXPECT_EQ(value(), 0);
}

TEST_F(FaultTest, PublishingCanBeToldToFail) {
    IInterface thing;
    fail(Operation::brokerRegister, "IThing", toldCode);
    EXPECT_EQ(InterfaceBroker::getInstance().registerInterface("IThing", &thing), toldCode);
    EXPECT_EQ(InterfaceBroker::getInstance().findInterface("IThing"), nullptr);
}

TEST_F(FaultTest, WithdrawingCanBeToldToFail) {
    fail(Operation::brokerUnregister, "IDriverLayer", toldCode);
    EXPECT_EQ(InterfaceBroker::getInstance().unregisterInterface("IDriverLayer", nullptr), toldCode);
    EXPECT_NE(InterfaceBroker::getInstance().findInterface("IDriverLayer"), nullptr);
}

TEST_F(FaultTest, LookupToldToFailFindsNothing) {
    fail(Operation::brokerLookup, "IDriverLayer", toldCode, 1);
    EXPECT_EQ(InterfaceBroker::getInstance().findInterface("IDriverLayer"), nullptr);
    EXPECT_EQ(calls().journal().back().code, toldCode);
    EXPECT_NE(InterfaceBroker::getInstance().findInterface("IDriverLayer"), nullptr);
}

TEST_F(FaultTest, CViewOfTheBrokerCanBeToldToFail) {
    void* handle = &lo;
    void* record = &lo;
    fail(Operation::brokerOpen, "", toldCode, 1);
    EXPECT_EQ(CInterfaceBroker_GetInstance(&handle), toldCode);
    EXPECT_EQ(handle, nullptr);
    CInterfaceBroker_GetInstance(&handle);
    fail(Operation::brokerGet, "IDriverLayer", toldCode);
    EXPECT_EQ(CInterfaceBroker_GetInterface(handle, "IDriverLayer", &record), toldCode);
    EXPECT_EQ(record, nullptr);
    fail(Operation::brokerClose, "", toldCode);
    EXPECT_EQ(CInterfaceBroker_DestroyInstance(handle), toldCode);
    EXPECT_EQ(platform.interfaces().openHandles(), 1U);
}

constexpr std::array<unsigned long, 1> phase11{11};

TEST_F(FaultTest, ModuleRegistrationCanBeToldToFail) {
    ModuleInterface module(1, "Module", 0, 0, phase11.data(), 1);
    fail(Operation::moduleRegister, "Module", toldCode);
    EXPECT_EQ(CModuleManager::GetInstance().RegisterModule(&module), toldCode);
    EXPECT_EQ(platform.modules().moduleCount(), 0U);
}

TEST_F(FaultTest, ModuleUnregistrationCanBeToldToFail) {
    ModuleInterface module(1, "Module", 0, 0, phase11.data(), 1);
    CModuleManager::GetInstance().RegisterModule(&module);
    fail(Operation::moduleUnregister, "Module", toldCode);
    EXPECT_EQ(CModuleManager::GetInstance().UnRegisterModule(&module), toldCode);
    EXPECT_EQ(platform.modules().moduleCount(), 1U);
}

TEST_F(FaultTest, CViewOfTheModuleManagerCanBeToldToFail) {
    ModuleCallbackRecord record{nullptr, [](void*, unsigned long, ECallbackPriority) { return ResultOk; }};
    fail(Operation::moduleRegisterC, "Module", toldCode, 1);
    EXPECT_EQ(CModuleManager_RegisterModule(1, "Module"), toldCode);
    EXPECT_EQ(platform.modules().moduleCount(), 0U);
    CModuleManager_RegisterModule(1, "Module");
    fail(Operation::callbackRegister, "callback", toldCode);
    EXPECT_EQ(CModuleManager_RegisterCallback(1, "callback", 1, &record, ECallbackPriority{3}, 0,
                                              phase11.data(), 1),
              toldCode);
    EXPECT_THAT(platform.modules().run(11).steps, IsEmpty());
}

TEST_F(FaultTest, VariableLookupsCanBeToldToFail) {
    platform.variables().add("HwCodeDsp", {1});
    StorageVariable* record = nullptr;
    void* address = nullptr;
    fail(Operation::variableGet, "HwCodeDsp", toldCode);
    fail(Operation::variableAddress, "HwCodeDsp", toldCode);
    EXPECT_EQ(CStorageManager_GetVariableByName("HwCodeDsp", &record), toldCode);
    EXPECT_EQ(CStorageManager_GetVariableContentAddressByName("HwCodeDsp", &address, 0), toldCode);
    EXPECT_EQ(record, nullptr);
    EXPECT_EQ(address, nullptr);
}

TEST_F(FaultTest, TableLookupCanBeToldToFail) {
    platform.tables().add({"Line", {0}, {}, {1}});
    CalibrationTableHandle handle = nullptr;
    fail(Operation::tableLookup, "Line", toldCode);
    EXPECT_EQ(CCalibrationHandler_GetTable("Line", &handle), toldCode);
    EXPECT_EQ(handle, nullptr);
}

TEST_F(FaultTest, InterpolationsCanBeToldToFail) {
    CalibrationTable& line = platform.tables().add({"Line", {0}, {}, {1}});
    CalibrationTable& plane = platform.tables().add({"Plane", {0}, {0}, {1}});
    int y = 77;
    fail(Operation::tableLinear, "Line", toldCode);
    fail(Operation::tableBilinear, "Plane", toldCode);
    EXPECT_EQ(CCalibrationTable_LinearInterpolate(&line, 0, &y), toldCode);
    EXPECT_EQ(CCalibrationTable_BiLinearInterpolate(&plane, 0, 0, &y), toldCode);
    EXPECT_EQ(y, 77);
}

TEST_F(FaultTest, FailedInterpolationCanLeaveAValueBehind) {
    CalibrationTable& line = platform.tables().add({"Line", {0}, {}, {1}});
    int y = 77;
    calls().inject({Operation::tableLinear, "Line", toldCode, std::nullopt, 5});
    EXPECT_EQ(CCalibrationTable_LinearInterpolate(&line, 0, &y), toldCode);
    EXPECT_EQ(y, 5);
}

TEST_F(FaultTest, TemperatureRegistrationCanBeToldToFail) {
    ITemperatureObserver observer{nullptr, [](void*, int) {}};
    fail(Operation::temperatureRegister, "ITemperatureHandler", toldCode);
    EXPECT_EQ(ITemperatureHandler::registerObserver(&observer), toldCode);
    EXPECT_EQ(platform.temperature().observerCount(), 0U);
}

TEST(OperationTest, EveryOperationHasAWordOfItsOwn) {
    EXPECT_THAT(Standalone::allOperations(), SizeIs(22));
    for (const Operation operation : Standalone::allOperations()) {
        EXPECT_EQ(Standalone::operationFromString(Standalone::toString(operation)), operation);
    }
}

TEST(OperationTest, WordsAreThoseOfScripts) {
    EXPECT_EQ(Standalone::toString(Operation::driverWrite), "driver-write");
    EXPECT_EQ(Standalone::toString(Operation::driverWriteBuffer), "driver-write-buffer");
    EXPECT_EQ(Standalone::toString(Operation::brokerRegister), "broker-register");
    EXPECT_EQ(Standalone::toString(Operation::rauRx), "rau-rx");
}

TEST(OperationTest, UnknownWordIsNoOperation) {
    EXPECT_EQ(Standalone::operationFromString("driver_write"), std::nullopt);
    EXPECT_EQ(Standalone::operationFromString(""), std::nullopt);
}

} // namespace
