#include "radio/recording/RecordingTime.h"

#include <array>
#include <ctime>

namespace Radio::Recordings {

std::string timeText(std::uint64_t nanoseconds) {
    const auto seconds = static_cast<std::time_t>(nanoseconds / 1000000000U);
    std::tm parts{};
    std::array<char, 40> text{};
    if (gmtime_r(&seconds, &parts) == nullptr ||
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S UTC", &parts) == 0) {
        return "at an unknown time";
    }
    return text.data();
}

std::string secondsText(std::uint64_t nanoseconds) {
    const std::string micros = std::to_string(nanoseconds / 1000U % 1000000U);
    return std::to_string(nanoseconds / 1000000000U) + "." + std::string(6 - micros.size(), '0') + micros;
}

} // namespace Radio::Recordings
