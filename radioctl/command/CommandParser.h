#ifndef RADIOCTL_COMMANDPARSER_H
#define RADIOCTL_COMMANDPARSER_H

#include "Command.h"

#include <optional>
#include <string_view>

namespace Radioctl {

/**
 * The command on one line of a script, a pipe or the prompt; nothing for a line that is empty or a comment.
 * Throws CommandError for a line that makes no sense. Whether the names in it exist on a board is not asked
 * here.
 */
std::optional<Command> parseCommand(std::string_view line);

} // namespace Radioctl

#endif
