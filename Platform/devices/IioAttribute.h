#ifndef PLATFORM_DEVICES_IIOATTRIBUTE_H
#define PLATFORM_DEVICES_IIOATTRIBUTE_H

#include "devices/Attribute.h"
#include "devices/IioSession.h"

namespace Devices {

/** An attribute of a channel, or of a device where there is no channel. */
class IioAttribute : public Attribute {
public:
    IioAttribute(IioSession& session, const iio_device* device, const iio_channel* channel, const char* name)
        : m_session(session),
          m_device(device),
          m_channel(channel),
          m_name(name) {}

    int write(const std::string& number) override;
    int read(std::string& text) override;
    AttributeLook look() override;

private:
    IioSession& m_session;
    const iio_device* m_device;
    const iio_channel* m_channel;
    const char* m_name;
};

} // namespace Devices

#endif
