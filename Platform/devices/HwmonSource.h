#ifndef PLATFORM_DEVICES_HWMONSOURCE_H
#define PLATFORM_DEVICES_HWMONSOURCE_H

#include "devices/SensorSource.h"

#include <string>

namespace Devices {

/** A feature of a chip of the hardware monitors. */
class HwmonSource : public SensorSource {
public:
    HwmonSource(std::string chip, std::string feature);
    ~HwmonSource() override;

    std::string read(double& number) override;

private:
    std::string m_chip;
    std::string m_feature;
};

} // namespace Devices

#endif
