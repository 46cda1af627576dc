#ifndef FREQUENCYHANDLER_INTERFACE_IINTERFACE_H
#define FREQUENCYHANDLER_INTERFACE_IINTERFACE_H

#include "Visibility.h"

#include <string>
#include <utility>

/**
 * Root of everything that can be registered in the interface broker.
 *
 * The broker stores `IInterface*` and its users cast down with `dynamic_cast`, which is why the published
 * interfaces derive from it virtually. The name is informative only; the broker's own key is the name given
 * at registration.
 */
class RADIO_CLASS IInterface {
public:
    IInterface() = default;
    explicit IInterface(std::string name) : m_interfaceName(std::move(name)) {}
    IInterface(const IInterface&) = delete;
    IInterface& operator=(const IInterface&) = delete;
    virtual ~IInterface() = default;

protected:
    /** Empty in the library's objects; those that are withdrawn under a name keep room for it here. */
    std::string m_interfaceName;
};

#endif
