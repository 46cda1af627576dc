#include "radioctl/bench/HardwareOptions.h"

namespace Radio {

void addHardwareOptions(CommandLine::Command& command, HardwareOptions& options) {
    CommandLine::Option hardware = command.flag("--hardware", options.hardware,
                                                "Drive the hardware that the board describes;\n"
                                                "without it everything is simulated");
    command
        .flag("--dry-run", options.dryRun,
              "Simulate, and say which attribute would get\nwhat with --hardware")
        .excludes(hardware);
}

} // namespace Radio
