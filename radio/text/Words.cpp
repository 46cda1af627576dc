#include "radio/text/Words.h"

#include <array>
#include <charconv>

namespace Radio {

std::string codeText(std::int32_t code) {
    std::array<char, 8> digits{};
    const auto end = std::to_chars(digits.begin(), digits.end(), static_cast<std::uint32_t>(code), 16).ptr;
    return "0x" + std::string(digits.begin(), end);
}

std::string harmless(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7F) {
            result += "\\x";
            result += digits[byte / 16U];
            result += digits[byte % 16U];
        } else {
            result += character;
        }
    }
    return result;
}

std::string inQuotes(std::string_view word) {
    constexpr std::size_t longest = 60;
    return '"' + harmless(word.substr(0, longest)) + (word.size() > longest ? "...\"" : "\"");
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
