/**
 * The C view of the interface broker. Usable from C99 and from C++17 on.
 */
#ifndef PLATFORM_CONTRACT_CINTERFACEBROKER_H
#define PLATFORM_CONTRACT_CINTERFACEBROKER_H

#include "ResultCode.h"
#include "Visibility.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Stores a handle of the broker in `*broker`; to be given back by CInterfaceBroker_DestroyInstance. */
RADIO_API EAFResult CInterfaceBroker_GetInstance(void** broker);

/**
 * Stores the C record of the interface published under `name` in `*iface`. The record belongs to the
 * interface and outlives the handle.
 */
RADIO_API EAFResult CInterfaceBroker_GetInterface(void* broker, const char* name, void** iface);

/** Gives back a handle that CInterfaceBroker_GetInstance gave. */
RADIO_API EAFResult CInterfaceBroker_DestroyInstance(void* broker);

#ifdef __cplusplus
}
#endif

#endif
