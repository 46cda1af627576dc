#ifndef RADIOCTL_SCRIPT_H
#define RADIOCTL_SCRIPT_H

#include "Command.h"
#include "CommandCheck.h"
#include "InputError.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Radioctl {

/** One command as it was written. */
struct ScriptLine {
    /** Without a file at the prompt. */
    Place place;
    /** The line without the white space around it. */
    std::string text;
    Command command;
};

using Script = std::vector<ScriptLine>;

/** In bytes: more than a person writes, and little enough to be held in memory. */
constexpr std::size_t maxScriptSize = std::size_t{16} * 1024 * 1024;

/** The command on a line; nothing for an empty line or a comment. Throws CommandError. */
std::optional<ScriptLine> readLine(std::string_view line, const Place& place, const CommandCheck& check);

/** All commands of `text`, the content of `file`. Throws InputError for the first line that cannot be carried
 * out, and for a text that is too large. */
Script readScript(std::string_view text, const std::string& file, const CommandCheck& check);

} // namespace Radioctl

#endif
