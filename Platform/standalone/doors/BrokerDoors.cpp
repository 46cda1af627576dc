// The interface broker, in both views: doors to the platform's InterfaceRegistry.

#include "CInterfaceBroker.h"
#include "InterfaceBroker.h"
#include "standalone/Codes.h"
#include "standalone/Platform.h"

using Standalone::Platform;
namespace Codes = Standalone::Codes;

InterfaceBroker& InterfaceBroker::getInstance() {
    static InterfaceBroker broker;
    return broker;
}

EAFResult InterfaceBroker::registerInterface(const std::string& name, IInterface* iface) {
    Platform* const platform = Platform::current();
    return static_cast<EAFResult>(platform != nullptr ? platform->interfaces().add(name, iface)
                                                      : Codes::noPlatform);
}

EAFResult InterfaceBroker::unregisterInterface(const std::string& name, IInterface** removed) {
    Platform* const platform = Platform::current();
    return static_cast<EAFResult>(platform != nullptr ? platform->interfaces().remove(name, removed)
                                                      : Codes::noPlatform);
}

IInterface* InterfaceBroker::findInterface(const std::string& name) {
    Platform* const platform = Platform::current();
    return platform != nullptr ? platform->interfaces().find(name) : nullptr;
}

EAFResult CInterfaceBroker_GetInstance(void** broker) {
    Platform* const platform = Platform::current();
    if (platform == nullptr && broker != nullptr) {
        *broker = nullptr;
    }
    return static_cast<EAFResult>(platform != nullptr ? platform->interfaces().open(broker)
                                                      : Codes::noPlatform);
}

EAFResult CInterfaceBroker_GetInterface(void* broker, const char* name, void** iface) {
    Platform* const platform = Platform::current();
    if (platform == nullptr && iface != nullptr) {
        *iface = nullptr;
    }
    return static_cast<EAFResult>(platform != nullptr ? platform->interfaces().get(broker, name, iface)
                                                      : Codes::noPlatform);
}

EAFResult CInterfaceBroker_DestroyInstance(void* broker) {
    Platform* const platform = Platform::current();
    return static_cast<EAFResult>(platform != nullptr ? platform->interfaces().close(broker)
                                                      : Codes::noPlatform);
}
