#ifndef RADIOCTL_CONSOLE_STATEFOLDER_H
#define RADIOCTL_CONSOLE_STATEFOLDER_H

#include <filesystem>

namespace Radio {

/** Where the program keeps what it is to know the next time: below $XDG_STATE_HOME or ~/.local/state. Empty
 * when neither is known. */
std::filesystem::path stateFolder();

} // namespace Radio

#endif
