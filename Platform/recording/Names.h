/** The names that records speak of, each with a number. */
#ifndef PLATFORM_RECORDING_NAMES_H
#define PLATFORM_RECORDING_NAMES_H

#include "recording/RecordingFormat.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Recording::Names {

/** They are written to `slots`, of which there are so many; `claimed` counts them. */
void begin(Slot* slots, std::size_t count, std::atomic<std::uint32_t>& claimed);

/** The number of a name; 0 when there is no room for more. */
std::uint16_t numberOf(ObjectKind kind, std::string_view text, std::int32_t first = 0,
                       std::int32_t second = 0);

} // namespace Recording::Names

#endif
