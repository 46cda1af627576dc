/** Remote radio units as the library sees them. */
#ifndef PLATFORM_RECORDING_RAU_H
#define PLATFORM_RECORDING_RAU_H

#include "IInterface.h"

#include <cstdint>

namespace Recording::Rau {

/** The object that the library finds in the place of `real`, under a name with the number `name`; `real`
 * itself when it is no remote radio unit or when there is no room. */
IInterface* objectOf(IInterface* real, std::uint16_t name);

/** The object `owner` of the library is at its end. */
void forget(std::uint16_t owner);

} // namespace Recording::Rau

#endif
