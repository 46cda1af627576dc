#ifndef RADIO_TEXT_PLAINTEXT_H
#define RADIO_TEXT_PLAINTEXT_H

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace Radio {

/** `text` without the mark that some editors and spreadsheets write at the beginning of a file. */
inline std::string_view withoutByteOrderMark(std::string_view text) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return text.substr(0, mark.size()) == mark ? text.substr(mark.size()) : text;
}

/** `text` without the blanks at its ends. */
inline std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const std::size_t begin = text.find_first_not_of(blanks);
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

/** A decimal number, perhaps with its sign, and nothing behind it; nothing for anything else. */
template <typename Number>
std::optional<Number> parseNumber(std::string_view text) {
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

} // namespace Radio

#endif
