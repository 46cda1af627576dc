#ifndef RADIOCTL_RUN_RUNPROGRAMS_H
#define RADIOCTL_RUN_RUNPROGRAMS_H

#include "OrbiTrace.h"
#include "radioctl/bench/HardwareOptions.h"
#include "radioctl/keep/KeepOptions.h"
#include "standalone/Platform.h"

#include <optional>
#include <string>

/** What "radioctl run" and "radioctl console" do. These functions give the exit code. */
namespace Radio {

/** What the user chose on the command line. */
struct RunOptions {
    bool json = false;
    bool verbose = false;
    OrbiTraceLevel trace = Standalone::TraceLevel::notice;
    HardwareOptions hardware{};
    std::string board;
    /** A file, or "-" for standard input; nothing when it was left out. */
    std::optional<std::string> script{};
    /** Where a report in the form of JUnit's XML goes; empty for nowhere. */
    std::string junit{};
    KeepOptions keep{};
};

/** Boots a board and carries out a script. */
int runScript(const RunOptions& options);
/** Boots a board and carries out what is typed, or what comes through a pipe, line by line. */
int runConsole(const RunOptions& options);

} // namespace Radio

#endif
