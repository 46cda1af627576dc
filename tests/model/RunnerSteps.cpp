// What the runner does in each step.

#include "CInterfaceBroker.h"
#include "FrequencyHandler_MicrowaveBoard.h"
#include "FrequencyHandler_Rau.h"
#include "FrequencyHandler_RfModule.h"
#include "Runner.h"
#include "RunnerObservers.h"

namespace Told {

namespace {

/** What is in a slot; null for a slot that there is not. */
template <typename Object>
Object* objectIn(const std::array<std::unique_ptr<Object>, slotCount>& slots, std::int64_t slot) {
    return slot >= 0 && slot < slotCount ? slots[static_cast<std::size_t>(slot)].get() : nullptr;
}

std::int32_t int32(std::int64_t number) {
    return static_cast<std::int32_t>(number);
}

std::uint32_t uint32(std::int64_t number) {
    return static_cast<std::uint32_t>(number);
}

/** As wide as the library takes it; where that is 32 bits the rest is cut off here. */
unsigned long carrier(std::int64_t number) {
    return static_cast<unsigned long>(number);
}

} // namespace

Runner::Slots::Slots() = default;
Runner::Slots::~Slots() = default;

template <typename Wanted>
Wanted* Runner::published(const std::string& name) {
    const auto& entries = m_platform.interfaces().entries();
    const auto entry = entries.find(name);
    return entry != entries.end() ? dynamic_cast<Wanted*>(entry->second) : nullptr;
}

void Runner::play(const Step& step) {
    const auto& number = step.number;
    switch (step.what) {
    case Do::makeModule:
    case Do::makeHandler:
    case Do::makeCanceller:
    case Do::makeCompensation:
        return make(step);
    case Do::destroyModule:
        m_platform.temperature().forgetObservers();
        return destroyModule(number[0]);
    case Do::destroyHandler:
        return destroyHandler(number[0]);
    case Do::destroyCanceller:
        return destroyCanceller(number[0]);
    case Do::phase:
        return runPhase(number[0]);
    case Do::temperature:
        m_platform.temperature().set(int32(number[0]));
        return;
    case Do::moduleInit:
    case Do::moduleStorage:
    case Do::moduleFrameFormat:
    case Do::setTx:
    case Do::setRx:
    case Do::moduleTemperature:
    case Do::contextTemperature:
        return playWithModule(step, objectIn(m_slots.modules, number[0]));
    case Do::compensationPhase:
    case Do::compensationTemperature:
    case Do::initializeCompensation:
    case Do::compensate:
    case Do::txChanged:
    case Do::testOperations:
        return playWithCompensation(step, objectIn(m_slots.compensations, number[0]));
    case Do::initializeCanceller:
        if (LoCancellation* const canceller = objectIn(m_slots.cancellers, number[0])) {
            answer(canceller->initialize());
        }
        return;
    case Do::cancellerInit:
    case Do::correct:
    case Do::setIq:
    case Do::calibrate:
        if (auto* const canceller = published<LoCancellation>(step.name)) {
            playWithCanceller(step, *canceller);
        }
        return;
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
        return change(step);
    default:
        if (auto* const handler = published<Handler>(step.name)) {
            playWithHandler(step, *handler);
        }
        return;
    }
}

void Runner::make(const Step& step) {
    const auto& number = step.number;
    const auto slot = static_cast<std::size_t>(number[0]);
    const std::int32_t channel = int32(number[2]);
    const auto has = [&](Flag flag) { return (number[3] & flag) != 0; };
    if (step.what == Do::makeModule && !m_slots.modules[slot]) {
        m_slots.moduleSteps[slot] = step;
        m_slots.modules[slot] = std::make_unique<::FrequencyHandler>(
            uint32(number[1]), static_cast<::FrequencyHandler::FrequencyHandlerType>(number[2]));
    } else if (step.what == Do::makeCanceller && !m_slots.cancellers[slot]) {
        m_slots.cancellerSteps[slot] = step;
        m_slots.cancellers[slot] = std::make_unique<LoCancellation>(uint32(number[1]));
    } else if (step.what == Do::makeCompensation && !m_slots.compensations[slot]) {
        m_slots.compensations[slot] = std::make_unique<CTxIQImbalanceHandler>(uint32(number[1]));
    } else if (step.what == Do::makeHandler && !m_slots.handlers[slot]) {
        m_slots.handlerSteps[slot] = step;
        std::unique_ptr<Handler>& handler = m_slots.handlers[slot];
        switch (static_cast<HandlerKind>(number[1])) {
        case HandlerKind::microwave:
            handler = std::make_unique<RL::FrequencyHandler::MicrowaveBoard::FrequencyHandler>(
                step.name, channel, has(useIf), has(useHalfSpacing), has(useOffsetArray), has(inHz));
            break;
        case HandlerKind::rfModule:
            handler = std::make_unique<RL::FrequencyHandler::RfModule::FrequencyHandler>(step.name, channel);
            break;
        case HandlerKind::rau:
            handler = std::make_unique<RL::FrequencyHandler::Rau::FrequencyHandler>(step.name, channel);
            break;
        }
    }
}

// What a failed withdrawal leaves in the broker must not be reached any more.

void Runner::destroyModule(std::int64_t slot) {
    if (objectIn(m_slots.modules, slot) != nullptr) {
        const Step& made = m_slots.moduleSteps[static_cast<std::size_t>(slot)];
        const std::int32_t channel = int32(made.number[1]);
        const std::int64_t type = made.number[2];
        m_slots.modules[static_cast<std::size_t>(slot)].reset();
        if (type >= 0 && type <= 5) {
            m_platform.interfaces().drop(handlerName("Tx", channel));
            m_platform.interfaces().drop(handlerName("Rx", channel));
        }
        if (type == 0 || type == 2 || type == 3 || type == 5) {
            m_platform.interfaces().drop("ILoCancellation_" + std::to_string(channel));
        }
    }
}

void Runner::destroyHandler(std::int64_t slot) {
    if (objectIn(m_slots.handlers, slot) != nullptr) {
        const Step& made = m_slots.handlerSteps[static_cast<std::size_t>(slot)];
        m_slots.handlers[static_cast<std::size_t>(slot)].reset();
        m_platform.interfaces().drop(handlerName(made.name, int32(made.number[2])));
    }
}

void Runner::destroyCanceller(std::int64_t slot) {
    if (objectIn(m_slots.cancellers, slot) != nullptr) {
        const Step& made = m_slots.cancellerSteps[static_cast<std::size_t>(slot)];
        m_slots.cancellers[static_cast<std::size_t>(slot)].reset();
        m_platform.interfaces().drop("ILoCancellation_" + std::to_string(int32(made.number[1])));
    }
}

void Runner::runPhase(std::int64_t phase) {
    const Standalone::PhaseReport report = m_platform.modules().run(static_cast<unsigned long>(phase));
    for (const Standalone::PhaseStep& turn : report.steps) {
        m_transcript.note("turn of module", std::to_string(turn.moduleId), turn.code);
    }
}

void Runner::playWithModule(const Step& step, ::FrequencyHandler* module) {
    const unsigned long frequency = carrier(step.number[1]);
    const std::int32_t temperature = int32(step.number[1]);
    if (step.what == Do::contextTemperature && step.number[0] < 0) {
        return ::FrequencyHandler::staticNotifyTemperature(nullptr, temperature);
    }
    if (module == nullptr) {
        return;
    }
    switch (step.what) {
    case Do::moduleInit:
        return answer(module->onModuleInit());
    case Do::moduleStorage:
        return answer(module->onPhaseModuleStorageObjectsRetreived());
    case Do::moduleFrameFormat:
        return answer(module->onPhasePostFrameformatLoad());
    case Do::setTx:
        return answer(module->setTxFrequency(frequency));
    case Do::setRx:
        return answer(module->setRxFrequency(frequency));
    case Do::contextTemperature:
        return ::FrequencyHandler::staticNotifyTemperature(module, temperature);
    default:
        return module->notifyTemperature(temperature);
    }
}

void Runner::playWithHandler(const Step& step, Handler& handler) {
    const unsigned long frequency = carrier(step.number[0]);
    switch (step.what) {
    case Do::handlerInit:
        return answer(handler.onModuleInit());
    case Do::handlerVariables:
        return answer(handler.getVariablesFromDatabase());
    case Do::handlerFrameFormat:
        return answer(handler.getFFVariablesFromDatabase());
    case Do::handlerWrite:
        return answer(handler.writeFrequencyToHW(frequency));
    case Do::handlerSet:
        return answer(handler.setRfFrequency(frequency));
    case Do::handlerGet:
        return m_transcript.note(
            "frequency", static_cast<std::int64_t>(published<IFrequencyHandler>(step.name)->getFrequency()));
    case Do::plan:
        return plan(step, handler);
    default:
        return observe(step, *published<IFrequencyHandler>(step.name));
    }
}

void Runner::plan(const Step& step, Handler& handler) {
    const unsigned long frequency = carrier(step.number[0]);
    const auto* const board = dynamic_cast<RL::FrequencyHandler::MicrowaveBoard::FrequencyHandler*>(&handler);
    if (board != nullptr) {
        m_transcript.note("lo", board->calculaterRfLoFrequency(frequency));
        m_transcript.note("step", board->calculateFrequencyStep(frequency));
        m_transcript.note("if pll", board->calculateIfPllFrequency(frequency));
        m_transcript.note("rf pll", static_cast<std::int64_t>(
                                        board->calculateRfPllFrequency(frequency, step.number[1] != 0)));
        m_transcript.note("baseband", board->getBbFrequency());
    }
}

/** As other components do: through the interface that the broker has, and those in C through its record. */
void Runner::observe(const Step& step, IFrequencyHandler& handler) {
    const std::int64_t number = step.number[0];
    const auto throws = static_cast<Throws>(step.number[1]);
    if (step.what == Do::observe) {
        m_slots.observers.push_back(
            std::make_unique<ListeningObserver>(m_transcript, number, throws, handler));
        return answer(handler.registerObserver(m_slots.observers.back().get()));
    }
    if (step.what == Do::observeNull) {
        return answer(handler.registerObserver(nullptr));
    }
    const auto [code, found] = recordOf(step.name);
    if (found == nullptr) {
        return answer(code);
    }
    const auto& record = *static_cast<FrequencyHandlerCStruct*>(found);
    m_slots.observersInC.push_back(std::make_unique<ObserverInC>(ObserverInC{m_transcript, number, throws}));
    IFrequencyObserver observer{m_slots.observersInC.back().get(), &ObserverInC::hear};
    if (step.what == Do::observeFromC) {
        answer(record.registerObserver(record.handler, &observer));
        observer = {}; // it is read once
        m_slots.wrappers.emplace_back(ObserversOf::last(handler));
        return;
    }
    observer.onFrequencyChanged = number == 1 ? nullptr : observer.onFrequencyChanged;
    answer(
        record.registerObserver(number == 2 ? nullptr : record.handler, number == 0 ? nullptr : &observer));
}

std::pair<std::int32_t, void*> Runner::recordOf(const std::string& name) {
    try {
        void* broker = nullptr;
        std::int32_t code = CInterfaceBroker_GetInstance(&broker);
        if (isFailure(code)) {
            return {code, nullptr};
        }
        void* record = nullptr;
        code = CInterfaceBroker_GetInterface(broker, name.c_str(), &record);
        CInterfaceBroker_DestroyInstance(broker);
        return {code, isSuccess(code) ? record : nullptr};
    } catch (...) { // such a client gives up, and gives nothing back
        return {ResultFailed, nullptr};
    }
}

void Runner::playWithCanceller(const Step& step, LoCancellation& canceller) {
    const auto& number = step.number;
    switch (step.what) {
    case Do::cancellerInit:
        return answer(canceller.onModuleInit());
    case Do::correct:
        return answer(canceller.setLoCancellation(uint32(number[0]), int32(number[1])));
    case Do::setIq:
        return answer(canceller.setIQ(int32(number[0]), int32(number[1])));
    default:
        return calibrate(canceller, step.calibration);
    }
}

void Runner::calibrate(ILoCancellation& canceller, const Calibration& c) {
    int i = -77;
    int q = -78;
    int delta = -79;
    unsigned iterations = c.iterations;
    const auto placeUnless = [&](unsigned bit, auto* place) {
        return (c.nullPlaces & bit) == 0 ? place : nullptr;
    };
    answer(canceller.calibrateLoCancellation(c.iLow, c.iHigh, c.qLow, c.qHigh, c.shrinkFactor, c.minDelta,
                                             c.maxIterations, c.settleTimeMs, placeUnless(1, &i),
                                             placeUnless(2, &q), placeUnless(4, &delta),
                                             placeUnless(8, &iterations), c.useHighDetector));
    m_transcript.note("I", i);
    m_transcript.note("Q", q);
    m_transcript.note("delta", delta);
    m_transcript.note("iterations", iterations);
}

void Runner::playWithCompensation(const Step& step, CTxIQImbalanceHandler* compensation) {
    const std::int64_t number = step.number[1];
    if (compensation == nullptr && step.number[0] >= 0) {
        return;
    }
    switch (step.what) {
    case Do::compensationPhase:
        return answer(
            CTxIQImbalanceHandler::onPhaseActivation(compensation, uint32(number), ECallbackPriority{3}));
    case Do::compensationTemperature:
        return CTxIQImbalanceHandler::notifyTemperature(compensation, int32(number));
    case Do::initializeCompensation:
        return answer(compensation->initialize());
    default:
        return playWithInterface(step, *compensation);
    }
}

void Runner::playWithInterface(const Step& step, ITxIQImbalanceHandler& compensation) {
    if (step.what == Do::compensate) {
        return answer(compensation.doImbalanceCompensation());
    }
    if (step.what == Do::txChanged) {
        return answer(compensation.onTxFrequencyChanged(carrier(step.number[1])));
    }
    unsigned bar = 7;
    unsigned enabled = 8;
    EIQMode mode{9};
    ESimulatorMode simulator{10};
    answer(compensation.testSetIQCompensationBar(5) + compensation.testGetIQCompensationBar(&bar) +
           compensation.testSetIQMode(EIQMode{1}) + compensation.testGetIQMode(&mode) +
           compensation.testSetSimulatorMode(ESimulatorMode{1}) +
           compensation.testGetSimulatorMode(&simulator) +
           compensation.testGetAdaptiveIQCompEnabled(&enabled) +
           (bar == 7 && enabled == 8 && mode == 9 && simulator == 10 ? 0 : 1));
}

} // namespace Told
