#include "radioctl/calibrate/CalibrationPrograms.h"

#include "radio/board/BoardCheck.h"
#include "radio/board/BoardNames.h"
#include "radio/calibration/OwnFiles.h"
#include "radio/calibration/Reservations.h"
#include "radio/files/AtomicFile.h"
#include "radio/files/InputError.h"
#include "radio/session/BootedRadio.h"
#include "radio/text/Words.h"
#include "radioctl/bench/HardwareUse.h"
#include "radioctl/calibrate/Attendant.h"
#include "radioctl/calibrate/CalibrationRecord.h"
#include "radioctl/calibrate/CalibrationReport.h"
#include "radioctl/calibrate/page/CalibrationPage.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/keep/Keeper.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/page/Gnuplot.h"
#include "radioctl/report/Output.h"
#include "radioctl/report/Progress.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>

namespace Radio::Calibration {

namespace {

/** How the message of an outcome goes on. */
std::string wayOnText(const std::string& wayOn) {
    if (wayOn == "room") {
        return "; --resume goes on once there is room";
    }
    if (wayOn == "measure") {
        return "; --resume goes on once that is mended";
    }
    if (wayOn == "resume") {
        return "; --resume goes on once it can be written";
    }
    return wayOn == "put away" ? "; --restart keeps the journal as a backup and begins anew" : "";
}

/** Who chose the method of a calibration, as a message goes on. */
std::string whoChose(const Board& board, const CalibrationDescription& wishes, CalibrationMethod method) {
    const std::string word(toString(method));
    if (wishes.method) {
        return "--method " + word;
    }
    const bool isDescribed =
        std::any_of(board.calibrations.begin(), board.calibrations.end(), [&wishes](const auto& one) {
            return one.channel == wishes.channel && one.method.has_value();
        });
    return isDescribed ? "the method \"" + word + "\" of channel " + std::to_string(wishes.channel) + " in " +
                             harmless(board.file.string())
                       : "the method " + word + ", which it is when nobody says otherwise";
}

/** An option that does nothing with the method that was chosen; empty: all of them do. What the board
 * describes may be for either. */
std::string whyNotWithMethod(const Board& board, const CalibrationDescription& wishes,
                             CalibrationMethod method) {
    const bool isFit = method == CalibrationMethod::fit;
    if (!(isFit ? wishes.step.has_value() : wishes.probes.has_value())) {
        return {};
    }
    return std::string(isFit ? "--step" : "--probes") + ": not together with " +
           whoChose(board, wishes, method) + "; it is for --method " + (isFit ? "search" : "fit");
}

/** Shows a calibration while it goes on, and ends it when the user wants to leave. */
class Watcher final : public CalibrationListener {
public:
    Watcher(CalibrationReport& report, const Interrupt& interrupt)
        : m_report(report),
          m_interrupt(interrupt) {}

    void begins(const Board& board, const Result& result, std::size_t knownProbes) override {
        m_report.begins(board, result, knownProbes);
    }
    void qualified(const Qualification& qualification) override { m_report.qualified(qualification); }
    void calibrated(const Point& point) override { m_report.calibrated(point); }
    bool goOn(const CalibrationProgress& progress) override {
        tell(progress.awaited);
        const bool isFit = progress.mostProbes != 0;
        const std::size_t done = isFit ? progress.probes : progress.points;
        if (!m_bar) {
            m_bar.emplace(isFit ? progress.mostProbes : progress.wantedPoints, isFit ? "probes" : "points");
            m_bar->beginAt(done);
        }
        if (progress.awaited) {
            // How long a temperature takes says nothing about the points.
            m_bar->beginAt(done);
        }
        if (progress.isFromJournal && done != m_known) {
            m_known = done;
            m_bar->beginAt(m_known);
        }
        m_bar->update(done, noteOn(progress));
        return m_interrupt.signal() == 0;
    }
    void removeBar() { m_bar.reset(); }

private:
    /** Tells of a temperature that is waited for, once it is another one. */
    void tell(const std::optional<AwaitedTemperature>& awaited) {
        const bool isNew = awaited && (!m_awaited || awaited->wanted != m_awaited->wanted);
        if (isNew) {
            m_bar.reset();
        }
        if (isNew || (awaited && awaited->now != m_awaited->now)) {
            m_report.awaits(*awaited, isNew);
        }
        m_awaited = awaited;
    }
    static std::string noteOn(const CalibrationProgress& progress) {
        if (progress.awaited) {
            return awaitedText(*progress.awaited);
        }
        if (progress.highestReading) {
            return "last readings up to " + std::to_string(*progress.highestReading);
        }
        return progress.worst ? "leakage up to " + levelText(*progress.worst) : "";
    }

    CalibrationReport& m_report;
    const Interrupt& m_interrupt;
    std::optional<Progress> m_bar;
    std::size_t m_known = 0;
    std::optional<AwaitedTemperature> m_awaited;
};

/** One calibration from the command line to the exit code. */
class CalibrationProgram {
public:
    explicit CalibrationProgram(const CalibrationOptions& options) : m_options(options) {}

    /** Throws InputError for what cannot be used, and RadioError when the radio does not boot. */
    int run();

private:
    int calibrate(const Board& board, CalibrationRun& run, const std::string& reservation);
    void writePage(const Board& board, const CalibrationOutcome& outcome);
    int exitCode(const CalibrationOutcome& outcome, bool hasLeft) const;

    int keep(const Board& board, const CalibrationOutcome& outcome, int exitCode);

    const CalibrationOptions& m_options;
    const Interrupt m_interrupt;
    CalibrationEnd m_end;
    Keeper m_keeper{m_options.keep, m_options.json, std::cout};
};

int CalibrationProgram::run() {
    const Board board = loadUsableBoard(m_options.board);
    const int channel = m_options.order.wishes.channel;
    if (findChannel(board, channel) == nullptr) {
        return refuse(noSuchChannel(board, channel), m_options.json, ExitCode::wrongCommandLine);
    }
    CalibrationRun run(board, m_options.order);
    if (!m_options.html.empty()) {
        Page::requireGnuplot();
    }
    std::string wrong = whyNotOwnFiles({{"the board", board.file},
                                        {"the journal", run.journalFile()},
                                        {"the tables", run.tablesFile()},
                                        {"--html", m_options.html}});
    if (wrong.empty()) {
        wrong = whyNoJournal(board, run.journalFile());
    }
    if (wrong.empty() && m_options.order.beginning != Beginning::offline) {
        wrong = whyNotWithMethod(board, m_options.order.wishes, run.settings().method);
    }
    if (!wrong.empty()) {
        return refuse(wrong, m_options.json, ExitCode::wrongCommandLine);
    }
    requireWritable(run.tablesFile());
    requireWritable(m_options.html);
    const bool isOffline = m_options.order.beginning == Beginning::offline;
    const bool isHardware = m_options.hardware.hardware;
    const std::string reservation = isOffline ? "" : reservationAgainst(board, run.settings(), isHardware);
    if (isHardware && !m_options.isForced && !reservation.empty()) {
        return refuse(harmless(board.file.string()) + ": " + reservation +
                          "; --force calibrates all the same",
                      m_options.json, ExitCode::unusableInput);
    }
    run.prepare();
    return calibrate(board, run, reservation);
}

int CalibrationProgram::calibrate(const Board& board, CalibrationRun& run, const std::string& reservation) {
    HardwareUse use(board, m_options.hardware, std::cout, m_options.json);
    // Hardware that cannot be taken is not to leave a journal of nothing each time.
    run.open();
    Attendant attendant(m_interrupt, m_options.json ? std::cerr : std::cout);
    CalibrationBench bench;
    if (use.isReal()) {
        use.hardware()->setForced(m_options.isForced);
        bench = benchOf(*use.hardware());
        bench.listen = [&attendant] { return attendant.listen(); };
    }
    const std::unique_ptr<CalibrationReport> report =
        m_options.json ? std::unique_ptr<CalibrationReport>(std::make_unique<CalibrationJson>(std::cout))
                       : std::make_unique<CalibrationText>(std::cout, m_options.isVerbose);
    if (!reservation.empty()) {
        report->warns(reservation);
    }
    if (!run.putAway().backup.empty()) {
        report->makesRoom(run.journalFile().string(), run.putAway());
    }
    Watcher watcher(*report, m_interrupt);
    const CalibrationOutcome outcome = run.run(watcher, bench);
    watcher.removeBar();
    // A transmitter is not to wait for the page.
    const bool hasLeft = use.leave();
    m_end.trouble = outcome.trouble + wayOnText(outcome.wayOn);
    if (outcome.isComplete && m_end.trouble.empty()) {
        try {
            writePage(board, outcome);
        } catch (const InputError& error) {
            m_end.trouble = error.what();
        }
    }
    m_end.signal = m_interrupt.signal();
    m_end.exitCode = exitCode(outcome, hasLeft);
    report->finished(outcome, m_end);
    m_end.exitCode = keep(board, outcome, m_end.exitCode);
    return m_end.trouble.empty() || m_end.signal != 0 ? m_end.exitCode
                                                      : refuse(m_end.trouble, m_options.json, m_end.exitCode);
}

/** Keeps a calibration that came to its end, or whose chain was refused: others go on with their journal. One
 * that is gone through again was kept already, unless somebody asks for it. */
int CalibrationProgram::keep(const Board& board, const CalibrationOutcome& outcome, int exitCode) {
    const bool isAgain = m_options.order.beginning == Beginning::offline && m_options.keep.store.empty();
    if (!m_keeper.isWanted() || isAgain || m_end.signal != 0 ||
        (!outcome.isComplete && outcome.refusal.empty())) {
        return exitCode;
    }
    std::filesystem::path folder = board.file.parent_path();
    if (!outcome.journal.empty()) {
        folder = std::filesystem::path(outcome.journal).parent_path();
    }
    Store::Run run = m_keeper.begin("calibration", board);
    record(board, outcome, m_end, run);
    return m_keeper.keep(std::move(run), folder, exitCode);
}

void CalibrationProgram::writePage(const Board& board, const CalibrationOutcome& outcome) {
    if (m_options.html.empty()) {
        return;
    }
    const Result& result = outcome.result;
    const std::string stored = storedText(outcome, m_end);
    AtomicFile file(m_options.html);
    if (result.isHardware) {
        Calibration::writePage(file.stream(), board, result, stored);
    } else {
        Calibration::writePage(file.stream(), board, *findLeakage(board, result.settings.channel), result,
                               stored);
    }
    if (m_interrupt.signal() == 0) {
        file.commit();
        m_end.page = m_options.html;
    }
}

int CalibrationProgram::exitCode(const CalibrationOutcome& outcome, bool hasLeft) const {
    if (m_end.signal != 0) {
        return ExitCode::signalBase + m_end.signal;
    }
    if (!m_end.trouble.empty()) {
        return ExitCode::unusableInput;
    }
    return outcome.isGood && hasLeft ? ExitCode::good : ExitCode::outsideLimits;
}

} // namespace

int runCalibration(const CalibrationOptions& options) {
    return refusing(options.json, [&] { return CalibrationProgram(options).run(); });
}

} // namespace Radio::Calibration
