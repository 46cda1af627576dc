#ifndef RADIO_FILES_STATEFOLDER_H
#define RADIO_FILES_STATEFOLDER_H

#include <filesystem>

namespace Radio {

/** Where programs that drive radios keep what they are to know the next time: below $XDG_STATE_HOME or
 * ~/.local/state. Empty when neither is known. */
std::filesystem::path stateFolder();

} // namespace Radio

#endif
