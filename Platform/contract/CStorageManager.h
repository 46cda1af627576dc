/**
 * The storage manager: the platform's database of named variables.
 *
 * Usable from C99 and from C++17 on.
 */
#ifndef PLATFORM_CONTRACT_CSTORAGEMANAGER_H
#define PLATFORM_CONTRACT_CSTORAGEMANAGER_H

#include "ResultCode.h"
#include "Visibility.h"

#ifdef __cplusplus
extern "C" {
#endif

/** One variable, as the storage manager keeps it. */
typedef struct StorageVariable {
    /** The storage manager's own. */
    const void* reserved;
    /** The live content: one int, or the first of several. May be null. */
    void* content;
} StorageVariable;

/** Stores the record of the variable `name` in `*out`; the record belongs to the storage manager. */
RADIO_API EAFResult CStorageManager_GetVariableByName(const char* name, StorageVariable** out);

/**
 * Stores the address of the live content of the variable `name` in `*contentAddress`. The address stays valid
 * as long as the storage manager does, and later changes of the variable are seen through it. `reserved` is
 * 0.
 */
RADIO_API EAFResult CStorageManager_GetVariableContentAddressByName(const char* name, void** contentAddress,
                                                                    int reserved);

#ifdef __cplusplus
}
#endif

#endif
