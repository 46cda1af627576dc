#ifndef RADIO_SESSION_PEEKPOKE_H
#define RADIO_SESSION_PEEKPOKE_H

#include "standalone/Platform.h"

#include <cstdint>
#include <string>

/** Drivers read and written past all handlers, through their records, as a client of the driver layer does.
 */
namespace Radio {

/** What came of reading or writing a driver. */
struct DriverAnswer {
    std::int32_t code;
    /** Of a read that succeeded. */
    std::int64_t value = 0;
    /** What else there is to know; or empty. */
    std::string note{};
};

/** A record without the words for it fails with ResultFailed, and the note says what is missing. */
DriverAnswer readDriver(Standalone::Driver& driver);

/**
 * A value of more than 32 bits is written as a buffer of 8 bytes, least significant first, and so is any
 * where the driver takes a number of Hz and has no other word.
 */
DriverAnswer writeDriver(Standalone::Driver& driver, std::int64_t value);

/** True when the driver of that name takes numbers of more than 32 bits. */
bool takesHz(const std::string& driver);

} // namespace Radio

#endif
