// The driver layer: in the place of these drivers come yours.
#include "DriverLayer.h"
#include "IInterface_c.h"
#include "Kept.h"
#include "MinimalPlatform.h"

using namespace Minimal;

namespace {

// A context may be the driver, or its record, which is its first word: it is the same address.
EDriverResult write(void* context, int value) {
    auto& driver = *static_cast<Driver*>(context);
    driver.value = driver.failure != 0 ? driver.value : value;
    return EDriverResult{driver.failure};
}
EDriverResult writeBuffer(void* context, const void* data, unsigned count) {
    auto& driver = *static_cast<Driver*>(context);
    const auto* const bytes = static_cast<const std::uint8_t*>(data);
    if (driver.failure == 0) {
        driver.bytes.assign(bytes, bytes + count);
    }
    return EDriverResult{driver.failure};
}
EDriverResult read(void* context, int* value) {
    const auto& driver = *static_cast<Driver*>(context);
    *value = driver.value;
    return EDriverResult{driver.failure};
}
EDriverResult giveDriver(DriverInterface** out, const char* name) {
    Driver* const driver = find(drivers(), name);
    *out = driver != nullptr ? &driver->record : nullptr;
    return EDriverResult{driver != nullptr ? 0 : notFound};
}

DriverLayerInterface driverLayerRecord{nullptr, &giveDriver};

struct DriverLayer final : IInterface_c {
    DriverLayer() { m_pCStruct = &driverLayerRecord; }
};

} // namespace

std::map<std::string, Driver>& Minimal::drivers() { return kept<std::map<std::string, Driver>>(); }
void Minimal::addDriver(const std::string& name) {
    Driver& driver = drivers()[name];
    driver.record = {&driver, &write, &writeBuffer, &read};
}
IInterface_c& Minimal::driverLayer() { return kept<DriverLayer>(); }
