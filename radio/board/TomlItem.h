#ifndef RADIO_BOARD_TOMLITEM_H
#define RADIO_BOARD_TOMLITEM_H

#include "radio/files/InputError.h"
#include "radio/text/Words.h"

#include <toml++/toml.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Radio {

/** `text` with its control characters written as escapes, so that a terminal does not obey them. */
std::string escaped(std::string_view text);

/** The end of a message about an unknown word: what may have been meant, and what is known. */
std::string notAmong(const std::vector<std::string_view>& known, std::string_view word);

/**
 * One value of a TOML file, with what a message about it needs: the keys that lead to it, and its line.
 * Whatever is not as asked for throws an InputError. Borrows the value from the parsed file.
 */
class TomlItem {
public:
    /** `path` is empty for the whole file. */
    TomlItem(const toml::node& node, std::string path, Place place)
        : m_node(&node),
          m_path(std::move(path)),
          m_place(std::move(place)) {}

    const Place& place() const { return m_place; }
    bool isText() const { return m_node->is_string(); }
    bool isInteger() const { return m_node->is_integer(); }
    bool isArray() const { return m_node->is_array(); }
    bool isTable() const { return m_node->is_table(); }

    /** An integer of 32 bits, not below `least`. */
    std::int32_t integer(std::int32_t least = std::numeric_limits<std::int32_t>::min()) const;
    /** A number, whole or not, from -`most` to `most`. */
    double number(double most) const;
    bool boolean() const;
    /** A string without control characters other than tabs and line ends. */
    std::string text() const;
    /** The same, not empty; `what` says what it should be. */
    std::string nonEmptyText(const std::string& what) const;
    /** What a string stands for; `words` are those that `fromString` knows. */
    template <typename Value>
    Value word(std::optional<Value> (*fromString)(std::string_view),
               const std::vector<std::string_view>& words) const;
    /** The elements of an array that has some. */
    std::vector<TomlItem> elements() const;
    /** The elements of an array of integers. */
    std::vector<std::int32_t> integers() const;
    /** The same, with no number twice. */
    std::vector<std::int32_t> distinctIntegers() const;
    /** What a table holds, in the order of the file. Names are not empty and can be printed. */
    std::vector<std::pair<std::string, TomlItem>> entries() const;
    /** The same for a table that holds nothing but `keys`. */
    std::vector<std::pair<std::string, TomlItem>> entries(const std::vector<std::string_view>& keys) const;
    /** What a table holds under `key`, if anything. */
    std::optional<TomlItem> find(std::string_view key) const;
    /** The first of `keys` under which a table holds something, if any. */
    std::optional<std::string_view> firstOf(const std::vector<std::string_view>& keys) const;
    /** What a table holds under `key`; `what` says what that should be. */
    TomlItem get(std::string_view key, const std::string& what) const;

    /**
     * The tables [[key]] that a table holds; none if there is no `key`. `each` says what there is one of them
     * for.
     */
    std::vector<TomlItem> tables(std::string_view key, const std::string& each) const;

    /** Fails unless `found` elements are as many as are `wanted`; `what` says which they are. */
    void requireCount(std::size_t found, std::size_t wanted, const std::string& what) const;

    /** Throws "PLACE: PATH: problem". */
    [[noreturn]] void fail(const std::string& problem) const;
    /** Throws "PLACE: PATH: expected WHAT, found ...". */
    [[noreturn]] void failExpecting(const std::string& what) const;

private:
    const toml::array& array() const;
    TomlItem element(const toml::node& node) const;
    std::string pathTo(std::string_view key) const;
    std::string found() const;

    const toml::node* m_node;
    std::string m_path;
    Place m_place;
};

template <typename Value>
Value TomlItem::word(std::optional<Value> (*fromString)(std::string_view),
                     const std::vector<std::string_view>& words) const {
    if (!isText()) {
        failExpecting("one of the words " + joined(words, ", "));
    }
    const std::string name = text();
    const std::optional<Value> value = fromString(name);
    if (!value) {
        fail("unknown word " + inQuotes(name) + notAmong(words, name));
    }
    return *value;
}

} // namespace Radio

#endif
