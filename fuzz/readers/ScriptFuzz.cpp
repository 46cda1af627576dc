// Scripts, held against a board that has one of everything.

#include "Rules.h"
#include "radio/board/BoardFile.h"
#include "radio/files/Json.h"
#include "radio/language/Script.h"
#include "radio/session/ScriptLine.h"
#include "radio/text/Tokenizer.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"

#include <filesystem>

namespace {

using namespace Radio;

const std::string fileName = "radio.script";

const char* const boardText = R"(
name = "One of everything"
[[channel]]
number = 0
type = "rau"
[[channel]]
number = 1
type = "microwave-hz-cs-offset"
[[leakage]]
channel = 1
reference = 18000000
paths = [ { level = -30, phase = 40 } ]
i = { driver = "channel.1.tx.rf.mixer.i", gain = 0.0001, range = [-4096, 4095] }
q = { driver = "channel.1.tx.rf.mixer.q", gain = 0.0001, range = [-4096, 4095] }
detector = { driver = "channel.1.tx.rf.detector.v", slope = 20, zero = -80, range = [0, 4095] }
[drivers]
"channel.1.tx.rf.mixer.i" = {}
"channel.1.tx.rf.mixer.q" = {}
"channel.1.tx.rf.detector.v" = {}
[variables]
"channel.1.rx.rf.frequency.cs.offset.array" = [1, 10, 2, 20]
"channel.1.rx.rf.frequency.cs.offset.arraysize" = 4
"TxIfBb" = 140000
[tables]
"Channel.1.Tx.Rf.Pll.Frequency.To.Chargepump.Setting" = { axis = [1, 2], values = [3, 4] }
[interfaces]
IRauHandler = "present"
)";

const CommandCheck& check() {
    static const Board board = readBoard(boardText, "radio.toml", [](const auto&) { return std::nullopt; });
    static const CommandCheck check(board);
    return check;
}

/** The same words, each in quotation marks. */
std::string quoted(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        line += " \"";
        for (const char character : word) {
            line += character == '"' || character == '\\' ? "\\" : "";
            line += character;
        }
        line += '"';
    }
    return line;
}

void requireRules(const ScriptLine& line) {
    const std::vector<std::string> words = splitIntoWords(line.text);
    const std::string inQuotes = quoted(words);
    Fuzz::require(splitIntoWords(inQuotes) == words, "quotation marks give back what stands in them",
                  inQuotes);
    const std::optional<ScriptLine> again = readLine(inQuotes, line.place, check());
    Fuzz::require(again && again->command.index() == line.command.index(),
                  "words in quotation marks mean the same", inQuotes);
}

/** No file is opened. */
std::string readNothing(const std::filesystem::path& /*file*/) {
    return "wait 1\n";
}

/** What a prompt would show of a line that is refused. */
void requireHarmlessPrompt(std::string_view text) {
    const std::string_view line = text.substr(0, text.find('\n'));
    try {
        static_cast<void>(readLines(line, Place{"", 1}, check(), readNothing));
    } catch (const WordError& error) {
        Fuzz::require(Fuzz::isHarmless(error.what()), "a message has nothing in it that a terminal obeys",
                      error.what());
    } catch (const InputError& error) {
        Fuzz::require(Fuzz::isHarmless(error.what()), "a message has nothing in it that a terminal obeys",
                      error.what());
    }
}

/** What is shown of a line that is carried out, or that did not hold. */
void requireHarmlessEcho(const ScriptLine& line) {
    const std::string shown = harmless(line.text) + " " + toString(line.place);
    Fuzz::require(Fuzz::isHarmless(shown), "a line is shown with nothing in it that a terminal obeys", shown);
    const std::string json = toText(Json{{"text", line.text}});
    Fuzz::require(Fuzz::isHarmless(json), "JSON has nothing in it that a terminal obeys", json);
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    requireHarmlessPrompt(text);
    Script script;
    if (Fuzz::accepts(fileName, text, [&] { script = readScript(text, fileName, check(), readNothing); })) {
        for (const ScriptLine& line : script) {
            requireRules(line);
            requireHarmlessEcho(line);
        }
    }
    return 0;
}
