#ifndef RADIO_TEXT_WORDERROR_H
#define RADIO_TEXT_WORDERROR_H

#include <stdexcept>

namespace Radio {

/**
 * Words that a person typed and that cannot be taken: a number, a frequency, a command. The message says what
 * was expected, but not where the words stand.
 */
class WordError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace Radio

#endif
