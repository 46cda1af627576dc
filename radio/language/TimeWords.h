#ifndef RADIO_LANGUAGE_TIMEWORDS_H
#define RADIO_LANGUAGE_TIMEWORDS_H

#include "radio/language/Arguments.h"

#include <chrono>
#include <string_view>

namespace Radio {

/**
 * The time that the next words stand for: a decimal number, and "ms", "s" or "min" behind it or in the next
 * word; seconds when there is none. At most one hour. `what` names it in messages; throws WordError.
 */
std::chrono::microseconds takeTime(Arguments& arguments, std::string_view what);

} // namespace Radio

#endif
