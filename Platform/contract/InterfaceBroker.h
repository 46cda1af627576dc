#ifndef PLATFORM_CONTRACT_INTERFACEBROKER_H
#define PLATFORM_CONTRACT_INTERFACEBROKER_H

#include "IInterface.h"
#include "ResultCode.h"

#include <string>

/** Publishes interfaces under names and finds them again. It owns none of them. Supplied by the platform. */
class RADIO_CLASS InterfaceBroker {
public:
    InterfaceBroker(const InterfaceBroker&) = delete;
    InterfaceBroker& operator=(const InterfaceBroker&) = delete;

    /** The broker of the process, created on first use. */
    static InterfaceBroker& getInstance();

    /** Publishes `iface` under `name`. */
    EAFResult registerInterface(const std::string& name, IInterface* iface);

    /** Withdraws the entry `name` and, unless `removed` is null, stores what it held in `*removed`. */
    EAFResult unregisterInterface(const std::string& name, IInterface** removed);

    /** What is published under `name`; null when there is no such entry or when the entry holds nothing. */
    IInterface* findInterface(const std::string& name);

    /** The same, seen as `InterfaceType`; null also when the object published there is of another type. */
    template <typename InterfaceType>
    InterfaceType* getInterface(const std::string& name) {
        return dynamic_cast<InterfaceType*>(findInterface(name));
    }

private:
    InterfaceBroker() = default;
};

#endif
