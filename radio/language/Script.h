#ifndef RADIO_LANGUAGE_SCRIPT_H
#define RADIO_LANGUAGE_SCRIPT_H

#include "radio/language/CommandCheck.h"
#include "radio/session/ScriptLine.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** The command language, read for one board. Touches no radio; may be called on any thread. */
namespace Radio {

using Script = std::vector<ScriptLine>;

/** In bytes: more than a person writes, and little enough to be held in memory. */
constexpr std::size_t maxScriptSize = std::size_t{16} * 1024 * 1024;

/** How many scripts can be inside each other, the first not counted. */
constexpr std::size_t maxScriptDepth = 16;

/** Gives the text of a script that a line includes; throws InputError when it cannot. */
using ScriptReader = std::function<std::string(const std::filesystem::path& file)>;
/** Reads files. */
std::string readScriptFile(const std::filesystem::path& file);

/** The command on a line; nothing for an empty line or a comment. Throws WordError for a line that makes no
 * sense or names what the board does not have. */
std::optional<ScriptLine> readLine(std::string_view line, const Place& place, const CommandCheck& check);

/** What there is to be carried out for a line: nothing, its command, or the lines of the script that it
 * includes. Throws WordError for the line, and InputError for one of that script. */
Script readLines(std::string_view line, const Place& place, const CommandCheck& check,
                 const ScriptReader& reader = readScriptFile);

/** All commands of `text`, the content of `file`, with those that it includes in their places. Throws
 * InputError for the first line that cannot be carried out, and for texts that are too large together. */
Script readScript(std::string_view text, const std::string& file, const CommandCheck& check,
                  const ScriptReader& reader = readScriptFile);

} // namespace Radio

#endif
