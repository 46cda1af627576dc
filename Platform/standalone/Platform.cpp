#include "standalone/Platform.h"

#include "standalone/Codes.h"

#include <stdexcept>

namespace Standalone {

namespace {

constexpr const char* driverLayerName = "IDriverLayer";
constexpr const char* temperatureHandlerName = "ITemperatureHandler";

EDriverResult getDriverInterface(DriverInterface** out, const char* driverName) {
    Platform* const platform = Platform::current();
    return static_cast<EDriverResult>(platform != nullptr ? platform->drivers().lookup(out, driverName)
                                                          : Codes::noPlatform);
}

/** Refuses a second platform before it has members, whose end would reset the trace thresholds of the first.
 */
Calls callsOfTheOnlyPlatform() {
    if (Platform::current() != nullptr) {
        throw std::logic_error("a stand-alone platform exists already");
    }
    return {};
}

} // namespace

/** The interface "IDriverLayer". */
class Platform::DriverLayerObject final : public IInterface_c {
public:
    DriverLayerObject() : IInterface(driverLayerName) { m_pCStruct = &m_record; }

private:
    DriverLayerInterface m_record{nullptr, &getDriverInterface};
};

Platform* Platform::s_current = nullptr;

Platform::Platform()
    : m_calls(callsOfTheOnlyPlatform()),
      m_interfaces(m_calls),
      m_modules(m_calls),
      m_drivers(m_calls),
      m_variables(m_calls),
      m_tables(m_calls),
      m_temperature(m_calls),
      m_driverLayer(std::make_unique<DriverLayerObject>()) {
    setPresence(driverLayerName, Presence::present);
    setPresence(temperatureHandlerName, Presence::present);
    s_current = this;
}

Platform::~Platform() {
    s_current = nullptr;
}

RauService& Platform::addRau(int channel) {
    const std::string name = channel == 0 ? "IRauHandler" : "IRauHandler_" + std::to_string(channel);
    std::unique_ptr<RauService>& rau = m_raus[name];
    if (rau == nullptr) {
        rau = std::make_unique<RauService>(name, m_calls);
        setPresence(name, Presence::present);
    }
    return *rau;
}

void Platform::setPresence(const std::string& name, Presence presence) {
    IInterface* const iface = ownInterface(name);
    if (iface == nullptr) {
        throw std::invalid_argument("the platform has no interface \"" + name + "\"");
    }
    switch (presence) {
    case Presence::present:
        m_interfaces.put(name, iface);
        break;
    case Presence::absent:
        m_interfaces.drop(name);
        break;
    case Presence::null:
        m_interfaces.put(name, nullptr);
        break;
    case Presence::foreign:
        m_interfaces.put(name, &m_foreign);
        break;
    case Presence::nullRecord:
        m_interfaces.put(name, &m_withoutRecord);
        break;
    }
}

IInterface* Platform::ownInterface(const std::string& name) {
    if (name == driverLayerName) {
        return m_driverLayer.get();
    }
    if (name == temperatureHandlerName) {
        return &m_temperature;
    }
    const auto rau = m_raus.find(name);
    return rau != m_raus.end() ? rau->second.get() : nullptr;
}

} // namespace Standalone
