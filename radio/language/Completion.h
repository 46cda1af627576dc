#ifndef RADIO_LANGUAGE_COMPLETION_H
#define RADIO_LANGUAGE_COMPLETION_H

#include "radio/board/BoardNames.h"

#include <string>
#include <string_view>
#include <vector>

namespace Radio {

/** What can stand at the cursor. */
struct Completion {
    /** How much of the line before the cursor the word has that is to be completed. */
    std::size_t typed = 0;
    /** All words that begin with it, sorted. */
    std::vector<std::string> candidates;
    /** What all candidates begin with. */
    std::string common;
};

/** Completes the last word of `line`, the line up to the cursor, by the usages of the commands. */
Completion complete(std::string_view line, const BoardNames& names);

} // namespace Radio

#endif
