#ifndef RADIO_TEXT_BROKENLINES_H
#define RADIO_TEXT_BROKENLINES_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Radio {

/** What a terminal of 80 columns shows on one line, wherever it breaks a full one. */
constexpr std::size_t terminalWidth = 79;

/** `text` in lines of at most `width` columns, broken at spaces; a longer word has a line of its own. At
 * least one. */
std::vector<std::string> brokenLines(std::string_view text, std::size_t width);

} // namespace Radio

#endif
