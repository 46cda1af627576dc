#ifndef RADIO_FILES_JSON_H
#define RADIO_FILES_JSON_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace Radio {

/**
 * A JSON value to be written. It is made here and written by a JSON library that only the source behind this
 * header knows: the library's headers take a compiler longer than all the reports together.
 */
class Json {
public:
    /** What an object is made of: {{"event", "tuned"}, {"khz", 7442000}}. */
    struct Member;

    Json(std::nullptr_t /*null*/) {}
    Json(bool value) : m_value(value) {}
    Json(double value) : m_value(value) {}
    /** `text` is not null. */
    Json(const char* text) : Json(std::string(text)) {}
    Json(std::string_view text) : Json(std::string(text)) {}
    Json(std::string text) : m_value(std::move(text)) {}
    template <typename Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
    Json(Integer number)
        : m_value(static_cast<std::conditional_t<std::is_signed_v<Integer>, std::int64_t, std::uint64_t>>(
              number)) {}
    template <typename Element>
    Json(const std::vector<Element>& elements) : m_value(Array(elements.begin(), elements.end())) {}
    /** An object; its members stay in the order in which they are given. Of a member given twice the last
     * value is written. */
    Json(std::initializer_list<Member> members);

    // Braces would be a list of elements. NOLINTBEGIN(modernize-return-braced-init-list)
    static Json array(std::initializer_list<Json> elements = {}) { return Json(std::vector<Json>(elements)); }
    static Json object() { return Json(std::initializer_list<Member>()); }
    // NOLINTEND(modernize-return-braced-init-list)

    /** Adds to an array. For arrays only: throws std::bad_variant_access otherwise. */
    void push_back(Json element);
    /** The value of an object's member, null if it is new. Valid until the next is added. For objects only:
     * throws std::bad_variant_access otherwise. */
    Json& operator[](std::string_view name);

    /** What an array holds; null for anything else. */
    const std::vector<Json>* elements() const { return std::get_if<Array>(&m_value); }
    /** What an object holds, in its order. For objects only: throws std::bad_variant_access otherwise. */
    const std::vector<std::pair<std::string, Json>>& members() const { return std::get<Object>(m_value); }

    /** Of numbers, also whether they have a sign. */
    bool operator==(const Json& other) const { return m_value == other.m_value; }
    bool operator!=(const Json& other) const { return !(*this == other); }

    /** Calls `visitor` with the value: null as std::monostate, or one of the kinds below. */
    template <typename Visitor>
    auto visit(Visitor&& visitor) const {
        return std::visit(std::forward<Visitor>(visitor), m_value);
    }

    using Array = std::vector<Json>;
    using Object = std::vector<std::pair<std::string, Json>>;

private:
    std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string, Array, Object>
        m_value;
};

struct Json::Member {
    std::string_view name;
    Json value;
};

/** What is not known is null. */
template <typename Value>
Json orNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json(nullptr);
}

/** The value on one line. Bytes that are no UTF-8 are replaced; NaN and infinity are written as null. */
std::string toText(const Json& json);

/** True for text that a JSON file can hold as it is. */
bool isUtf8(std::string_view text);

} // namespace Radio

#endif
