// What a story does to the platform.

#include "Runner.h"
#include "Thrower.h"

namespace Told {

void Runner::setPresence(const std::string& name, Presence presence) {
    if (presence != Presence::wordless) {
        m_platform.setPresence(name, static_cast<Standalone::Presence>(presence));
    } else if (name == "ITemperatureHandler") {
        m_platform.interfaces().put(name, &m_temperatureHandlerWithoutWords);
    } else {
        m_platform.interfaces().put(name, &m_driverLayerWithoutWords);
    }
}

void Runner::change(const Step& step) {
    const auto& number = step.number;
    Standalone::Driver* const driver = m_platform.drivers().find(step.name);
    Standalone::Variable* const variable = m_platform.variables().find(step.name);
    Standalone::Fault fault{{},
                            step.name,
                            static_cast<std::int32_t>(number[1]),
                            {},
                            {},
                            step.leaves == Leaves::result,
                            step.leaves == Leaves::null,
                            step.leaves == Leaves::asItWas,
                            thrownBy(step.throws)};
    if (step.leaves == Leaves::number) {
        fault.output = static_cast<std::int32_t>(number[3]);
    }
    switch (step.what) {
    case Do::setVariable:
        if (variable != nullptr) {
            variable->set(step.values);
        }
        return;
    case Do::hideContent:
        if (variable != nullptr) {
            variable->setContentMissing(number[0] != 0);
        }
        return;
    case Do::setWords:
        if (driver != nullptr) {
            driver->setMissingWords(static_cast<std::uint32_t>(number[0]));
        }
        return;
    case Do::nullRecord:
        m_platform.drivers().giveNullRecord(step.name);
        m_platform.variables().giveNullRecord(step.name);
        return;
    case Do::setPresence:
        return setPresence(step.name, static_cast<Presence>(number[0]));
    case Do::setThreshold:
        return m_platform.trace().setThreshold(OrbiTraceLevel{static_cast<std::int32_t>(number[0])});
    case Do::loseMessages:
        m_tracePlace = static_cast<TracePlace>(number[0]);
        m_traceThrows = static_cast<Throws>(number[1]);
        return;
    case Do::fault:
        unloadFault();
        fault.operation = static_cast<Standalone::Operation>(number[0]);
        if (number[2] >= 0) {
            fault.times = static_cast<std::uint32_t>(number[2]);
        }
        m_platform.calls().inject(fault);
        return loadFault();
    case Do::faultAt:
        unloadFault();
        m_faultAt = FaultAt{m_calls + number[0], number[2] != 0, fault};
        return loadFault();
    default:
        m_faultAt.reset();
        return m_platform.calls().clearAll();
    }
}

} // namespace Told
