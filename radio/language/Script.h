#ifndef RADIO_LANGUAGE_SCRIPT_H
#define RADIO_LANGUAGE_SCRIPT_H

#include "radio/language/CommandCheck.h"
#include "radio/session/ScriptLine.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** The command language, read for one board. Touches no radio; may be called on any thread. */
namespace Radio {

using Script = std::vector<ScriptLine>;

/** In bytes: more than a person writes, and little enough to be held in memory. */
constexpr std::size_t maxScriptSize = std::size_t{16} * 1024 * 1024;

/** The command on a line; nothing for an empty line or a comment. Throws WordError for a line that makes no
 * sense or names what the board does not have. */
std::optional<ScriptLine> readLine(std::string_view line, const Place& place, const CommandCheck& check);

/** All commands of `text`, the content of `file`. Throws InputError for the first line that cannot be carried
 * out, and for a text that is too large. */
Script readScript(std::string_view text, const std::string& file, const CommandCheck& check);

} // namespace Radio

#endif
