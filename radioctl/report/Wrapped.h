#ifndef RADIOCTL_REPORT_WRAPPED_H
#define RADIOCTL_REPORT_WRAPPED_H

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace Radio {

/** What a terminal of 80 columns shows on one line, wherever it breaks a full one. */
constexpr std::size_t terminalWidth = 79;

/** In the cell of a table: a space at which no line is broken. */
constexpr char unbreakableSpace = '\x1f';

/** `text` in lines of at most `width` columns, broken at spaces; a longer word has a line of its own. At
 * least one. */
std::vector<std::string> brokenLines(std::string_view text, std::size_t width);

/** Writes `text` in lines that fit a terminal: `indent` spaces in front of the first one, `hanging` of the
 * others. */
void writeWrapped(std::ostream& out, std::string_view text, std::size_t indent, std::size_t hanging);

/** Writes what a report begins with: the name of a board and, in the same line where it fits, its file. */
void writeBoardName(std::ostream& out, std::string_view name, std::string_view file);

} // namespace Radio

#endif
