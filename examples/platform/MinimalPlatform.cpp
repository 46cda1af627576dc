// A platform as small as it can be: what the library asks of its surroundings, in maps. Begin with this. Drivers
// are in MinimalDrivers.cpp, variables and tables in MinimalTables.cpp.
#include "MinimalPlatform.h"

#include "CInterfaceBroker.h"
#include "CModuleManager.h"
#include "IRauHandler.h"
#include "ITemperatureHandler.h"
#include "InterfaceBroker.h"
#include "Kept.h"
#include "OrbiTrace.h"

#include <algorithm>
#include <iostream>
#include <mutex>
#include <set>
#include <sstream>

using namespace Minimal;

namespace {

struct Callback {
    ModuleCallbackRecord* record;
    ECallbackPriority priority;
    const unsigned long* phases;
    unsigned long count;
};

struct State {
    std::map<std::string, IInterface*> interfaces;
    std::vector<ModuleInterface*> modules;
    std::set<unsigned> identifiers;
    std::multimap<std::pair<unsigned, unsigned>, Callback> callbacks; // by module and order
    std::vector<ITemperatureObserver*> observers;
    bool tracesEverything = false;
};

State& state() { return kept<State>(); }

/** A message as it grows. It is written whole when it is flushed, so that those of several threads do not mix, and
 * none has to wait for the end of another, which may not come. */
class Message final : public std::stringbuf {
    int sync() override {
        const std::lock_guard<std::mutex> lock(kept<std::mutex>());
        kept<std::ios_base::Init>(); // for who writes before main
        std::clog << str() << std::flush;
        str({});
        return 0;
    }
};

ETHResult observe(ITemperatureObserver* observer) {
    state().observers.push_back(observer);
    return ETHResult{0};
}

TemperatureHandlerCStruct temperatureRecord{&observe};

struct TemperatureHandler final : ITemperatureHandler {
    TemperatureHandler() { m_pCStruct = &temperatureRecord; }
};

} // namespace

void Minimal::publishServices() {
    InterfaceBroker::getInstance().registerInterface("IDriverLayer", &driverLayer());
    InterfaceBroker::getInstance().registerInterface("ITemperatureHandler", &kept<TemperatureHandler>());
}
void Minimal::traceEverything() { state().tracesEverything = true; }
void Minimal::setTemperature(int degrees) {
    for (const ITemperatureObserver* const observer : state().observers) {
        observer->notifyTemperature(observer->context, degrees);
    }
}
bool Minimal::runPhase(unsigned long phase) {
    for (ModuleInterface* const module : std::vector(state().modules)) {
        if (module->wantsPhase(phase) && isFailure(module->onPhaseActivation(phase, ECallbackPriority{0}))) {
            return false;
        }
    }
    for (const auto& [place, callback] : state().callbacks) {
        const auto* const end = callback.phases + callback.count;
        if (std::find(callback.phases, end, phase) != end &&
            isFailure(callback.record->onPhaseActivation(callback.record->context, phase, callback.priority))) {
            return false;
        }
    }
    return true;
}

// Trace
OrbiTrace::OrbiTrace(const char* name, OrbiTraceLevel level) : m_name(name), m_level(level) {}
OrbiTrace::~OrbiTrace() = default;
std::ostream& OrbiTrace::beginLogMsg(OrbiTraceLevel /*level*/, const char* file, int line) {
    thread_local Message message;
    thread_local std::ostream stream(&message);
    return stream << m_name << ' ' << file << ':' << line << ' ';
}
void OrbiTrace::endLogMsg() {}
OrbiTraceLevel CZulTraceHandler_DmLevel2GtLevel(int level) {
    const int ofInformation = state().tracesEverything ? 3 : 4;
    return OrbiTraceLevel{isFailure(level) ? 1 : level == 256 ? 3 : ofInformation};
}

// Interface broker
InterfaceBroker& InterfaceBroker::getInstance() {
    static InterfaceBroker broker;
    return broker;
}
EAFResult InterfaceBroker::registerInterface(const std::string& name, IInterface* iface) {
    return state().interfaces.emplace(name, iface).second ? ResultOk : ResultFailed;
}
EAFResult InterfaceBroker::unregisterInterface(const std::string& name, IInterface** removed) {
    if (removed != nullptr) {
        *removed = findInterface(name);
    }
    return state().interfaces.erase(name) != 0 ? ResultOk : ResultFailed;
}
IInterface* InterfaceBroker::findInterface(const std::string& name) {
    IInterface** const found = find(state().interfaces, name);
    return found != nullptr ? *found : nullptr;
}
EAFResult CInterfaceBroker_GetInstance(void** broker) {
    *broker = &InterfaceBroker::getInstance();
    return ResultOk;
}
EAFResult CInterfaceBroker_GetInterface(void* broker, const char* name, void** iface) {
    auto* const found = static_cast<InterfaceBroker*>(broker)->getInterface<IInterface_c>(name);
    *iface = found != nullptr ? found->getCStruct() : nullptr;
    return *iface != nullptr ? ResultOk : ResultFailed;
}
EAFResult CInterfaceBroker_DestroyInstance(void* /*broker*/) { return ResultOk; }

// Module manager
ModuleInterface::ModuleInterface(unsigned id, const std::string& name, unsigned channel, unsigned /*reserved*/,
                                 const unsigned long* filter, unsigned long count)
    : m_moduleId(id),
      m_moduleName(name),
      m_channel(channel),
      m_phaseFilter(filter),
      m_phaseCount(count) {}
ModuleInterface::~ModuleInterface() = default;
bool ModuleInterface::wantsPhase(unsigned long phase) const {
    return std::find(m_phaseFilter, m_phaseFilter + m_phaseCount, phase) != m_phaseFilter + m_phaseCount;
}
EAFResult ModuleInterface::onPhaseActivation(unsigned long phase, ECallbackPriority /*priority*/) {
    return phase == 11   ? onModuleInit()
           : phase == 5  ? onPhaseModuleStorageObjectsRetreived()
           : phase == 20 ? onPhasePostFrameformatLoad()
                         : ResultOk;
}
EAFResult ModuleInterface::onModuleInit() { return ResultOk; }
EAFResult ModuleInterface::onPhaseModuleStorageObjectsRetreived() { return ResultOk; }
EAFResult ModuleInterface::onPhasePostFrameformatLoad() { return ResultOk; }
EAFResult ModuleInterface::onPhaseEndFrameformatLoad() { return ResultOk; }
EAFResult ModuleInterface::onPhaseStart() { return ResultOk; }
EAFResult ModuleInterface::onPhaseStop() { return ResultOk; }
EAFResult ModuleInterface::onPhaseFrameformatLoad() { return ResultOk; }
EAFResult ModuleInterface::onPhasePreFrameformatLoad() { return ResultOk; }
EAFResult ModuleInterface::onPhaseSetRadioChannelNearEndFinished() { return ResultOk; }
CModuleManager& CModuleManager::GetInstance() {
    static CModuleManager manager;
    return manager;
}
EAFResult CModuleManager::RegisterModule(ModuleInterface* module) {
    state().modules.push_back(module);
    return ResultOk;
}
EAFResult CModuleManager::UnRegisterModule(ModuleInterface* module) {
    auto& modules = state().modules;
    modules.erase(std::remove(modules.begin(), modules.end(), module), modules.end());
    // Its subscription goes with it: the context of a module's observer is the module.
    auto& observers = state().observers;
    const auto isOfModule = [module](const ITemperatureObserver* observer) { return observer->context == module; };
    observers.erase(std::remove_if(observers.begin(), observers.end(), isOfModule), observers.end());
    return ResultOk;
}
EAFResult CModuleManager_RegisterModule(unsigned id, const char* /*name*/) {
    return state().identifiers.insert(id).second ? ResultOk : ResultFailed;
}
EAFResult CModuleManager_RegisterCallback(unsigned id, const char* /*name*/, unsigned order,
                                          ModuleCallbackRecord* record, ECallbackPriority priority,
                                          unsigned /*reserved*/, const unsigned long* phases, unsigned long count) {
    state().callbacks.emplace(std::pair(id, order), Callback{record, priority, phases, count});
    return ResultOk;
}

// Temperature and remote radio units
ITemperatureHandler::~ITemperatureHandler() = default;
ETHResult ITemperatureHandler::registerObserver(ITemperatureObserver* observer) { return observe(observer); }
IRadio::~IRadio() = default;
IRauHandler::~IRauHandler() = default;
