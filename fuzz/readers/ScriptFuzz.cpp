// Scripts, held against a board that has one of everything.

#include "Rules.h"
#include "radio/board/BoardFile.h"
#include "radio/language/Script.h"
#include "radio/session/ScriptLine.h"
#include "radio/text/Tokenizer.h"

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

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    Script script;
    // No file is opened.
    const ScriptReader included = [](const auto& /*file*/) { return "wait 1\n"; };
    if (Fuzz::accepts(fileName, text, [&] { script = readScript(text, fileName, check(), included); })) {
        for (const ScriptLine& line : script) {
            requireRules(line);
        }
    }
    return 0;
}
