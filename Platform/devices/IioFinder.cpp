#include "devices/IioFinder.h"

#include "devices/IioAttribute.h"
#include "devices/NearNames.h"

#include <string_view>
#include <utility>

namespace Devices {

namespace {

std::string textOf(const char* text) {
    return text != nullptr ? text : "";
}

std::string directionOf(const iio_channel* channel) {
    return iio_channel_is_output(channel) ? "out:" : "in:";
}

bool isMeant(const iio_channel* channel, const IioName& name) {
    const bool isOutput = iio_channel_is_output(channel);
    return (name.channel == textOf(iio_channel_get_id(channel)) ||
            name.channel == textOf(iio_channel_get_name(channel))) &&
           name.isOutput.value_or(isOutput) == isOutput;
}

} // namespace

std::optional<IioName> parseIioName(const std::string& name) {
    const std::size_t first = name.find('/');
    const std::size_t last = name.rfind('/');
    if (first == std::string::npos || first == 0 || last + 1 == name.size()) {
        return std::nullopt;
    }
    IioName parts{name.substr(0, first)};
    parts.attribute = name.substr(last + 1);
    if (first == last) {
        return parts;
    }
    std::string channel = name.substr(first + 1, last - first - 1);
    for (const auto& [prefix, isOutput] : {std::pair<std::string_view, bool>{"out:", true}, {"in:", false}}) {
        if (channel.rfind(prefix, 0) == 0) {
            parts.isOutput = isOutput;
            channel.erase(0, prefix.size());
            break;
        }
    }
    if (channel.empty() || channel.find('/') != std::string::npos) {
        return std::nullopt;
    }
    parts.channel = std::move(channel);
    return parts;
}

std::unique_ptr<Attribute> IioFinder::find(const std::string& name) {
    const std::optional<IioName> parts = parseIioName(name);
    if (!parts) {
        m_problem = "\"" + name + "\" is not of the form DEVICE/ATTRIBUTE or DEVICE/CHANNEL/ATTRIBUTE";
        return nullptr;
    }
    const iio_device* const device = findDevice(parts->device);
    if (device == nullptr) {
        return nullptr;
    }
    if (parts->channel) {
        return findInChannels(device, *parts);
    }
    return findInDevice(device, *parts);
}

const iio_device* IioFinder::findDevice(const std::string& name) {
    const iio_device* found = nullptr;
    std::vector<std::string> names;
    for (unsigned i = 0; i < iio_context_get_devices_count(m_session.context()); ++i) {
        const iio_device* const device = iio_context_get_device(m_session.context(), i);
        const std::string id = textOf(iio_device_get_id(device));
        const std::string itsName = textOf(iio_device_get_name(device));
        if (name == id) {
            return device;
        }
        if (name == itsName || name == textOf(iio_device_get_label(device))) {
            if (found != nullptr) {
                m_problem = name;
                m_problem.append(" is the name of ").append(textOf(iio_device_get_id(found)));
                m_problem.append(" and of ").append(id).append(": say which");
                return nullptr;
            }
            found = device;
        }
        names.push_back(!itsName.empty() ? itsName : id);
    }
    if (found == nullptr) {
        m_problem = "there is no device " + name + alternatives(name, std::move(names));
    }
    return found;
}

std::unique_ptr<Attribute> IioFinder::findInDevice(const iio_device* device, const IioName& name) {
    if (const char* const attribute = iio_device_find_attr(device, name.attribute.c_str())) {
        return std::make_unique<IioAttribute>(m_session, device, nullptr, attribute);
    }
    std::vector<std::string> names;
    names.reserve(iio_device_get_attrs_count(device));
    for (unsigned i = 0; i < iio_device_get_attrs_count(device); ++i) {
        names.push_back(textOf(iio_device_get_attr(device, i)));
    }
    for (unsigned i = 0; i < iio_device_get_channels_count(device); ++i) {
        const iio_channel* const channel = iio_device_get_channel(device, i);
        for (unsigned j = 0; j < iio_channel_get_attrs_count(channel); ++j) {
            const char* const attribute = iio_channel_get_attr(channel, j);
            const std::string file = textOf(iio_channel_attr_get_filename(channel, attribute));
            if (file == name.attribute) {
                return std::make_unique<IioAttribute>(m_session, device, channel, attribute);
            }
            names.push_back(file);
        }
    }
    m_problem =
        name.device + " has no attribute " + name.attribute + alternatives(name.attribute, std::move(names));
    return nullptr;
}

std::unique_ptr<Attribute> IioFinder::findInChannels(const iio_device* device, const IioName& name) {
    std::vector<const iio_channel*> channels;
    std::vector<std::string> names;
    for (unsigned i = 0; i < iio_device_get_channels_count(device); ++i) {
        const iio_channel* const channel = iio_device_get_channel(device, i);
        if (isMeant(channel, name)) {
            channels.push_back(channel);
        }
        names.push_back(directionOf(channel) + textOf(iio_channel_get_id(channel)));
    }
    if (!channels.empty()) {
        return findInThese(channels, device, name);
    }
    const std::string direction = name.isOutput ? *name.isOutput ? "out:" : "in:" : "";
    const std::string wanted = direction + name.channel.value_or("");
    m_problem = name.device + " has no channel " + wanted + alternatives(wanted, std::move(names));
    return nullptr;
}

std::unique_ptr<Attribute> IioFinder::findInThese(const std::vector<const iio_channel*>& channels,
                                                  const iio_device* device, const IioName& name) {
    const std::string wanted = name.channel.value_or("");
    std::unique_ptr<Attribute> found;
    std::vector<std::string> names;
    for (const iio_channel* const channel : channels) {
        if (const char* const attribute = iio_channel_find_attr(channel, name.attribute.c_str())) {
            if (found != nullptr) {
                m_problem =
                    wanted + " of " + name.device + " is an input and an output: say in: or out: before it";
                return nullptr;
            }
            found = std::make_unique<IioAttribute>(m_session, device, channel, attribute);
        }
        for (unsigned i = 0; i < iio_channel_get_attrs_count(channel); ++i) {
            names.push_back(textOf(iio_channel_get_attr(channel, i)));
        }
    }
    if (found == nullptr) {
        m_problem = name.device + "/" + wanted + " has no attribute " + name.attribute +
                    alternatives(name.attribute, std::move(names));
    }
    return found;
}

} // namespace Devices
