#include "radio/files/StateFolder.h"

#include <cstdlib>

namespace Radio {

namespace {

std::filesystem::path directoryFrom(const char* variable) {
    const char* const value = std::getenv(variable);
    std::filesystem::path directory = value == nullptr ? "" : value;
    return directory.is_absolute() ? directory : std::filesystem::path();
}

/** Below what `variable` names, or else below `usual` in the user's home. */
std::filesystem::path ownFolder(const char* variable, const char* usual) {
    std::filesystem::path folder = directoryFrom(variable);
    if (folder.empty()) {
        const std::filesystem::path home = directoryFrom("HOME");
        folder = home.empty() ? home : home / usual;
    }
    return folder.empty() ? folder : folder / "radioctl";
}

} // namespace

std::filesystem::path stateFolder() {
    return ownFolder("XDG_STATE_HOME", ".local/state");
}

std::filesystem::path dataFolder() {
    return ownFolder("XDG_DATA_HOME", ".local/share");
}

std::filesystem::path configFolder() {
    return ownFolder("XDG_CONFIG_HOME", ".config");
}

} // namespace Radio
