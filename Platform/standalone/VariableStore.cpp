#include "standalone/VariableStore.h"

#include "standalone/Codes.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace Standalone {

Variable::Variable(std::string name, std::vector<std::int32_t> values)
    : m_name(std::move(name)),
      m_values(std::move(values)) {
    if (m_values.empty()) {
        throw std::invalid_argument("variable \"" + m_name + "\" has no value");
    }
    setContentMissing(false);
}

bool Variable::set(const std::vector<std::int32_t>& values) {
    if (values.empty() || values.size() > m_values.size()) {
        return false;
    }
    std::copy(values.begin(), values.end(), m_values.begin());
    return true;
}

void Variable::setContentMissing(bool missing) {
    m_record.content = missing ? nullptr : m_values.data();
}

Variable& VariableStore::add(const std::string& name, std::vector<std::int32_t> values) {
    if (Variable* const there = find(name)) {
        return *there;
    }
    return *m_variables.emplace(name, std::make_unique<Variable>(name, std::move(values))).first->second;
}

Variable* VariableStore::find(std::string_view name) {
    const auto found = m_variables.find(name);
    return found != m_variables.end() ? found->second.get() : nullptr;
}

std::int32_t VariableStore::getByName(const char* name, StorageVariable** out) {
    const std::string_view wanted = name != nullptr ? name : "";
    const auto carryOut = [&](std::int64_t& given) -> std::int32_t {
        if (name == nullptr || out == nullptr) {
            return Codes::badArgument;
        }
        Variable* const variable = find(wanted);
        if (variable == nullptr) {
            return Codes::notFound;
        }
        *out = m_nullRecords.count(wanted) != 0 ? nullptr : variable->record();
        given = variable->values().front();
        return ResultOk;
    };
    return m_calls.answer(wanted, {Operation::variableGet}, carryOut, out);
}

std::int32_t VariableStore::getContentAddress(const char* name, void** address) {
    const std::string_view wanted = name != nullptr ? name : "";
    const auto carryOut = [&](std::int64_t& given) -> std::int32_t {
        if (name == nullptr || address == nullptr) {
            return Codes::badArgument;
        }
        Variable* const variable = find(wanted);
        if (variable == nullptr) {
            return Codes::notFound;
        }
        *address = variable->content();
        given = variable->values().front();
        return ResultOk;
    };
    return m_calls.answer(wanted, {Operation::variableAddress}, carryOut, address);
}

} // namespace Standalone
