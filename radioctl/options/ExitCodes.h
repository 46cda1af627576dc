#ifndef RADIOCTL_OPTIONS_EXITCODES_H
#define RADIOCTL_OPTIONS_EXITCODES_H

#include <string>
#include <string_view>
#include <vector>

namespace Radio {

/** One reason for which commands end with a code. */
struct ExitReason {
    int code;
    /** The commands that have it, as they are called: "run", "plan explain". */
    std::vector<std::string_view> commands;
    std::string_view text;
};

/** All of them, in the order of the codes. The help of every command and the man page are made of it. */
const std::vector<ExitReason>& exitReasons();

/**
 * The exit codes that a command can give, for its help: "plan explain", "plan" for those below it, or all for
 * an empty text. Where a reason is not one of all these commands, it has their names in front.
 */
std::string exitCodeHelp(std::string_view command);

/** The commands of `reason` in front of its text, "check, tables lint: errors were found"; the text alone if
 * it is one of all commands. */
std::string reasonWithCommands(const ExitReason& reason);

} // namespace Radio

#endif
