#include "FrequencyHandler_Common.h"

#include "InterfaceBroker.h"
#include "Trace.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdio>
#include <new>

namespace RL::FrequencyHandler::Common {

OrbiTrace FrequencyHandler::m_trace(Trace::objectName, Trace::initialLevel);

// NOLINTNEXTLINE(modernize-pass-by-value): the signature is published.
FrequencyHandler::FrequencyHandler(const std::string& name, unsigned long channel) : m_name(name) {
    m_cStruct.handler = static_cast<IFrequencyHandler*>(this);
    m_cStruct.registerObserver = &IFrequencyHandler::registerObserver;
    // The channel is a 32-bit number, also where unsigned long has more bits.
    m_cStruct.m_channel = static_cast<std::uint32_t>(channel);
    m_pCStruct = &m_cStruct;
    // Deliberately ignored: a handler that nobody finds still serves its module.
    static_cast<void>(guarded(m_trace, "registerInterface", [this] {
        return InterfaceBroker::getInstance().registerInterface(interfaceName().data(), this);
    }));
}

FrequencyHandler::~FrequencyHandler() {
    static_cast<void>(withdraw(interfaceName()));
}

EAFResult FrequencyHandler::setRfFrequency(unsigned long frequency) {
    m_frequency = static_cast<std::uint32_t>(frequency);

    // Deliberately ignored: the rest of the radio follows the carrier that was asked for, whether or not the
    // hardware took it.
    static_cast<void>(writeFrequencyToHW(m_frequency));

    // By index and with the size read each time: the list may grow while it is walked.
    for (std::size_t index = 0; index < m_observers.size(); ++index) {
        Observer<IFrequencyHandler>* const observer = m_observers[index];
        if (observer == nullptr) {
            FH_TRACE(m_trace, TraceCode::error, "setRfFrequency: observer %zu of direction %s is null", index,
                     m_name.c_str());
            continue;
        }
        observer->onChange(this);
    }
    return ResultOk;
}

EAFResult FrequencyHandler::registerObserver(Observer<IFrequencyHandler>* observer) {
    try {
        m_observers.push_back(observer);
    } catch (const std::bad_alloc&) {
        FH_TRACE(m_trace, TraceCode::error, "registerObserver: out of memory for direction %s",
                 m_name.c_str());
        return ResultFailed;
    }
    return ResultOk;
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

InterfaceName FrequencyHandler::interfaceName() const {
    InterfaceName name{};
    static_cast<void>(channelNumber() == 0
                          ? std::snprintf(name.data(), name.size(), "IFrequencyHandler_%s", m_name.c_str())
                          : std::snprintf(name.data(), name.size(), "IFrequencyHandler_%s_%ld",
                                          m_name.c_str(), static_cast<long>(channelNumber())));
    return name;
}

} // namespace RL::FrequencyHandler::Common
