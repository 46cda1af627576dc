#include "radio/text/Words.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace Radio {

std::string codeText(std::int32_t code) {
    std::array<char, 8> digits{};
    const auto end = std::to_chars(digits.begin(), digits.end(), static_cast<std::uint32_t>(code), 16).ptr;
    return "0x" + std::string(digits.begin(), end);
}

namespace {

/** The smallest character that takes so many bytes; any other way to write a smaller one is none. */
constexpr std::array<std::uint32_t, 5> smallestOf{0, 0, 0x80, 0x800, 0x10000};

/** How many bytes a character takes that begins with `byte`; 0: none does. */
std::size_t lengthFrom(unsigned char byte) {
    return byte < 0x80 ? 1 : byte < 0xC2 ? 0 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : byte < 0xF5 ? 4 : 0;
}

/** The character at the beginning of `text`, in UTF-8, and how many bytes it takes; 0 bytes: there is none.
 */
struct Character {
    std::uint32_t number = 0;
    std::size_t length = 0;
};

Character firstOf(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = lengthFrom(first);
    if (length == 0 || length > text.size()) {
        return {};
    }
    std::uint32_t number = length == 1 ? first : first & (0x7FU >> length);
    for (const char behind : text.substr(1, length - 1)) {
        const auto byte = static_cast<unsigned char>(behind);
        if ((byte & 0xC0U) != 0x80U) {
            return {};
        }
        number = number << 6U | (byte & 0x3FU);
    }
    const bool isSurrogate = number >= 0xD800 && number <= 0xDFFF;
    const bool isOne = number >= smallestOf.at(length) && number <= 0x10FFFF && !isSurrogate;
    return isOne ? Character{number, length} : Character{};
}

/** A terminal obeys it, or shows what comes next elsewhere than where it stands. */
bool isControl(std::uint32_t character) {
    const bool isCode = character < 0x20 || (character >= 0x7F && character <= 0x9F);
    const bool isDirection = character == 0x061C || character == 0x200E || character == 0x200F ||
                             (character >= 0x202A && character <= 0x202E) ||
                             (character >= 0x2066 && character <= 0x2069);
    const bool isLineEnd = character == 0x2028 || character == 0x2029;
    return isCode || isDirection || isLineEnd;
}

/** A character of ASCII that is shown as it is, which nearly all are. */
bool isPlain(char character) {
    return static_cast<unsigned char>(character) - 0x20U < 0x5FU;
}

/** `text` with what `write` makes of each character that is not shown as it is, and of each byte of none. */
template <typename Write>
std::string withoutControls(std::string_view text, Write write) {
    std::string result;
    for (;;) {
        const auto plain = std::find_if_not(text.begin(), text.end(), isPlain) - text.begin();
        result += text.substr(0, static_cast<std::size_t>(plain));
        text.remove_prefix(static_cast<std::size_t>(plain));
        if (text.empty()) {
            return result;
        }
        const Character first = firstOf(text);
        const std::string_view bytes = text.substr(0, first.length != 0 ? first.length : 1);
        text.remove_prefix(bytes.size());
        if (first.length != 0 && !isControl(first.number)) {
            result += bytes;
        } else {
            write(result, first.number, bytes);
        }
    }
}

constexpr std::string_view hexDigits = "0123456789abcdef";

} // namespace

std::string harmless(std::string_view text) {
    return withoutControls(text, [](std::string& result, std::uint32_t /*number*/, std::string_view bytes) {
        for (const char character : bytes) {
            const auto byte = static_cast<unsigned char>(character);
            result += {'\\', 'x', hexDigits[byte / 16U], hexDigits[byte % 16U]};
        }
    });
}

std::string harmlessJson(std::string_view json) {
    return withoutControls(json, [](std::string& result, std::uint32_t number, std::string_view bytes) {
        // None of them is beyond four digits.
        const std::uint32_t code = bytes.size() == 1 ? static_cast<unsigned char>(bytes.front()) : number;
        result += "\\u";
        for (const unsigned shift : {12U, 8U, 4U, 0U}) {
            result += hexDigits[code >> shift & 0xFU];
        }
    });
}

std::string inQuotes(std::string_view word) {
    constexpr std::size_t most = 60;
    std::size_t shown = std::min(most, word.size());
    while (shown > 0 && shown < word.size() && (static_cast<unsigned char>(word[shown]) & 0xC0U) == 0x80U) {
        --shown; // a character is not cut in two
    }
    return '"' + harmless(word.substr(0, shown)) + (word.size() > most ? "...\"" : "\"");
}

std::string inDecimals(double number, int places) {
    std::array<char, 400> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed, places)
            .ptr;
    const std::string text(digits.data(), end);
    const bool isZero = text.find_first_not_of("-0.") == std::string::npos;
    return isZero && text.front() == '-' ? text.substr(1) : text;
}

std::string inTwoDecimals(double number) {
    return inDecimals(number, 2);
}

std::string levelText(double dBc) {
    return inTwoDecimals(dBc) + " dBc";
}

std::string counted(std::uint64_t count, std::string_view noun) {
    return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

} // namespace Radio
