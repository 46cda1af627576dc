#ifndef PLATFORM_STANDALONE_INTERFACEREGISTRY_H
#define PLATFORM_STANDALONE_INTERFACEREGISTRY_H

#include "IInterface.h"
#include "Visibility.h"
#include "standalone/Calls.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace Standalone {

/**
 * The broker's state: name to interface. Behind it stand InterfaceBroker and the CInterfaceBroker functions.
 *
 * A name that is taken is refused with Codes::alreadyThere and the first entry stays.
 */
class RADIO_API InterfaceRegistry {
public:
    explicit InterfaceRegistry(Calls& calls) : m_calls(calls) {}

    /** Publishes `iface`; null makes an entry that holds nothing. */
    std::int32_t add(const std::string& name, IInterface* iface);
    /** An unknown name gives Codes::notFound and leaves `*removed` untouched. */
    std::int32_t remove(const std::string& name, IInterface** removed);
    /** Null when there is no such entry, when it holds nothing, or when a fault says so. */
    IInterface* find(const std::string& name);

    /** Puts `iface` (null allowed) under `name`, whatever was there; nothing is journaled. */
    void put(const std::string& name, IInterface* iface) { m_entries[name] = iface; }
    /** Takes the entry away without a journal line; true if there was one. */
    bool drop(const std::string& name) { return m_entries.erase(name) != 0; }
    /** All entries, by name. */
    const std::map<std::string, IInterface*, std::less<>>& entries() const { return m_entries; }

    /** Opens a handle for the C view. On failure `*handle` is null. */
    std::int32_t open(void** handle);
    /**
     * Stores the C record of the interface under `name`. An entry that is not there, holds nothing, has no C
     * record or a null one gives Codes::notFound, a handle that is not open Codes::badArgument. On failure
     * `*record` is null.
     */
    std::int32_t get(void* handle, const char* name, void** record);
    /** Gives an open handle back. */
    std::int32_t close(void* handle);
    /** How many handles of the C view were opened and not closed. */
    std::size_t openHandles() const { return m_openHandles; }

private:
    bool isOpen(const void* handle) const { return handle == this && m_openHandles != 0; }

    Calls& m_calls;
    std::map<std::string, IInterface*, std::less<>> m_entries;
    std::size_t m_openHandles = 0;
};

} // namespace Standalone

#endif
