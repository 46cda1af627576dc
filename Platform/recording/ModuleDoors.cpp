// What goes out to the platform: the module manager. Each operation leads to the next definition behind the
// recorder's, and calls of others than the library pass as they are.

#include "CModuleManager.h"
#include "Clients.h"
#include "Next.h"
#include "Objects.h"
#include "PlatformCalls.h"

#include <algorithm>
#include <array>
#include <cstring>

using namespace Recording;

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
    return make(
        visit, [&] { return s_activatePhase(this, phase, priority); },
        [&](EAFResult code) { visit.finish(code); });
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
