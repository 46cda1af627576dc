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

/** Whether a terminal would show a line as it is. Told a second time, not as the program tells it: what is no
 * UTF-8 counts as obeyed, too, since a byte of it may be a control of an eight-bit terminal. */
inline bool isHarmless(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const auto byte = [&](std::size_t behind) {
            return at + behind < text.size() ? static_cast<unsigned char>(text[at + behind]) : 0U;
        };
        const auto isMore = [&](std::size_t count) {
            for (std::size_t n = 1; n <= count; ++n) {
                if ((byte(n) & 0xC0U) != 0x80U) {
                    return false;
                }
            }
            return true;
        };
        const unsigned first = byte(0);
        if (first < 0x80) {
            if (first - 0x20U >= 0x5FU) {
                return false;
            }
            at += 1;
        } else if (first >= 0xC2 && first <= 0xDF && isMore(1)) {
            const unsigned code = (first & 0x1FU) << 6U | (byte(1) & 0x3FU);
            if (code < 0xA0 || code == 0x61C) {
                return false;
            }
            at += 2;
        } else if (first >= 0xE0 && first <= 0xEF && isMore(2)) {
            const unsigned code = (first & 0xFU) << 12U | (byte(1) & 0x3FU) << 6U | (byte(2) & 0x3FU);
            const bool isTurned = code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
                                  (code >= 0x2066 && code <= 0x2069);
            if (code < 0x800 || (code >= 0xD800 && code <= 0xDFFF) || isTurned) {
                return false;
            }
            at += 3;
        } else if (first >= 0xF0 && first <= 0xF4 && isMore(3) && (first != 0xF0 || byte(1) >= 0x90) &&
                   (first != 0xF4 || byte(1) <= 0x8F)) {
            at += 4;
        } else {
            return false;
        }
    }
    return true;
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
