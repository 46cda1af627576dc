#ifndef PLATFORM_STANDALONE_VARIABLESTORE_H
#define PLATFORM_STANDALONE_VARIABLESTORE_H

#include "CStorageManager.h"
#include "Visibility.h"
#include "standalone/Calls.h"

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace Standalone {

/** A variable of the database: one int, or an array of ints, at an address that never changes. */
class RADIO_API Variable {
public:
    /** Throws std::invalid_argument when there is no value. */
    Variable(std::string name, std::vector<std::int32_t> values);
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

    const std::string& name() const { return m_name; }
    const std::vector<std::int32_t>& values() const { return m_values; }
    /**
     * Changes the live content. Fewer values than the variable has places leave the remaining ones as they
     * are. False, and nothing changed, when there are none or more than the variable has places.
     */
    bool set(const std::vector<std::int32_t>& values);
    /** Has the variable's record show a null content pointer from now on, or the true one again. */
    void setContentMissing(bool missing);

    StorageVariable* record() { return &m_record; }
    void* content() { return m_record.content; }

private:
    std::string m_name;
    std::vector<std::int32_t> m_values;
    StorageVariable m_record{};
};

/** The storage manager's state: variables by name. Behind it stand the CStorageManager functions. */
class RADIO_API VariableStore {
public:
    explicit VariableStore(Calls& calls) : m_calls(calls) {}

    /**
     * Adds a variable and returns it; a name that is there gives the one that has it, unchanged. Throws
     * std::invalid_argument when there is no value.
     */
    Variable& add(const std::string& name, std::vector<std::int32_t> values);
    /** The variable of that name, or null. Nothing is journaled. */
    Variable* find(std::string_view name);
    /** All variables, by name. */
    const std::map<std::string, std::unique_ptr<Variable>, std::less<>>& variables() const {
        return m_variables;
    }

    /** An unknown name gives Codes::notFound. On failure `*out` is untouched. */
    std::int32_t getByName(const char* name, StorageVariable** out);
    /** Has a successful getByName of `name` store null instead of the variable's record. */
    void giveNullRecord(const std::string& name) { m_nullRecords.insert(name); }
    /** An unknown name gives Codes::notFound. On failure `*address` is untouched. */
    std::int32_t getContentAddress(const char* name, void** address);

private:
    Calls& m_calls;
    std::map<std::string, std::unique_ptr<Variable>, std::less<>> m_variables;
    std::set<std::string, std::less<>> m_nullRecords;
};

} // namespace Standalone

#endif
