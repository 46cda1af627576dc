#ifndef RADIO_FILES_CSVLINES_H
#define RADIO_FILES_CSVLINES_H

#include "radio/files/InputError.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Radio {

/** What a line is; a comment or an empty one is nothing. */
enum class CsvLine : std::uint8_t { nothing, property, heading, row };

/**
 * Takes a text of comma-separated values line by line and keeps none of them, so that it may be of any
 * length. A line that begins with "#" is a comment, or a property "# key: value". The first other one that is
 * not empty is the heading, and below it are rows. Blanks around lines and values, carriage returns there and
 * a byte order mark do not count. There is no quoting: a comma always ends a value.
 */
class CsvLines {
public:
    /** In the file `name`. A line of more than `longest` characters is refused; expected was `what`. */
    CsvLines(std::string name, std::size_t longest, std::string what)
        : m_place{std::move(name), 0},
          m_longest(longest),
          m_what(std::move(what)) {}

    /** Takes the next line, without its end. Throws InputError when it is too long. */
    CsvLine take(std::string_view line);
    /** Throws InputError for the next line, which its caller has not got to the end of. */
    [[noreturn]] void refuseLongLine();

    /** Where the line is that was taken last. Its text and its cells last as long as it does. */
    const Place& place() const { return m_place; }
    /** Without blanks around it. */
    std::string_view text() const { return m_text; }
    /** The values of a heading or a row, or key and value of a property. */
    const std::vector<std::string_view>& cells() const { return m_cells; }
    bool hasHeading() const { return m_hasHeading; }

private:
    Place m_place;
    std::size_t m_longest;
    std::string m_what;
    bool m_hasHeading = false;
    std::string_view m_text;
    std::vector<std::string_view> m_cells;
};

} // namespace Radio

#endif
