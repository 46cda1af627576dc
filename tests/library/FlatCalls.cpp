#include "FlatCalls.h"

#include "CInterfaceBroker.h"

#include <dlfcn.h>

namespace {

struct Kept {
    std::vector<FlatCalls::Module> modules;
    std::vector<FlatCalls::Callback> callbacks;
    bool nullHandles = false;
};

Kept& kept() {
    static Kept only;
    return only;
}

/** The function of the platform for which a function of this file, of the same type and name, stands in. */
template <typename Function>
Function* ofThePlatform(Function* /*standIn*/, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name)); // dlsym knows no types
}

} // namespace

namespace FlatCalls {

void reset() {
    kept() = {};
}
void giveNullHandles() {
    kept().nullHandles = true;
}
const std::vector<Module>& modules() {
    return kept().modules;
}
const std::vector<Callback>& callbacks() {
    return kept().callbacks;
}

} // namespace FlatCalls

EAFResult CModuleManager_RegisterModule(unsigned moduleId, const char* moduleName) {
    kept().modules.push_back({moduleId, moduleName});
    return ofThePlatform(&CModuleManager_RegisterModule, "CModuleManager_RegisterModule")(moduleId,
                                                                                          moduleName);
}

EAFResult CModuleManager_RegisterCallback(unsigned moduleId, const char* callbackName, unsigned order,
                                          ModuleCallbackRecord* callback, ECallbackPriority priority,
                                          unsigned reserved, const unsigned long* phases,
                                          unsigned long phaseCount) {
    kept().callbacks.push_back(
        {moduleId, callbackName, order, callback, priority, reserved, {phases, phases + phaseCount}});
    return ofThePlatform(&CModuleManager_RegisterCallback, "CModuleManager_RegisterCallback")(
        moduleId, callbackName, order, callback, priority, reserved, phases, phaseCount);
}

EAFResult CInterfaceBroker_GetInstance(void** broker) {
    const EAFResult code =
        ofThePlatform(&CInterfaceBroker_GetInstance, "CInterfaceBroker_GetInstance")(broker);
    if (kept().nullHandles) {
        *broker = nullptr;
    }
    return code;
}
