/**
 * The C view of the temperature service, registered in the broker as "ITemperatureHandler".
 *
 * Usable from C99 and from C++17 on.
 */
#ifndef PLATFORM_CONTRACT_ITEMPERATUREHANDLER_C_H
#define PLATFORM_CONTRACT_ITEMPERATUREHANDLER_C_H

#include "PlatformResults.h"

/** What an observer of the temperature gives to the service. Owned by the observer; outlives its
 * registration. */
typedef struct ITemperatureObserver {
    /** Handed back unchanged as the first argument of every call. */
    void* context;
    /** Called with the new temperature, in degrees Celsius, whenever it changes. */
    void (*notifyTemperature)(void* context, int temperature);
} ITemperatureObserver;

/** The record that the C view of the broker gives for "ITemperatureHandler". */
typedef struct TemperatureHandlerCStruct {
    /** Subscribes `observer`, whose address the service keeps. There is no way to unsubscribe. */
    ETHResult (*registerObserver)(ITemperatureObserver* observer);
} TemperatureHandlerCStruct;

#endif
