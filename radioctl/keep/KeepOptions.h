#ifndef RADIOCTL_KEEP_KEEPOPTIONS_H
#define RADIOCTL_KEEP_KEEPOPTIONS_H

#include "radioctl/options/Options.h"

#include <string>

namespace Radio {

/** What commands are told about the store that is to keep their run. */
struct KeepOptions {
    /** An address, "none", or empty: as the settings file says. */
    std::string store{};
    std::string serial{};
    std::string station{};
    std::string operatorName{};
};

/** Adds "--store" and "--operator", which all of these commands have. */
void addStoreOptions(CommandLine::Command& command, KeepOptions& options);
/** Adds "--serial" and "--station" likewise, to a command that has none of its own. */
void addUnitOptions(CommandLine::Command& command, KeepOptions& options, bool withStation = true);

} // namespace Radio

#endif
