#ifndef RADIO_LABORATORY_JSONMEMBERS_H
#define RADIO_LABORATORY_JSONMEMBERS_H

#include "radio/files/InputError.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace Radio::Laboratory {

using ParsedJson = nlohmann::ordered_json;

/** The members of a line of JSON. What one of them has wrong is told with the place, and with what the line
 * should be; both must outlive the object. */
class JsonMembers {
public:
    /** Throws InputError for a line that is no object. */
    JsonMembers(const std::string& line, const Place& place, const char* expected);
    JsonMembers(ParsedJson json, const Place& place, const char* expected)
        : m_json(std::move(json)),
          m_place(place),
          m_expected(expected) {}

    [[noreturn]] void refuse(const std::string& what) const;
    bool has(const char* key) const { return m_json.contains(key); }
    // These throw InputError where the member is missing, or of another kind.
    const ParsedJson& of(const char* key) const;
    std::string text(const char* key) const;
    std::uint64_t number(const char* key, std::uint64_t most) const;
    std::uint32_t number32(const char* key, std::uint32_t most) const;
    /** Nothing: it is null. */
    std::optional<double> real(const char* key) const;
    double requiredReal(const char* key) const;
    JsonMembers below(const char* key) const { return {of(key), m_place, m_expected}; }

private:
    ParsedJson m_json;
    const Place& m_place;
    const char* m_expected;
};

} // namespace Radio::Laboratory

#endif
