#ifndef RADIOCTL_REPORT_WRAPPED_H
#define RADIOCTL_REPORT_WRAPPED_H

#include "radio/text/BrokenLines.h"

#include <cstddef>
#include <ostream>
#include <string_view>

namespace Radio {

/** In the cell of a table: a space at which no line is broken. */
constexpr char unbreakableSpace = '\x1f';

/** Writes `text` in lines that fit a terminal: `margin` spaces in front of the first one, `hanging` of the
 * others. */
void writeWrapped(std::ostream& out, std::string_view text, std::size_t margin, std::size_t hanging);

/** Writes what a report begins with: the name of a board and, in the same line where it fits, its file. */
void writeBoardName(std::ostream& out, std::string_view name, std::string_view file);

} // namespace Radio

#endif
