#ifndef PLATFORM_DEVICES_ATTRIBUTESOURCE_H
#define PLATFORM_DEVICES_ATTRIBUTESOURCE_H

#include "devices/Attribute.h"
#include "devices/Description.h"
#include "devices/Link.h"
#include "devices/SensorSource.h"

#include <memory>
#include <optional>
#include <string>

namespace Devices {

/** An attribute of a file or a device. It has a connection of its own, made anew when it breaks: what the
 * driving thread writes never waits for a sensor. */
class AttributeSource : public SensorSource {
public:
    /** No `device`: a file. */
    AttributeSource(std::optional<DeviceDescription> device, std::string attribute)
        : m_device(std::move(device)),
          m_name(std::move(attribute)) {}

    std::string read(double& number) override;

private:
    /** Why there is no attribute. */
    std::string connect();

    std::optional<DeviceDescription> m_device;
    std::string m_name;
    std::unique_ptr<Link> m_link;
    std::unique_ptr<Attribute> m_attribute;
};

} // namespace Devices

#endif
