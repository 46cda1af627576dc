#include "Model.h"

#include <algorithm>

namespace Told {

namespace {

template <typename Object>
std::unique_ptr<Object>* slotOf(std::array<std::unique_ptr<Object>, slotCount>& slots, std::int64_t slot) {
    return slot >= 0 && slot < slotCount ? &slots[static_cast<std::size_t>(slot)] : nullptr;
}

} // namespace

void Model::tell(const Story& story) {
    m_platform.setDisturbance(story.disturbance);
    for (const Step& step : story.steps) {
        m_transcript.note("step", static_cast<std::int64_t>(step.what));
        tell(step);
        m_platform.endStep();
    }
    m_transcript.note("end", 0);
    forgetObservers();
    for (auto& module : m_modules) {
        destroyModule(module);
    }
    for (auto& handler : m_handlers) {
        destroyHandler(handler);
    }
    for (auto& canceller : m_cancellers) {
        if (canceller) {
            withdrawCanceller(*canceller);
            canceller.reset();
        }
    }
    m_platform.endStep();
    m_platform.tellValues();
}

void Model::tell(const Step& step) {
    switch (step.what) {
    case Do::phase:
        return runPhase(step.number[0]);
    case Do::temperature:
        return setTemperature(static_cast<std::int32_t>(step.number[0]));
    case Do::setVariable:
    case Do::hideContent:
    case Do::setWords:
    case Do::nullRecord:
    case Do::setPresence:
    case Do::setThreshold:
    case Do::loseMessages:
    case Do::fault:
    case Do::clearFaults:
    case Do::faultAt:
        return m_platform.change(step);
    case Do::handlerInit:
    case Do::handlerVariables:
    case Do::handlerFrameFormat:
    case Do::handlerWrite:
    case Do::handlerSet:
    case Do::handlerGet:
    case Do::plan:
    case Do::observe:
    case Do::observeNull:
    case Do::observeFromC:
    case Do::observeBadlyFromC:
        if (void* const handler = m_platform.objectAt(step.name)) {
            tellOfHandler(step, *static_cast<ModelHandler*>(handler));
        }
        return;
    case Do::cancellerInit:
    case Do::correct:
    case Do::setIq:
    case Do::calibrate:
        if (void* const canceller = m_platform.objectAt(step.name)) {
            tellOfCanceller(step, *static_cast<ModelCanceller*>(canceller));
        }
        return;
    default:
        return tellOfSlot(step);
    }
}

void Model::tellOfSlot(const Step& step) {
    const auto& number = step.number;
    const auto channel = static_cast<std::uint32_t>(number[1]);
    auto* const module = slotOf(m_modules, number[0]);
    auto* const handler = slotOf(m_handlers, number[0]);
    auto* const canceller = slotOf(m_cancellers, number[0]);
    auto* const compensation = slotOf(m_compensations, number[0]);
    switch (step.what) {
    case Do::makeModule:
        return makeModule(step);
    case Do::destroyModule:
        forgetObservers();
        return destroyModule(*module);
    case Do::makeHandler:
        if (!*handler) {
            *handler = makeHandler(static_cast<HandlerKind>(number[1]), step.name,
                                   static_cast<std::int32_t>(number[2]), static_cast<unsigned>(number[3]));
        }
        return;
    case Do::destroyHandler:
        return destroyHandler(*handler);
    case Do::makeCanceller:
        if (!*canceller) {
            *canceller = std::make_unique<ModelCanceller>(ModelCanceller{asInt(channel)});
        }
        return;
    case Do::initializeCanceller:
        if (*canceller) {
            m_transcript.note("answer", publishCanceller(**canceller));
        }
        return;
    case Do::destroyCanceller:
        if (*canceller) {
            withdrawCanceller(**canceller);
            canceller->reset();
        }
        return;
    case Do::makeCompensation:
        if (!*compensation) {
            *compensation = std::make_unique<ModelCompensation>(ModelCompensation{channel});
        }
        return;
    case Do::compensationPhase:
        if (number[0] < 0 || *compensation) {
            m_transcript.note("answer",
                              compensationPhase(number[0] < 0 ? nullptr : compensation->get(), number[1]));
        }
        return;
    case Do::compensationTemperature:
        if (number[0] < 0 || *compensation) {
            notifyCompensation(number[0] < 0 ? nullptr : compensation->get(),
                               static_cast<std::int32_t>(number[1]));
        }
        return;
    case Do::initializeCompensation:
    case Do::compensate:
    case Do::txChanged:
    case Do::testOperations:
        if (*compensation) {
            tellOfCompensation(step, **compensation);
        }
        return;
    default:
        if (module != nullptr && *module) {
            tellOfModule(step, **module);
        }
        return;
    }
}

void Model::runPhase(std::int64_t phase) {
    const std::list<Registered> modules = m_registered;
    std::vector<std::pair<std::uint32_t, Code>> turns;
    for (const Registered& entry : modules) {
        Code code = ok;
        if (entry.module != nullptr ? phase != 11 && phase != 5 && phase != 20
                                    : phase != 11 || entry.callbacks.empty()) {
            continue;
        }
        if (entry.module != nullptr) {
            code = phase == 11 ? moduleInit(*entry.module) : moduleVariables(*entry.module, phase == 20);
        }
        for (std::size_t i = 0; i < entry.callbacks.size() && !isBad(code); ++i) {
            code = compensationPhase(entry.callbacks[i], phase);
        }
        turns.emplace_back(entry.id, code);
        if (isBad(code)) {
            break;
        }
    }
    for (const auto& [id, code] : turns) {
        m_transcript.note("turn of module", std::to_string(id), code);
    }
}

void Model::setTemperature(std::int32_t temperature) {
    if (m_temperature == temperature) {
        return;
    }
    m_temperature = temperature;
    const std::vector<TemperatureObserver> observers = m_temperatureObservers;
    for (const TemperatureObserver& observer : observers) {
        if (observer.module != nullptr) {
            notifyModule(*observer.module, temperature);
        } else {
            notifyCompensation(observer.compensation, temperature);
        }
    }
}

Code Model::subscribe(const TemperatureObserver& observer) {
    return m_platform.plain(Op::temperatureRegister, "ITemperatureHandler", [&] {
        auto& all = m_temperatureObservers;
        if (std::find(all.begin(), all.end(), observer) == all.end()) {
            all.push_back(observer);
        }
        return ok;
    });
}

} // namespace Told
