#ifndef RADIOCTL_BENCH_HARDWAREOPTIONS_H
#define RADIOCTL_BENCH_HARDWAREOPTIONS_H

#include "radioctl/options/Options.h"

namespace Radio {

/** Whether a verb drives real hardware. */
struct HardwareOptions {
    bool hardware = false;
    bool dryRun = false;
};

/** Adds "--hardware" to a command. `options` must outlive the parsing. */
CommandLine::Option addHardwareOption(CommandLine::Command& command, HardwareOptions& options);
/** Adds "--hardware" and "--dry-run" to a command; one of them at most. `options` must outlive the parsing.
 */
void addHardwareOptions(CommandLine::Command& command, HardwareOptions& options);

} // namespace Radio

#endif
