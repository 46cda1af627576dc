/**
 * The driver layer: hardware drivers by name.
 *
 * The interface "IDriverLayer" of the broker derives from IInterface_c; its C record is a
 * DriverLayerInterface. All records belong to the driver layer and stay where they are as long as it does;
 * their users keep pointers and free nothing. When the driver layer comes to its end, so do its records: a
 * pointer that was kept beyond that, to a record or to what stands in its context, must not be used.
 *
 * Usable from C99 and from C++17 on.
 */
#ifndef PLATFORM_CONTRACT_DRIVERLAYER_H
#define PLATFORM_CONTRACT_DRIVERLAYER_H

#include "PlatformResults.h"

/**
 * One hardware driver. A word that is null means that the driver does not offer that operation; each user
 * judges for itself which words it needs.
 */
typedef struct DriverInterface {
    /** Opaque; passed back as the first argument of every call. */
    void* context;
    /** Writes one value, in the driver's own unit, to the register or function that the driver stands for. */
    EDriverResult (*write)(void* context, int value);
    /** Writes `byteCount` bytes in one call. */
    EDriverResult (*writeBuffer)(void* context, const void* data, unsigned byteCount);
    /** Reads one value, in the driver's own unit, into `*value`. */
    EDriverResult (*read)(void* context, int* value);
} DriverInterface;

/** The record behind "IDriverLayer". */
typedef struct DriverLayerInterface {
    /** The driver layer's own. */
    void* reserved;
    /**
     * Stores the address of the record of the driver named `driverName` (dotted, lower case, for example
     * "channel.1.tx.rf.frequency") in `*out`. On failure `*out` is the driver layer's to decide.
     */
    EDriverResult (*getDriverInterface)(DriverInterface** out, const char* driverName);
} DriverLayerInterface;

#endif
