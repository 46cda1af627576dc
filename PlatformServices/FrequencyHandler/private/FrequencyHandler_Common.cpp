#include "FrequencyHandler_Common.h"

#include "Guard.h"
#include "InterfaceBroker.h"
#include "Trace.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace RL::FrequencyHandler::Common {

OrbiTrace FrequencyHandler::m_trace(Trace::objectName, Trace::initialLevel);

// NOLINTNEXTLINE(modernize-pass-by-value): the signature is published.
FrequencyHandler::FrequencyHandler(const std::string& name, unsigned long channel) : m_name(name) {
    m_cStruct.handler = static_cast<IFrequencyHandler*>(this);
    m_cStruct.registerObserver = &IFrequencyHandler::registerObserver;
    // The channel is a 32-bit number, also where unsigned long has more bits.
    m_cStruct.m_channel = static_cast<std::uint32_t>(channel);
    m_pCStruct = &m_cStruct;
    const CancellationHeld
        held; // nobody would withdraw a handler out of whose construction its thread unwinds
    // Deliberately ignored: a handler that nobody finds still serves its module.
    static_cast<void>(guarded<m_trace>("registerInterface", [this] {
        return InterfaceBroker::getInstance().registerInterface(nameInterface(), this);
    }));
    m_interfaceName.clear(); // its room stays, so that withdrawing takes no memory
}

FrequencyHandler::~FrequencyHandler() {
    const CancellationHeld held;
    static_cast<void>(guarded<m_trace>("unregisterInterface", [this] {
        return InterfaceBroker::getInstance().unregisterInterface(nameInterface(), nullptr);
    }));
}

EAFResult FrequencyHandler::setRfFrequency(unsigned long frequency) {
    m_frequency = static_cast<std::uint32_t>(frequency);

    // Deliberately ignored: the rest of the radio follows the carrier that was asked for, whether or not the
    // hardware took it.
    static_cast<void>(
        guarded<m_trace>("writeFrequencyToHW", [this] { return writeFrequencyToHW(m_frequency); }));

    // By index and with the size read each time: the list may grow while it is walked.
    for (std::size_t index = 0; index < m_observers.size(); ++index) {
        notify(index);
    }
    return ResultOk;
}

inline void FrequencyHandler::notify(std::size_t index) {
    Observer<IFrequencyHandler>* const observer = m_observers[index];
    if (observer == nullptr) {
        tellNullObserver(index);
        return;
    }
    try {
        observer->onChange(this);
    } catch (...) {
        tellThrownBy(index);
    }
}

void FrequencyHandler::tellNullObserver(std::size_t index) const {
    FH_TRACE(m_trace, TraceCode::error, "setRfFrequency: observer %zu of direction %s is null", index,
             m_name.c_str());
}

void FrequencyHandler::tellThrownBy(std::size_t index) const {
    Trace::Text observer{};
    static_cast<void>(std::snprintf(observer.data(), observer.size(),
                                    "setRfFrequency: observer %zu of direction %s", index, m_name.c_str()));
    tellThrown(m_trace, observer.data());
}

EAFResult FrequencyHandler::registerObserver(Observer<IFrequencyHandler>* observer) {
    return guarded<m_trace>("registerObserver", [this, observer] {
        m_observers.push_back(observer);
        return ResultOk;
    });
}

unsigned long FrequencyHandler::getFrequency() const {
    return m_frequency;
}

EAFResult FrequencyHandler::onModuleInit() {
    return ResultOk;
}

EAFResult FrequencyHandler::getVariablesFromDatabase() {
    return ResultOk;
}

EAFResult FrequencyHandler::getFFVariablesFromDatabase() {
    return ResultOk;
}

std::string FrequencyHandler::tablePrefix() const {
    return "Channel." + std::to_string(channelNumber()) + "." + m_name + ".";
}

std::string FrequencyHandler::driverPrefix() const {
    std::string prefix = tablePrefix();
    std::transform(prefix.begin(), prefix.end(), prefix.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return prefix;
}

/** Puts the name under which the handler is published into the room that is kept for it. */
const std::string& FrequencyHandler::nameInterface() {
    m_interfaceName.assign("IFrequencyHandler_").append(m_name);
    if (channelNumber() != 0) {
        m_interfaceName.append("_").append(std::to_string(channelNumber()));
    }
    return m_interfaceName;
}

} // namespace RL::FrequencyHandler::Common
