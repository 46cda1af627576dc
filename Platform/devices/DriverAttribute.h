#ifndef PLATFORM_DEVICES_DRIVERATTRIBUTE_H
#define PLATFORM_DEVICES_DRIVERATTRIBUTE_H

#include "devices/Attribute.h"
#include "devices/Description.h"
#include "devices/Hardware.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Devices {

/** An attribute by its name, and what a failure there is called. */
struct NamedAttribute {
    std::string label;
    std::unique_ptr<Attribute> attribute;
    /** It gives nothing back: what was written is remembered instead. */
    bool isWriteOnly = false;
};

/** Looks at an attribute, and reads it where that is wanted and possible; nothing is told to any listener. */
AttributeFinding examineAttribute(const std::string& driver, std::string_view use, NamedAttribute& attribute,
                                  bool reads);

/** The attributes that stand behind a driver. */
class DriverAttribute : public Standalone::DriverBacking {
public:
    using MakeAttribute = std::function<NamedAttribute(const AttributeName&)>;

    DriverAttribute(const DriverHardware& hardware, const MakeAttribute& make, HardwareListener& listener,
                    const bool& isForced);

    const DriverHardware& hardware() const { return m_hardware; }

    std::int32_t write(std::int64_t value) override;
    std::int32_t read(std::int64_t& value) override;
    void examine(bool reads, std::vector<AttributeFinding>& findings);

private:
    bool isInRange(std::int64_t value) const;
    std::int32_t put(NamedAttribute& attribute, const std::string& text);
    std::int32_t fetch(NamedAttribute& attribute, std::int64_t& value);
    std::int32_t fail(const NamedAttribute& attribute, int error);

    DriverHardware m_hardware;
    HardwareListener& m_listener;
    const bool& m_isForced;
    std::optional<NamedAttribute> m_write;
    std::optional<NamedAttribute> m_negative;
    std::optional<NamedAttribute> m_read;
    std::optional<std::int64_t> m_lastWritten;
};

} // namespace Devices

#endif
