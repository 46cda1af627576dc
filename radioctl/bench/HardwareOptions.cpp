#include "radioctl/bench/HardwareOptions.h"

namespace Radio {

CommandLine::Option addHardwareOption(CommandLine::Command& command, HardwareOptions& options) {
    return command.flag("--hardware", options.hardware,
                        "Drive the hardware that the board describes;\n"
                        "without it everything is simulated");
}

void addHardwareOptions(CommandLine::Command& command, HardwareOptions& options) {
    const CommandLine::Option hardware = addHardwareOption(command, options);
    command
        .flag("--dry-run", options.dryRun,
              "Simulate, and say which attribute would get\nwhat with --hardware")
        .excludes(hardware);
}

} // namespace Radio
