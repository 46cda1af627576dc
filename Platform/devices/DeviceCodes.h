#ifndef PLATFORM_DEVICES_DEVICECODES_H
#define PLATFORM_DEVICES_DEVICECODES_H

#include "Visibility.h"

#include <cstdint>
#include <string>

/** What real hardware answers: 0, or for an error number of the operating system that number above 0x8100. */
namespace Devices {

constexpr std::int32_t firstDeviceCode = 0x8100;

/** The code for an error number, from 1 to 255; ETIMEDOUT is 0x816e on Linux. */
constexpr std::int32_t codeOf(int error) {
    return firstDeviceCode + error;
}

/** The error number of a code; 0 when it is none of a device. */
constexpr int errorOf(std::int32_t code) {
    return code > firstDeviceCode && code < firstDeviceCode + 0x100 ? code - firstDeviceCode : 0;
}

/** What a code of a device means, for example "connection timed out (ETIMEDOUT)"; empty for any other. */
RADIO_API std::string meaningOf(std::int32_t code);

} // namespace Devices

#endif
