#include "radioctl/calibrate/CalibrationPrograms.h"

#include "radio/board/BoardCheck.h"
#include "radio/board/BoardNames.h"
#include "radio/calibration/Calibrator.h"
#include "radio/calibration/Journal.h"
#include "radio/calibration/ResultFile.h"
#include "radio/calibration/Settings.h"
#include "radio/files/AtomicFile.h"
#include "radio/files/TextFile.h"
#include "radio/session/BootedRadio.h"
#include "radio/tables/Corrections.h"
#include "radio/text/Words.h"
#include "radioctl/calibrate/CalibrationReport.h"
#include "radioctl/calibrate/page/CalibrationPage.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/page/Gnuplot.h"
#include "radioctl/report/ExitCode.h"
#include "radioctl/report/Output.h"
#include "radioctl/report/Progress.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>

namespace Radio::Calibration {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuseBoard(const Board& board, const std::string& message) {
    throw InputError({board.file.string(), 0}, message);
}

/** What is written and what is read cannot all be meant; empty when it can. */
std::string whyNoFiles(const std::vector<std::pair<const char*, fs::path>>& files) {
    for (std::size_t i = 0; i < files.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const auto& [what, file] = files[i];
            const auto& [other, otherFile] = files[j];
            if (!file.empty() && !otherFile.empty() && isSameFile(file, otherFile)) {
                return std::string(what) + ": " + harmless(file.string()) + " is " + other +
                       ", expected a file of its own";
            }
        }
    }
    return {};
}

/** True for an ordinary file with just this content. */
bool isContentOf(const fs::path& file, const std::string& content) {
    std::error_code error;
    return fs::is_regular_file(file, error) && fs::file_size(file, error) == content.size() &&
           readTextFile(file, content.size(), "tables") == content;
}

/** Throws InputError when nothing can be written to `file`; writes nothing. */
void requireWritable(const fs::path& file) {
    if (!file.empty()) {
        const AtomicFile attempt(file);
    }
}

/** The file from which the channel takes both its tables. Throws InputError when there is no such file. */
fs::path tablesOf(const Board& board, int channel) {
    fs::path file;
    for (const auto& [branch, column] : {std::pair("I", "i"), std::pair("Q", "q")}) {
        const std::string name = '"' + cancellationTableName(channel, branch) + '"';
        const std::string expected =
            std::string("expected { file = \"NAME.csv\", column = \"") + column + "\" }";
        const TableDescription* const table = findCancellationTable(board, channel, branch);
        if (table == nullptr) {
            refuseBoard(board, "no table " + name + ", " + expected + ", or --out");
        }
        if (table->file.empty() || table->column != column) {
            throw InputError(table->place, "table " + name + " does not come from the column \"" + column +
                                               "\" of a file, " + expected + ", or --out");
        }
        if (!file.empty() && file != table->file) {
            throw InputError(table->place, "table " + name + " comes from another file than that of I, " +
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
    JournalHeader header() const;
    void begin();
    void goThroughAgain();
    void take(JournalContent content);
    int calibrate(CalibrationReport& report);
    /** False when it was left early: by a signal, or because of a trouble. */
    bool calibrateAll(Calibrator& calibrator, CalibrationReport& report, Progress& progress);
    void showProgress(Progress& progress) const;
    void store(const LeakageSummary& summary);
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
    /** The highest leakage so far that the corrections found leave. */
    std::optional<double> m_worst;
};

int CalibrationRun::run() {
    const int channel = m_options.wishes.channel;
    if (findChannel(m_board, channel) == nullptr) {
        return refuse(noSuchChannel(m_board, channel), m_options.json, ExitCode::wrongCommandLine);
    }
    if (findLeakage(m_board, channel) == nullptr) {
        refuseBoard(m_board, "channel " + std::to_string(channel) +
                                 " has no transmitter to calibrate, expected a [[leakage]]");
    }
    prepare();
    const std::string wrong = whyNoFiles({{"the board", m_board.file},
                                          {"the journal", m_journalFile},
                                          {"the tables", m_tables},
                                          {"--html", m_options.html}});
    if (!wrong.empty()) {
        return refuse(wrong, m_options.json, ExitCode::wrongCommandLine);
    }
    requireWritable(m_tables);
    requireWritable(m_options.html);
    openJournal();
    const std::unique_ptr<CalibrationReport> report =
        m_options.json ? std::unique_ptr<CalibrationReport>(std::make_unique<CalibrationJson>(std::cout))
                       : std::make_unique<CalibrationText>(std::cout, m_options.isVerbose);
    return calibrate(*report);
}

void CalibrationRun::prepare() {
    m_result.serial = !m_options.serial.empty() ? m_options.serial : m_board.serial;
    if (m_result.serial.empty()) {
        m_result.serial = "unknown";
    }
    m_result.date = utcText(std::chrono::system_clock::now());
    m_result.version = RADIOCTL_VERSION;
    m_tables = fs::path(m_options.tables).lexically_normal();
    if (!isOffline()) {
        m_result.settings = settingsFor(m_board, m_options.wishes);
        m_tables = m_tables.empty() ? tablesOf(m_board, m_options.wishes.channel) : m_tables;
    }
    if (!m_options.html.empty()) {
        Page::requireGnuplot();
    }
}

JournalHeader CalibrationRun::header() const {
    return {m_board.name,
            m_result.serial,
            m_result.date,
            m_result.version,
            fingerprintOf(*findLeakage(m_board, m_options.wishes.channel)),
            m_result.settings};
}

void CalibrationRun::openJournal() {
    if (isOffline()) {
        goThroughAgain();
        return;
    }
    std::error_code error;
    const bool isThere = fs::exists(m_journalFile, error);
    if (!isThere && !error) {
        if (m_options.beginning == Beginning::resume) {
            throw InputError({m_journalFile.string(), 0}, "is not there: nothing to resume");
        }
        begin();
        return;
    }
    Journal journal = Journal::open(m_journalFile);
    if (m_options.beginning == Beginning::resume) {
        JournalContent content = readJournal(m_journalFile);
        // Nobody has to say again which radio it is, but nobody may say that it is another one.
        if (m_options.serial.empty() && m_board.serial.empty()) {
            m_result.serial = content.header.serial;
        }
        requireSameCalibration(header(), content.header, m_journalFile);
        journal.cutOff(content.size);
        m_journal.emplace(std::move(journal));
        take(std::move(content));
        return;
    }
    // What is no journal is not put away either.
    if (!readJournal(m_journalFile).isFinished && m_options.beginning == Beginning::fresh) {
        throw InputError(
            {m_journalFile.string(), 0},
            "of a calibration that is not finished; --resume goes on with it, --restart keeps it "
            "as a backup and begins anew");
    }
    moveToBackup(m_journalFile);
    begin();
}

void CalibrationRun::begin() {
    m_journal.emplace(Journal::begin(m_journalFile, header()));
}

/** What was measured is what it was; only how far the searches go may be chosen anew. */
void CalibrationRun::goThroughAgain() {
    JournalContent content = readJournal(m_journalFile);
    const CalibrationDescription& wishes = m_options.wishes;
    m_result.settings = content.header.settings;
    m_result.settings.channel = wishes.channel;
    m_result.serial = content.header.serial;
    requireSameCalibration(header(), content.header, m_journalFile);
    m_result.settings.minDelta = wishes.minDelta.value_or(m_result.settings.minDelta);
    m_result.settings.maxIterations = wishes.maxIterations.value_or(m_result.settings.maxIterations);
    take(std::move(content));
}

void CalibrationRun::take(JournalContent content) {
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
    m_end.wanted = m_result.settings.frequencies.size() * m_result.settings.temperatures.size();
    Progress progress(m_end.wanted, "points");
    const auto goOn = [&] {
        showProgress(progress);
        return m_interrupt.signal() == 0;
    };
    const Probing probing{m_journal ? &*m_journal : nullptr, goOn, m_options.isRealTime};
    Calibrator calibrator(booted, m_board.file.string(), m_result.settings, probing, m_journalFile.string());
    report.begins(m_board, m_result, m_end.knownProbes);
    const auto start = std::chrono::steady_clock::now();
    const bool isComplete = calibrateAll(calibrator, report, progress);
    m_end.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    m_end.journal = m_journalFile.string();
    m_end.newProbes = calibrator.newProbes();
    const LeakageSummary summary = summarise(m_result, *findLeakage(m_board, m_result.settings.channel));
    if (isComplete) {
        try {
            store(summary);
            writePage();
        } catch (const InputError& error) {
            m_end.trouble = error.what();
        }
    }
    const bool isGood =
        summary.failed == 0 && (summary.edge == 0 || m_options.acceptsEdge || m_tables.empty());
    m_end.signal = m_interrupt.signal();
    m_end.exitCode = m_end.signal != 0        ? ExitCode::signalBase + m_end.signal
                     : !m_end.trouble.empty() ? ExitCode::unusableInput
                     : isGood                 ? ExitCode::good
                                              : ExitCode::outsideLimits;
    report.finished(m_result, summary, m_end);
    return m_end.trouble.empty() || m_end.signal != 0 ? m_end.exitCode
                                                      : refuse(m_end.trouble, m_options.json, m_end.exitCode);
}

bool CalibrationRun::calibrateAll(Calibrator& calibrator, CalibrationReport& report, Progress& progress) {
    const Settings& settings = m_result.settings;
    for (const std::int32_t temperature : settings.temperatures) {
        for (const std::uint32_t frequency : settings.frequencies) {
            const JournaledProbes& known = m_known.probes[{temperature, frequency}];
            Point point = calibrator.calibrate(frequency, temperature, known);
            if (m_interrupt.signal() != 0) {
                return false;
            }
            if (!calibrator.whyStopped().empty() && !isOffline()) {
                m_end.trouble = calibrator.whyStopped();
                return false;
            }
            if (point.state != PointState::failed) {
                m_worst = std::max(m_worst.value_or(point.after), point.after);
            }
            const bool wasKnown = point.probes.size() <= known.size();
            report.calibrated(point);
            m_result.points.push_back(std::move(point));
            if (wasKnown) {
                progress.beginAt(m_result.points.size());
            }
            showProgress(progress);
        }
    }
    return true;
}

void CalibrationRun::showProgress(Progress& progress) const {
    progress.update(m_result.points.size(), m_worst ? "leakage up to " + levelText(*m_worst) : "");
}

/** A table with a hole is none: either all points are stored or nothing is. */
void CalibrationRun::store(const LeakageSummary& summary) {
    m_end.wantedTables = m_tables.string();
    if (m_tables.empty() || summary.failed != 0 || (summary.edge != 0 && !m_options.acceptsEdge)) {
        return;
    }
    std::ostringstream content;
    writeResult(content, m_result);
    if (isContentOf(m_tables, content.str())) {
        m_end.isUnchanged = true;
    } else {
        AtomicFile file(m_tables);
        file.stream() << content.str();
        m_end.backup = keepBackup(m_tables).string();
        file.commit();
    }
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
    Calibration::writePage(file.stream(), m_board, *findLeakage(m_board, m_result.settings.channel),
                           m_result);
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

} // namespace Radio::Calibration
