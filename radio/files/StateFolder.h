#ifndef RADIO_FILES_STATEFOLDER_H
#define RADIO_FILES_STATEFOLDER_H

#include <filesystem>

namespace Radio {

/** Where programs that drive radios keep what they are to know the next time: below $XDG_STATE_HOME or
 * ~/.local/state. Empty when neither is known. */
std::filesystem::path stateFolder();
/** Where they keep what belongs to the user: below $XDG_DATA_HOME or ~/.local/share, likewise. */
std::filesystem::path dataFolder();
/** Where he says how he wants them: below $XDG_CONFIG_HOME or ~/.config, likewise. */
std::filesystem::path configFolder();

} // namespace Radio

#endif
