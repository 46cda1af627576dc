#ifndef PLATFORM_DEVICES_FILEATTRIBUTE_H
#define PLATFORM_DEVICES_FILEATTRIBUTE_H

#include "devices/Attribute.h"

#include <chrono>

namespace Devices {

/** How long a pipe or a terminal may keep a caller waiting. */
constexpr std::chrono::milliseconds fileTimeLimit{1000};

/** What may be done with a file, as far as is known without opening it. */
AttributeLook lookAtFile(const std::string& path);

/**
 * A file that takes and gives a number: an attribute in sysfs, a regular file, a pipe, a terminal. It is
 * opened for each number, and never made.
 */
class FileAttribute : public Attribute {
public:
    explicit FileAttribute(std::string path) : m_path(std::move(path)) {}

    int write(const std::string& number) override;
    int read(std::string& text) override;
    AttributeLook look() override { return lookAtFile(m_path); }

private:
    std::string m_path;
};

} // namespace Devices

#endif
