#ifndef FREQUENCYHANDLER_PRIVATE_DRIVERLOOKUP_H
#define FREQUENCYHANDLER_PRIVATE_DRIVERLOOKUP_H

#include "DriverLayer.h"

#include <string>

namespace RL::FrequencyHandler {

/** The operation without which a driver is of no use to whoever looks it up. */
enum class NeededOperation { write, writeBuffer };

/** How a driver lookup ended. */
struct DriverLookupResult {
    /** The driver layer's answer, for the trace message. */
    EDriverResult code;
    /** True when the code is a success and record, needed operation and context are all there. */
    bool complete;
};

/**
 * Finds hardware drivers by name. Made anew for each initialisation; it holds on to nothing that it finds.
 */
class DriverLookup {
public:
    /** Looks "IDriverLayer" up in the broker. */
    DriverLookup();

    /** False when the entry is missing, holds nothing, has no C view, or gives a null record. */
    bool hasDriverLayer() const { return m_driverLayer != nullptr; }

    /**
     * Asks the driver layer for the driver `name`, to be stored in `driver`, which after a failure holds what
     * the driver layer left there. Only to be called when there is a driver layer.
     */
    DriverLookupResult find(const std::string& name, NeededOperation needed, DriverInterface*& driver) const;

private:
    const DriverLayerInterface* m_driverLayer;
};

/** True when a value can be written to `driver`, which may be null. */
inline bool canWrite(const DriverInterface* driver) {
    return driver != nullptr && driver->write != nullptr;
}

/** True when bytes can be written to `driver`, which may be null. */
inline bool canWriteBuffer(const DriverInterface* driver) {
    return driver != nullptr && driver->writeBuffer != nullptr;
}

} // namespace RL::FrequencyHandler

#endif
