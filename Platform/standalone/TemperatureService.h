#ifndef PLATFORM_STANDALONE_TEMPERATURESERVICE_H
#define PLATFORM_STANDALONE_TEMPERATURESERVICE_H

#include "ITemperatureHandler.h"
#include "Visibility.h"
#include "standalone/Calls.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>

namespace Standalone {

/**
 * The temperature service. It tells its observers, in the order of their registration, whenever the
 * temperature changes; the first temperature counts as a change.
 */
class RADIO_API TemperatureService final : public ITemperatureHandler {
public:
    explicit TemperatureService(Calls& calls);

    /** A record that is there already is not registered twice, so that a start-up phase may be repeated. */
    std::int32_t add(ITemperatureObserver* observer);
    /**
     * Sets the temperature, in degrees Celsius; returns how many observers were told. An observer may set
     * another one: those that come after it are told of that one only.
     */
    std::size_t set(int temperature);
    /** The temperature last set; nothing before the first one. */
    std::optional<int> temperature() const { return m_temperature; }
    std::size_t observerCount() const { return m_observers.size(); }
    /** Forgets all observers; to be called before they are destroyed. */
    void forgetObservers() {
        m_observers.clear();
        m_known.clear();
    }

private:
    Calls& m_calls;
    TemperatureHandlerCStruct m_record;
    std::optional<int> m_temperature;
    unsigned m_changes = 0;
    /** The same observers, so that one that is there already is found without a walk. */
    std::set<const ITemperatureObserver*> m_known;
};

} // namespace Standalone

#endif
