#include "radio/laboratory/JsonMembers.h"

namespace Radio::Laboratory {

JsonMembers::JsonMembers(const std::string& line, const Place& place, const char* expected)
    : m_json(ParsedJson::parse(line, nullptr, false)),
      m_place(place),
      m_expected(expected) {
    if (!m_json.is_object()) {
        refuse("no JSON object");
    }
}

void JsonMembers::refuse(const std::string& what) const {
    throw InputError(m_place, what + ", expected " + m_expected);
}

const ParsedJson& JsonMembers::of(const char* key) const {
    const auto found = m_json.find(key);
    if (found == m_json.end()) {
        refuse(std::string(key) + " is missing");
    }
    return *found;
}

std::string JsonMembers::text(const char* key) const {
    const ParsedJson& value = of(key);
    if (!value.is_string()) {
        refuse(std::string(key) + " is no text");
    }
    return value.get<std::string>();
}

std::uint64_t JsonMembers::number(const char* key, std::uint64_t most) const {
    const ParsedJson& value = of(key);
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > most) {
        refuse(std::string(key) + " is no whole number from 0 to " + std::to_string(most));
    }
    return value.get<std::uint64_t>();
}

std::uint32_t JsonMembers::number32(const char* key, std::uint32_t most) const {
    return static_cast<std::uint32_t>(number(key, most));
}

std::optional<double> JsonMembers::real(const char* key) const {
    const ParsedJson& value = of(key);
    if (!value.is_null() && !value.is_number()) {
        refuse(std::string(key) + " is no number");
    }
    return value.is_null() ? std::nullopt : std::optional(value.get<double>());
}

double JsonMembers::requiredReal(const char* key) const {
    const std::optional<double> found = real(key);
    if (!found) {
        refuse(std::string(key) + " is no number");
    }
    return *found;
}

} // namespace Radio::Laboratory
