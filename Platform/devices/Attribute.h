#ifndef PLATFORM_DEVICES_ATTRIBUTE_H
#define PLATFORM_DEVICES_ATTRIBUTE_H

#include <optional>
#include <string>

namespace Devices {

/** What is known of an attribute without writing or reading it. */
struct AttributeLook {
    std::optional<bool> isReadable{};
    std::optional<bool> isWritable{};
    /** Why there is no such attribute; empty: there is. */
    std::string problem{};
};

/**
 * Something that takes and gives a number as text. One of a link belongs to the thread that uses the link,
 * and may be destroyed after it: a destructor must not touch the link.
 */
class Attribute {
public:
    Attribute() = default;
    Attribute(const Attribute&) = delete;
    Attribute& operator=(const Attribute&) = delete;
    virtual ~Attribute() = default;

    /** Writes a number, given without the end of a line; 0, or an error number of the operating system. */
    virtual int write(const std::string& number) = 0;
    /** Reads into `text`, which is untouched on failure; 0, or an error number. */
    virtual int read(std::string& text) = 0;
    virtual AttributeLook look() = 0;
};

} // namespace Devices

#endif
