#ifndef RADIO_STORE_USERSETTINGS_H
#define RADIO_STORE_USERSETTINGS_H

#include "radio/store/Address.h"

#include <filesystem>
#include <optional>
#include <string>

namespace Radio::Store {

/** What the table [store] of a settings file says. */
struct UserSettings {
    Address address;
    /** Empty: nobody says. */
    std::string station{};
    std::string operatorName{};
};

/** settings.toml in the user's configFolder(); empty where none is known. */
std::filesystem::path settingsFile();

/** What the settings file says of the store; nothing when there is no file, or no [store] in it. Throws
 * InputError for one that cannot be used. */
std::optional<UserSettings> readUserSettings(const std::filesystem::path& file = settingsFile());

} // namespace Radio::Store

#endif
