#include "devices/IioLink.h"

#include "devices/DeviceCodes.h"
#include "devices/IioFinder.h"
#include "devices/IioServer.h"
#include "devices/IioSession.h"

#include <array>
#include <cerrno>
#include <memory>

namespace Devices {

namespace {

class IioLink : public Link {
public:
    IioLink(iio_context* context, std::chrono::milliseconds timeLimit) : m_session(context, timeLimit) {}

    std::unique_ptr<Attribute> find(const std::string& name, std::string& problem) override {
        return IioFinder(m_session, problem).find(name);
    }
    bool isBroken() const override { return m_session.isBroken(); }
    bool isListedOnce() const override { return m_session.isLocal(); }

private:
    IioSession m_session;
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
    // A copy, for once: libiio cuts the port off in the very text that it is given.
    std::string address = device.address;
    iio_context* const context = iio_create_context_from_uri(address.data());
    if (context == nullptr) {
        const int error = errno > 0 ? errno : ENODEV;
        // ENOSYS is libiio's for a URI that it knows nothing about.
        return {nullptr, error, error == ENOSYS ? "libiio knows no such URI" : meaningOf(codeOf(error))};
    }
    return {std::make_unique<IioLink>(context, device.timeLimit), 0, {}};
}

std::string iioVersion() {
    unsigned major = 0;
    unsigned minor = 0;
    std::array<char, 8> tag{};
    iio_library_get_version(&major, &minor, tag.data());
    return std::to_string(major) + "." + std::to_string(minor);
}

} // namespace Devices
