#include "radio/language/CommandParser.h"

#include "radio/language/CommandTable.h"
#include "radio/text/Tokenizer.h"
#include "radio/text/WordError.h"

#include <algorithm>
#include <utility>

namespace Radio {

std::optional<Command> parseCommand(std::string_view line) {
    std::vector<std::string> words = splitIntoWords(line);
    return words.empty() ? std::nullopt : std::optional(parseWords(std::move(words)));
}

Command parseWords(std::vector<std::string> words) {
    const CommandInfo& info = findCommand(words);
    const auto nameWords = static_cast<std::size_t>(std::count(info.name.begin(), info.name.end(), ' ')) + 1;
    Arguments arguments(std::move(words), nameWords, info.usage);
    try {
        Command command = info.parse(arguments);
        arguments.finish();
        return command;
    } catch (const WordError& error) {
        throw WordError(std::string(info.name) + ": " + error.what());
    }
}

} // namespace Radio
