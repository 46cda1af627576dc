#ifndef RADIO_LANGUAGE_COMMANDTABLE_H
#define RADIO_LANGUAGE_COMMANDTABLE_H

#include "radio/language/Arguments.h"
#include "radio/session/Command.h"

#include <string_view>
#include <vector>

namespace Radio {

/**
 * One command of the language. Parsing, help, completion and the messages about wrong lines all come from
 * here.
 *
 * In a usage, words in lower case stand for themselves, words in capitals for what the user fills in; | parts
 * alternatives and [] encloses what may be left out.
 */
struct CommandInfo {
    /** One word, or two for the expectations. */
    std::string_view name;
    std::string_view usage;
    /** One sentence for the list of commands, in which it has 61 columns. */
    std::string_view help;
    /** More to know, for the help about this command alone, which breaks it into lines. */
    std::string_view details;
    /** Makes a command of the words behind the name. */
    Command (*parse)(Arguments& arguments);
};

/** All commands, in the order in which the help lists them. */
const std::vector<CommandInfo>& commandTable();

/** The row for a line that begins with `words`; throws WordError, with the nearest name, when there is
 * none. */
const CommandInfo& findCommand(const std::vector<std::string>& words);

/** The rows whose name is `name` or begins with it as a word. */
std::vector<const CommandInfo*> commandsNamed(std::string_view name);

} // namespace Radio

#endif
