#include "radio/session/RadioUnit.h"

#include "CInterfaceBroker.h"
#include "InterfaceBroker.h"
#include "radio/board/BoardNames.h"
#include "radio/board/PlatformWords.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Radio {

/** What the module identifier of an IQ compensation is above its channel. */
static constexpr unsigned compensationModules = 83000;

/** Tells the radio's owner what a handler tells its observers; as a class or through a plain C function. */
class RadioUnit::ChangeObserver final : public Observer<IFrequencyHandler> {
public:
    ChangeObserver(ObserverState state, const RadioEvents& events) : m_state(state), m_events(events) {}

    void onChange(IFrequencyHandler* subject) override { tell(subject->getFrequency()); }

    /** The function of an IFrequencyObserver whose context is the object. */
    static void onFrequencyChanged(void* context, unsigned long /*channel*/, unsigned long frequency) {
        static_cast<ChangeObserver*>(context)->tell(frequency);
    }

    const ObserverState& state() const { return m_state; }

private:
    void tell(unsigned long frequency) {
        ++m_state.notifications;
        m_state.frequency = frequency;
        m_events.notified({m_state.direction, m_state.channel, frequency, m_state.throughC});
    }

    ObserverState m_state;
    const RadioEvents& m_events;
};

Backings backingsOf(Devices::Hardware* hardware) {
    if (hardware == nullptr) {
        return {};
    }
    return [hardware](std::string_view driver) { return hardware->backing(driver); };
}

RadioUnit::RadioUnit(const Board& board, RadioEvents events, const Backings& backings)
    : m_events(std::move(events)) {
    furnishPlatform(board);
    if (backings) {
        bindHardware(backings);
    }
    listen();
    for (const ChannelDescription& channel : board.channels) {
        addChannel(channel);
    }
    observeAll(board);
    if (!backings) {
        bindTransmitters(board);
    }
}

void RadioUnit::addChannel(const ChannelDescription& channel) {
    const auto number = static_cast<unsigned long>(channel.number);
    m_modules[channel.number] = std::make_unique<::FrequencyHandler>(number, channel.type);
    if (channel.iqCompensation) {
        m_compensations.push_back(std::make_unique<CTxIQImbalanceHandler>(number));
        // A failure is in the trace, and its phase will not have its turn.
        static_cast<void>(m_compensations.back()->initialize());
    }
}

RadioUnit::~RadioUnit() {
    // Taking the radio down is nothing that was asked for; nobody is told of it.
    m_platform.calls().setListener({});
    m_platform.trace().setSink({});
    m_platform.temperature().forgetObservers();
    m_modules.clear();
}

void RadioUnit::furnishPlatform(const Board& board) {
    for (const DriverDescription& driver : board.drivers) {
        m_platform.drivers().add(driver.name, driver.missingWords).setValue(driver.value);
    }
    for (const VariableDescription& variable : board.variables) {
        m_platform.variables().add(variable.name, variable.values);
    }
    for (const TableDescription& table : board.tables) {
        if (table.isThere()) {
            m_platform.tables().add(table.table);
        }
    }
    m_presences = {{"IDriverLayer", Standalone::Presence::present},
                   {"ITemperatureHandler", Standalone::Presence::present}};
    for (const InterfaceDescription& interface : board.interfaces) {
        if (const auto channel = rauChannel(interface.name)) {
            m_platform.addRau(*channel);
        }
        setPresence(interface.name, interface.presence);
    }
}

void RadioUnit::bindHardware(const Backings& backings) {
    for (const auto& [name, driver] : m_platform.drivers().drivers()) {
        driver->setBacking(backings(name));
    }
    m_clock.setRealTime(true);
}

void RadioUnit::listen() {
    m_platform.calls().setListener([this](const Standalone::Call& call) { m_events.called(call); });
    m_platform.trace().setSink([this](const Standalone::TraceMessage& message) { m_events.traced(message); });
}

void RadioUnit::observeAll(const Board& board) {
    InterfaceBroker& broker = InterfaceBroker::getInstance();
    for (const ChannelDescription& channel : board.channels) {
        for (const Direction direction : {Direction::tx, Direction::rx}) {
            auto* const handler =
                broker.getInterface<IFrequencyHandler>(handlerName(direction, channel.number));
            if (handler != nullptr) {
                m_handlers[{direction, channel.number}] = handler;
                handler->registerObserver(&addObserver(direction, channel.number, false));
            }
        }
    }
}

void RadioUnit::bindTransmitters(const Board& board) {
    for (const LeakageDescription& leakage : board.leakages) {
        m_transmitters[leakage.channel] = std::make_unique<LeakingTransmitter>(
            leakage, m_platform.drivers(),
            [this, channel = leakage.channel] { return surroundings(channel); });
    }
    m_clock.addListener([this](double milliseconds) {
        for (const auto& [channel, transmitter] : m_transmitters) {
            transmitter->elapse(milliseconds);
        }
    });
}

Surroundings RadioUnit::surroundings(int channel) {
    Surroundings result;
    result.carrier = static_cast<std::uint32_t>(frequency(Direction::tx, channel));
    if (const std::optional<int> temperature = m_platform.temperature().temperature()) {
        result.temperature = *temperature;
    }
    return result;
}

LeakingTransmitter* RadioUnit::transmitter(int channel) {
    const auto found = m_transmitters.find(channel);
    return found == m_transmitters.end() ? nullptr : found->second.get();
}

RadioUnit::ChangeObserver& RadioUnit::addObserver(Direction direction, int channel, bool throughC) {
    m_observers.push_back(
        std::make_unique<ChangeObserver>(ObserverState{direction, channel, throughC}, m_events));
    return *m_observers.back();
}

Standalone::PhaseReport RadioUnit::runPhase(Standalone::Phase phase) {
    Standalone::PhaseReport report = m_platform.modules().run(phase);
    // Of the modules that register through plain functions the manager knows no channel, only an identifier.
    for (Standalone::PhaseStep& step : report.steps) {
        if (step.moduleName == "CTxIqImbalanceHandler") {
            step.channel = step.moduleId - compensationModules;
        }
    }
    return report;
}

std::int32_t RadioUnit::tune(Direction direction, int channel, std::uint32_t frequency) {
    ::FrequencyHandler& module = *m_modules.at(channel);
    return direction == Direction::tx ? module.setTxFrequency(frequency) : module.setRxFrequency(frequency);
}

std::int32_t RadioUnit::observeThroughC(Direction direction, int channel) {
    void* broker = nullptr;
    EAFResult result = CInterfaceBroker_GetInstance(&broker);
    if (isFailure(result)) {
        return result;
    }
    void* found = nullptr;
    result = CInterfaceBroker_GetInterface(broker, handlerName(direction, channel).c_str(), &found);
    if (isSuccess(result)) {
        const auto* const handler = static_cast<const FrequencyHandlerCStruct*>(found);
        IFrequencyObserver observer{&addObserver(direction, channel, true),
                                    &ChangeObserver::onFrequencyChanged};
        result = handler->registerObserver(handler->handler, &observer);
        if (isFailure(result)) {
            m_observers.pop_back();
        }
    }
    CInterfaceBroker_DestroyInstance(broker);
    return result;
}

void RadioUnit::setPresence(const std::string& name, Standalone::Presence presence) {
    m_platform.setPresence(name, presence);
    m_presences[name] = presence;
}

unsigned long RadioUnit::frequency(Direction direction, int channel) const {
    const auto handler = m_handlers.find({direction, channel});
    return handler == m_handlers.end() ? 0 : handler->second->getFrequency();
}

std::vector<RadioUnit::ObserverState> RadioUnit::observers() const {
    std::vector<ObserverState> states;
    std::transform(m_observers.begin(), m_observers.end(), std::back_inserter(states),
                   [](const auto& observer) { return observer->state(); });
    return states;
}

} // namespace Radio
