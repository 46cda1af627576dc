#ifndef RADIOCTL_PROGRAMS_H
#define RADIOCTL_PROGRAMS_H

#include "OrbiTrace.h"
#include "standalone/Platform.h"

#include <optional>
#include <string>
#include <vector>

/** What radioctl does, one function for each of its commands. */
namespace Radioctl {

/** With what the program ends; the numbers are part of its manual. */
namespace ExitCode {
constexpr int good = 0;
constexpr int expectationFailed = 1;
constexpr int outsideLimits = 1;
constexpr int different = 1;
constexpr int wrongCommandLine = 2;
constexpr int unusableInput = 3;
constexpr int notBooted = 4;
/** Plus the number of the signal that ended it. */
constexpr int signalBase = 128;
} // namespace ExitCode

/** What the user chose on the command line. */
struct Options {
    bool json = false;
    bool verbose = false;
    OrbiTraceLevel trace = Standalone::TraceLevel::notice;
    /** For run and console. */
    std::string board;
    /** For check. */
    std::vector<std::string> boards;
    /** A file, or "-" for standard input; nothing when it was left out. */
    std::optional<std::string> script;
};

/** Boots a board and carries out a script. These functions give the exit code. */
int runScript(const Options& options);
/** Boots a board and carries out what is typed, or what comes through a pipe, line by line. */
int runConsole(const Options& options);
/** Holds boards against what their channels ask for. */
int runCheck(const Options& options);
/** Prints the completion script for a shell. */
int printCompletion();

} // namespace Radioctl

#endif
