#include "DriverLookup.h"

#include "IInterface_c.h"
#include "InterfaceBroker.h"

namespace RL::FrequencyHandler {

namespace {

const DriverLayerInterface* findDriverLayer() {
    auto* const iface = InterfaceBroker::getInstance().getInterface<IInterface_c>("IDriverLayer");
    return iface == nullptr ? nullptr : static_cast<const DriverLayerInterface*>(iface->getCStruct());
}

bool offers(const DriverInterface& driver, NeededOperation needed) {
    return needed == NeededOperation::write ? driver.write != nullptr : driver.writeBuffer != nullptr;
}

} // namespace

DriverLookup::DriverLookup() : m_driverLayer(findDriverLayer()) {}

DriverLookupResult DriverLookup::find(const std::string& name, NeededOperation needed,
                                      DriverInterface*& driver) const {
    if (m_driverLayer->getDriverInterface == nullptr) {
        return {static_cast<EDriverResult>(ResultFailed), false};
    }
    const EDriverResult code = m_driverLayer->getDriverInterface(&driver, name.c_str());
    const bool complete =
        isSuccess(code) && driver != nullptr && offers(*driver, needed) && driver->context != nullptr;
    return {code, complete};
}

} // namespace RL::FrequencyHandler
