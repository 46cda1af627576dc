#ifndef RADIO_TEXT_TOKENIZER_H
#define RADIO_TEXT_TOKENIZER_H

#include <string>
#include <string_view>
#include <vector>

namespace Radio {

/**
 * Splits a line into words at white space. "..." makes one word of what stands in it, with \" and \\ for the
 * two characters themselves; # at the beginning of a word starts a comment. Throws WordError for a
 * quotation that is not closed.
 */
std::vector<std::string> splitIntoWords(std::string_view line);

} // namespace Radio

#endif
