#include "radio/files/Json.h"

#include "radio/text/Words.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace Radio {

namespace {

using Written = nlohmann::ordered_json;

/** The same value as the library has it. */
struct Writer {
    Written operator()(std::monostate /*null*/) const { return nullptr; }
    template <typename Value>
    Written operator()(const Value& value) const {
        return value;
    }
    Written operator()(const Json::Array& elements) const {
        Written array = Written::array();
        for (const Json& element : elements) {
            array.push_back(element.visit(*this));
        }
        return array;
    }
    Written operator()(const Json::Object& members) const {
        Written object = Written::object();
        for (const auto& [name, value] : members) {
            object[name] = value.visit(*this);
        }
        return object;
    }
};

} // namespace

Json::Json(std::initializer_list<Member> members) : m_value(Object()) {
    auto& object = std::get<Object>(m_value);
    object.reserve(members.size());
    for (const Member& member : members) {
        object.emplace_back(member.name, member.value);
    }
}

void Json::push_back(Json element) {
    std::get<Array>(m_value).push_back(std::move(element));
}

Json& Json::operator[](std::string_view name) {
    auto& object = std::get<Object>(m_value);
    const auto found = std::find_if(object.begin(), object.end(),
                                    [name](const auto& member) { return member.first == name; });
    return found != object.end() ? found->second : object.emplace_back(name, nullptr).second;
}

std::string toText(const Json& json) {
    return harmlessJson(json.visit(Writer()).dump(-1, ' ', false, Written::error_handler_t::replace));
}

bool isUtf8(std::string_view text) {
    try {
        static_cast<void>(Written(text).dump());
        return true;
    } catch (const Written::exception&) {
        return false;
    }
}

} // namespace Radio
