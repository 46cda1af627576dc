#ifndef RADIO_RECORDING_RECORDINGTIME_H
#define RADIO_RECORDING_RECORDINGTIME_H

#include <cstdint>
#include <string>

namespace Radio::Recordings {

/** "2026-11-22 12:56:31 UTC", of nanoseconds since 1970. */
std::string timeText(std::uint64_t nanoseconds);
/** "0.014847", in seconds. */
std::string secondsText(std::uint64_t nanoseconds);

} // namespace Radio::Recordings

#endif
