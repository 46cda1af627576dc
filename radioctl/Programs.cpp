#include "Programs.h"

#include "BoardCheck.h"
#include "CommandError.h"
#include "CompletionScript.h"
#include "FindingReport.h"
#include "InputError.h"
#include "Interrupt.h"
#include "LineEditor.h"
#include "LineReader.h"
#include "Output.h"
#include "Script.h"
#include "Session.h"
#include "TextFile.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace Radioctl {

namespace {

int exitCodeFor(const Summary& summary) {
    if (summary.signal != 0) {
        return ExitCode::signalBase + summary.signal;
    }
    if (!summary.bootAccepted) {
        return ExitCode::notBooted;
    }
    if (summary.refusedLines != 0) {
        return ExitCode::unusableInput;
    }
    return summary.failed != 0 || summary.unexpectedFailures != 0 ? ExitCode::expectationFailed
                                                                  : ExitCode::good;
}

/** Tells what the session came to; gives the exit code. */
int conclude(Session& session, Reporter& reporter, int signal, std::size_t refusedLines) {
    Summary summary = session.finish();
    summary.signal = signal;
    summary.refusedLines = refusedLines;
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
Script loadScript(const Options& options, const CommandCheck& check, const Interrupt& interrupt) {
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

int runOn(const Board& board, const Options& options, Reporter& reporter) {
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

int consoleOn(const Board& board, const Options& options, Reporter& reporter, bool atTerminal) {
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
        } catch (const CommandError& error) {
            refuse(reporter, (atTerminal ? "" : toString(place) + ": ") + error.what());
            refusedLines += atTerminal ? 0 : 1;
        }
    }
    return conclude(session, reporter, interrupt.signal(), refusedLines);
}

} // namespace

int runScript(const Options& options) {
    const auto reporter = makeReporter(options, true);
    try {
        return runOn(loadBoard(options.board), options, *reporter);
    } catch (const InputError& error) {
        return refuse(*reporter, error.what());
    }
}

int runConsole(const Options& options) {
    const bool atTerminal = !options.json && isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
    const auto reporter = makeReporter(options, !atTerminal);
    try {
        return consoleOn(loadBoard(options.board), options, *reporter, atTerminal);
    } catch (const InputError& error) {
        return refuse(*reporter, error.what());
    }
}

int runCheck(const Options& options) {
    const auto reporter = makeReporter(options, true);
    int worst = ExitCode::good;
    for (const std::string& board : options.boards) {
        try {
            worst = std::max(worst, showFindings(board, checkBoard(loadBoard(board)), options.json));
        } catch (const InputError& error) {
            worst = std::max(worst, refuse(*reporter, error.what()));
        }
    }
    return worst;
}

int printCompletion() {
    std::cout << bashCompletionScript;
    return ExitCode::good;
}

} // namespace Radioctl
