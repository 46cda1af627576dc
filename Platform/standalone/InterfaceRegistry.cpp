#include "standalone/InterfaceRegistry.h"

#include "IInterface_c.h"
#include "standalone/Codes.h"

#include <string_view>

namespace Standalone {

std::int32_t InterfaceRegistry::add(const std::string& name, IInterface* iface) {
    return m_calls.answer(name, {Operation::brokerRegister}, [&](std::int64_t& /*given*/) -> std::int32_t {
        return m_entries.emplace(name, iface).second ? ResultOk : Codes::alreadyThere;
    });
}

std::int32_t InterfaceRegistry::remove(const std::string& name, IInterface** removed) {
    return m_calls.answer(name, {Operation::brokerUnregister}, [&](std::int64_t& /*given*/) -> std::int32_t {
        const auto entry = m_entries.find(name);
        if (entry == m_entries.end()) {
            return Codes::notFound;
        }
        if (removed != nullptr) {
            *removed = entry->second;
        }
        m_entries.erase(entry);
        return ResultOk;
    });
}

IInterface* InterfaceRegistry::find(const std::string& name) {
    IInterface* found = nullptr;
    const auto carryOut = [&](std::int64_t& /*given*/) -> std::int32_t {
        const auto entry = m_entries.find(name);
        found = entry != m_entries.end() ? entry->second : nullptr;
        return found != nullptr ? ResultOk : Codes::notFound;
    };
    m_calls.answer(name, {Operation::brokerLookup}, carryOut, &found);
    return found;
}

std::int32_t InterfaceRegistry::open(void** handle) {
    if (handle != nullptr) {
        *handle = nullptr;
    }
    const auto carryOut = [&](std::int64_t& /*given*/) -> std::int32_t {
        if (handle == nullptr) {
            return Codes::badArgument;
        }
        *handle = this;
        ++m_openHandles;
        return ResultOk;
    };
    return m_calls.answer({}, {Operation::brokerOpen}, carryOut, handle);
}

std::int32_t InterfaceRegistry::get(void* handle, const char* name, void** record) {
    if (record != nullptr) {
        *record = nullptr;
    }
    const std::string_view wanted = name != nullptr ? name : "";
    const auto carryOut = [&](std::int64_t& /*given*/) -> std::int32_t {
        if (!isOpen(handle) || name == nullptr || record == nullptr) {
            return Codes::badArgument;
        }
        const auto entry = m_entries.find(wanted);
        auto* const iface = entry != m_entries.end() ? dynamic_cast<IInterface_c*>(entry->second) : nullptr;
        *record = iface != nullptr ? iface->getCStruct() : nullptr;
        return *record != nullptr ? ResultOk : Codes::notFound;
    };
    return m_calls.answer(wanted, {Operation::brokerGet}, carryOut, record);
}

std::int32_t InterfaceRegistry::close(void* handle) {
    return m_calls.answer({}, {Operation::brokerClose}, [&](std::int64_t& /*given*/) -> std::int32_t {
        if (!isOpen(handle)) {
            return Codes::badArgument;
        }
        --m_openHandles;
        return ResultOk;
    });
}

} // namespace Standalone
