#ifndef PLATFORM_DEVICES_LINK_H
#define PLATFORM_DEVICES_LINK_H

#include "devices/Attribute.h"

#include <memory>
#include <string>

namespace Devices {

/**
 * One connection to one device, from when it is made until it breaks.
 *
 * Made on the thread that connects, used on the one that drives, and given back to the first to be destroyed
 * when it is broken; what is left at the end is destroyed on the driving one. Never used on two at a time, so
 * that nothing in it locks, and nothing in it may depend on the thread that made it. A sensor's has one
 * thread.
 */
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
    /** What there is was listed when the link was made: what is missing is found by a new one only. */
    virtual bool isListedOnce() const { return false; }
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
