#include "standalone/ModuleSequencer.h"

#include "standalone/Codes.h"

#include <algorithm>
#include <utility>

namespace Standalone {

namespace {

/** Class modules register without a priority of their own. */
constexpr ECallbackPriority classPriority{0};

bool contains(const unsigned long* phases, unsigned long phaseCount, unsigned long phase) {
    return phases != nullptr && std::find(phases, phases + phaseCount, phase) != phases + phaseCount;
}

} // namespace

bool PhaseReport::succeeded() const {
    return steps.empty() || isSuccess(steps.back().code);
}

std::int32_t ModuleSequencer::add(ModuleInterface* module) {
    const std::string_view name = module != nullptr ? std::string_view(module->getModuleName()) : "";
    return m_calls.answer(name, {Operation::moduleRegister}, [&](std::int64_t& /*given*/) -> std::int32_t {
        if (module == nullptr) {
            return Codes::badArgument;
        }
        if (find(module) != nullptr) {
            return Codes::alreadyThere;
        }
        insert({module->getModuleId(), module->getModuleName(), module->getModuleChannel(), module, {}});
        return ResultOk;
    });
}

std::int32_t ModuleSequencer::remove(ModuleInterface* module) {
    const std::string_view name = module != nullptr ? std::string_view(module->getModuleName()) : "";
    return m_calls.answer(name, {Operation::moduleUnregister}, [&](std::int64_t& /*given*/) -> std::int32_t {
        if (module == nullptr) {
            return Codes::badArgument;
        }
        if (find(module) == nullptr) {
            return Codes::notFound;
        }
        forget(module);
        return ResultOk;
    });
}

void ModuleSequencer::forget(const ModuleInterface* module) {
    const auto gone = std::remove_if(m_modules.begin(), m_modules.end(),
                                     [&](const Module& entry) { return entry.module == module; });
    m_modules.erase(gone, m_modules.end());
}

std::int32_t ModuleSequencer::add(unsigned moduleId, const char* moduleName) {
    const std::string_view name = moduleName != nullptr ? moduleName : "";
    return m_calls.answer(name, {Operation::moduleRegisterC}, [&](std::int64_t& /*given*/) -> std::int32_t {
        if (moduleName == nullptr) {
            return Codes::badArgument;
        }
        if (find(moduleId) != nullptr) {
            return Codes::alreadyThere;
        }
        insert({moduleId, moduleName, 0, nullptr, {}});
        return ResultOk;
    });
}

std::int32_t ModuleSequencer::addCallback(unsigned moduleId, const char* callbackName, unsigned order,
                                          ModuleCallbackRecord* callback, ECallbackPriority priority,
                                          const unsigned long* phases, unsigned long phaseCount) {
    const std::string_view name = callbackName != nullptr ? callbackName : "";
    return m_calls.answer(name, {Operation::callbackRegister}, [&](std::int64_t& /*given*/) -> std::int32_t {
        if (callbackName == nullptr || callback == nullptr || callback->onPhaseActivation == nullptr ||
            phases == nullptr) {
            return Codes::badArgument;
        }
        Module* const module = find(moduleId);
        if (module == nullptr) {
            return Codes::notFound;
        }
        std::vector<Callback>& callbacks = module->callbacks;
        const auto place =
            std::upper_bound(callbacks.begin(), callbacks.end(), order,
                             [](unsigned o, const Callback& entry) { return o < entry.order; });
        callbacks.insert(place, {order, callback, priority, phases, phaseCount});
        return ResultOk;
    });
}

PhaseReport ModuleSequencer::run(unsigned long phase) {
    PhaseReport report{phase, {}};
    // The modules called may register and unregister modules, which must not disturb this walk.
    const std::vector<Module> modules = m_modules;
    for (const Module& module : modules) {
        const std::optional<std::int32_t> code = call(module, phase);
        if (code) {
            report.steps.push_back({module.id, module.name, module.channel, *code});
        }
        if (!report.succeeded()) {
            break;
        }
    }
    return report;
}

std::optional<std::int32_t> ModuleSequencer::call(const Module& module, unsigned long phase) {
    if (module.module != nullptr) {
        if (find(module.module) == nullptr || !module.module->wantsPhase(phase)) {
            return std::nullopt;
        }
        return module.module->onPhaseActivation(phase, classPriority);
    }
    std::optional<std::int32_t> code;
    for (const Callback& callback : module.callbacks) {
        // The record is the module's, which may have taken its function out since.
        const auto onPhaseActivation = callback.record->onPhaseActivation;
        if (onPhaseActivation != nullptr && contains(callback.phases, callback.phaseCount, phase)) {
            code = onPhaseActivation(callback.record->context, phase, callback.priority);
            if (isFailure(*code)) {
                break;
            }
        }
    }
    return code;
}

void ModuleSequencer::insert(Module module) {
    const auto place = std::upper_bound(m_modules.begin(), m_modules.end(), module.id,
                                        [](unsigned id, const Module& entry) { return id < entry.id; });
    m_modules.insert(place, std::move(module));
}

ModuleSequencer::Module* ModuleSequencer::find(const ModuleInterface* module) {
    const auto found = std::find_if(m_modules.begin(), m_modules.end(),
                                    [&](const Module& entry) { return entry.module == module; });
    return found != m_modules.end() ? &*found : nullptr;
}

ModuleSequencer::Module* ModuleSequencer::find(unsigned moduleId) {
    const auto found = std::find_if(m_modules.begin(), m_modules.end(), [&](const Module& entry) {
        return entry.module == nullptr && entry.id == moduleId;
    });
    return found != m_modules.end() ? &*found : nullptr;
}

} // namespace Standalone
