#include "radio/files/StateFolder.h"

#include <cstdlib>

namespace Radio {

namespace {

std::filesystem::path directoryFrom(const char* variable) {
    const char* const value = std::getenv(variable);
    std::filesystem::path directory = value == nullptr ? "" : value;
    return directory.is_absolute() ? directory : std::filesystem::path();
}

} // namespace

std::filesystem::path stateFolder() {
    std::filesystem::path state = directoryFrom("XDG_STATE_HOME");
    if (state.empty()) {
        const std::filesystem::path home = directoryFrom("HOME");
        state = home.empty() ? home : home / ".local" / "state";
    }
    return state.empty() ? state : state / "radioctl";
}

} // namespace Radio
