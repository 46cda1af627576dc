// Faults that have the platform throw: what they throw comes out of the door unharmed, and all is in order
// behind it.

#include "CCalibrationHandler.h"
#include "CInterfaceBroker.h"
#include "CModuleManager.h"
#include "CModuleManager_c.h"
#include "CStorageManager.h"
#include "ITemperatureHandler.h"
#include "PlatformFixture.h"

#include <array>
#include <exception>
#include <functional>
#include <new>
#include <stdexcept>

namespace {

using Standalone::Fault;
using Standalone::Operation;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class ThrowingFaultTest : public PlatformFixture {
protected:
    /** An operation, and a call of it through its door. */
    struct Door {
        Operation operation;
        std::function<std::int32_t()> call;
    };

    /** All operations, in an order in which each of them succeeds once. */
    std::vector<Door> doors() {
        InterfaceBroker& broker = InterfaceBroker::getInstance();
        CModuleManager& manager = CModuleManager::GetInstance();
        return {
            {Operation::brokerRegister, [&] { return broker.registerInterface("IThing", &thing); }},
            {Operation::brokerLookup,
             [&] { return broker.findInterface("IThing") == &thing ? ResultOk : ResultFailed; }},
            {Operation::brokerUnregister, [&] { return broker.unregisterInterface("IThing", nullptr); }},
            {Operation::brokerOpen, [&] { return CInterfaceBroker_GetInstance(&handle); }},
            {Operation::brokerGet,
             [&] { return CInterfaceBroker_GetInterface(handle, "ITemperatureHandler", &record); }},
            {Operation::brokerClose, [&] { return CInterfaceBroker_DestroyInstance(handle); }},
            {Operation::moduleRegister, [&] { return manager.RegisterModule(&module); }},
            {Operation::moduleUnregister, [&] { return manager.UnRegisterModule(&module); }},
            {Operation::moduleRegisterC, [] { return CModuleManager_RegisterModule(7, "Flat"); }},
            {Operation::callbackRegister,
             [&] {
                 return CModuleManager_RegisterCallback(7, "callback", 1, &callback, ECallbackPriority{3}, 0,
                                                        phases.data(), 1);
             }},
            {Operation::driverLookup,
             [] {
                 DriverInterface* found = nullptr;
                 return lookUpDriver(&found, "lo");
             }},
            {Operation::driverWrite, [&] { return lo.write(lo.context, 5); }},
            {Operation::driverWriteBuffer, [&] { return lo.writeBuffer(lo.context, "x", 1); }},
            {Operation::driverRead, [&] { return lo.read(lo.context, &number); }},
            {Operation::variableGet,
             [] {
                 StorageVariable* found = nullptr;
                 return CStorageManager_GetVariableByName("level", &found);
             }},
            {Operation::variableAddress,
             [&] { return CStorageManager_GetVariableContentAddressByName("level", &record, 0); }},
            {Operation::tableLookup, [&] { return CCalibrationHandler_GetTable("Line", &table); }},
            {Operation::tableLinear, [&] { return CCalibrationTable_LinearInterpolate(&line, 0, &number); }},
            {Operation::tableBilinear,
             [&] { return CCalibrationTable_BiLinearInterpolate(&plane, 0, 0, &number); }},
            {Operation::temperatureRegister,
             [&] { return ITemperatureHandler::registerObserver(&observer); }},
            {Operation::rauTx, [&] { return radio.setTxRadioFrequency(18); }},
            {Operation::rauRx, [&] { return radio.setRxRadioFrequency(17); }},
        };
    }

    /** Has the next call of `operation` throw 7, after it was carried out or instead of that. */
    void throwSeven(Operation operation, bool isCarriedOut) {
        Fault fault{operation, "", ResultFailed, 1, std::nullopt, isCarriedOut};
        fault.thrown = std::make_exception_ptr(7);
        platform.calls().inject(fault);
    }
    void SetUp() override { platform.variables().add("level", {3}); }

    static constexpr std::array<unsigned long, 1> phases{11};
    IInterface thing;
    void* handle = nullptr;
    void* record = nullptr;
    int number = 0;
    ModuleInterface module{19000, "Module", 0, 0, phases.data(), 1};
    ModuleCallbackRecord callback{nullptr, [](void*, unsigned long, ECallbackPriority) { return ResultOk; }};
    DriverInterface& lo = driver("lo");
    CalibrationTable& line = platform.tables().add({"Line", {0}, {}, {1}});
    CalibrationTable& plane = platform.tables().add({"Plane", {0}, {0}, {1}});
    CalibrationTableHandle table = nullptr;
    int temperature = 0;
    ITemperatureObserver observer{&temperature,
                                  [](void* place, int now) { *static_cast<int*>(place) += now; }};
    Standalone::RauService& radio = platform.addRau(0);
};

TEST_F(ThrowingFaultTest, EachOperationCanThrowInsteadOfBeingCarriedOutAndWorksAfterwards) {
    ASSERT_THAT(doors(), SizeIs(Standalone::allOperations().size()));
    for (const Door& door : doors()) {
        SCOPED_TRACE(Standalone::toString(door.operation));
        throwSeven(door.operation, false);
        EXPECT_THROW(door.call(), int);
        EXPECT_EQ(door.call(), 0); // no registration is there already, and no entry gone
    }
    EXPECT_THAT(platform.calls().faults(), IsEmpty());
}

TEST_F(ThrowingFaultTest, EachOperationCanThrowAfterItWasCarriedOut) {
    for (const Door& door : doors()) {
        SCOPED_TRACE(Standalone::toString(door.operation));
        throwSeven(door.operation, true);
        EXPECT_THROW(door.call(), int);
    }
    EXPECT_EQ(platform.interfaces().entries().count("IThing"), 0U);
    EXPECT_EQ(platform.interfaces().openHandles(), 0U);
    EXPECT_EQ(platform.modules().moduleCount(), 1U);
    EXPECT_THAT(platform.modules().run(11).steps, SizeIs(1));
    EXPECT_EQ(platform.drivers().find("lo")->writes(), 2U);
    EXPECT_EQ(table, &line);
    EXPECT_EQ(radio.txFrequency(), 18U);
    EXPECT_EQ(radio.rxFrequency(), 17U);
    platform.temperature().set(25);
    EXPECT_EQ(temperature, 25); // told once
}

TEST_F(ThrowingFaultTest, WhatIsThrownIsWhatTheFaultSays) {
    Fault fault{Operation::driverWrite, "lo", ResultFailed};
    fault.thrown = std::make_exception_ptr(std::runtime_error("no bus"));
    platform.calls().inject(fault);
    try {
        lo.write(lo.context, 5);
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "no bus");
    }
}

TEST_F(ThrowingFaultTest, ThrownWantOfMemoryIsNotTakenForThePlatformsOwn) {
    Fault fault{Operation::driverWrite, "lo", ResultFailed};
    fault.thrown = std::make_exception_ptr(std::bad_alloc());
    platform.calls().inject(fault);
    EXPECT_THROW(lo.write(lo.context, 5), std::bad_alloc);
}

TEST_F(ThrowingFaultTest, CallThatThrowsIsJournaledWithTheCodeOfTheFault) {
    throwSeven(Operation::driverWrite, false);
    EXPECT_THROW(lo.write(lo.context, 5), int);
    const Standalone::Call& call = platform.calls().journal().back();
    EXPECT_EQ(call.object, "lo");
    EXPECT_EQ(call.value, 5);
    EXPECT_EQ(call.code, 0x8000);
}

TEST_F(ThrowingFaultTest, ReadThatThrowsCanLeaveAValueBehind) {
    Fault fault{Operation::driverRead, "lo", ResultFailed, 1, -12};
    fault.thrown = std::make_exception_ptr(7);
    platform.calls().inject(fault);
    EXPECT_THROW(lo.read(lo.context, &number), int);
    EXPECT_EQ(number, -12);
}

TEST_F(ThrowingFaultTest, PhaseIsLeftByWhatAModuleThrowsAndCanBeRunAgain) {
    struct Thrower final : ModuleInterface {
        using ModuleInterface::ModuleInterface;
        EAFResult onModuleInit() override { return wasCalled++ == 0 ? throw 7 : ResultOk; }
        int wasCalled = 0;
    };
    Thrower thrower(1, "Thrower", 0, 0, phases.data(), 1);
    CModuleManager::GetInstance().RegisterModule(&thrower);
    CModuleManager::GetInstance().RegisterModule(&module);
    EXPECT_THROW(platform.modules().run(11), int);
    EXPECT_THAT(platform.modules().run(11).steps, SizeIs(2));
}

TEST_F(ThrowingFaultTest, TemperatureIsLeftByWhatAnObserverThrowsAndTheNextOneIsTold) {
    ITemperatureObserver thrower{nullptr, [](void*, int now) { now == 25 ? throw 7 : void(); }};
    ITemperatureHandler::registerObserver(&thrower);
    ITemperatureHandler::registerObserver(&observer);
    EXPECT_THROW(platform.temperature().set(25), int);
    EXPECT_EQ(platform.temperature().set(26), 2U);
    EXPECT_EQ(temperature, 26);
}

} // namespace
