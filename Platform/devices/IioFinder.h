#ifndef PLATFORM_DEVICES_IIOFINDER_H
#define PLATFORM_DEVICES_IIOFINDER_H

#include "devices/Attribute.h"
#include "devices/IioSession.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Devices {

/** An attribute's name in its parts: DEVICE/ATTRIBUTE or DEVICE/CHANNEL/ATTRIBUTE. */
struct IioName {
    std::string device;
    std::optional<std::string> channel{};
    /** Said by "out:" or "in:" before the channel. */
    std::optional<bool> isOutput{};
    std::string attribute{};
};

std::optional<IioName> parseIioName(const std::string& name);

/** Finds attributes among the devices of a connection, as a description names them. */
class IioFinder {
public:
    IioFinder(IioSession& session, std::string& problem) : m_session(session), m_problem(problem) {}

    /** Null, and why in the problem, when there is none, or more than one. */
    std::unique_ptr<Attribute> find(const std::string& name);

private:
    const iio_device* findDevice(const std::string& name);
    std::unique_ptr<Attribute> findInDevice(const iio_device* device, const IioName& name);
    std::unique_ptr<Attribute> findInChannels(const iio_device* device, const IioName& name);
    std::unique_ptr<Attribute> findInThese(const std::vector<const iio_channel*>& channels,
                                           const iio_device* device, const IioName& name);

    IioSession& m_session;
    std::string& m_problem;
};

} // namespace Devices

#endif
