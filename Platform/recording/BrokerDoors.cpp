// What goes out to the platform: interface broker and temperature service. Each operation leads to the next
// definition behind the recorder's, and calls of others than the library pass as they are.

#include "CInterfaceBroker.h"
#include "Clients.h"
#include "Drivers.h"
#include "ITemperatureHandler.h"
#include "InterfaceBroker.h"
#include "Next.h"
#include "Objects.h"
#include "PlatformCalls.h"
#include "Rau.h"

#include <cstring>

using namespace Recording;

namespace {

RECORDING_NEXT Next<InterfaceBroker&()> s_getBroker("_ZN15InterfaceBroker11getInstanceEv");
RECORDING_NEXT Next<EAFResult(InterfaceBroker*, const std::string&, IInterface*)>
    s_registerInterface("_ZN15InterfaceBroker17registerInterfaceERKNSt7__cxx1112basic_stringIcSt11char_"
                        "traitsIcESaIcEEEP10IInterface");
RECORDING_NEXT Next<EAFResult(InterfaceBroker*, const std::string&, IInterface**)>
    s_unregisterInterface("_ZN15InterfaceBroker19unregisterInterfaceERKNSt7__cxx1112basic_stringIcSt11char_"
                          "traitsIcESaIcEEEPP10IInterface");
RECORDING_NEXT Next<IInterface*(InterfaceBroker*, const std::string&)> s_findInterface(
    "_ZN15InterfaceBroker13findInterfaceERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE");
RECORDING_NEXT Next<EAFResult(void**)> s_open("CInterfaceBroker_GetInstance");
RECORDING_NEXT Next<EAFResult(void*, const char*, void**)> s_get("CInterfaceBroker_GetInterface");
RECORDING_NEXT Next<EAFResult(void*)> s_close("CInterfaceBroker_DestroyInstance");

constexpr const char* driverLayer = "IDriverLayer";
constexpr const char* temperatureService = "ITemperatureHandler";
constexpr const char* remoteUnit = "IRauHandler";

/** What the library is to find in the place of `found`. */
IInterface* shownAs(IInterface* found, const std::string& name, std::uint16_t number) {
    if (found == nullptr) {
        return nullptr;
    }
    if (name == driverLayer) {
        return Drivers::objectOf(found);
    }
    return name.compare(0, std::strlen(remoteUnit), remoteUnit) == 0 ? Rau::objectOf(found, number) : found;
}

void* recordShownAs(void* found, const char* name) {
    if (found == nullptr || name == nullptr) {
        return found;
    }
    if (std::strcmp(name, driverLayer) == 0) {
        return Drivers::recordOf(static_cast<DriverLayerInterface*>(found));
    }
    return std::strcmp(name, temperatureService) == 0
               ? Clients::recordOf(static_cast<TemperatureHandlerCStruct*>(found))
               : found;
}

} // namespace

InterfaceBroker& InterfaceBroker::getInstance() {
    if (!isFromLibrary(__builtin_return_address(0))) {
        return s_getBroker();
    }
    InterfaceBroker* broker = nullptr;
    recorded({Kind::brokerInstance}, [&] {
        broker = &s_getBroker();
        return 0;
    });
    return *broker;
}

EAFResult InterfaceBroker::registerInterface(const std::string& name, IInterface* iface) {
    const auto call = [&] { return s_registerInterface(this, name, iface); };
    if (!isFromLibrary(__builtin_return_address(0))) {
        return call();
    }
    const EAFResult code =
        recorded({Kind::brokerRegister, nameOf(ObjectKind::interface, name.c_str())}, call);
    if (isSuccess(code)) {
        Objects::publish(iface, name.c_str());
    }
    return code;
}

EAFResult InterfaceBroker::unregisterInterface(const std::string& name, IInterface** removed) {
    const auto call = [&] { return s_unregisterInterface(this, name, removed); };
    if (!isFromLibrary(__builtin_return_address(0))) {
        return call();
    }
    Objects::withdraw(name.c_str());
    return recorded({Kind::brokerUnregister, nameOf(ObjectKind::interface, name.c_str())}, call);
}

IInterface* InterfaceBroker::findInterface(const std::string& name) {
    if (!isFromLibrary(__builtin_return_address(0))) {
        return s_findInterface(this, name);
    }
    Entry entry{Kind::brokerLookup, nameOf(ObjectKind::interface, name.c_str())};
    IInterface* const found = outgoing(entry, [&] { return s_findInterface(this, name); });
    entry.a = found != nullptr ? 1 : 0;
    Recorder::write(entry);
    return shownAs(found, name, entry.object);
}

EAFResult CInterfaceBroker_GetInstance(void** broker) {
    if (!isFromLibrary(__builtin_return_address(0)) || broker == nullptr) {
        return s_open(broker);
    }
    Entry entry{Kind::brokerOpen};
    const EAFResult code = outgoing(entry, [&] { return s_open(broker); });
    entry.code = code;
    if (isSuccess(code)) {
        t_thread.broker = *broker;
        entry.a = *broker != nullptr ? 1 : 0;
    }
    Recorder::write(entry);
    return code;
}

EAFResult CInterfaceBroker_GetInterface(void* broker, const char* name, void** iface) {
    if (!isFromLibrary(__builtin_return_address(0)) || iface == nullptr) {
        return s_get(broker, name, iface);
    }
    Entry entry{Kind::brokerGet, nameOf(ObjectKind::interface, name)};
    entry.b = broker == t_thread.broker ? 1 : 0;
    const EAFResult code = outgoing(entry, [&] { return s_get(broker, name, iface); });
    entry.code = code;
    entry.a = isSuccess(code) && *iface != nullptr ? 1 : 0;
    Recorder::write(entry);
    if (entry.a != 0) {
        *iface = recordShownAs(*iface, name);
    }
    return code;
}

EAFResult CInterfaceBroker_DestroyInstance(void* broker) {
    const auto call = [&] { return s_close(broker); };
    return isFromLibrary(__builtin_return_address(0))
               ? recorded({Kind::brokerClose, 0, 0, broker == t_thread.broker ? 1 : 0}, call)
               : call();
}

// Temperature service

namespace {

RECORDING_NEXT Next<ETHResult(ITemperatureObserver*)>
    s_registerTemperature("_ZN19ITemperatureHandler16registerObserverEP20ITemperatureObserver");

} // namespace

ETHResult ITemperatureHandler::registerObserver(ITemperatureObserver* observer) {
    if (!isFromLibrary(__builtin_return_address(0))) {
        return s_registerTemperature(observer);
    }
    return Clients::registerObserver(
        observer, 0, [](ITemperatureObserver* given) { return s_registerTemperature(given); });
}
