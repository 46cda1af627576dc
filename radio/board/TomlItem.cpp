#include "radio/board/TomlItem.h"

#include "radio/text/NearestName.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <set>
#include <sstream>

namespace Radio {

namespace {

bool isControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

/** `key` as it stands in a TOML file. */
std::string keyText(std::string_view key) {
    const std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    const bool isBare = !key.empty() && key.find_first_not_of(letters) == std::string_view::npos;
    return isBare ? std::string(key) : '"' + escaped(key) + '"';
}

/** At most 7 digits, which is enough to recognise it. */
std::string numberText(double number) {
    std::ostringstream text;
    text << std::setprecision(7) << number;
    return text.str();
}

} // namespace

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (isControl(c)) {
            const std::string_view digits = "0123456789ABCDEF";
            const auto code = static_cast<unsigned>(static_cast<unsigned char>(c));
            result += "\\u00";
            result += digits[code / 16];
            result += digits[code % 16];
        } else {
            result += c;
        }
    }
    return result;
}

std::string notAmong(const std::vector<std::string_view>& known, std::string_view word) {
    return didYouMean(word, {known.begin(), known.end()}) + ", expected one of " + joined(known, ", ");
}

std::int32_t TomlItem::integer(std::int32_t least) const {
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    const std::optional<std::int64_t> value = m_node->value_exact<std::int64_t>();
    if (!value || *value < least || *value > most) {
        failExpecting("an integer from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return static_cast<std::int32_t>(*value);
}

double TomlItem::number(double most) const {
    const std::optional<double> value = m_node->is_number() ? m_node->value<double>() : std::nullopt;
    if (!value || !(std::abs(*value) <= most)) { // not a number is not within any limits
        failExpecting("a number from -" + numberText(most) + " to " + numberText(most));
    }
    return *value;
}

bool TomlItem::boolean() const {
    const std::optional<bool> value = m_node->value_exact<bool>();
    if (!value) {
        failExpecting("true or false");
    }
    return *value;
}

std::string TomlItem::text() const {
    const std::optional<std::string> value = m_node->value_exact<std::string>();
    const auto isUnwanted = [](char c) { return isControl(c) && c != '\n' && c != '\t'; };
    if (!value || std::any_of(value->begin(), value->end(), isUnwanted)) {
        failExpecting("a string of printable text");
    }
    return *value;
}

std::string TomlItem::nonEmptyText(const std::string& what) const {
    std::string value = text();
    if (value.empty()) {
        failExpecting(what);
    }
    return value;
}

const toml::array& TomlItem::array() const {
    const toml::array* const array = m_node->as_array();
    if (array == nullptr || array->empty()) {
        failExpecting("an array of at least one element");
    }
    return *array;
}

TomlItem TomlItem::element(const toml::node& node) const {
    return {node, m_path, Place{m_place.file, node.source().begin.line}};
}

std::vector<TomlItem> TomlItem::elements() const {
    std::vector<TomlItem> result;
    for (const toml::node& node : array()) {
        result.push_back(element(node));
    }
    return result;
}

std::vector<std::int32_t> TomlItem::integers() const {
    std::vector<std::int32_t> values;
    // One item at a time: those of a large array take far more than its numbers.
    for (const toml::node& node : array()) {
        values.push_back(element(node).integer());
    }
    return values;
}

std::vector<std::int32_t> TomlItem::distinctIntegers() const {
    std::vector<std::int32_t> values;
    std::set<std::int32_t> seen;
    for (const TomlItem& element : elements()) {
        values.push_back(element.integer());
        if (!seen.insert(values.back()).second) {
            element.fail("expected each number once, found " + std::to_string(values.back()) + " twice");
        }
    }
    return values;
}

std::vector<std::pair<std::string, TomlItem>> TomlItem::entries() const {
    const toml::table* table = m_node->as_table();
    if (table == nullptr) {
        failExpecting("a table");
    }
    std::vector<std::pair<toml::source_position, std::pair<std::string, TomlItem>>> found;
    for (const auto& [key, node] : *table) {
        const toml::source_position position = key.source().begin;
        const std::string name(key.str());
        const TomlItem item(node, pathTo(name), Place{m_place.file, position.line});
        if (name.empty() || std::any_of(name.begin(), name.end(), isControl)) {
            item.fail("expected a name of printable text");
        }
        found.push_back({position, {name, item}});
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::pair<std::string, TomlItem>> result;
    result.reserve(found.size());
    for (auto& [position, entry] : found) {
        result.push_back(std::move(entry));
    }
    return result;
}

std::vector<std::pair<std::string, TomlItem>>
TomlItem::entries(const std::vector<std::string_view>& keys) const {
    std::vector<std::pair<std::string, TomlItem>> result = entries();
    for (const auto& [name, item] : result) {
        if (std::find(keys.begin(), keys.end(), name) == keys.end()) {
            // The likeliest slip inside a section: TOML takes the dots of a bare name as tables inside
            // tables.
            const bool isBareName = item.isTable() && !m_path.empty();
            item.fail("unknown key" +
                      (isBareName ? ", expected names with dots in quotes" : notAmong(keys, name)));
        }
    }
    return result;
}

std::optional<TomlItem> TomlItem::find(std::string_view key) const {
    const toml::table* table = m_node->as_table();
    if (table == nullptr) {
        failExpecting("a table");
    }
    const auto entry = table->find(key);
    if (entry == table->end()) {
        return std::nullopt;
    }
    return TomlItem(entry->second, pathTo(key), Place{m_place.file, entry->first.source().begin.line});
}

std::optional<std::string_view> TomlItem::firstOf(const std::vector<std::string_view>& keys) const {
    const auto key = std::find_if(keys.begin(), keys.end(),
                                  [this](std::string_view candidate) { return find(candidate).has_value(); });
    return key == keys.end() ? std::nullopt : std::optional(*key);
}

TomlItem TomlItem::get(std::string_view key, const std::string& what) const {
    if (std::optional<TomlItem> item = find(key)) {
        return *item;
    }
    throw InputError(m_place, pathTo(key) + ": missing, expected " + what);
}

std::vector<TomlItem> TomlItem::tables(std::string_view key, const std::string& each) const {
    const std::optional<TomlItem> item = find(key);
    if (!item) {
        return {};
    }
    if (!item->isArray()) {
        item->failExpecting("[[" + std::string(key) + "]] tables, one for each " + each);
    }
    return item->elements();
}

void TomlItem::requireCount(std::size_t found, std::size_t wanted, const std::string& what) const {
    if (found != wanted) {
        fail("expected " + what + ": " + std::to_string(wanted) + ", found " + std::to_string(found));
    }
}

void TomlItem::fail(const std::string& problem) const {
    throw InputError(m_place, m_path + ": " + problem);
}

void TomlItem::failExpecting(const std::string& what) const {
    fail("expected " + what + ", found " + found());
}

std::string TomlItem::pathTo(std::string_view key) const {
    return (m_path.empty() ? "" : m_path + ".") + keyText(key);
}

std::string TomlItem::found() const {
    switch (m_node->type()) {
    case toml::node_type::integer:
        return std::to_string(m_node->ref<std::int64_t>());
    case toml::node_type::string:
        return inQuotes(m_node->ref<std::string>());
    case toml::node_type::boolean:
        return m_node->ref<bool>() ? "true" : "false";
    case toml::node_type::floating_point:
        return numberText(m_node->ref<double>());
    case toml::node_type::array:
        return m_node->as_array()->empty() ? "an empty array" : "an array";
    case toml::node_type::table:
        return "a table";
    default:
        return "a date or a time";
    }
}

} // namespace Radio
