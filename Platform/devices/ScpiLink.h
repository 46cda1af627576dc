#ifndef PLATFORM_DEVICES_SCPILINK_H
#define PLATFORM_DEVICES_SCPILINK_H

#include "devices/Description.h"
#include "devices/Link.h"

namespace Devices {

/** Connects to an instrument that takes commands as lines over TCP. */
Opened openScpi(const DeviceDescription& device);

} // namespace Devices

#endif
