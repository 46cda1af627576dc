#include "BarePlatform.h"

#include "CCalibrationHandler.h"
#include "CInterfaceBroker.h"
#include "CModuleManager.h"
#include "CStorageManager.h"
#include "IRauHandler.h"
#include "ITemperatureHandler.h"
#include "InterfaceBroker.h"
#include "OrbiTrace.h"

#include <stdexcept>

namespace {

EDriverResult acceptValue(void* context, int value) {
    const std::string first = context == &bare().driver ? "record"
                              : context == &bare()      ? "context"
                                                        : "stranger";
    bare().writes.push_back(first + " " + std::to_string(value));
    return EDriverResult{0};
}
EDriverResult acceptBytes(void* /*context*/, const void* /*data*/, unsigned /*byteCount*/) {
    return EDriverResult{0};
}
EDriverResult giveDriver(DriverInterface** out, const char* name) {
    bare().flatCalls.push_back(std::string("driver ") + name);
    *out = &bare().driver;
    return bare().lookupCode;
}

ETHResult observeTemperature(ITemperatureObserver* observer) {
    bare().temperatureObserver = observer;
    return ETHResult{0};
}

class DriverLayer final : public IInterface_c {
public:
    DriverLayer() { m_pCStruct = &m_record; }

private:
    DriverLayerInterface m_record{nullptr, &giveDriver};
};

/** What there is to say of a handle; nothing, when it is the one that was given out. */
std::string ofTheHandle(const void* handle) {
    if (handle == &bare()) {
        return {};
    }
    return handle == nullptr ? ", no handle" : ", a stranger's handle";
}

} // namespace

/** Never destroyed: the library, which is loaded first, destroys its trace objects last. */
BarePlatform& bare() {
    static BarePlatform& platform = *new BarePlatform; // NOLINT(cppcoreguidelines-owning-memory)
    return platform;
}

void BarePlatform::reset() {
    static DriverLayer driverLayer;
    interfaces = {{"IDriverLayer", &driverLayer}};
    lookupCode = EDriverResult{0};
    driver = {this, &acceptValue, &acceptBytes, nullptr};
    phaseCallback = nullptr;
    temperatureObserver = nullptr;
    brokerThrows = brokerStoresNothing = false;
    atMapping = atBeginning = atEnd = buffer.atText = nullptr;
    buffer.drop();
    stream.clear();
    for (Lines* const lines : {&messages, &modules, &flatCalls, &writes}) {
        lines->clear();
    }
    removedIsNull.clear();
    reservedOfAddresses.clear();
}

// The contracts

OrbiTrace::OrbiTrace(const char* name, OrbiTraceLevel level) : m_name(name), m_level(level) {
    bare().traceObjects.push_back(std::string(name) + " " + std::to_string(level));
}
OrbiTrace::~OrbiTrace() {
    bare().stream.flush();
}
std::ostream& OrbiTrace::beginLogMsg(OrbiTraceLevel level, const char* /*sourceFile*/, int /*line*/) {
    bare().messages.push_back("begin " + std::to_string(level));
    if (bare().atBeginning) {
        bare().atBeginning();
    }
    return bare().stream;
}
void OrbiTrace::endLogMsg() {
    bare().messages.emplace_back("end");
    if (bare().atEnd) {
        bare().atEnd();
    }
}
/** Everything is wanted, whatever it is. */
OrbiTraceLevel CZulTraceHandler_DmLevel2GtLevel(int level) {
    bare().messages.push_back("map " + std::to_string(level));
    if (bare().atMapping) {
        bare().atMapping();
    }
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

EAFResult CModuleManager_RegisterModule(unsigned moduleId, const char* moduleName) {
    bare().flatCalls.push_back("module " + std::to_string(moduleId) + " " + moduleName);
    return ResultOk;
}
EAFResult CModuleManager_RegisterCallback(unsigned moduleId, const char* callbackName, unsigned order,
                                          ModuleCallbackRecord* callback, ECallbackPriority priority,
                                          unsigned reserved, const unsigned long* phases,
                                          unsigned long phaseCount) {
    bare().phaseCallback = callback;
    bare().flatCalls.push_back("callback " + std::to_string(moduleId) + " " + callbackName + " " +
                               std::to_string(order) + " " + std::to_string(priority) + " " +
                               std::to_string(reserved) + " " + std::to_string(phases[0]) + " " +
                               std::to_string(phaseCount));
    return ResultOk;
}

EAFResult CInterfaceBroker_GetInstance(void** broker) {
    bare().flatCalls.emplace_back("open");
    if (!bare().brokerStoresNothing) {
        *broker = &bare();
    }
    return ResultOk;
}
EAFResult CInterfaceBroker_GetInterface(void* broker, const char* name, void** iface) {
    static DriverLayerInterface drivers{nullptr, &giveDriver};
    static TemperatureHandlerCStruct temperatures{&observeTemperature};
    bare().flatCalls.push_back("get " + std::string(name) + ofTheHandle(broker));
    if (bare().brokerStoresNothing) {
        return ResultOk;
    }
    const bool isDriverLayer = std::string(name) == "IDriverLayer";
    *iface = isDriverLayer ? static_cast<void*>(&drivers) : static_cast<void*>(&temperatures);
    return ResultOk;
}
EAFResult CInterfaceBroker_DestroyInstance(void* broker) {
    bare().flatCalls.emplace_back("close" + ofTheHandle(broker));
    return ResultOk;
}

IRadio::~IRadio() = default;
IRauHandler::~IRauHandler() = default;
ITemperatureHandler::~ITemperatureHandler() = default;
ETHResult ITemperatureHandler::registerObserver(ITemperatureObserver* /*observer*/) {
    return ETHResult{0};
}

#ifndef BARE_PLATFORM_WITHOUT_VARIABLES
EAFResult CStorageManager_GetVariableByName(const char* /*name*/, StorageVariable** out) {
    static StorageVariable record{nullptr, &bare().anyOtherVariable};
    *out = &record;
    return ResultOk;
}
#endif
EAFResult CStorageManager_GetVariableContentAddressByName(const char* name, void** contentAddress,
                                                          int reserved) {
    const bool isSpacing = std::string(name) == "ChannelSpacing";
    bare().reservedOfAddresses.push_back(reserved);
    *contentAddress = isSpacing ? &bare().channelSpacing : &bare().anyOtherVariable;
    return ResultOk;
}

ECHResult CCalibrationHandler_GetTable(const char* tableName, CalibrationTableHandle* out) {
    bare().flatCalls.push_back(std::string("table ") + tableName);
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
