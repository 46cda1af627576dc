#include "devices/DeviceCodes.h"

#include <cctype>
#include <cerrno>
#include <cstring>

namespace Devices {

namespace {

/** As a part of a sentence: "Connection refused" begins small, "RFS specific error" stays. */
std::string inASentence(std::string text) {
    if (text.size() > 1 && std::islower(static_cast<unsigned char>(text[1])) != 0) {
        text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    }
    return text;
}

} // namespace

std::string meaningOf(std::int32_t code) {
    const int error = errorOf(code);
    if (error == 0) {
        return {};
    }
    if (error == ENOTCONN) {
        return "not connected (ENOTCONN)"; // an instrument is no "transport endpoint"
    }
    const char* const name = strerrorname_np(error);
    const char* const words = strerrordesc_np(error);
    if (name == nullptr || words == nullptr) {
        return "error " + std::to_string(error);
    }
    return inASentence(words) + " (" + name + ")";
}

} // namespace Devices
