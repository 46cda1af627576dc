#ifndef PLATFORM_DEVICES_IIOLINK_H
#define PLATFORM_DEVICES_IIOLINK_H

#include "devices/Description.h"
#include "devices/Link.h"

#include <string>

namespace Devices {

/** Connects to the devices behind a URI, through libiio. */
Opened openIio(const DeviceDescription& device);

/** The version of libiio, "0.24". */
std::string iioVersion();

} // namespace Devices

#endif
