#ifndef FUZZ_READERS_RULES_H
#define FUZZ_READERS_RULES_H

#include "FuzzTarget.h"
#include "radio/files/InputError.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

/** What has to hold whatever a reader is given. A rule that is broken ends the program, for the fuzzer to
 * notice. */
namespace Fuzz {

inline void require(bool holds, const char* rule, std::string_view found = "") {
    if (!holds) {
        std::fprintf(stderr, "broken rule: %s\n%.*s\n", rule, static_cast<int>(found.size()), found.data());
        std::abort();
    }
}

/** Lines of which something can be said; a text that ends with a line end has none behind it. */
inline unsigned linesOf(std::string_view text) {
    return static_cast<unsigned>(std::count(text.begin(), text.end(), '\n')) + 1;
}

inline bool isHarmless(std::string_view text) {
    return std::none_of(text.begin(), text.end(), [](char character) {
        return static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
    });
}

/** `text` is the content of `name`, of which `message` speaks. */
inline void requireMessage(std::string_view message, std::string_view name, std::string_view text) {
    require(isHarmless(message), "a message has nothing in it that a terminal obeys", message);
    require(message.substr(0, name.size()) == name, "a message begins with the name of the file", message);
    std::string_view rest = message.substr(name.size());
    if (rest.size() > 1 && rest[1] != ' ') {
        unsigned line = 0;
        const char* const end = std::from_chars(rest.data() + 1, rest.data() + rest.size(), line).ptr;
        require(line >= 1 && line <= linesOf(text), "a message names a line of the file", message);
        rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    }
    require(rest.size() > 2 && rest.substr(0, 2) == ": ", "a message says what is wrong", message);
}

/** Calls `read`, which may refuse the text, but only with a message about it; true when it did not. */
template <typename Read>
bool accepts(std::string_view name, std::string_view text, Read read) {
    try {
        read();
        return true;
    } catch (const Radio::InputError& error) {
        requireMessage(error.what(), name, text);
        return false;
    }
}

} // namespace Fuzz

#endif
