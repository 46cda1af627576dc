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

/**
 * Has `add` put something into a list and keeps its place there under `key`, unless that is known already.
 * Without memory for both, neither is done.
 */
template <typename Index, typename Add>
std::int32_t addOnce(Index& index, const typename Index::key_type& key, const Add& add) {
    const auto [entry, isNew] = index.try_emplace(key);
    if (!isNew) {
        return Codes::alreadyThere;
    }
    try {
        entry->second = add();
    } catch (...) {
        index.erase(entry);
        throw;
    }
    return ResultOk;
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
        return addOnce(m_classModules, module, [&] {
            return m_modules.emplace(module->getModuleId(),
                                     Module{module->getModuleName(), module->getModuleChannel(), module, {}});
        });
    });
}

std::int32_t ModuleSequencer::remove(ModuleInterface* module) {
    const std::string_view name = module != nullptr ? std::string_view(module->getModuleName()) : "";
    return m_calls.answer(name, {Operation::moduleUnregister}, [&](std::int64_t& /*given*/) -> std::int32_t {
        if (module == nullptr) {
            return Codes::badArgument;
        }
        return forget(module) ? ResultOk : Codes::notFound;
    });
}

bool ModuleSequencer::forget(const ModuleInterface* module) {
    const auto found = m_classModules.find(module);
    if (found == m_classModules.end()) {
        return false;
    }
    m_modules.erase(found->second);
    m_classModules.erase(found);
    return true;
}

std::int32_t ModuleSequencer::add(unsigned moduleId, const char* moduleName) {
    const std::string_view name = moduleName != nullptr ? moduleName : "";
    return m_calls.answer(name, {Operation::moduleRegisterC}, [&](std::int64_t& /*given*/) -> std::int32_t {
        if (moduleName == nullptr) {
            return Codes::badArgument;
        }
        return addOnce(m_cModules, moduleId, [&] {
            return m_modules.emplace(moduleId, Module{moduleName, 0, nullptr, {}});
        });
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
        const auto module = m_cModules.find(moduleId);
        if (module == m_cModules.end()) {
            return Codes::notFound;
        }
        std::vector<Callback>& callbacks = module->second->second.callbacks;
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
    for (Turn& turn : turns()) {
        const std::optional<std::int32_t> code = call(turn, phase);
        if (code) {
            turn.step.code = *code;
            report.steps.push_back(std::move(turn.step));
        }
        if (!report.succeeded()) {
            break;
        }
    }
    return report;
}

std::vector<ModuleSequencer::Turn> ModuleSequencer::turns() const {
    std::vector<Turn> turns;
    turns.reserve(m_modules.size());
    for (const auto& [id, module] : m_modules) {
        turns.push_back({{id, module.name, module.channel, ResultOk}, module.module, module.callbacks});
    }
    return turns;
}

std::optional<std::int32_t> ModuleSequencer::call(const Turn& turn, unsigned long phase) const {
    if (turn.module != nullptr) {
        if (m_classModules.count(turn.module) == 0 || !turn.module->wantsPhase(phase)) {
            return std::nullopt;
        }
        return turn.module->onPhaseActivation(phase, classPriority);
    }
    std::optional<std::int32_t> code;
    for (const Callback& callback : turn.callbacks) {
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

} // namespace Standalone
