#ifndef PLATFORM_DEVICES_LINKS_H
#define PLATFORM_DEVICES_LINKS_H

#include "devices/Description.h"
#include "devices/Link.h"
#include "devices/SensorSource.h"

#include <memory>
#include <string>

namespace Devices {

/** Connects to a device, whatever its kind, on whichever thread; takes no longer than its time limit, and as
 * the system needs to look up the name of a host. */
Opened openLink(const DeviceDescription& device);
/** A sensor of the hardware monitors. */
std::unique_ptr<SensorSource> makeHwmonSource(const std::string& chip, const std::string& feature);

/** The kinds that this library was built with, and the ones that it was built without. */
std::string kindsThereAre();
std::string kindsLeftOut();

} // namespace Devices

#endif
