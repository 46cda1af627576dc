#include "CCalibrationHandler.h"
#include "CInterfaceBroker.h"
#include "CModuleManager.h"
#include "CStorageManager.h"
#include "ITemperatureHandler.h"
#include "PlatformFixture.h"

#include <array>

namespace {

using Standalone::Call;
using Standalone::Operation;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class JournalTest : public PlatformFixture {
protected:
    void SetUp() override { platform.calls().clearJournal(); }

    /** The journal as "operation object value code". */
    std::vector<std::string> lines() {
        std::vector<std::string> result;
        for (const Call& call : platform.calls().journal()) {
            result.push_back(std::string(toString(call.operation)) + " " + call.object + " " +
                             std::to_string(call.value) + " " + std::to_string(call.code));
        }
        return result;
    }
    const Call& last() { return platform.calls().journal().back(); }

    DriverInterface& lo = driver("lo");
    DriverInterface& other = driver("other");
};

TEST_F(JournalTest, WritesAndReadsOfAllDriversStandInOneOrder) {
    lo.write(lo.context, 5);
    other.write(other.context, -6);
    read(lo);
    lo.write(lo.context, 7);
    EXPECT_THAT(lines(), ElementsAre("driver-write lo 5 0", "driver-write other -6 0", "driver-read lo 5 0",
                                     "driver-write lo 7 0"));
}

TEST_F(JournalTest, FailedWriteIsJournaledWithItsValueAndCode) {
    fail(Operation::driverWrite, "lo", 0x8001);
    lo.write(lo.context, 5);
    EXPECT_THAT(lines(), ElementsAre("driver-write lo 5 32769"));
}

TEST_F(JournalTest, BufferWriteIsJournaledWithItsBytes) {
    const std::array<std::uint8_t, 2> bytes{1, 2};
    lo.writeBuffer(lo.context, bytes.data(), 2);
    EXPECT_THAT(lines(), ElementsAre("driver-write-buffer lo 513 0"));
    EXPECT_THAT(last().bytes, ElementsAre(1, 2));
}

TEST_F(JournalTest, DriverLookupIsJournaledAlsoWhenNothingIsFound) {
    DriverInterface* found = nullptr;
    lookUpDriver(&found, "lo");
    lookUpDriver(&found, "nowhere");
    EXPECT_THAT(lines(), ElementsAre("broker-lookup IDriverLayer 0 0", "driver-lookup lo 0 0",
                                     "broker-lookup IDriverLayer 0 0", "driver-lookup nowhere 0 32769"));
}

TEST_F(JournalTest, BrokerCallsAreJournaled) {
    IInterface thing;
    InterfaceBroker& broker = InterfaceBroker::getInstance();
    broker.registerInterface("IThing", &thing);
    broker.registerInterface("IThing", &thing);
    broker.findInterface("IThing");
    broker.unregisterInterface("IThing", nullptr);
    broker.findInterface("IThing");
    EXPECT_THAT(lines(), ElementsAre("broker-register IThing 0 0", "broker-register IThing 0 32770",
                                     "broker-lookup IThing 0 0", "broker-unregister IThing 0 0",
                                     "broker-lookup IThing 0 32769"));
}

TEST_F(JournalTest, EntryThatHoldsNothingIsJournaledAsNotFound) {
    platform.interfaces().put("IThing", nullptr);
    InterfaceBroker::getInstance().findInterface("IThing");
    EXPECT_THAT(lines(), ElementsAre("broker-lookup IThing 0 32769"));
}

TEST_F(JournalTest, CViewOfTheBrokerIsJournaled) {
    void* handle = nullptr;
    void* record = nullptr;
    CInterfaceBroker_GetInstance(&handle);
    CInterfaceBroker_GetInterface(handle, "IDriverLayer", &record);
    CInterfaceBroker_DestroyInstance(handle);
    EXPECT_THAT(lines(), ElementsAre("broker-open  0 0", "broker-get IDriverLayer 0 0", "broker-close  0 0"));
}

TEST_F(JournalTest, ModuleManagerCallsAreJournaled) {
    constexpr std::array<unsigned long, 1> phases{11};
    ModuleInterface module(19000, "FrequencyHandler", 1, 0, phases.data(), 1);
    CModuleManager::GetInstance().RegisterModule(&module);
    CModuleManager::GetInstance().UnRegisterModule(&module);
    CModuleManager_RegisterModule(83000, "CTxIqImbalanceHandler");
    CModuleManager_RegisterCallback(83000, "callback", 100, nullptr, ECallbackPriority{3}, 0, phases.data(),
                                    1);
    EXPECT_THAT(lines(),
                ElementsAre("module-register FrequencyHandler 0 0", "module-unregister FrequencyHandler 0 0",
                            "module-register-c CTxIqImbalanceHandler 0 0",
                            "callback-register callback 0 32771"));
}

TEST_F(JournalTest, VariableCallsShowTheFirstValue) {
    platform.variables().add("offsets", {100, -4000});
    StorageVariable* record = nullptr;
    void* address = nullptr;
    CStorageManager_GetVariableByName("offsets", &record);
    CStorageManager_GetVariableContentAddressByName("offsets", &address, 0);
    EXPECT_THAT(lines(), ElementsAre("variable-get offsets 100 0", "variable-address offsets 100 0"));
}

TEST_F(JournalTest, InterpolationsShowTheirPointAndResult) {
    CalibrationTable& line = platform.tables().add({"Line", {0, 10}, {}, {0, 100}});
    CalibrationTable& plane = platform.tables().add({"Plane", {0, 10}, {0}, {0, 200}});
    int y = 0;
    CCalibrationTable_LinearInterpolate(&line, 3, &y);
    EXPECT_THAT(last().at, ElementsAre(3, 0));
    CCalibrationTable_BiLinearInterpolate(&plane, 4, -5, &y);
    EXPECT_THAT(last().at, ElementsAre(4, -5));
    EXPECT_THAT(lines(), ElementsAre("table-linear Line 30 0", "table-bilinear Plane 80 0"));
}

TEST_F(JournalTest, TableLookupIsJournaled) {
    CalibrationTableHandle handle = nullptr;
    CCalibrationHandler_GetTable("Line", &handle);
    EXPECT_THAT(lines(), ElementsAre("table-lookup Line 0 32769"));
}

TEST_F(JournalTest, TemperatureRegistrationIsJournaled) {
    ITemperatureHandler::registerObserver(nullptr);
    EXPECT_THAT(lines(), ElementsAre("temperature-register ITemperatureHandler 0 32771"));
}

TEST_F(JournalTest, RauCallsAreJournaledWithTheirFrequency) {
    Standalone::RauService& rau = platform.addRau(1);
    rau.setTxRadioFrequency(7450000);
    rau.setRxRadioFrequency(7289000);
    EXPECT_THAT(lines(), ElementsAre("rau-tx IRauHandler_1 7450000 0", "rau-rx IRauHandler_1 7289000 0"));
}

TEST_F(JournalTest, CallsOfOneOperationCanBePickedOut) {
    lo.write(lo.context, 5);
    read(lo);
    other.write(other.context, 6);
    const std::vector<Call> writes = platform.calls().journalOf(Operation::driverWrite);
    ASSERT_THAT(writes, SizeIs(2));
    EXPECT_EQ(writes[0].object, "lo");
    EXPECT_EQ(writes[1].object, "other");
}

TEST_F(JournalTest, RecordingCanBeTurnedOff) {
    platform.calls().setRecording(false);
    lo.write(lo.context, 5);
    EXPECT_THAT(platform.calls().journal(), IsEmpty());
    platform.calls().setRecording(true);
    lo.write(lo.context, 6);
    EXPECT_THAT(platform.calls().journal(), SizeIs(1));
}

TEST_F(JournalTest, ListenerIsToldOfAnsweredCallsWithoutRecording) {
    std::vector<std::int32_t> codes;
    platform.calls().setRecording(false);
    platform.calls().setListener([&](const Call& call) { codes.push_back(call.code); });
    lo.write(lo.context, 5);
    fail(Operation::driverWrite, "lo", 0x8005);
    lo.write(lo.context, 5);
    EXPECT_THAT(codes, ElementsAre(0, 0x8005));
}

TEST_F(JournalTest, CallsAreIdleOnlyWithoutRecordingListenerAndFault) {
    Standalone::Calls& calls = platform.calls();
    EXPECT_FALSE(calls.isIdle());
    calls.setRecording(false);
    EXPECT_TRUE(calls.isIdle());
    calls.setListener([](const Call&) {});
    EXPECT_FALSE(calls.isIdle());
    calls.setListener({});
    fail(Operation::driverWrite, "lo", 0x8001, 1);
    EXPECT_FALSE(calls.isIdle());
    lo.write(lo.context, 5);
    EXPECT_TRUE(calls.isIdle());
}

TEST_F(JournalTest, IdleCallsAreCarriedOut) {
    platform.calls().setRecording(false);
    EXPECT_EQ(lo.write(lo.context, 5), 0);
    EXPECT_EQ(read(lo), 5);
    EXPECT_EQ(lo.read(lo.context, nullptr), Standalone::Codes::badArgument);
}

TEST_F(JournalTest, ListenerMayTakeItselfAway) {
    Standalone::Calls& calls = platform.calls();
    std::vector<std::string> seen;
    const std::string name = "a name that is too long to be kept without memory of its own";
    calls.setListener([&calls, &seen, name](const Call& /*call*/) {
        calls.setListener({});
        seen.push_back(name);
    });
    platform.calls().answer("x", {Operation::driverWrite}, [](std::int64_t&) { return 0; });
    platform.calls().answer("x", {Operation::driverWrite}, [](std::int64_t&) { return 0; });
    EXPECT_EQ(seen, std::vector<std::string>{name});
}

TEST_F(JournalTest, WhatAListenerThrowsDoesNotReachTheCaller) {
    int told = 0;
    platform.calls().setListener([&](const Call& /*call*/) {
        ++told;
        throw std::runtime_error("listener");
    });
    EXPECT_EQ(platform.calls().answer("x", {Operation::driverWrite}, [](std::int64_t&) { return 7; }), 7);
    EXPECT_EQ(told, 1);
}

} // namespace
