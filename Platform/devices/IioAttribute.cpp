#include "devices/IioAttribute.h"

#include "devices/FileAttribute.h"

#include <array>
#include <memory>

namespace Devices {

int IioAttribute::write(const std::string& number) {
    const std::string line = number + '\n';
    return m_session.carryOut([line, device = m_device, channel = m_channel, name = m_name] {
        return channel != nullptr ? iio_channel_attr_write_raw(channel, name, line.data(), line.size())
                                  : iio_device_attr_write_raw(device, name, line.data(), line.size());
    });
}

int IioAttribute::read(std::string& text) {
    const auto got = std::make_shared<std::array<char, 4096>>();
    const int error = m_session.carryOut([got, device = m_device, channel = m_channel, name = m_name] {
        return channel != nullptr ? iio_channel_attr_read(channel, name, got->data(), got->size() - 1)
                                  : iio_device_attr_read(device, name, got->data(), got->size() - 1);
    });
    if (error == 0) {
        text = got->data();
    }
    return error;
}

AttributeLook IioAttribute::look() {
    if (!m_session.isLocal()) {
        return {};
    }
    const std::string file = m_channel != nullptr ? iio_channel_attr_get_filename(m_channel, m_name) : m_name;
    return lookAtFile(std::string("/sys/bus/iio/devices/") + iio_device_get_id(m_device) + "/" + file);
}

} // namespace Devices
