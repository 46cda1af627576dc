#ifndef RADIO_BOARD_FINDING_H
#define RADIO_BOARD_FINDING_H

#include "radio/files/InputError.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Radio {

enum class Severity : std::uint8_t {
    warning, ///< the radio starts, but something will not work as described
    error,   ///< a channel does not start, or what is described cannot be meant
};

/** "warning" or "error". */
std::string_view toString(Severity severity);

/** Something about a board that will not work, or that is not used. */
struct Finding {
    Severity severity;
    /** The line that is to be looked at. */
    Place place;
    std::string text;
};

bool isError(const Finding& finding);

} // namespace Radio

#endif
