#include "radio/board/TomlText.h"

#include "radio/board/TomlItem.h"
#include "radio/files/InputError.h"
#include "radio/text/PlainText.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Radio {

namespace {

/** See refuseDeepKeys. */
constexpr std::ptrdiff_t maxDotsPerLine = 100;

/** See refuseTooMany. */
constexpr std::ptrdiff_t mostEntries = 100'000;
constexpr std::ptrdiff_t mostCommas = 500'000;

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

/**
 * What the parser makes of a short entry takes a hundred times its length, and an entry that is not known is
 * found only then. So entries are counted first, by the signs that no entry, table or array is without; a few
 * in strings count as well. A line that begins with # is a comment, or stands in a string.
 */
void refuseTooMany(const std::vector<std::string_view>& lines, const std::string& file) {
    std::ptrdiff_t entries = 0;
    std::ptrdiff_t commas = 0;
    unsigned number = 0;
    for (const std::string_view line : lines) {
        ++number;
        const std::size_t first = line.find_first_not_of(" \t");
        if (first == std::string_view::npos || line[first] == '#') {
            continue;
        }
        entries +=
            std::count_if(line.begin(), line.end(), [](char sign) { return sign == '=' || sign == '['; });
        commas += std::count(line.begin(), line.end(), ',');
        if (entries > mostEntries) {
            throw InputError({file, number},
                             "more than 100000 of the signs = and [, expected at most 100000 in a board");
        }
        if (commas > mostCommas) {
            throw InputError({file, number}, "more than 500000 commas, expected at most 500000 in a board");
        }
    }
}

bool isForeign(char character) {
    return static_cast<unsigned char>(character) >= 0x80;
}

/**
 * Where a backslash joins lines of a string, the parser asks of the first character of the next one whether
 * it is a blank, in a way that is undefined for most of those beyond ASCII.
 */
void refuseForeignBehindJoin(std::string_view text, const std::string& file) {
    for (std::size_t position = text.find('\\'); position < text.size();
         position = text.find('\\', position + 1)) {
        const std::size_t next = std::min(text.find_first_not_of(" \t\r\n", position + 1), text.size());
        const std::string_view between = text.substr(position, next - position);
        if (next < text.size() && isForeign(text[next]) && between.find('\n') != std::string_view::npos) {
            const auto lines =
                std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(next), '\n');
            throw InputError({file, static_cast<unsigned>(lines) + 1},
                             "begins with a character beyond ASCII, expected another one behind a backslash");
        }
    }
}

/**
 * The same in ASCII, line by line, with what has to be told apart still apart. What stands for other
 * characters is right in the same places as they are: in strings and comments.
 */
std::string inAscii(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string ascii;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (isForeign(character)) {
            ascii += {'?', digits[byte / 16U], digits[byte % 16U]};
        } else {
            ascii.append(character == '?' ? 2 : 1, character);
        }
    }
    return ascii;
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
    refuseTooMany(lines, name);
    text = withoutByteOrderMark(text);
    const bool hasForeign = std::any_of(text.begin(), text.end(), isForeign);
    if (hasForeign) {
        refuseForeignBehindJoin(text, name);
    }
    try {
        if (hasForeign) {
            // Outside of strings and comments, too, the parser asks for blanks: this finds characters there.
            static_cast<void>(toml::parse(inAscii(text), name));
        }
        return toml::parse(text, name);
    } catch (const toml::parse_error& error) {
        const unsigned line = error.source().begin.line;
        const bool isInFile = line > 0 && line <= lines.size();
        throw InputError({name, line}, whatIsWrong(error, isInFile ? lines[line - 1] : ""));
    }
}

} // namespace Radio
