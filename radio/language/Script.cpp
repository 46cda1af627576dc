#include "radio/language/Script.h"

#include "radio/language/CommandParser.h"
#include "radio/text/PlainText.h"
#include "radio/text/WordError.h"

#include <algorithm>

namespace Radio {

std::optional<ScriptLine> readLine(std::string_view line, const Place& place, const CommandCheck& check) {
    std::optional<Command> command = parseCommand(line);
    if (!command.has_value()) {
        return std::nullopt;
    }
    check.check(*command);
    return ScriptLine{place, std::string(trimmed(line)), *std::move(command)};
}

Script readScript(std::string_view text, const std::string& file, const CommandCheck& check) {
    Place place{file, 0};
    if (text.size() > maxScriptSize) {
        throw InputError(place, "is larger than 16 MiB, expected a script");
    }
    text = withoutByteOrderMark(text);
    Script script;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        ++place.line;
        try {
            if (auto scriptLine = readLine(line, place, check)) {
                script.push_back(*std::move(scriptLine));
            }
        } catch (const WordError& error) {
            throw InputError(place, error.what());
        }
    }
    return script;
}

} // namespace Radio
