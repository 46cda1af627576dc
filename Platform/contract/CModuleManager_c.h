/**
 * The C view of the module manager. Usable from C99 and from C++17 on.
 */
#ifndef PLATFORM_CONTRACT_CMODULEMANAGER_C_H
#define PLATFORM_CONTRACT_CMODULEMANAGER_C_H

#include "ResultCode.h"
#include "Visibility.h"

#ifdef __cplusplus
/** How urgent a phase callback is; the module manager's own scale. */
enum ECallbackPriority : int32_t {};
extern "C" {
#else
typedef int32_t ECallbackPriority;
#endif

/** A phase callback: what is called, and with which first argument. Owned by the module that registers it. */
typedef struct ModuleCallbackRecord {
    void* context;
    EAFResult (*onPhaseActivation)(void* context, unsigned long phase, ECallbackPriority priority);
} ModuleCallbackRecord;

/** Makes the module `moduleId` known under `moduleName`. An identifier can be registered once. */
RADIO_API EAFResult CModuleManager_RegisterModule(unsigned moduleId, const char* moduleName);

/**
 * Has `callback` called in each of the `phaseCount` phases of `phases`, for the registered module `moduleId`.
 * The record and the phase list are kept by address. `order` places the callback among those of its module
 * (lower first), `priority` is handed to it, `reserved` is 0.
 */
RADIO_API EAFResult CModuleManager_RegisterCallback(unsigned moduleId, const char* callbackName,
                                                    unsigned order, ModuleCallbackRecord* callback,
                                                    ECallbackPriority priority, unsigned reserved,
                                                    const unsigned long* phases, unsigned long phaseCount);

#ifdef __cplusplus
}
#endif

#endif
