#include "radioctl/run/RunPrograms.h"

#include "radio/board/BoardFile.h"
#include "radio/files/InputError.h"
#include "radio/files/TextFile.h"
#include "radio/language/Script.h"
#include "radio/session/ScriptLine.h"
#include "radio/session/Session.h"
#include "radio/text/WordError.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/console/LineEditor.h"
#include "radioctl/console/LineReader.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/report/Output.h"

#include <unistd.h>

#include <optional>
#include <string>

namespace Radio {

namespace {

int exitCodeFor(const RunSummary& summary) {
    if (summary.signal != 0) {
        return ExitCode::signalBase + summary.signal;
    }
    if (!summary.session.bootAccepted) {
        return ExitCode::notBooted;
    }
    if (summary.refusedLines != 0) {
        return ExitCode::unusableInput;
    }
    return summary.session.failed != 0 || summary.session.unexpectedFailures != 0
               ? ExitCode::expectationFailed
               : ExitCode::good;
}

/** Tells what the session came to; gives the exit code. */
int conclude(Session& session, Reporter& reporter, int signal, std::size_t refusedLines) {
    const RunSummary summary{session.finish(), refusedLines, signal};
    const int exitCode = exitCodeFor(summary);
    reporter.summarised(summary, exitCode);
    return exitCode;
}

int refuse(Reporter& reporter, const std::string& message) {
    reporter.refused(message);
    complain(message);
    return ExitCode::unusableInput;
}

/** The script that the options name; without one, what standard input has unless it is a terminal. */
Script loadScript(const RunOptions& options, const CommandCheck& check, const Interrupt& interrupt) {
    if (!options.script.has_value() && isatty(STDIN_FILENO) == 1) {
        return {};
    }
    const std::string file = options.script.value_or("-");
    if (file.empty()) {
        throw InputError({"SCRIPT", 0}, "is empty, expected a file or \"-\"");
    }
    return file == "-" ? readScript(LineReader(interrupt).all(maxScriptSize), standardInput, check)
                       : readScript(readTextFile(file, maxScriptSize, "a script"), file, check);
}

int runOn(const Board& board, const RunOptions& options, Reporter& reporter) {
    const Interrupt interrupt;
    const CommandCheck check(board);
    const Script script = loadScript(options, check, interrupt);
    if (interrupt.signal() != 0) {
        return ExitCode::signalBase + interrupt.signal();
    }
    reporter.boardLoaded(board);
    Session session(board, reporter, options.trace);
    session.boot();
    for (const ScriptLine& line : script) {
        if (session.isOver() || interrupt.signal() != 0) {
            break;
        }
        session.execute(line);
    }
    return conclude(session, reporter, interrupt.signal(), 0);
}

/** Where the lines of a console come from. */
class ConsoleInput {
public:
    ConsoleInput(bool atTerminal, const BoardNames& names, Interrupt& interrupt) : m_reader(interrupt) {
        if (atTerminal) {
            m_editor.emplace(names, interrupt, historyFile());
        }
    }

    std::optional<std::string> next() { return m_editor.has_value() ? m_editor->next() : m_reader.next(); }

private:
    LineReader m_reader;
    std::optional<LineEditor> m_editor;
};

int consoleOn(const Board& board, const RunOptions& options, Reporter& reporter, bool atTerminal) {
    Interrupt interrupt;
    const CommandCheck check(board);
    reporter.boardLoaded(board);
    Session session(board, reporter, options.trace);
    session.boot();
    std::size_t refusedLines = 0;
    ConsoleInput input(atTerminal, check.names(), interrupt);
    Place place{atTerminal ? "" : standardInput, 0};
    while (!session.isOver()) {
        const std::optional<std::string> line = input.next();
        if (!line.has_value()) {
            break;
        }
        ++place.line;
        try {
            if (const auto command = readLine(*line, place, check)) {
                session.execute(*command);
            }
        } catch (const WordError& error) {
            refuse(reporter, (atTerminal ? "" : toString(place) + ": ") + error.what());
            refusedLines += atTerminal ? 0 : 1;
        }
    }
    return conclude(session, reporter, interrupt.signal(), refusedLines);
}

} // namespace

int runScript(const RunOptions& options) {
    const auto reporter = makeReporter(options.json, options.verbose, true);
    try {
        return runOn(loadBoard(options.board), options, *reporter);
    } catch (const InputError& error) {
        return refuse(*reporter, error.what());
    }
}

int runConsole(const RunOptions& options) {
    const bool atTerminal = !options.json && isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
    const auto reporter = makeReporter(options.json, options.verbose, !atTerminal);
    try {
        return consoleOn(loadBoard(options.board), options, *reporter, atTerminal);
    } catch (const InputError& error) {
        return refuse(*reporter, error.what());
    }
}

} // namespace Radio
