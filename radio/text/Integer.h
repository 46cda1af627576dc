#ifndef RADIO_TEXT_INTEGER_H
#define RADIO_TEXT_INTEGER_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace Radio {

/** The number that all of `word` is: decimal, or hexadecimal after "0x", with or without a sign. */
std::optional<std::int64_t> parseInteger(std::string_view word);

} // namespace Radio

#endif
