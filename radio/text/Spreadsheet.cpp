#include "radio/text/Spreadsheet.h"

#include "radio/text/Words.h"

#include <algorithm>
#include <array>

namespace Radio {

namespace {

constexpr std::string_view separators = ",;|";

/** What begins a formula; the last ones are the same in full width, which are taken for them in places. */
constexpr std::array<std::string_view, 8> beginnings{
    "=", "+", "-", "@", "\xEF\xBC\x9D", "\xEF\xBC\x8B", "\xEF\xBC\x8D", "\xEF\xBC\xA0"};

/** Blanks in front of a formula, and a quotation mark, do not keep it from being one. */
bool isFormula(std::string_view value) {
    value.remove_prefix(std::min(value.find_first_not_of(" \""), value.size()));
    return std::any_of(beginnings.begin(), beginnings.end(), [value](std::string_view beginning) {
        return value.substr(0, beginning.size()) == beginning;
    });
}

} // namespace

std::string asCell(std::string_view text) {
    // Tabulators and line ends are not there any more.
    const std::string shown = (isFormula(harmless(text)) ? "'" : "") + harmless(text);
    if (shown.find_first_of(std::string(separators) + '"') == std::string::npos) {
        return shown;
    }
    std::string quoted = "\"";
    for (const char character : shown) {
        quoted += character == '"' ? "\"\"" : std::string(1, character);
    }
    return quoted + "\"";
}

std::string asComment(std::string_view text) {
    const std::string shown = harmless(text);
    std::string comment;
    for (std::size_t begin = 0; begin <= shown.size();) {
        const std::size_t end = std::min(shown.find_first_of(separators, begin), shown.size());
        const std::string_view value = std::string_view(shown).substr(begin, end - begin);
        comment += begin != 0 && isFormula(value) ? "'" : "";
        comment += shown.substr(begin, end + 1 - begin);
        begin = end + 1;
    }
    return comment;
}

} // namespace Radio
