#include "devices/DriverAttribute.h"

#include "devices/DeviceCodes.h"

#include <cerrno>
#include <limits>

namespace Devices {

namespace {

std::string_view withoutEnd(std::string_view text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.remove_suffix(1);
    }
    return text;
}

/** A number for one of the two sides of a driver, or for the only one. */
struct SideWrite {
    bool isNegative;
    std::string number;
};

/** In the order of writing: both sides at once would be neither offset. Nothing when the value cannot be
 * said, before any half of it is written. */
std::vector<SideWrite> sideWrites(const DriverHardware& hardware, std::int64_t value) {
    const bool isBelow = hardware.negative.has_value() && value < 0;
    if (isBelow && value == std::numeric_limits<std::int64_t>::min()) {
        return {}; // which has no magnitude
    }
    const std::optional<std::string> number = textFor(isBelow ? -value : value, hardware.conversion);
    if (!number) {
        return {};
    }
    if (!hardware.negative) {
        return {{false, *number}};
    }
    const std::optional<std::string> zero = textFor(0, hardware.conversion);
    if (!zero) {
        return {};
    }
    return {{!isBelow, *zero}, {isBelow, *number}};
}

/** As people see it: of an instrument the command with the number in it. */
std::string wholeText(const AttributeName& name, const std::string& number) {
    constexpr std::string_view placeOfValue = "{}";
    const std::size_t place = name.attribute.find(placeOfValue);
    if (name.device.empty() || place == std::string::npos) {
        return number;
    }
    std::string command = name.attribute;
    return command.replace(place, placeOfValue.size(), number);
}

bool isToBeWritten(std::string_view use) {
    return use == "write" || use == "negative";
}

} // namespace

std::vector<PlannedWrite> plannedWrites(const DriverHardware& hardware, std::int64_t value) {
    if (!hardware.write) {
        return {};
    }
    const AttributeName positive = hardware.write.value_or(AttributeName{});
    const AttributeName negative = hardware.negative.value_or(positive);
    const std::vector<SideWrite> sides = sideWrites(hardware, value);
    if (sides.empty()) {
        return hardware.negative ? std::vector<PlannedWrite>{{positive, {}}, {negative, {}}}
                                 : std::vector<PlannedWrite>{{positive, {}}};
    }
    std::vector<PlannedWrite> writes;
    writes.reserve(sides.size());
    for (const SideWrite& side : sides) {
        const AttributeName& name = side.isNegative ? negative : positive;
        writes.push_back({name, wholeText(name, side.number)});
    }
    return writes;
}

AttributeFinding examineAttribute(const std::string& driver, std::string_view use, NamedAttribute& attribute,
                                  bool reads) {
    AttributeFinding finding{driver, attribute.label, use};
    const AttributeLook look = attribute.attribute->look();
    finding.isReadable = look.isReadable;
    finding.isWritable = look.isWritable;
    finding.problem = look.problem;
    if (!finding.problem.empty()) {
        return finding;
    }
    if (isToBeWritten(use) && look.isWritable == std::optional(false)) {
        finding.problem = "cannot be written";
        return finding;
    }
    if (!isToBeWritten(use) && look.isReadable == std::optional(false)) {
        finding.problem = "cannot be read";
        return finding;
    }
    if (reads && look.isReadable.value_or(true)) {
        std::string text;
        const int error = attribute.attribute->read(text);
        finding.isReadable = error == 0;
        finding.value = withoutEnd(text);
        if (error != 0 && !isToBeWritten(use)) {
            finding.problem = "cannot be read: " + meaningOf(codeOf(error));
        } else if (error == 0 && !isToBeWritten(use) && !valueOf(text, {})) {
            finding.problem = "gives \"" + finding.value + "\", which is no number";
        }
    }
    return finding;
}

DriverAttribute::DriverAttribute(const DriverHardware& hardware, const MakeAttribute& make,
                                 HardwareListener& listener, const bool& isForced)
    : m_hardware(hardware),
      m_listener(listener),
      m_isForced(isForced) {
    const auto made = [&make](const std::optional<AttributeName>& name) {
        return name ? std::optional(make(*name)) : std::nullopt;
    };
    m_write = made(hardware.write);
    m_negative = made(hardware.negative);
    m_read = made(hardware.read);
}

bool DriverAttribute::isInRange(std::int64_t value) const {
    return value >= m_hardware.lowest.value_or(std::numeric_limits<std::int64_t>::min()) &&
           value <= m_hardware.highest.value_or(std::numeric_limits<std::int64_t>::max());
}

std::int32_t DriverAttribute::write(std::int64_t value) {
    if (!m_write) {
        m_listener.failed(m_hardware.driver, m_read ? m_read->label : "", codeOf(EPERM));
        return codeOf(EPERM);
    }
    const std::vector<SideWrite> writes = sideWrites(m_hardware, value);
    if ((!m_isForced && !isInRange(value)) || writes.empty()) {
        return fail(*m_write, ERANGE);
    }
    for (const SideWrite& side : writes) {
        if (const std::int32_t code =
                put(side.isNegative && m_negative ? *m_negative : *m_write, side.number);
            code != 0) {
            return code;
        }
    }
    m_lastWritten = value;
    return 0;
}

std::int32_t DriverAttribute::read(std::int64_t& value) {
    if (m_read) {
        return fetch(*m_read, value);
    }
    if (!m_write) {
        m_listener.failed(m_hardware.driver, "", codeOf(EPERM));
        return codeOf(EPERM);
    }
    if (m_write->isWriteOnly) {
        if (!m_lastWritten) {
            return fail(*m_write, ENODATA);
        }
        value = *m_lastWritten;
        return 0;
    }
    std::int64_t above = 0;
    std::int64_t below = 0;
    std::int32_t code = fetch(*m_write, above);
    if (code == 0 && m_negative) {
        code = fetch(*m_negative, below);
    }
    if (code == 0) {
        value = above - below;
    }
    return code;
}

std::int32_t DriverAttribute::put(NamedAttribute& attribute, const std::string& text) {
    const int error = attribute.attribute->write(text);
    return error == 0 ? 0 : fail(attribute, error);
}

std::int32_t DriverAttribute::fetch(NamedAttribute& attribute, std::int64_t& value) {
    std::string text;
    if (const int error = attribute.attribute->read(text); error != 0) {
        return fail(attribute, error);
    }
    const std::optional<std::int64_t> got = valueOf(text, m_hardware.conversion);
    if (!got) {
        return fail(attribute, EPROTO);
    }
    value = *got;
    return 0;
}

std::int32_t DriverAttribute::fail(const NamedAttribute& attribute, int error) {
    const std::int32_t code = codeOf(error > 0 && error < 0x100 ? error : EIO);
    m_listener.failed(m_hardware.driver, attribute.label, code);
    return code;
}

void DriverAttribute::examine(bool reads, std::vector<AttributeFinding>& findings) {
    for (const auto& [use, attribute] :
         {std::pair<std::string_view, std::optional<NamedAttribute>*>{"write", &m_write},
          {"negative", &m_negative},
          {"read", &m_read}}) {
        if (attribute->has_value()) {
            findings.push_back(examineAttribute(m_hardware.driver, use, **attribute, reads));
        }
    }
}

} // namespace Devices
