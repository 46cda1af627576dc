// A board and a script for it, with a line "~~~" between them: what radioctl run makes of any that can be
// read.

#include "Rules.h"
#include "radio/board/BoardFile.h"
#include "radio/language/Completion.h"
#include "radio/language/Script.h"
#include "radio/session/ScriptLine.h"
#include "radio/session/Session.h"
#include "radioctl/report/JsonReporter.h"
#include "radioctl/report/TextReporter.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <sstream>

// The wrapper of a C observer lives as long as the process.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:IFrequencyHandler::registerObserver\n";
}

namespace {

using namespace Radio;

const std::string boardName = "radio.toml";
const std::string scriptName = "radio.script";

void run(const Board& board, const Script& script, Reporter& reporter) {
    reporter.boardLoaded(board);
    Session session(board, reporter, Standalone::TraceLevel::information);
    // What would take its time, a million turns of a repetition for example, is left in the middle.
    session.setGoOn([left = 1000]() mutable { return left-- > 0; });
    session.boot();
    for (const ScriptLine& line : script) {
        if (!session.isOver()) {
            session.execute(line);
        }
    }
    reporter.summarised({session.finish()}, 0);
}

void requireHarmlessLines(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        Fuzz::require(Fuzz::isHarmless(line), "output has nothing in it that a terminal obeys", line);
    }
}

/** What a prompt would offer of the board. */
void requireHarmlessOffers(const BoardNames& names) {
    for (const std::string_view line : {"tune tx ", "set ", "write ", "interface ", "fault driver-write "}) {
        const auto offers = complete(line, names).candidates;
        for (const std::string& offer : offers) {
            Fuzz::require(Fuzz::isHarmless(offer), "what is offered has nothing in it that a terminal obeys",
                          offer);
        }
    }
}

void requireJsonLines(const std::string& text) {
    requireHarmlessLines(text);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        Fuzz::require(nlohmann::json::accept(line), "each line is one JSON value", line);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    constexpr std::string_view separator = "\n~~~\n";
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::string_view boardText = text.substr(0, end);
    const std::string_view scriptText = text.substr(std::min(end + separator.size(), text.size()));
    std::optional<Board> board;
    if (!Fuzz::accepts(boardName, boardText, [&] {
            board = readBoard(boardText, boardName, [](const auto&) { return std::nullopt; });
        })) {
        return 0;
    }
    requireHarmlessOffers(CommandCheck(*board).names());
    Script script;
    // No file is opened.
    const ScriptReader included = [](const auto& /*file*/) { return "wait 1\n"; };
    if (Fuzz::accepts(scriptName, scriptText,
                      [&] { script = readScript(scriptText, scriptName, CommandCheck(*board), included); })) {
        std::ostringstream shown;
        TextReporter people(shown, {});
        run(*board, script, people);
        requireHarmlessLines(shown.str());
        std::ostringstream told;
        JsonReporter programs(told, true);
        run(*board, script, programs);
        requireJsonLines(told.str());
    }
    return 0;
}
