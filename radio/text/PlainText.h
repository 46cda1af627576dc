#ifndef RADIO_TEXT_PLAINTEXT_H
#define RADIO_TEXT_PLAINTEXT_H

#include <cstddef>
#include <string_view>

namespace Radio {

/** `text` without the mark that some editors and spreadsheets write at the beginning of a file. */
inline std::string_view withoutByteOrderMark(std::string_view text) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return text.substr(0, mark.size()) == mark ? text.substr(mark.size()) : text;
}

/** `text` without the blanks at its ends. */
inline std::string_view trimmed(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

} // namespace Radio

#endif
