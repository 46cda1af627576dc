#ifndef PLATFORM_STANDALONE_PLATFORM_H
#define PLATFORM_STANDALONE_PLATFORM_H

#include "IInterface_c.h"
#include "Visibility.h"
#include "standalone/Calls.h"
#include "standalone/DriverBank.h"
#include "standalone/InterfaceRegistry.h"
#include "standalone/ModuleSequencer.h"
#include "standalone/RauService.h"
#include "standalone/TableStore.h"
#include "standalone/TemperatureService.h"
#include "standalone/TraceLog.h"
#include "standalone/VariableStore.h"

#include <map>
#include <memory>
#include <string>

namespace Standalone {

/** How an interface of the platform shows itself in the broker. */
enum class Presence {
    present,    ///< as it should be
    absent,     ///< no entry
    null,       ///< an entry that holds nothing
    foreign,    ///< an entry of another type, without a C record
    nullRecord, ///< of the right kind, but its C record is null
};

/**
 * The whole state of the stand-alone platform.
 *
 * While an object of this class lives, the singletons and free functions of the contracts are doors to it;
 * there is at most one at a time, and a second one throws std::logic_error. Without one, the doors answer
 * Codes::noPlatform and find nothing, so library objects may be destroyed after it. A new platform has
 * "IDriverLayer" and "ITemperatureHandler" published and nothing else. Not to be used on two threads at once.
 */
class RADIO_API Platform {
public:
    Platform();
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;
    ~Platform();

    /** The platform that lives at the moment, or null. */
    static Platform* current() { return s_current; }

    Calls& calls() { return m_calls; }
    const Calls& calls() const { return m_calls; }
    TraceLog& trace() { return m_trace; }
    const TraceLog& trace() const { return m_trace; }
    InterfaceRegistry& interfaces() { return m_interfaces; }
    ModuleSequencer& modules() { return m_modules; }
    DriverBank& drivers() { return m_drivers; }
    VariableStore& variables() { return m_variables; }
    TableStore& tables() { return m_tables; }
    TemperatureService& temperature() { return m_temperature; }

    /**
     * Adds the remote radio unit of `channel` and publishes it as "IRauHandler", followed by "_" and the
     * channel when that is not 0. For a channel that has one already, returns that.
     */
    RauService& addRau(int channel);
    /** The remote radio units, by the name under which they are published. */
    const std::map<std::string, std::unique_ptr<RauService>>& raus() const { return m_raus; }

    /**
     * Changes how "IDriverLayer", "ITemperatureHandler" or a remote radio unit shows itself in the broker.
     * Throws std::invalid_argument for any other name.
     */
    void setPresence(const std::string& name, Presence presence);

private:
    class DriverLayerObject;

    IInterface* ownInterface(const std::string& name);

    static Platform* s_current;

    Calls m_calls;
    TraceLog m_trace;
    InterfaceRegistry m_interfaces;
    ModuleSequencer m_modules;
    DriverBank m_drivers;
    VariableStore m_variables;
    TableStore m_tables;
    TemperatureService m_temperature;
    std::map<std::string, std::unique_ptr<RauService>> m_raus;
    std::unique_ptr<DriverLayerObject> m_driverLayer;
    IInterface m_foreign;
    IInterface_c m_withoutRecord;
};

} // namespace Standalone

#endif
