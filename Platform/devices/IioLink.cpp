#include "devices/IioLink.h"

#include "devices/DeviceCodes.h"
#include "devices/FileAttribute.h"
#include "devices/IioServer.h"
#include "devices/NearNames.h"
#include "devices/Quiet.h"
#include "devices/Threads.h"

#include <iio.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace Devices {

namespace {

using Clock = std::chrono::steady_clock;

struct ContextDeleter {
    void operator()(iio_context* context) const {
        const Quiet quiet;
        BrokenPipeGuard guard; // it takes leave of a server, which may have gone
        guard.failed();
        iio_context_destroy(context);
    }
};
using Context = std::unique_ptr<iio_context, ContextDeleter>;

/** These say that there is nobody at the other end any more. */
bool isOfConnection(int error) {
    switch (error) {
    case EPIPE:
    case ECONNRESET:
    case ECONNABORTED:
    case ENOTCONN:
    case ESHUTDOWN:
    case EBADF:
    case EHOSTUNREACH:
    case ENETUNREACH:
    case ENETDOWN:
    case ENODEV:
        return true;
    default:
        return false;
    }
}

std::string textOf(const char* text) {
    return text != nullptr ? text : "";
}

/** A connection of libiio, and what all its attributes share. */
struct Session {
    Context context;
    bool isLocal = false;
    std::chrono::milliseconds timeLimit{};
    bool isBroken = false;

    /** Carries out `call`, which gives a length, or an error number below 0. */
    template <typename Call>
    int carryOut(Call call) {
        if (isLocal) {
            const auto result = call();
            return result < 0 ? static_cast<int>(-result) : 0;
        }
        return carryOutRemotely(call);
    }

private:
    template <typename Call>
    int carryOutRemotely(Call call) {
        if (isBroken) {
            return ENOTCONN;
        }
        const Quiet quiet;
        BrokenPipeGuard guard;
        const Clock::time_point begin = Clock::now();
        const auto result = call();
        if (result >= 0) {
            return 0;
        }
        guard.failed();
        const auto error = static_cast<int>(-result);
        // A server that says nothing in time is told apart by the time that passed: libiio calls it a broken
        // pipe. What it says later would be taken for the next answer.
        const bool isLate = Clock::now() - begin >= timeLimit * 9 / 10;
        isBroken = isOfConnection(error) || isLate;
        return isLate && (isOfConnection(error) || error == EAGAIN) ? ETIMEDOUT : error;
    }
};

/** An attribute of a channel, or of a device where there is no channel. */
class IioAttribute : public Attribute {
public:
    IioAttribute(Session& session, const iio_device* device, const iio_channel* channel, const char* name)
        : m_session(session),
          m_device(device),
          m_channel(channel),
          m_name(name) {}

    int write(const std::string& number) override {
        const std::string line = number + '\n';
        return m_session.carryOut([&] {
            return m_channel != nullptr
                       ? iio_channel_attr_write_raw(m_channel, m_name, line.data(), line.size())
                       : iio_device_attr_write_raw(m_device, m_name, line.data(), line.size());
        });
    }

    int read(std::string& text) override {
        std::array<char, 4096> got{};
        const int error = m_session.carryOut([&] {
            return m_channel != nullptr ? iio_channel_attr_read(m_channel, m_name, got.data(), got.size() - 1)
                                        : iio_device_attr_read(m_device, m_name, got.data(), got.size() - 1);
        });
        if (error == 0) {
            text = got.data();
        }
        return error;
    }

    AttributeLook look() override {
        if (!m_session.isLocal) {
            return {};
        }
        const char* const file =
            m_channel != nullptr ? iio_channel_attr_get_filename(m_channel, m_name) : m_name;
        return lookAtFile("/sys/bus/iio/devices/" + textOf(iio_device_get_id(m_device)) + "/" + textOf(file));
    }

private:
    Session& m_session;
    const iio_device* m_device;
    const iio_channel* m_channel;
    const char* m_name;
};

/** An attribute's name in its parts: DEVICE/ATTRIBUTE or DEVICE/CHANNEL/ATTRIBUTE. */
struct IioName {
    std::string device;
    std::optional<std::string> channel{};
    /** Said by "out:" or "in:" before the channel. */
    std::optional<bool> isOutput{};
    std::string attribute{};
};

std::optional<IioName> parseName(const std::string& name) {
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
    for (const auto& [prefix, isOutput] : {std::pair{"out:", true}, std::pair{"in:", false}}) {
        if (channel.rfind(prefix, 0) == 0) {
            parts.isOutput = isOutput;
            channel.erase(0, std::string_view(prefix).size());
            break;
        }
    }
    if (channel.empty() || channel.find('/') != std::string::npos) {
        return std::nullopt;
    }
    parts.channel = std::move(channel);
    return parts;
}

/** The devices of a context, searched as a description names them. */
class Finder {
public:
    Finder(Session& session, std::string& problem) : m_session(session), m_problem(problem) {}

    std::unique_ptr<Attribute> find(const std::string& name) {
        const std::optional<IioName> parts = parseName(name);
        if (!parts) {
            m_problem = "\"" + name + "\" is not of the form DEVICE/ATTRIBUTE or DEVICE/CHANNEL/ATTRIBUTE";
            return nullptr;
        }
        const iio_device* const device = findDevice(parts->device);
        if (device == nullptr) {
            return nullptr;
        }
        return parts->channel ? findInChannels(device, *parts) : findInDevice(device, *parts);
    }

private:
    const iio_device* findDevice(const std::string& name) {
        const iio_device* found = nullptr;
        std::vector<std::string> names;
        for (unsigned i = 0; i < iio_context_get_devices_count(m_session.context.get()); ++i) {
            const iio_device* const device = iio_context_get_device(m_session.context.get(), i);
            const std::string id = textOf(iio_device_get_id(device));
            const std::string itsName = textOf(iio_device_get_name(device));
            const std::string label = textOf(iio_device_get_label(device));
            if (name == id) {
                return device;
            }
            if (name == itsName || name == label) {
                if (found != nullptr) {
                    m_problem = name + " is the name of " + textOf(iio_device_get_id(found)) + " and of " +
                                id + ": say which";
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

    std::unique_ptr<Attribute> findInDevice(const iio_device* device, const IioName& name) {
        if (const char* const attribute = iio_device_find_attr(device, name.attribute.c_str())) {
            return std::make_unique<IioAttribute>(m_session, device, nullptr, attribute);
        }
        std::vector<std::string> names;
        for (unsigned i = 0; i < iio_device_get_attrs_count(device); ++i) {
            names.push_back(textOf(iio_device_get_attr(device, i)));
        }
        m_problem = name.device + " has no attribute " + name.attribute +
                    alternatives(name.attribute, std::move(names));
        return nullptr;
    }

    std::unique_ptr<Attribute> findInChannels(const iio_device* device, const IioName& name) {
        std::vector<const iio_channel*> channels;
        std::vector<std::string> names;
        for (unsigned i = 0; i < iio_device_get_channels_count(device); ++i) {
            const iio_channel* const channel = iio_device_get_channel(device, i);
            const bool isMeant = *name.channel == textOf(iio_channel_get_id(channel)) ||
                                 *name.channel == textOf(iio_channel_get_name(channel));
            if (isMeant &&
                name.isOutput.value_or(iio_channel_is_output(channel)) == iio_channel_is_output(channel)) {
                channels.push_back(channel);
            }
            names.push_back((iio_channel_is_output(channel) ? "out:" : "in:") +
                            textOf(iio_channel_get_id(channel)));
        }
        if (channels.empty()) {
            m_problem = name.device + " has no channel " +
                        (name.isOutput ? *name.isOutput ? "out:" : "in:" : "") + *name.channel +
                        alternatives(*name.channel, std::move(names));
            return nullptr;
        }
        return findInChannels(device, channels, name);
    }

    std::unique_ptr<Attribute> findInChannels(const iio_device* device,
                                              const std::vector<const iio_channel*>& channels,
                                              const IioName& name) {
        std::unique_ptr<Attribute> found;
        std::vector<std::string> names;
        for (const iio_channel* const channel : channels) {
            if (const char* const attribute = iio_channel_find_attr(channel, name.attribute.c_str())) {
                if (found != nullptr) {
                    m_problem = *name.channel + " of " + name.device +
                                " is an input and an output: say in: or out: before it";
                    return nullptr;
                }
                found = std::make_unique<IioAttribute>(m_session, device, channel, attribute);
            }
            for (unsigned i = 0; i < iio_channel_get_attrs_count(channel); ++i) {
                names.push_back(textOf(iio_channel_get_attr(channel, i)));
            }
        }
        if (found == nullptr) {
            m_problem = name.device + "/" + *name.channel + " has no attribute " + name.attribute +
                        alternatives(name.attribute, std::move(names));
        }
        return found;
    }

    Session& m_session;
    std::string& m_problem;
};

class IioLink : public Link {
public:
    explicit IioLink(Session session) : m_session(std::move(session)) {}

    std::unique_ptr<Attribute> find(const std::string& name, std::string& problem) override {
        return Finder(m_session, problem).find(name);
    }
    bool isBroken() const override { return m_session.isBroken; }

private:
    Session m_session;
};

} // namespace

Opened openIio(const DeviceDescription& device) {
    if (const int error = awaitIioServer(device.address, device.timeLimit); error != 0) {
        return {nullptr, error, meaningOf(codeOf(error))};
    }
    const Quiet quiet;
    BrokenPipeGuard guard;
    guard.failed();
    errno = 0;
    Session session{Context(iio_create_context_from_uri(device.address.c_str()))};
    if (session.context == nullptr) {
        const int error = errno != 0 ? errno : ENODEV;
        // ENOSYS is libiio's for a URI that it knows nothing about.
        return {nullptr, error, error == ENOSYS ? "libiio knows no such URI" : meaningOf(codeOf(error))};
    }
    session.isLocal = textOf(iio_context_get_name(session.context.get())) == "local";
    session.timeLimit = device.timeLimit;
    static_cast<void>(
        iio_context_set_timeout(session.context.get(), static_cast<unsigned>(device.timeLimit.count())));
    return {std::make_unique<IioLink>(std::move(session)), 0, {}};
}

std::string iioVersion() {
    unsigned major = 0;
    unsigned minor = 0;
    std::array<char, 8> tag{};
    iio_library_get_version(&major, &minor, tag.data());
    return std::to_string(major) + "." + std::to_string(minor);
}

} // namespace Devices
