#include "standalone/TemperatureService.h"

#include "standalone/Codes.h"

#include <vector>

namespace Standalone {

// cppcheck-suppress uninitMemberVar // the record is, in braces
TemperatureService::TemperatureService(Calls& calls)
    : IInterface("ITemperatureHandler"),
      m_calls(calls),
      m_record{&ITemperatureHandler::registerObserver} {
    m_pCStruct = &m_record;
}

std::int32_t TemperatureService::add(ITemperatureObserver* observer) {
    const auto carryOut = [&](std::int64_t& /*given*/) -> std::int32_t {
        if (observer == nullptr || observer->notifyTemperature == nullptr) {
            return Codes::badArgument;
        }
        const auto [place, isNew] = m_known.insert(observer);
        if (isNew) {
            try {
                m_observers.push_back(observer);
            } catch (...) { // without memory for both it is in neither
                m_known.erase(place);
                throw;
            }
        }
        return ResultOk;
    };
    return m_calls.answer("ITemperatureHandler", {Operation::temperatureRegister}, carryOut);
}

std::size_t TemperatureService::set(int temperature) {
    if (m_temperature == temperature) {
        return 0;
    }
    m_temperature = temperature;
    const unsigned change = ++m_changes;
    // An observer may register another one, which must not disturb this walk.
    const std::vector<ITemperatureObserver*> observers = m_observers;
    std::size_t told = 0;
    for (ITemperatureObserver* const observer : observers) {
        // One that sets another temperature has told it to all of them; the older one must not come last.
        if (change != m_changes) {
            break;
        }
        // The record is the observer's, which may have taken its function out since.
        if (observer->notifyTemperature != nullptr) {
            observer->notifyTemperature(observer->context, temperature);
            ++told;
        }
    }
    return told;
}

} // namespace Standalone
