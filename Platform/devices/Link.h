#ifndef PLATFORM_DEVICES_LINK_H
#define PLATFORM_DEVICES_LINK_H

#include "devices/Attribute.h"

#include <memory>
#include <string>

namespace Devices {

/** One connection to one device, from when it is made until it breaks. */
class Link {
public:
    Link() = default;
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;
    virtual ~Link() = default;

    /** An attribute, which is valid as long as the link is; null, and why in `problem`, when there is none.
     */
    virtual std::unique_ptr<Attribute> find(const std::string& name, std::string& problem) = 0;
    /** Nothing that comes over it is to be believed any more: it is to be dropped, and made anew. */
    virtual bool isBroken() const = 0;
};

/** What became of an attempt to connect. */
struct Opened {
    /** Null: it failed. */
    std::unique_ptr<Link> link{};
    /** An error number of the operating system. */
    int error = 0;
    /** For people. */
    std::string why{};
};

} // namespace Devices

#endif
