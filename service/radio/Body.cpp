#include "service/radio/Body.h"

#include "radio/text/Words.h"

#include <nlohmann/json.hpp>

#include <limits>
#include <set>
#include <stdexcept>

namespace Radio::Service {

namespace {

using Value = nlohmann::json;

[[noreturn]] void fail(const std::string& name, const std::string& expected) {
    throw std::invalid_argument(inQuotes(name) + ": expected " + expected);
}

std::string rangeText(std::int64_t low, std::int64_t high) {
    return "a whole number from " + std::to_string(low) + " to " + std::to_string(high);
}

std::int64_t integerOf(const Value& value, const std::string& name, std::int64_t low, std::int64_t high) {
    const bool isTooLarge =
        value.is_number_unsigned() &&
        value.get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (!value.is_number_integer() || isTooLarge || value.get<std::int64_t>() < low ||
        value.get<std::int64_t>() > high) {
        fail(name, rangeText(low, high));
    }
    return value.get<std::int64_t>();
}

std::string countText(std::size_t least, std::size_t most) {
    return "a list of " + (least == most ? "" : std::to_string(least) + " to ") + std::to_string(most) +
           " whole numbers";
}

} // namespace

struct Body::Content {
    Value object;
    std::set<std::string, std::less<>> asked;

    /** Null when there is no such member, or it is null. */
    const Value* find(const char* name) {
        asked.insert(name);
        const auto member = object.find(name);
        return member == object.end() || member->is_null() ? nullptr : &*member;
    }
};

Body::Body(std::string_view text) : m_content(std::make_unique<Content>()) {
    m_content->object = Value::parse(text.begin(), text.end(), nullptr, false);
    if (!m_content->object.is_object()) {
        throw std::invalid_argument("expected a JSON object");
    }
}

Body::~Body() = default;

std::optional<std::int64_t> Body::optionalInteger(const char* name, std::int64_t low, std::int64_t high) {
    const Value* const value = m_content->find(name);
    return value == nullptr ? std::nullopt : std::optional(integerOf(*value, name, low, high));
}

std::int64_t Body::integer(const char* name, std::int64_t low, std::int64_t high) {
    const auto value = optionalInteger(name, low, high);
    if (!value) {
        fail(name, rangeText(low, high));
    }
    return *value;
}

std::string Body::optionalText(const char* name) {
    const Value* const value = m_content->find(name);
    if (value == nullptr) {
        return {};
    }
    if (!value->is_string()) {
        fail(name, "a text");
    }
    return value->get<std::string>();
}

std::string Body::text(const char* name) {
    std::string value = optionalText(name);
    if (value.empty()) {
        fail(name, "a text");
    }
    return value;
}

bool Body::flag(const char* name, bool otherwise) {
    const Value* const value = m_content->find(name);
    if (value != nullptr && !value->is_boolean()) {
        fail(name, "true or false");
    }
    return value != nullptr ? value->get<bool>() : otherwise;
}

std::optional<double> Body::optionalNumber(const char* name) {
    const Value* const value = m_content->find(name);
    if (value != nullptr && !value->is_number()) {
        fail(name, "a number");
    }
    return value == nullptr ? std::nullopt : std::optional(value->get<double>());
}

std::vector<std::int32_t> Body::integers(const char* name, std::size_t most) {
    std::vector<std::int32_t> numbers = optionalIntegers(
        name, 1, most, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max());
    if (numbers.empty()) {
        fail(name, countText(1, most));
    }
    return numbers;
}

std::vector<std::int32_t> Body::optionalIntegers(const char* name, std::size_t least, std::size_t most,
                                                 std::int32_t low, std::int32_t high) {
    const Value* const value = m_content->find(name);
    std::vector<std::int32_t> numbers;
    if (value == nullptr) {
        return numbers;
    }
    if (!value->is_array() || value->size() < least || value->size() > most) {
        fail(name, countText(least, most));
    }
    for (const Value& element : *value) {
        numbers.push_back(static_cast<std::int32_t>(integerOf(element, name, low, high)));
    }
    return numbers;
}

std::vector<std::pair<std::string, std::int64_t>> Body::numbersByName(const char* name, std::int64_t low,
                                                                      std::int64_t high) {
    const Value* const value = m_content->find(name);
    std::vector<std::pair<std::string, std::int64_t>> numbers;
    if (value == nullptr) {
        return numbers;
    }
    if (!value->is_object()) {
        fail(name, "an object");
    }
    for (const auto& [key, element] : value->items()) {
        numbers.emplace_back(key, integerOf(element, key, low, high));
    }
    return numbers;
}

void Body::end() const {
    for (const auto& [name, value] : m_content->object.items()) {
        if (m_content->asked.count(name) == 0) {
            throw std::invalid_argument("unknown member " + inQuotes(name) + ", expected only " +
                                        joined(m_content->asked, ", "));
        }
    }
}

} // namespace Radio::Service
