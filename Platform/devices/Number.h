#ifndef PLATFORM_DEVICES_NUMBER_H
#define PLATFORM_DEVICES_NUMBER_H

#include <optional>
#include <string_view>

namespace Devices {

/**
 * The number that an attribute gave: decimals and an exponent are welcome, so are a sign, blanks and ends of
 * lines around it, and the "dB" that the kernel puts behind some gains. Nothing for anything else.
 */
std::optional<double> numberIn(std::string_view text);

} // namespace Devices

#endif
