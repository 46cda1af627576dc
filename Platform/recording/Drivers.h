/** Records of drivers, and what gives them, as the library sees them: each leads to the platform's. */
#ifndef PLATFORM_RECORDING_DRIVERS_H
#define PLATFORM_RECORDING_DRIVERS_H

#include "DriverLayer.h"
#include "IInterface_c.h"

#include <cstdint>

namespace Recording::Drivers {

/** The record of the driver layer that the library is given in the place of `real`; `real` itself when it is
 * null or when there is no room. */
DriverLayerInterface* recordOf(DriverLayerInterface* real);
/** The words of the records that the object `owner` looked up are null where the platform's are now: the
 * library looks at them before each call. */
void refresh(std::uint16_t owner);
/** The object `owner` is at its end, or at its beginning, and has no records. */
void forget(std::uint16_t owner);
/** The object that the library finds in the place of `real`, which has a driver layer's record. */
IInterface* objectOf(IInterface* real);

} // namespace Recording::Drivers

#endif
