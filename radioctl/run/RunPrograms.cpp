#include "radioctl/run/RunPrograms.h"

#include "radio/board/BoardFile.h"
#include "radio/board/PlatformWords.h"
#include "radio/files/AtomicFile.h"
#include "radio/files/InputError.h"
#include "radio/files/Json.h"
#include "radio/files/TextFile.h"
#include "radio/language/Script.h"
#include "radio/plan/Guard.h"
#include "radio/session/Bench.h"
#include "radio/session/ScriptLine.h"
#include "radio/session/Session.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"
#include "radioctl/bench/HardwareUse.h"
#include "radioctl/console/Impatience.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/console/LineEditor.h"
#include "radioctl/console/LineReader.h"
#include "radioctl/console/PatientOutput.h"
#include "radioctl/keep/Keeper.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/report/JunitReporter.h"
#include "radioctl/report/Output.h"

#include <unistd.h>

#include <csignal>
#include <functional>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <utility>

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

/** A session of the program: on hardware if that was asked for, and with what is around it. */
class Drive {
public:
    /** Throws InputError when the hardware cannot be driven. All must outlive the object. */
    Drive(const Board& board, const RunOptions& options, Reporter& reporter)
        : m_board(board),
          m_isDryRun(options.hardware.dryRun),
          m_reporter(reporter),
          m_hardware(board, options.hardware, std::cout, options.json),
          m_guard(board, m_hardware.isReal() && board.hardware.description.sensor.has_value()),
          m_session(board, reporter, options.trace, m_hardware.hardware()) {
        if (options.hardware.dryRun) {
            reporter.showAttributes([&board](const std::string& driver, std::int64_t value) {
                return attributeWrites(board, driver, value);
            });
        }
        reporter.boardLoaded(board);
        m_session.setGuard([this](const Action& action) { return whyNot(action); });
        m_session.setRefusing(options.hardware.hardware || options.hardware.dryRun);
        m_session.setIdle([this] { idle(); });
    }

    /** Runs the start-up, unless somebody wants to leave already. */
    void boot(const Interrupt& interrupt);
    Session& session() { return m_session; }
    /** Between two commands, and while there is none. */
    void idle();
    /** Leaves, and tells what the session came to; gives the exit code. */
    int conclude(int signal, std::size_t refusedLines);

private:
    std::string whyNot(const Action& action);
    void sense(std::optional<int> degrees);

    const Board& m_board;
    bool m_isDryRun;
    Reporter& m_reporter;
    HardwareUse m_hardware;
    Plan::Guard m_guard;
    Session m_session;
};

void Drive::boot(const Interrupt& interrupt) {
    if (interrupt.signal() != 0) {
        return;
    }
    m_session.boot();
    if (m_hardware.isReal()) {
        sense(m_hardware.hardware()->readSensor());
        m_hardware.hardware()->startSensor();
    }
}

/** What speaks against an action; what is forced may leave the ranges of drivers. */
std::string Drive::whyNot(const Action& action) {
    if (m_hardware.isReal()) {
        m_hardware.hardware()->setForced(isForced(action));
    }
    return m_guard.whyNot(action, m_session.radio().platform());
}

void Drive::idle() {
    sense(m_hardware.poll());
    if (m_hardware.isReal() && PatientOutput::isGone()) {
        static_cast<void>(raise(SIGHUP)); // nobody sees any more what is done: it is left
    }
}

/** What the sensor gave, unless the radio knows it. */
void Drive::sense(std::optional<int> degrees) {
    if (degrees && degrees != m_session.radio().platform().temperature().temperature()) {
        m_hardware.hardware()->setForced(false);
        m_reporter.sensed(*degrees, m_session.sense(*degrees));
    }
}

int Drive::conclude(int signal, std::size_t refusedLines) {
    const RunSummary summary{m_session.finish(), refusedLines, signal};
    int exitCode = exitCodeFor(summary);
    if (!m_hardware.leave() && exitCode == ExitCode::good) {
        exitCode = ExitCode::expectationFailed;
    }
    if (m_isDryRun) {
        m_hardware.tellLeaving(m_board);
    }
    m_reporter.summarised(summary, exitCode);
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
    Drive drive(board, options, reporter);
    drive.session().setGoOn([&interrupt] { return interrupt.signal() == 0 && std::cout.good(); });
    drive.boot(interrupt);
    for (const ScriptLine& line : script) {
        if (drive.session().isOver() || interrupt.signal() != 0 || !std::cout) {
            break;
        }
        drive.session().execute(line);
    }
    return drive.conclude(interrupt.signal(), 0);
}

/** Where the lines of a console come from. */
class ConsoleInput {
public:
    ConsoleInput(bool atTerminal, const BoardNames& names, Interrupt& interrupt) : m_reader(interrupt) {
        if (atTerminal) {
            m_editor.emplace(names, interrupt, historyFile());
        }
    }

    /** Is called every 250 ms while a line is waited for; see LineEditor. */
    void setIdle(const std::function<void()>& idle) {
        m_reader.setIdle(idle);
        if (m_editor.has_value()) {
            m_editor->setIdle(idle);
        }
    }

    std::optional<std::string> next() { return m_editor.has_value() ? m_editor->next() : m_reader.next(); }

private:
    LineReader m_reader;
    std::optional<LineEditor> m_editor;
};

int consoleOn(const Board& board, const RunOptions& options, Reporter& reporter, bool atTerminal) {
    Interrupt interrupt;
    const CommandCheck check(board, atTerminal);
    Drive drive(board, options, reporter);
    Impatience impatience(drive.session(), interrupt, atTerminal);
    drive.boot(interrupt);
    std::size_t refusedLines = 0;
    ConsoleInput input(atTerminal, check.names(), interrupt);
    input.setIdle([&drive] { drive.idle(); });
    Place place{atTerminal ? "" : standardInput, 0};
    const auto refuseLine = [&](const std::string& message) {
        refuse(reporter, message);
        refusedLines += atTerminal ? 0 : 1;
    };
    while (!drive.session().isOver() && std::cout) {
        const std::optional<std::string> line = input.next();
        if (!line.has_value()) {
            break;
        }
        ++place.line;
        try {
            for (const ScriptLine& command : readLines(*line, place, check)) {
                drive.session().execute(command);
                if (drive.session().isOver() || !impatience.goesOn()) {
                    break;
                }
            }
            impatience.settle();
        } catch (const WordError& error) {
            refuseLine((atTerminal ? "" : toString(place) + ": ") + error.what());
        } catch (const GivenUp& error) {
            // Ctrl-C has done its work: what was to be included is not waited for.
            if (atTerminal && error.signal() == SIGINT) {
                interrupt.forget();
            }
        } catch (const InputError& error) {
            refuseLine(error.what());
        }
    }
    return drive.conclude(interrupt.signal(), refusedLines);
}

/** Carries the script out; gives the exit code also when something that it needs cannot be used. */
int runReporting(const RunOptions& options, Reporter& reporter) {
    try {
        return runOn(loadBoard(options.board), options, reporter);
    } catch (const GivenUp& error) {
        return ExitCode::signalBase + error.signal();
    } catch (const InputError& error) {
        return refuse(reporter, error.what());
    }
}

/** The same with a report. */
int runWithJunit(const RunOptions& options, Reporter& reporter) {
    const std::string script = options.script.value_or("-");
    try {
        for (const std::string& input : {options.board, script}) {
            if (isSameFile(options.junit, input)) {
                throw InputError({options.junit, 0},
                                 "is read by the same run, expected another file for the report");
            }
        }
        AtomicFile file(options.junit);
        JunitReporter junit(reporter, script == "-" ? standardInput : script);
        const int exitCode = runReporting(options, junit);
        junit.write(file.stream(), exitCode);
        file.commit();
        return exitCode;
    } catch (const GivenUp& error) {
        return ExitCode::signalBase + error.signal();
    } catch (const InputError& error) {
        return refuse(reporter, error.what());
    }
}

/** The same, and the store keeps it as an acceptance run, unless it was interrupted or could not begin. */
int runKept(const RunOptions& options, Reporter& reporter, Keeper& keeper) {
    const std::string script = options.script.value_or("-");
    JunitReporter cases(reporter, script == "-" ? standardInput : script);
    const int exitCode = options.junit.empty() ? runReporting(options, cases) : runWithJunit(options, cases);
    if (exitCode != ExitCode::good && exitCode != ExitCode::expectationFailed &&
        exitCode != ExitCode::notBooted) {
        return exitCode;
    }
    const Board board = loadBoard(options.board);
    Store::Run run = keeper.begin("acceptance", board);
    run.isHardware = options.hardware.hardware;
    run.verdict = exitCode == ExitCode::good ? VerdictKind::pass : VerdictKind::fail;
    run.exitCode = exitCode;
    run.settings = toText({{"script", script}});
    for (const auto& [name, hasPassed] : cases.outcomes()) {
        Store::Measurement measurement{name};
        measurement.isHeld = hasPassed;
        run.measurements.push_back(measurement);
    }
    std::ostringstream report;
    cases.write(report, exitCode);
    run.files.push_back({"report", report.str()});
    if (script != "-") {
        addFile(run, "script", script);
    }
    return keeper.keep(std::move(run), board.file.parent_path(), exitCode);
}

} // namespace

int runScript(const RunOptions& options) {
    const auto reporter = makeReporter(options.json, options.verbose, true);
    try {
        Keeper keeper(options.keep, options.json, std::cout);
        if (keeper.isWanted()) {
            return runKept(options, *reporter, keeper);
        }
    } catch (const InputError& error) {
        return refuse(*reporter, error.what());
    }
    return options.junit.empty() ? runReporting(options, *reporter) : runWithJunit(options, *reporter);
}

int runConsole(const RunOptions& options) {
    const bool atTerminal = !options.json && isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
    const auto reporter = makeReporter(options.json, options.verbose, !atTerminal);
    try {
        return consoleOn(loadBoard(options.board), options, *reporter, atTerminal);
    } catch (const GivenUp& error) {
        return ExitCode::signalBase + error.signal();
    } catch (const InputError& error) {
        return refuse(*reporter, error.what());
    }
}

} // namespace Radio
