/** Records of drivers, and what gives them, as the library sees them: each leads to the platform's. */
#ifndef PLATFORM_RECORDING_DRIVERS_H
#define PLATFORM_RECORDING_DRIVERS_H

#include "DriverLayer.h"
#include "IInterface_c.h"

namespace Recording::Drivers {

/** The record of the driver layer that the library is given in the place of `real`; `real` itself when it is
 * null or when there is no room. */
DriverLayerInterface* recordOf(DriverLayerInterface* real);
/** The object that the library finds in the place of `real`, which has a driver layer's record. */
IInterface* objectOf(IInterface* real);

} // namespace Recording::Drivers

#endif
