#ifndef RADIO_TEXT_WORDERROR_H
#define RADIO_TEXT_WORDERROR_H

#include "radio/text/Words.h"

#include <stdexcept>
#include <string>

namespace Radio {

/**
 * Words that a person typed and that cannot be taken: a number, a frequency, a command. The message says what
 * was expected, but not where the words stand.
 */
class WordError : public std::runtime_error {
public:
    /** What is said is made harmless. */
    explicit WordError(const std::string& message) : std::runtime_error(harmless(message)) {}
};

} // namespace Radio

#endif
