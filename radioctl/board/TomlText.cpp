#include "TomlText.h"

#include "InputError.h"
#include "PlainText.h"
#include "TomlItem.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Radioctl {

namespace {

/** See refuseDeepKeys. */
constexpr std::ptrdiff_t maxDotsPerLine = 100;

/** The lines of a text, without their ends. */
std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

/**
 * The parser builds a table for each part of a dotted key and destroys tables inside tables by recursion, so
 * that a key of very many parts would exhaust the stack. No line of a sensible board comes near the limit.
 */
void refuseDeepKeys(const std::vector<std::string_view>& lines, const std::string& file) {
    unsigned number = 0;
    for (const std::string_view line : lines) {
        ++number;
        if (std::count(line.begin(), line.end(), '.') > maxDotsPerLine) {
            throw InputError({file, number}, "more than 100 dots, expected at most 100 in a line");
        }
    }
}

/** A mark of quotation in the middle of a word begins nothing. */
bool beginsString(std::string_view text, std::size_t position) {
    constexpr std::string_view before = " \t\n=[{,.";
    const bool isMark = text[position] == '"' || text[position] == '\'';
    return isMark && (position == 0 || before.find(text[position - 1]) != std::string_view::npos);
}

bool isForeign(std::string_view text, std::size_t position) {
    return position < text.size() && static_cast<unsigned char>(text[position]) >= 0x80;
}

/**
 * Where the string that begins at `begin` is over; one that is not closed ends with its line, or with the
 * text. A character beyond ASCII behind an escape ends it as well.
 */
std::size_t endOfString(std::string_view text, std::size_t begin) {
    const std::string marks(text.substr(begin, 3) == std::string(3, text[begin]) ? 3 : 1, text[begin]);
    const bool hasLines = marks.size() == 3;
    std::size_t position = begin + marks.size();
    while (position < text.size() && (hasLines || text[position] != '\n')) {
        if (text.substr(position, marks.size()) == marks) {
            // Up to two marks right before the closing ones belong to the text.
            const std::size_t longest = std::min(position + (hasLines ? 5 : 1), text.size());
            return std::min(text.find_first_not_of(marks.front(), position), longest);
        }
        if (text[position] == '\\' && marks.front() == '"') {
            // Behind a backslash at the end of a line, blanks do not count.
            const std::size_t behind = text.find_first_not_of(hasLines ? " \t\r\n" : "", position + 1);
            if (isForeign(text, behind)) {
                return behind;
            }
            position = std::max(position + 1, std::min(behind, text.size()) - 1);
        }
        ++position;
    }
    return std::min(position, text.size());
}

/**
 * In some places the parser asks of a character beyond ASCII whether it is a blank, which for most of them is
 * undefined: outside of strings and comments, where TOML has none, and inside a string behind a backslash.
 */
void refuseForeignCharacters(std::string_view text, const std::string& file) {
    text = withoutByteOrderMark(text);
    for (std::size_t position = 0; position < text.size();) {
        if (isForeign(text, position)) {
            const auto end = text.begin() + static_cast<std::ptrdiff_t>(position);
            throw InputError(
                {file, static_cast<unsigned>(std::count(text.begin(), end, '\n')) + 1},
                "a character beyond ASCII, expected it inside quotation marks and not behind a backslash");
        }
        if (beginsString(text, position)) {
            position = endOfString(text, position);
        } else if (text[position] == '#') {
            position = std::min(text.find('\n', position), text.size());
        } else {
            ++position;
        }
    }
}

/** The parser's own words, without the beginning that most of them share. */
std::string whatIsWrong(const toml::parse_error& error, std::string_view line) {
    const std::string_view prefix = "Error while parsing ";
    std::string_view text = error.description();
    if (text.find("cannot redefine") != std::string_view::npos) {
        // The parser gets names in quotes wrong in this message, and here most names stand in quotes.
        return "defined a second time: " + escaped(line.substr(0, line.find('\r')));
    }
    if (text.substr(0, prefix.size()) == prefix) {
        text.remove_prefix(prefix.size());
    }
    return "not valid TOML: " + escaped(text);
}

} // namespace

toml::table parseToml(std::string_view text, const std::string& name) {
    const std::vector<std::string_view> lines = linesOf(text);
    refuseDeepKeys(lines, name);
    refuseForeignCharacters(text, name);
    try {
        return toml::parse(text, name);
    } catch (const toml::parse_error& error) {
        const unsigned line = error.source().begin.line;
        const bool isInFile = line > 0 && line <= lines.size();
        throw InputError({name, line}, whatIsWrong(error, isInFile ? lines[line - 1] : ""));
    }
}

} // namespace Radioctl
