#include "Script.h"

#include "CommandError.h"
#include "CommandParser.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

namespace Radioctl {

namespace {

std::string_view trimmed(std::string_view line) {
    constexpr std::string_view space = " \t\r\n\v\f";
    const std::size_t begin = line.find_first_not_of(space);
    return begin == std::string_view::npos ? std::string_view()
                                           : line.substr(begin, line.find_last_not_of(space) - begin + 1);
}

[[noreturn]] void throwUnreadable(const std::filesystem::path& file, const std::error_code& error) {
    throw InputError(Place{file.string(), 0},
                     "cannot be read: " + error.message() + ", expected a text file");
}

} // namespace

std::optional<ScriptLine> readLine(std::string_view line, const Place& place, const CommandCheck& check) {
    std::optional<Command> command = parseCommand(line);
    if (!command.has_value()) {
        return std::nullopt;
    }
    check.check(*command);
    return ScriptLine{place, std::string(trimmed(line)), *std::move(command)};
}

Script readScript(std::string_view text, const std::string& file, const CommandCheck& check) {
    Script script;
    Place place{file, 0};
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        ++place.line;
        try {
            if (auto scriptLine = readLine(line, place, check)) {
                script.push_back(*std::move(scriptLine));
            }
        } catch (const CommandError& error) {
            throw InputError(place, error.what());
        }
    }
    return script;
}

std::string readTextFile(const std::filesystem::path& file) {
    std::error_code error;
    if (std::filesystem::is_directory(file, error)) {
        throwUnreadable(file, std::make_error_code(std::errc::is_a_directory));
    }
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throwUnreadable(file, std::error_code(errno, std::generic_category()));
    }
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace Radioctl
