// The storage manager: doors to the platform's VariableStore.

#include "CStorageManager.h"
#include "standalone/Codes.h"
#include "standalone/Platform.h"

using Standalone::Platform;
namespace Codes = Standalone::Codes;

EAFResult CStorageManager_GetVariableByName(const char* name, StorageVariable** out) {
    Platform* const platform = Platform::current();
    return static_cast<EAFResult>(platform != nullptr ? platform->variables().getByName(name, out)
                                                      : Codes::noPlatform);
}

EAFResult CStorageManager_GetVariableContentAddressByName(const char* name, void** contentAddress,
                                                          int /*reserved*/) {
    Platform* const platform = Platform::current();
    return static_cast<EAFResult>(platform != nullptr
                                      ? platform->variables().getContentAddress(name, contentAddress)
                                      : Codes::noPlatform);
}
