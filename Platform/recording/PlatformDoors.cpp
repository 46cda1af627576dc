// What goes out to the platform: the operations of its contracts, but for the trace. Each leads to the next
// definition behind the recorder's, and calls of others than the library pass as they are.

#include "CCalibrationHandler.h"
#include "CInterfaceBroker.h"
#include "CModuleManager.h"
#include "CStorageManager.h"
#include "Calls.h"
#include "Clients.h"
#include "Contents.h"
#include "Drivers.h"
#include "ITemperatureHandler.h"
#include "InterfaceBroker.h"
#include "Names.h"
#include "Next.h"
#include "Objects.h"
#include "Rau.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

using namespace Recording;

namespace {

/** Records a call that is wholly told by `entry` and its answer. */
template <typename Call>
auto recorded(Entry entry, Call call) {
    const auto code = outgoing(entry, call);
    entry.code = static_cast<std::int32_t>(code);
    Recorder::write(entry);
    return code;
}

std::uint16_t nameOf(ObjectKind kind, const char* name) {
    return Names::numberOf(kind, name != nullptr ? name : "");
}

// Interface broker

RECORDING_NEXT Next<InterfaceBroker&()> s_getBroker("_ZN15InterfaceBroker11getInstanceEv");
RECORDING_NEXT Next<EAFResult(InterfaceBroker*, const std::string&, IInterface*)>
    s_registerInterface("_ZN15InterfaceBroker17registerInterfaceERKNSt7__cxx1112basic_stringIcSt11char_"
                        "traitsIcESaIcEEEP10IInterface");
RECORDING_NEXT Next<EAFResult(InterfaceBroker*, const std::string&, IInterface**)>
    s_unregisterInterface("_ZN15InterfaceBroker19unregisterInterfaceERKNSt7__cxx1112basic_stringIcSt11char_"
                          "traitsIcESaIcEEEPP10IInterface");
RECORDING_NEXT Next<IInterface*(InterfaceBroker*, const std::string&)> s_findInterface(
    "_ZN15InterfaceBroker13findInterfaceERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE");
RECORDING_NEXT Next<EAFResult(void**)> s_open("CInterfaceBroker_GetInstance");
RECORDING_NEXT Next<EAFResult(void*, const char*, void**)> s_get("CInterfaceBroker_GetInterface");
RECORDING_NEXT Next<EAFResult(void*)> s_close("CInterfaceBroker_DestroyInstance");

constexpr const char* driverLayer = "IDriverLayer";
constexpr const char* temperatureService = "ITemperatureHandler";
constexpr const char* remoteUnit = "IRauHandler";

/** What the library is to find in the place of `found`. */
IInterface* shownAs(IInterface* found, const std::string& name, std::uint16_t number) {
    if (found == nullptr) {
        return nullptr;
    }
    if (name == driverLayer) {
        return Drivers::objectOf(found);
    }
    return name.compare(0, std::strlen(remoteUnit), remoteUnit) == 0 ? Rau::objectOf(found, number) : found;
}

void* recordShownAs(void* found, const char* name) {
    if (found == nullptr || name == nullptr) {
        return found;
    }
    if (std::strcmp(name, driverLayer) == 0) {
        return Drivers::recordOf(static_cast<DriverLayerInterface*>(found));
    }
    return std::strcmp(name, temperatureService) == 0
               ? Clients::recordOf(static_cast<TemperatureHandlerCStruct*>(found))
               : found;
}

} // namespace

InterfaceBroker& InterfaceBroker::getInstance() {
    if (!isFromLibrary(__builtin_return_address(0))) {
        return s_getBroker();
    }
    InterfaceBroker* broker = nullptr;
    recorded({Kind::brokerInstance}, [&] {
        broker = &s_getBroker();
        return 0;
    });
    return *broker;
}

EAFResult InterfaceBroker::registerInterface(const std::string& name, IInterface* iface) {
    const auto call = [&] { return s_registerInterface(this, name, iface); };
    if (!isFromLibrary(__builtin_return_address(0))) {
        return call();
    }
    const EAFResult code =
        recorded({Kind::brokerRegister, nameOf(ObjectKind::interface, name.c_str())}, call);
    if (isSuccess(code)) {
        Objects::publish(iface, name.c_str());
    }
    return code;
}

EAFResult InterfaceBroker::unregisterInterface(const std::string& name, IInterface** removed) {
    const auto call = [&] { return s_unregisterInterface(this, name, removed); };
    if (!isFromLibrary(__builtin_return_address(0))) {
        return call();
    }
    Objects::withdraw(name.c_str());
    return recorded({Kind::brokerUnregister, nameOf(ObjectKind::interface, name.c_str())}, call);
}

IInterface* InterfaceBroker::findInterface(const std::string& name) {
    if (!isFromLibrary(__builtin_return_address(0))) {
        return s_findInterface(this, name);
    }
    Entry entry{Kind::brokerLookup, nameOf(ObjectKind::interface, name.c_str())};
    IInterface* const found = outgoing(entry, [&] { return s_findInterface(this, name); });
    entry.a = found != nullptr ? 1 : 0;
    Recorder::write(entry);
    return shownAs(found, name, entry.object);
}

EAFResult CInterfaceBroker_GetInstance(void** broker) {
    if (!isFromLibrary(__builtin_return_address(0)) || broker == nullptr) {
        return s_open(broker);
    }
    Entry entry{Kind::brokerOpen};
    const EAFResult code = outgoing(entry, [&] { return s_open(broker); });
    entry.code = code;
    if (isSuccess(code)) {
        t_thread.broker = *broker;
        entry.a = *broker != nullptr ? 1 : 0;
    }
    Recorder::write(entry);
    return code;
}

EAFResult CInterfaceBroker_GetInterface(void* broker, const char* name, void** iface) {
    if (!isFromLibrary(__builtin_return_address(0)) || iface == nullptr) {
        return s_get(broker, name, iface);
    }
    Entry entry{Kind::brokerGet, nameOf(ObjectKind::interface, name)};
    entry.b = broker == t_thread.broker ? 1 : 0;
    const EAFResult code = outgoing(entry, [&] { return s_get(broker, name, iface); });
    entry.code = code;
    entry.a = isSuccess(code) && *iface != nullptr ? 1 : 0;
    Recorder::write(entry);
    if (entry.a != 0) {
        *iface = recordShownAs(*iface, name);
    }
    return code;
}

EAFResult CInterfaceBroker_DestroyInstance(void* broker) {
    const auto call = [&] { return s_close(broker); };
    return isFromLibrary(__builtin_return_address(0))
               ? recorded({Kind::brokerClose, 0, 0, broker == t_thread.broker ? 1 : 0}, call)
               : call();
}

// Module manager

namespace {

RECORDING_NEXT Next<CModuleManager&()> s_getManager("_ZN14CModuleManager11GetInstanceEv");
RECORDING_NEXT Next<EAFResult(CModuleManager*, ModuleInterface*)>
    s_registerModule("_ZN14CModuleManager14RegisterModuleEP15ModuleInterface");
RECORDING_NEXT Next<EAFResult(CModuleManager*, ModuleInterface*)>
    s_unregisterModule("_ZN14CModuleManager16UnRegisterModuleEP15ModuleInterface");
RECORDING_NEXT Next<EAFResult(ModuleInterface*, unsigned long, ECallbackPriority)>
    s_activatePhase("_ZN15ModuleInterface17onPhaseActivationEm17ECallbackPriority");
RECORDING_NEXT Next<EAFResult(unsigned, const char*)> s_registerModuleC("CModuleManager_RegisterModule");
RECORDING_NEXT Next<EAFResult(unsigned, const char*, unsigned, ModuleCallbackRecord*, ECallbackPriority,
                              unsigned, const unsigned long*, unsigned long)>
    s_registerCallback("CModuleManager_RegisterCallback");

} // namespace

namespace {

/** Phases as they stand in a record, as many as have room. */
struct Phases {
    void add(const unsigned long* phases, unsigned long count) {
        while (phases != nullptr && length < std::min<unsigned long>(count, mostPhases)) {
            numbers[length] = lower(phases[length]);
            ++length;
        }
    }
    std::size_t bytes() const { return length * sizeof(std::int32_t); }

    std::array<std::int32_t, mostPhases> numbers{};
    std::size_t length = 0;
};

/** What the contract keeps to itself of a module, by the one way that the language leaves. */
template <auto filter, auto count>
struct FilterOf {
    friend void addFilter(const ModuleInterface& module, Phases& phases) {
        phases.add(module.*filter, module.*count);
    }
};
void addFilter(const ModuleInterface& module, Phases& phases);
template struct FilterOf<&ModuleInterface::m_phaseFilter, &ModuleInterface::m_phaseCount>;

/** The registration of a module, with what it says of itself. */
template <typename Call>
EAFResult recordedRegistration(const ModuleInterface& module, std::uint16_t number, Call call) {
    Entry entry{Kind::moduleRegister, number, 0, static_cast<std::int32_t>(module.getModuleId())};
    Phases phases;
    addFilter(module, phases);
    entry.b = static_cast<std::int32_t>(phases.length);
    std::array<char, mostPhases * sizeof(std::int32_t) + mostModuleName> bytes{};
    std::memcpy(bytes.data(), phases.numbers.data(), phases.bytes());
    const std::size_t length =
        phases.bytes() + module.getModuleName().copy(&bytes[phases.bytes()], mostModuleName);
    const EAFResult code = outgoing(entry, call);
    entry.code = code;
    Recorder::write(entry, bytes.data(), length);
    return code;
}

} // namespace

CModuleManager& CModuleManager::GetInstance() {
    if (!isFromLibrary(__builtin_return_address(0))) {
        return s_getManager();
    }
    CModuleManager* manager = nullptr;
    recorded({Kind::moduleManagerInstance}, [&] {
        manager = &s_getManager();
        return 0;
    });
    return *manager;
}

EAFResult CModuleManager::RegisterModule(ModuleInterface* module) {
    const auto call = [&] { return s_registerModule(this, module); };
    if (!isFromLibrary(__builtin_return_address(0)) || module == nullptr) {
        return call();
    }
    // Before: it may have a phase of its own from now on.
    const std::uint16_t number =
        Objects::followBuilt(module, static_cast<std::int32_t>(module->getModuleChannel()));
    return recordedRegistration(*module, number, call);
}

EAFResult CModuleManager::UnRegisterModule(ModuleInterface* module) {
    const auto call = [&] { return s_unregisterModule(this, module); };
    if (!isFromLibrary(__builtin_return_address(0))) {
        return call();
    }
    const std::uint16_t number = Objects::numberOf(module);
    Objects::forget(module);
    return recorded({Kind::moduleUnregister, number}, call);
}

EAFResult ModuleInterface::onPhaseActivation(unsigned long phase, ECallbackPriority priority) {
    const std::uint16_t number = Recorder::isOn() ? Objects::numberOf(this) : std::uint16_t{0};
    if (number == 0) {
        return s_activatePhase(this, phase, priority);
    }
    // It is the platform that is at work here, until it calls the module.
    Visit visit(Kind::phase, number, lower(phase), priority, false);
    try {
        const EAFResult code = s_activatePhase(this, phase, priority);
        visit.finish(code);
        return code;
    } catch (const abi::__forced_unwind&) {
        visit.unwind();
        throw;
    } catch (...) {
        visit.throwOut();
        throw;
    }
}

EAFResult CModuleManager_RegisterModule(unsigned moduleId, const char* moduleName) {
    const auto call = [&] { return s_registerModuleC(moduleId, moduleName); };
    if (!isFromLibrary(__builtin_return_address(0))) {
        return call();
    }
    return recorded({Kind::moduleRegisterC, nameOf(ObjectKind::interface, moduleName), 0,
                     static_cast<std::int32_t>(moduleId)},
                    call);
}

EAFResult CModuleManager_RegisterCallback(unsigned moduleId, const char* callbackName, unsigned order,
                                          ModuleCallbackRecord* callback, ECallbackPriority priority,
                                          unsigned reserved, const unsigned long* phases,
                                          unsigned long phaseCount) {
    const auto call = [&](ModuleCallbackRecord* given) {
        return s_registerCallback(moduleId, callbackName, order, given, priority, reserved, phases,
                                  phaseCount);
    };
    if (!isFromLibrary(__builtin_return_address(0))) {
        return call(callback);
    }
    const std::uint16_t name =
        Names::numberOf(ObjectKind::callback, callbackName != nullptr ? callbackName : "",
                        static_cast<std::int32_t>(moduleId));
    ModuleCallbackRecord* const given = Clients::callbackOf(callback, name);
    Entry entry{Kind::callbackRegister,
                name,
                0,
                static_cast<std::int32_t>(moduleId),
                static_cast<std::int32_t>(order),
                priority,
                static_cast<std::int32_t>(reserved)};
    Phases wanted;
    wanted.add(phases, phaseCount);
    const EAFResult code = outgoing(entry, [&] { return call(given); });
    entry.code = code;
    Recorder::write(entry, wanted.numbers.data(), wanted.bytes());
    return code;
}

// Storage manager

namespace {

RECORDING_NEXT Next<EAFResult(const char*, StorageVariable**)>
    s_getVariable("CStorageManager_GetVariableByName");
RECORDING_NEXT Next<EAFResult(const char*, void**, int)>
    s_getAddress("CStorageManager_GetVariableContentAddressByName");

std::int32_t contentAt(const void* address) {
    return address != nullptr ? *static_cast<const std::int32_t*>(address) : 0;
}

bool isArray(std::string_view name) {
    constexpr std::string_view end = ".array";
    return name.size() >= end.size() && name.substr(name.size() - end.size()) == end;
}

} // namespace

EAFResult CStorageManager_GetVariableByName(const char* name, StorageVariable** out) {
    if (!isFromLibrary(__builtin_return_address(0)) || out == nullptr) {
        return s_getVariable(name, out);
    }
    Entry entry{Kind::variableGet, nameOf(ObjectKind::variable, name)};
    const EAFResult code = outgoing(entry, [&] { return s_getVariable(name, out); });
    entry.code = code;
    if (isSuccess(code) && *out != nullptr) {
        entry.a = 1;
        entry.b = (*out)->content != nullptr ? 1 : 0;
        entry.c = contentAt((*out)->content);
    }
    Recorder::write(entry);
    return code;
}

EAFResult CStorageManager_GetVariableContentAddressByName(const char* name, void** contentAddress,
                                                          int reserved) {
    if (!isFromLibrary(__builtin_return_address(0)) || contentAddress == nullptr || name == nullptr) {
        return s_getAddress(name, contentAddress, reserved);
    }
    Entry entry{Kind::variableAddress, nameOf(ObjectKind::variable, name)};
    entry.c = reserved;
    const EAFResult code = outgoing(entry, [&] { return s_getAddress(name, contentAddress, reserved); });
    entry.code = code;
    const void* const address = isSuccess(code) ? *contentAddress : nullptr;
    entry.a = address != nullptr ? 1 : 0;
    entry.b = isArray(name) ? 0 : contentAt(address);
    Recorder::write(entry);
    Contents::watch(entry.object, name, t_thread.object, address);
    return code;
}

// Calibration handler

namespace {

RECORDING_NEXT Next<ECHResult(const char*, CalibrationTableHandle*)>
    s_getTable("CCalibrationHandler_GetTable");
RECORDING_NEXT Next<ECHResult(CalibrationTableHandle, int, int*)>
    s_linear("CCalibrationTable_LinearInterpolate");
RECORDING_NEXT Next<ECHResult(CalibrationTableHandle, int, int, int*)>
    s_bilinear("CCalibrationTable_BiLinearInterpolate");

/** Which table a handle stands for: the one with which it was last given. */
struct Handle {
    std::atomic<CalibrationTableHandle> handle;
    std::atomic<std::uint16_t> table;
};
std::array<Handle, 1024> s_handles;

/** Its place, or the free one where it would be. */
Handle* placeOf(CalibrationTableHandle handle) {
    const std::size_t begin = reinterpret_cast<std::uintptr_t>(handle) / alignof(std::max_align_t);
    for (std::size_t step = 0; step < s_handles.size(); ++step) {
        Handle& place = s_handles[(begin + step) % s_handles.size()];
        CalibrationTable* const there = place.handle.load(std::memory_order_relaxed);
        if (there == handle || there == nullptr) {
            return &place;
        }
    }
    return nullptr;
}

std::uint16_t tableOf(CalibrationTableHandle handle) {
    const Handle* const place = handle != nullptr ? placeOf(handle) : nullptr;
    return place != nullptr ? place->table.load(std::memory_order_relaxed) : std::uint16_t{0};
}

void keepHandle(CalibrationTableHandle handle, std::uint16_t table) {
    Handle* const place = placeOf(handle);
    if (place == nullptr) {
        Recorder::passOver();
        return;
    }
    place->table.store(table, std::memory_order_relaxed);
    place->handle.store(handle, std::memory_order_release);
}

} // namespace

ECHResult CCalibrationHandler_GetTable(const char* tableName, CalibrationTableHandle* out) {
    if (!isFromLibrary(__builtin_return_address(0)) || out == nullptr) {
        return s_getTable(tableName, out);
    }
    Entry entry{Kind::tableLookup, nameOf(ObjectKind::table, tableName)};
    const ECHResult code = outgoing(entry, [&] { return s_getTable(tableName, out); });
    entry.code = code;
    entry.a = isSuccess(code) && *out != nullptr ? 1 : 0;
    if (entry.a != 0) {
        keepHandle(*out, entry.object);
    }
    Recorder::write(entry);
    return code;
}

ECHResult CCalibrationTable_LinearInterpolate(CalibrationTableHandle table, int x, int* y) {
    if (!isFromLibrary(__builtin_return_address(0))) {
        return s_linear(table, x, y);
    }
    Entry entry{Kind::tableLinear, tableOf(table), 0, x, 0, y != nullptr ? *y : 0};
    const ECHResult code = outgoing(entry, [&] { return s_linear(table, x, y); });
    entry.code = code;
    entry.b = y != nullptr ? *y : 0;
    Recorder::write(entry);
    return code;
}

ECHResult CCalibrationTable_BiLinearInterpolate(CalibrationTableHandle table, int x1, int x2, int* y) {
    if (!isFromLibrary(__builtin_return_address(0))) {
        return s_bilinear(table, x1, x2, y);
    }
    Entry entry{Kind::tableBilinear, tableOf(table), 0, x1, x2, 0, y != nullptr ? *y : 0};
    const ECHResult code = outgoing(entry, [&] { return s_bilinear(table, x1, x2, y); });
    entry.code = code;
    entry.c = y != nullptr ? *y : 0;
    Recorder::write(entry);
    return code;
}

// Temperature service

namespace {

RECORDING_NEXT Next<ETHResult(ITemperatureObserver*)>
    s_registerTemperature("_ZN19ITemperatureHandler16registerObserverEP20ITemperatureObserver");

} // namespace

ETHResult ITemperatureHandler::registerObserver(ITemperatureObserver* observer) {
    if (!isFromLibrary(__builtin_return_address(0))) {
        return s_registerTemperature(observer);
    }
    return Clients::registerObserver(
        observer, 0, [](ITemperatureObserver* given) { return s_registerTemperature(given); });
}
