#ifndef RADIO_TEXT_NUMBERS_H
#define RADIO_TEXT_NUMBERS_H

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace Radio {

/**
 * The number from `least` to `most` that all of `text` is, with or without a minus; nothing for anything
 * else. What else it may have is for `format` to say, as for std::from_chars: the base of an integer, or
 * whether a decimal number may have an exponent, which it may unless that is said.
 */
template <typename Number, typename... Format>
std::optional<Number> parseNumber(std::string_view text, Number least = std::numeric_limits<Number>::lowest(),
                                  Number most = std::numeric_limits<Number>::max(), Format... format) {
    Number number{};
    // cppcheck-suppress invalidLifetime // nothing of the number is kept
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, format...);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole && number >= least && number <= most ? std::optional(number) : std::nullopt;
}

/** `text` without the plus that a number may have in front. */
inline std::string_view withoutPlus(std::string_view text) {
    return text.substr(0, 1) == "+" && text.substr(1, 1) != "-" ? text.substr(1) : text;
}

/** The integer that all of `word` is: decimal, or hexadecimal after "0x", with or without a minus. */
inline std::optional<std::int64_t> parseInteger(std::string_view word) {
    const std::size_t sign = word.substr(0, 1) == "-" ? 1 : 0;
    const std::string_view prefix = word.substr(sign, 2);
    if (prefix != "0x" && prefix != "0X") {
        return parseNumber<std::int64_t>(word);
    }
    // A negative number reaches one farther. Its digits have no sign: a second one is none.
    const auto size =
        parseNumber<std::uint64_t>(word.substr(sign + 2), 0, std::uint64_t{INT64_MAX} + sign, 16);
    return size ? std::optional(static_cast<std::int64_t>(sign == 0 ? *size : 0 - *size)) : std::nullopt;
}

/** The number that all of `word` is for what reads options: with a plus, blanks or "0x" in front, too. */
inline std::optional<double> parseOption(const std::string& word) {
    char* end = nullptr;
    const double number = std::strtod(word.c_str(), &end);
    return end != word.c_str() && *end == '\0' ? std::optional(number) : std::nullopt;
}

} // namespace Radio

#endif
