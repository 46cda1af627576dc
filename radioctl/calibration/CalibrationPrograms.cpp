#include "calibration/CalibrationPrograms.h"

#include "AtomicFile.h"
#include "BoardCheck.h"
#include "BoardNames.h"
#include "BootedRadio.h"
#include "Interrupt.h"
#include "Output.h"
#include "Programs.h"
#include "Progress.h"
#include "Words.h"
#include "calibration/CalibrationReport.h"
#include "calibration/Calibrator.h"
#include "calibration/Journal.h"
#include "calibration/ResultFile.h"
#include "calibration/Settings.h"
#include "calibration/page/CalibrationPage.h"
#include "page/Gnuplot.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>

namespace Radioctl::Calibration {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuseBoard(const Board& board, const std::string& message) {
    throw InputError({board.file.string(), 0}, message);
}

/** Throws InputError unless the board describes what a calibration of the channel needs. */
void requireLeakage(const Board& board, int channel) {
    std::vector<std::string> numbers;
    for (const ChannelDescription& described : board.channels) {
        numbers.push_back(std::to_string(described.number));
    }
    const std::string wanted = std::to_string(channel);
    if (std::find(numbers.begin(), numbers.end(), wanted) == numbers.end()) {
        refuseBoard(board, "no channel " + wanted + ", expected one of " + joined(numbers, ", "));
    }
    if (leakageOf(board, channel) == nullptr) {
        refuseBoard(board, "channel " + wanted + " has no transmitter to calibrate, expected a [[leakage]]");
    }
}

/** The file from which the channel takes both its tables. Throws InputError when there is no such file. */
fs::path tablesOf(const Board& board, int channel) {
    fs::path file;
    for (const auto& [branch, column] : {std::pair("I", "i"), std::pair("Q", "q")}) {
        const std::string name = cancellationTableName(channel, branch);
        const auto table = std::find_if(board.tables.begin(), board.tables.end(),
                                        [&](const auto& entry) { return entry.table.name == name; });
        const std::string expected =
            std::string(R"(expected { file = "NAME.csv", column = ")") + column + "\" }, or --out";
        if (table == board.tables.end()) {
            refuseBoard(board, "no table \"" + name + "\", " + expected);
        }
        if (table->file.empty() || table->column != column) {
            throw InputError(table->place, "table \"" + name + "\" does not come from the column \"" +
                                               column + "\" of a file, " + expected);
        }
        if (!file.empty() && file != table->file) {
            throw InputError(table->place, "table \"" + name + "\" comes from another file than that of I, " +
                                               "expected one for both, or --out");
        }
        file = table->file;
    }
    return file;
}

/** The journal beside the board, unless the user names one. */
fs::path journalFor(const CalibrationOptions& options) {
    if (!options.journal.empty()) {
        return options.journal;
    }
    fs::path file = options.board;
    return file.replace_extension(".channel-" + std::to_string(options.wishes.channel) + ".journal");
}

/** One calibration from the command line to the exit code. */
class CalibrationRun {
public:
    explicit CalibrationRun(const CalibrationOptions& options)
        : m_options(options),
          m_board(loadUsableBoard(options.board)),
          m_journalFile(journalFor(options)) {}

    /** Throws InputError for what cannot be used. */
    int run();

private:
    bool isOffline() const { return m_options.beginning == Beginning::offline; }
    void prepare();
    void openJournal();
    void begin();
    void resume(JournalContent content);
    void goThroughAgain();
    void take(JournalContent content);
    int calibrate(CalibrationReport& report);
    /** False when it was left early: by a signal, or because of m_trouble. */
    bool calibrateAll(Calibrator& calibrator, CalibrationReport& report);
    void store(const Summary& summary);
    void writePage();

    const CalibrationOptions& m_options;
    const Interrupt m_interrupt;
    const Board m_board;
    const fs::path m_journalFile;
    /** Where the tables go; empty: nowhere. */
    fs::path m_tables;
    Result m_result;
    JournalContent m_known;
    std::optional<Journal> m_journal;
    CalibrationEnd m_end;
    /** Why probing had to stop. */
    std::string m_trouble;
};

int CalibrationRun::run() {
    prepare();
    openJournal();
    const std::unique_ptr<CalibrationReport> report =
        m_options.json ? std::unique_ptr<CalibrationReport>(std::make_unique<CalibrationJson>(std::cout))
                       : std::make_unique<CalibrationText>(std::cout, m_options.isVerbose);
    return calibrate(*report);
}

void CalibrationRun::prepare() {
    requireLeakage(m_board, m_options.wishes.channel);
    m_result.serial = !m_options.serial.empty() ? m_options.serial : m_board.serial;
    if (m_result.serial.empty()) {
        m_result.serial = "unknown";
    }
    m_result.date = utcText(std::chrono::system_clock::now());
    m_result.version = RADIOCTL_VERSION;
    m_tables = m_options.tables;
    if (!isOffline()) {
        m_result.settings = settingsFor(m_board, m_options.wishes);
        m_tables = m_tables.empty() ? tablesOf(m_board, m_options.wishes.channel) : m_tables;
    }
    if (!m_options.html.empty()) {
        Page::requireGnuplot();
    }
}

void CalibrationRun::openJournal() {
    if (isOffline()) {
        goThroughAgain();
        return;
    }
    if (!fs::exists(m_journalFile)) {
        if (m_options.beginning == Beginning::resume) {
            throw InputError({m_journalFile.string(), 0}, "is not there: nothing to resume");
        }
        begin();
        return;
    }
    Journal journal = Journal::open(m_journalFile);
    if (m_options.beginning == Beginning::resume) {
        JournalContent content = readJournal(m_journalFile);
        journal.cutOff(content.size);
        m_journal.emplace(std::move(journal));
        resume(std::move(content));
        return;
    }
    if (m_options.beginning == Beginning::fresh && !readJournal(m_journalFile).isFinished) {
        throw InputError(
            {m_journalFile.string(), 0},
            "of a calibration that is not finished; --resume goes on with it, --restart keeps it "
            "as a backup and begins anew");
    }
    keepBackup(m_journalFile);
    begin();
}

void CalibrationRun::begin() {
    m_journal.emplace(Journal::begin(
        m_journalFile, {m_board.name, m_result.serial, m_result.date, m_result.version, m_result.settings}));
}

void CalibrationRun::resume(JournalContent content) {
    // Nobody has to say again which radio it is.
    const std::string serial = m_options.serial.empty() ? content.header.serial : m_options.serial;
    requireSameCalibration({m_board.name, serial, {}, {}, m_result.settings}, content.header, m_journalFile);
    take(std::move(content));
}

/** What was measured is what it was; only how far the searches go may be chosen anew. */
void CalibrationRun::goThroughAgain() {
    JournalContent content = readJournal(m_journalFile);
    const CalibrationDescription& wishes = m_options.wishes;
    m_result.settings = content.header.settings;
    if (wishes.channel != m_result.settings.channel) {
        throw InputError({m_journalFile.string(), 1},
                         "channel: " + std::to_string(m_result.settings.channel) + ", expected " +
                             std::to_string(wishes.channel));
    }
    m_result.settings.minDelta = wishes.minDelta.value_or(m_result.settings.minDelta);
    m_result.settings.maxIterations = wishes.maxIterations.value_or(m_result.settings.maxIterations);
    take(std::move(content));
}

void CalibrationRun::take(JournalContent content) {
    m_result.serial = content.header.serial;
    m_result.date = content.header.date;
    m_known = std::move(content);
    for (const auto& [point, probes] : m_known.probes) {
        m_end.knownProbes += probes.size();
    }
}

int CalibrationRun::calibrate(CalibrationReport& report) {
    BootedRadio booted(m_board);
    if (!booted.isUp()) {
        const std::vector<std::string>& complaints = booted.complaints();
        return refuse(m_board.file.string() + ": the radio did not boot" +
                          (complaints.empty() ? "" : ": " + complaints.front()),
                      m_options.json, ExitCode::notBooted);
    }
    const Probing probing{m_journal ? &*m_journal : nullptr, [this] { return m_interrupt.signal() == 0; },
                          m_options.isRealTime};
    Calibrator calibrator(booted, m_board.file.string(), m_result.settings, probing, m_journalFile.string());
    report.begins(m_board, m_result, m_end.knownProbes);
    const auto start = std::chrono::steady_clock::now();
    const bool isComplete = calibrateAll(calibrator, report);
    m_end.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    m_end.journal = m_journalFile.string();
    const Summary summary = summarise(m_result, *leakageOf(m_board, m_result.settings.channel));
    std::string trouble = m_trouble;
    if (isComplete) {
        try {
            store(summary);
            writePage();
        } catch (const InputError& error) {
            trouble = error.what();
        }
    }
    const bool isGood = summary.failed == 0 && (summary.edge == 0 || m_options.acceptsEdge);
    m_end.signal = m_interrupt.signal();
    m_end.exitCode = m_end.signal != 0  ? ExitCode::signalBase + m_end.signal
                     : !trouble.empty() ? ExitCode::unusableInput
                     : isGood           ? ExitCode::good
                                        : ExitCode::outsideLimits;
    report.finished(m_result, summary, m_end);
    return trouble.empty() || m_end.signal != 0 ? m_end.exitCode
                                                : refuse(trouble, m_options.json, m_end.exitCode);
}

bool CalibrationRun::calibrateAll(Calibrator& calibrator, CalibrationReport& report) {
    const Settings& settings = m_result.settings;
    m_end.wanted = settings.frequencies.size() * settings.temperatures.size();
    Progress progress(m_end.wanted, "points");
    std::optional<double> worst;
    for (const std::int32_t temperature : settings.temperatures) {
        for (const std::uint32_t frequency : settings.frequencies) {
            Point point =
                calibrator.calibrate(frequency, temperature, m_known.probes[{temperature, frequency}]);
            if (m_interrupt.signal() != 0) {
                return false;
            }
            if (!calibrator.whyStopped().empty() && !isOffline()) {
                m_trouble = calibrator.whyStopped();
                return false;
            }
            if (point.state != PointState::failed) {
                worst = std::max(worst.value_or(point.after), point.after);
            }
            report.calibrated(point);
            m_result.points.push_back(std::move(point));
            progress.update(m_result.points.size(), worst ? "leakage up to " + levelText(*worst) : "");
        }
    }
    return true;
}

/** A table with a hole is none: either all points are stored or nothing is. */
void CalibrationRun::store(const Summary& summary) {
    if (m_tables.empty() || summary.failed != 0 || (summary.edge != 0 && !m_options.acceptsEdge)) {
        return;
    }
    AtomicFile file(m_tables);
    writeResult(file.stream(), m_result);
    m_end.backup = keepBackup(m_tables).string();
    file.commit();
    m_end.tables = m_tables.string();
    if (m_journal && !m_known.isFinished) {
        m_journal->finish();
    }
}

void CalibrationRun::writePage() {
    if (m_options.html.empty()) {
        return;
    }
    AtomicFile file(m_options.html);
    Calibration::writePage(file.stream(), m_board, *leakageOf(m_board, m_result.settings.channel), m_result);
    if (m_interrupt.signal() == 0) {
        file.commit();
        m_end.page = m_options.html;
    }
}

} // namespace

int runCalibration(const CalibrationOptions& options) {
    try {
        return CalibrationRun(options).run();
    } catch (const InputError& error) {
        return refuse(error.what(), options.json, ExitCode::unusableInput);
    }
}

} // namespace Radioctl::Calibration
