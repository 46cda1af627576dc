#ifndef RADIOCTL_TOKENIZER_H
#define RADIOCTL_TOKENIZER_H

#include <string>
#include <string_view>
#include <vector>

namespace Radioctl {

/**
 * Splits a line into words at white space. "..." makes one word of what stands in it, with \" and \\ for the
 * two characters themselves; # at the beginning of a word starts a comment. Throws CommandError for a
 * quotation that is not closed.
 */
std::vector<std::string> splitIntoWords(std::string_view line);

} // namespace Radioctl

#endif
