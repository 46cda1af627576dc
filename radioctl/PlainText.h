#ifndef RADIOCTL_PLAINTEXT_H
#define RADIOCTL_PLAINTEXT_H

#include <cstddef>
#include <string_view>

namespace Radioctl {

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

} // namespace Radioctl

#endif
