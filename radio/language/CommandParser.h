#ifndef RADIO_LANGUAGE_COMMANDPARSER_H
#define RADIO_LANGUAGE_COMMANDPARSER_H

#include "radio/session/Command.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Radio {

/**
 * The command on one line of a script, a pipe or the prompt; nothing for a line that is empty or a comment.
 * Throws WordError for a line that makes no sense. Whether the names in it exist on a board is not asked
 * here. Touches no radio; may be called on any thread.
 */
std::optional<Command> parseCommand(std::string_view line);

/** The same for a line that was split into its words, of which there is at least one. */
Command parseWords(std::vector<std::string> words);

} // namespace Radio

#endif
