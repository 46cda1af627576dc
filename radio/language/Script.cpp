#include "radio/language/Script.h"

#include "radio/files/TextFile.h"
#include "radio/language/CommandParser.h"
#include "radio/text/PlainText.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace Radio {

std::optional<ScriptLine> readLine(std::string_view line, const Place& place, const CommandCheck& check) {
    std::optional<Command> command = parseCommand(line);
    if (!command.has_value()) {
        return std::nullopt;
    }
    check.check(*command);
    return ScriptLine{place, std::string(trimmed(line)), *std::move(command)};
}

namespace {

/** Reads a script, and those inside it. */
class Scripts {
public:
    Scripts(const CommandCheck& check, const ScriptReader& reader) : m_check(check), m_reader(reader) {}

    /** Adds the commands of a text. */
    void addText(std::string_view text, const std::string& file);
    /** Adds what there is to be carried out for one line. */
    void addLine(std::string_view line, const Place& place);
    Script take() { return std::move(m_script); }

private:
    void include(const std::string& name, const Place& place);

    const CommandCheck& m_check;
    const ScriptReader& m_reader;
    /** How much all texts may still have. */
    std::size_t m_room = maxScriptSize;
    /** The scripts inside which the next one would be, from the outermost, by their full names. */
    std::vector<std::filesystem::path> m_around;
    Script m_script;
};

void Scripts::addText(std::string_view text, const std::string& file) {
    Place place{file, 0};
    if (text.size() > m_room) {
        throw InputError(place, text.size() > maxScriptSize
                                    ? "is larger than 16 MiB, expected a script"
                                    : "makes the script larger than 16 MiB, with all that it includes");
    }
    m_room -= text.size();
    text = withoutByteOrderMark(text);
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        ++place.line;
        try {
            addLine(line, place);
        } catch (const WordError& error) {
            throw InputError(place, error.what());
        }
    }
}

void Scripts::addLine(std::string_view line, const Place& place) {
    if (auto scriptLine = readLine(line, place, m_check)) {
        if (const auto* const included = std::get_if<Include>(&scriptLine->command)) {
            include(included->file, place);
        } else {
            m_script.push_back(*std::move(scriptLine));
        }
    }
}

void Scripts::include(const std::string& name, const Place& place) {
    const std::filesystem::path file =
        (std::filesystem::path(place.file).parent_path() / name).lexically_normal();
    std::error_code unknown;
    std::filesystem::path whole = std::filesystem::weakly_canonical(file, unknown);
    whole = unknown ? file : whole;
    if (std::find(m_around.begin(), m_around.end(), whole) != m_around.end()) {
        throw WordError("include: " + inQuotes(file.string()) + " includes itself");
    }
    if (m_around.size() == maxScriptDepth) {
        throw WordError("include: " + inQuotes(file.string()) +
                        " is more than 16 deep, expected scripts that include fewer inside each other");
    }
    std::string text;
    try {
        text = m_reader(file);
    } catch (const GivenUp&) {
        throw;
    } catch (const InputError& error) {
        throw WordError(std::string("include: ") + error.what());
    }
    m_around.push_back(whole);
    addText(text, file.string());
    m_around.pop_back();
}

} // namespace

std::string readScriptFile(const std::filesystem::path& file) {
    return readTextFile(file, maxScriptSize, "a script");
}

Script readLines(std::string_view line, const Place& place, const CommandCheck& check,
                 const ScriptReader& reader) {
    Scripts scripts(check, reader);
    scripts.addLine(line, place);
    return scripts.take();
}

Script readScript(std::string_view text, const std::string& file, const CommandCheck& check,
                  const ScriptReader& reader) {
    Scripts scripts(check, reader);
    scripts.addText(text, file);
    return scripts.take();
}

} // namespace Radio
