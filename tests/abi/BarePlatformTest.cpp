// The shared library on another platform than the stand-alone one: the contracts and no more. It writes down
// each argument that the stand-alone platform does not look at.

#include "CCalibrationHandler.h"
#include "CInterfaceBroker.h"
#include "CModuleManager.h"
#include "CStorageManager.h"
#include "DriverLayer.h"
#include "FrequencyHandler.h"
#include "FrequencyHandler_MicrowaveBoard.h"
#include "FrequencyHandler_Rau.h"
#include "FrequencyHandler_RfModule.h"
#include "IRauHandler.h"
#include "ITemperatureHandler.h"
#include "InterfaceBroker.h"
#include "LoCancellation.h"
#include "OrbiTrace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Not;
using testing::SizeIs;

namespace {

using Lines = std::vector<std::string>;

/** Takes what is written to a message and when it is flushed. */
class MessageBuffer final : public std::streambuf {
public:
    explicit MessageBuffer(Lines& lines) : m_lines(lines) {}

private:
    int overflow(int character) override {
        if (character == '\n') {
            m_lines.push_back("text " + m_text);
            m_lines.emplace_back("newline");
            m_text.clear();
        } else {
            m_text += static_cast<char>(character);
        }
        return character;
    }
    int sync() override {
        m_lines.push_back(m_text.empty() ? "flush" : "flush before the newline");
        return 0;
    }

    Lines& m_lines;
    std::string m_text;
};

/** All that this platform knows. The library's trace objects are built before anything else of the program.
 */
struct BarePlatform {
    std::map<std::string, IInterface*> interfaces;
    EDriverResult lookupCode{0};
    DriverInterface driver{};
    int channelSpacing = 100;
    int anyOtherVariable = 1;

    /** What contracts do not forbid, and the library keeps to itself. */
    bool brokerThrows = false;
    bool traceThrows = false;

    Lines traceObjects;
    Lines messages;
    Lines modules;
    std::vector<bool> removedIsNull;
    std::vector<int> reservedOfAddresses;

    MessageBuffer buffer{messages};
    std::ostream stream{&buffer};
};

/** Never destroyed: the library, which is loaded first, destroys its trace objects last. */
BarePlatform& bare() {
    static BarePlatform& platform = *new BarePlatform; // NOLINT(cppcoreguidelines-owning-memory)
    return platform;
}

EDriverResult acceptValue(void* /*context*/, int /*value*/) {
    return EDriverResult{0};
}
EDriverResult acceptBytes(void* /*context*/, const void* /*data*/, unsigned /*byteCount*/) {
    return EDriverResult{0};
}
EDriverResult giveDriver(DriverInterface** out, const char* /*name*/) {
    *out = &bare().driver;
    return bare().lookupCode;
}

class DriverLayer final : public IInterface_c {
public:
    DriverLayer() { m_pCStruct = &m_record; }

private:
    DriverLayerInterface m_record{nullptr, &giveDriver};
};

class BarePlatformTest : public testing::Test {
protected:
    BarePlatformTest() {
        bare().interfaces = {{"IDriverLayer", &m_driverLayer}};
        bare().lookupCode = EDriverResult{0};
        bare().driver = {this, &acceptValue, &acceptBytes, nullptr};
        bare().brokerThrows = false;
        bare().traceThrows = false;
        bare().messages.clear();
        bare().modules.clear();
        bare().removedIsNull.clear();
        bare().reservedOfAddresses.clear();
    }

    const Lines& messages = bare().messages;

private:
    DriverLayer m_driverLayer;
};

} // namespace

// The contracts

OrbiTrace::OrbiTrace(const char* name, OrbiTraceLevel level) : m_name(name), m_level(level) {
    bare().traceObjects.push_back(std::string(name) + " " + std::to_string(level));
}
OrbiTrace::~OrbiTrace() {
    bare().stream.flush();
}
std::ostream& OrbiTrace::beginLogMsg(OrbiTraceLevel level, const char* /*sourceFile*/, int /*line*/) {
    if (bare().traceThrows) {
        throw std::runtime_error("no trace");
    }
    bare().messages.push_back("begin " + std::to_string(level));
    return bare().stream;
}
void OrbiTrace::endLogMsg() {
    bare().messages.emplace_back("end");
}
/** Everything is wanted, whatever it is. */
OrbiTraceLevel CZulTraceHandler_DmLevel2GtLevel(int level) {
    bare().messages.push_back("map " + std::to_string(level));
    return OrbiTraceLevel{-7};
}

InterfaceBroker& InterfaceBroker::getInstance() {
    static InterfaceBroker broker;
    return broker;
}
EAFResult InterfaceBroker::registerInterface(const std::string& name, IInterface* iface) {
    if (bare().brokerThrows) {
        throw std::runtime_error("no broker");
    }
    bare().interfaces[name] = iface;
    return ResultOk;
}
EAFResult InterfaceBroker::unregisterInterface(const std::string& name, IInterface** removed) {
    if (bare().brokerThrows) {
        throw std::runtime_error("no broker");
    }
    bare().removedIsNull.push_back(removed == nullptr);
    bare().interfaces.erase(name);
    return ResultOk;
}
IInterface* InterfaceBroker::findInterface(const std::string& name) {
    const auto found = bare().interfaces.find(name);
    return found != bare().interfaces.end() ? found->second : nullptr;
}

CModuleManager& CModuleManager::GetInstance() {
    static CModuleManager manager;
    return manager;
}
EAFResult CModuleManager::RegisterModule(ModuleInterface* /*module*/) {
    return ResultOk;
}
EAFResult CModuleManager::UnRegisterModule(ModuleInterface* /*module*/) {
    return ResultOk;
}

ModuleInterface::ModuleInterface(unsigned moduleId, const std::string& moduleName, unsigned channel,
                                 unsigned reserved, const unsigned long* phaseFilter,
                                 unsigned long phaseCount)
    : m_moduleId(moduleId),
      m_moduleName(moduleName),
      m_channel(channel),
      m_phaseFilter(phaseFilter),
      m_phaseCount(phaseCount) {
    Lines& arguments = bare().modules;
    arguments = {std::to_string(moduleId), moduleName, std::to_string(channel), std::to_string(reserved)};
    for (unsigned long i = 0; i < phaseCount; ++i) {
        arguments.push_back("phase " + std::to_string(phaseFilter[i]));
    }
}
ModuleInterface::~ModuleInterface() = default;
EAFResult ModuleInterface::onPhaseActivation(unsigned long /*phase*/, ECallbackPriority /*priority*/) {
    return ResultOk;
}
EAFResult ModuleInterface::onModuleInit() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseModuleStorageObjectsRetreived() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhasePostFrameformatLoad() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseEndFrameformatLoad() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseStart() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseStop() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseFrameformatLoad() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhasePreFrameformatLoad() {
    return ResultOk;
}
EAFResult ModuleInterface::onPhaseSetRadioChannelNearEndFinished() {
    return ResultOk;
}

EAFResult CModuleManager_RegisterModule(unsigned /*moduleId*/, const char* /*moduleName*/) {
    return ResultOk;
}
EAFResult CModuleManager_RegisterCallback(unsigned /*moduleId*/, const char* /*callbackName*/,
                                          unsigned /*order*/, ModuleCallbackRecord* /*callback*/,
                                          ECallbackPriority /*priority*/, unsigned /*reserved*/,
                                          const unsigned long* /*phases*/, unsigned long /*phaseCount*/) {
    return ResultOk;
}

EAFResult CInterfaceBroker_GetInstance(void** broker) {
    *broker = &bare();
    return ResultOk;
}
EAFResult CInterfaceBroker_GetInterface(void* /*broker*/, const char* /*name*/, void** iface) {
    *iface = nullptr;
    return ResultFailed;
}
EAFResult CInterfaceBroker_DestroyInstance(void* /*broker*/) {
    return ResultOk;
}

IRadio::~IRadio() = default;
IRauHandler::~IRauHandler() = default;
ITemperatureHandler::~ITemperatureHandler() = default;
ETHResult ITemperatureHandler::registerObserver(ITemperatureObserver* /*observer*/) {
    return ETHResult{0};
}

EAFResult CStorageManager_GetVariableByName(const char* /*name*/, StorageVariable** out) {
    static StorageVariable record{nullptr, &bare().anyOtherVariable};
    *out = &record;
    return ResultOk;
}
EAFResult CStorageManager_GetVariableContentAddressByName(const char* name, void** contentAddress,
                                                          int reserved) {
    const bool isSpacing = std::string(name) == "ChannelSpacing";
    bare().reservedOfAddresses.push_back(reserved);
    *contentAddress = isSpacing ? &bare().channelSpacing : &bare().anyOtherVariable;
    return ResultOk;
}

ECHResult CCalibrationHandler_GetTable(const char* /*tableName*/, CalibrationTableHandle* out) {
    *out = nullptr;
    return ECHResult{0};
}
ECHResult CCalibrationTable_LinearInterpolate(CalibrationTableHandle /*table*/, int x, int* y) {
    *y = x;
    return ECHResult{0};
}
ECHResult CCalibrationTable_BiLinearInterpolate(CalibrationTableHandle /*table*/, int x1, int x2, int* y) {
    *y = x1 + x2;
    return ECHResult{0};
}

// Trace

TEST_F(BarePlatformTest, EveryTraceObjectIsBuiltWithTheSameNameAndLevel) {
    EXPECT_THAT(bare().traceObjects, AllOf(SizeIs(5), Each("QVX.FH 3")));
}

TEST_F(BarePlatformTest, MessageIsMappedBegunWrittenFlushedAndEnded) {
    ::FrequencyHandler module(1, ::FrequencyHandler::RfModule);
    EXPECT_EQ(module.onPhasePostFrameformatLoad(), ResultOk);
    EXPECT_THAT(messages, ElementsAre("map 2048", "begin -7", "text onPhasePostFrameformatLoad", "newline",
                                      "flush", "end"));
}

TEST_F(BarePlatformTest, MissingRauIsNeitherMappedNorEnded) {
    RL::FrequencyHandler::Rau::FrequencyHandler handler("Tx", 4);
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    EXPECT_THAT(messages,
                ElementsAre("begin 1", "text onModuleInit(): Error getting interface to IRauHandler_4",
                            "newline", "flush"));
}

TEST_F(BarePlatformTest, CodeOfTheDriverLayerIsTheNumericLevel) {
    RL::FrequencyHandler::RfModule::FrequencyHandler handler("Tx", 1);
    bare().lookupCode = EDriverResult{0x8123};
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    bare().lookupCode = EDriverResult{17};
    bare().driver.context = nullptr;
    EXPECT_EQ(handler.onModuleInit(), ResultFailed);
    ASSERT_THAT(messages, SizeIs(12));
    EXPECT_EQ(messages[0], "map 33059"); // 0x8123
    EXPECT_EQ(messages[6], "map 17");
}

TEST_F(BarePlatformTest, MessageForWhichThePlatformThrowsIsLost) {
    ::FrequencyHandler module(1, ::FrequencyHandler::RfModule);
    bare().traceThrows = true;
    EXPECT_EQ(module.onPhasePostFrameformatLoad(), ResultOk);
    EXPECT_THAT(messages, ElementsAre("map 2048"));
}

// Broker

TEST_F(BarePlatformTest, RegistrationForWhichTheBrokerThrowsFails) {
    LoCancellation canceller(1);
    bare().brokerThrows = true;
    EXPECT_EQ(canceller.initialize(), ResultFailed);
    EXPECT_THAT(messages, Contains("text registerInterface failed: no broker"));
}

TEST_F(BarePlatformTest, WithdrawalForWhichTheBrokerThrowsFails) {
    {
        const LoCancellation canceller(1);
        bare().brokerThrows = true;
    }
    EXPECT_THAT(messages, Contains("text LoCancellation failed to unregister ILoCancellation interface "
                                   "[ILoCancellation_1] (EAFResult = 0x8000)"));
}

// Module

TEST_F(BarePlatformTest, ModuleIsBuiltWithItsNumberNameChannelZeroAndThreePhases) {
    const ::FrequencyHandler module(2, ::FrequencyHandler::RfModule);
    EXPECT_THAT(bare().modules,
                ElementsAre("19000", "FrequencyHandler", "2", "0", "phase 11", "phase 5", "phase 20"));
}

TEST_F(BarePlatformTest, WithdrawalAsksForNothingBack) {
    { const ::FrequencyHandler module(1, ::FrequencyHandler::MicrowaveBoardIf); }
    EXPECT_THAT(bare().removedIsNull, ElementsAre(true, true, true));
}

// Database

TEST_F(BarePlatformTest, ContentAddressesAreAskedForWithZero) {
    RL::FrequencyHandler::MicrowaveBoard::FrequencyHandler handler("Rx", 1, false, false, true, true);
    EXPECT_EQ(handler.getVariablesFromDatabase(), ResultOk);
    EXPECT_EQ(handler.getFFVariablesFromDatabase(), ResultOk);
    EXPECT_THAT(bare().reservedOfAddresses, ElementsAre(0, 0, 0, 0));
}

// All of it

TEST_F(BarePlatformTest, EveryTypeWithoutARauRunsItsPhasesAndTunes) {
    for (const int type : {0, 1, 2, 3, 5}) {
        ::FrequencyHandler module(1, static_cast<::FrequencyHandler::FrequencyHandlerType>(type));
        EXPECT_EQ(module.onModuleInit(), ResultOk) << type;
        EXPECT_EQ(module.onPhaseModuleStorageObjectsRetreived(), ResultOk) << type;
        EXPECT_EQ(module.onPhasePostFrameformatLoad(), ResultOk) << type;
        EXPECT_EQ(module.setTxFrequency(18'000'000), ResultOk) << type;
        EXPECT_EQ(module.setRxFrequency(17'000'000), ResultOk) << type;
        EXPECT_THAT(messages, AllOf(Contains("map 2048"), Not(Contains("map 32768")))) << type;
    }
}
