#ifndef PLATFORM_DEVICES_SENSORSOURCE_H
#define PLATFORM_DEVICES_SENSORSOURCE_H

#include <string>

namespace Devices {

/** Where a number for the temperature comes from. Used on one thread, which may wait for it. */
class SensorSource {
public:
    SensorSource() = default;
    SensorSource(const SensorSource&) = delete;
    SensorSource& operator=(const SensorSource&) = delete;
    virtual ~SensorSource() = default;

    /** Reads into `number`; why there is none, for people, or nothing. */
    virtual std::string read(double& number) = 0;
};

} // namespace Devices

#endif
