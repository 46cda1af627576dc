#include "radio/calibration/CalibrationRun.h"

#include "radio/board/BoardNames.h"
#include "radio/calibration/HardwareUnderTest.h"
#include "radio/calibration/LeakageVerdict.h"
#include "radio/calibration/Measurement.h"
#include "radio/calibration/ResultFile.h"
#include "radio/calibration/Settings.h"
#include "radio/files/AtomicFile.h"
#include "radio/files/Backup.h"
#include "radio/files/InputError.h"
#include "radio/files/TextFile.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace Radio::Calibration {

namespace {

namespace fs = std::filesystem;

/** True for an ordinary file with just this content. */
bool isContentOf(const fs::path& file, const std::string& content) {
    std::error_code error;
    return fs::is_regular_file(file, error) && fs::file_size(file, error) == content.size() &&
           readTextFile(file, content.size(), "tables") == content;
}

/** The file from which the channel takes both its tables. Throws InputError when there is no such file. */
fs::path tablesOf(const Board& board, int channel) {
    fs::path file;
    for (const auto& [branch, column] : {std::pair("I", "i"), std::pair("Q", "q")}) {
        const std::string name = '"' + cancellationTableName(channel, branch) + '"';
        const std::string expected =
            std::string(R"(expected { file = "NAME.csv", column = ")") + column + "\" }";
        const TableDescription* const table = findCancellationTable(board, channel, branch);
        if (table == nullptr) {
            throw ChoiceError({board.file.string(), 0}, "no table " + name + ", " + expected, "tables");
        }
        if (table->file.empty() || table->column != column) {
            throw ChoiceError(table->place,
                              "table " + name + " does not come from the column \"" + column +
                                  "\" of a file, " + expected,
                              "tables");
        }
        if (!file.empty() && file != table->file) {
            throw ChoiceError(
                table->place,
                "table " + name + " comes from another file than that of I, expected one for both", "tables");
        }
        file = table->file;
    }
    return file;
}

/** Points of one temperature keep their order. */
template <typename Points, typename TemperatureOf>
void sortByTemperature(Points& points, TemperatureOf temperatureOf) {
    std::stable_sort(points.begin(), points.end(), [&](const auto& one, const auto& other) {
        return temperatureOf(one) < temperatureOf(other);
    });
}

/** A fit that had no time to try its tables, or found them wrong, is none; a search is always held. */
bool isFitHeld(const Result& result) {
    return !result.fit || result.fit->verdict == Fit::Verdict::held;
}

/** The journal beside the board, unless the order names one. */
fs::path journalFor(const Board& board, const CalibrationOrder& order) {
    if (!order.journal.empty() || order.beginning == Beginning::rehearsal) {
        return order.journal;
    }
    fs::path file = board.file;
    return file.replace_extension(".channel-" + std::to_string(order.wishes.channel) + ".journal");
}

} // namespace

CalibrationRun::CalibrationRun(const Board& board, const CalibrationOrder& order)
    : m_board(board),
      m_order(order),
      m_journalFile(journalFor(board, order)),
      m_tables(order.tables.lexically_normal()) {
    if (isRehearsal() && (order.isHardware || !order.journal.empty() || !order.tables.empty())) {
        throw std::invalid_argument("a rehearsal on hardware, or one of which something is to be kept");
    }
    Result& result = m_outcome.result;
    result.isHardware = order.isHardware && !isOffline();
    result.serial = !order.serial.empty() ? order.serial : board.serial;
    if (result.serial.empty()) {
        result.serial = "unknown";
    }
    result.date = utcText(std::chrono::system_clock::now());
    result.version = order.version;
    result.station = order.station;
    if (!isOffline()) {
        requireTransmitter();
        const std::optional<Settings> begun = isRehearsal() ? std::nullopt : settingsOfJournal();
        const bool goesOn = order.beginning == Beginning::resume && begun;
        result.settings =
            settingsFor(board, goesOn ? asBegun(order.wishes, *begun) : order.wishes, result.isHardware);
        if (goesOn) {
            result.settings.limit = begun->limit;
        }
        if (result.isHardware) {
            requireCalibratable(board, result.settings, order.isAttended);
            result.climate = climateTermsFor(board, order.wishes, order.isAttended);
        }
        if (m_tables.empty() && !isRehearsal()) {
            m_tables = tablesOf(board, order.wishes.channel);
        }
    }
}

/** What the journal was begun with, as far as it can be read. */
std::optional<Settings> CalibrationRun::settingsOfJournal() const {
    try {
        return isOrdinaryFile(m_journalFile) ? std::optional(readJournal(m_journalFile).header.settings)
                                             : std::nullopt;
    } catch (const InputError&) {
        // That is told when it is opened.
        return std::nullopt;
    }
}

/** A simulation needs one that is modelled. */
void CalibrationRun::requireTransmitter() const {
    if (!m_outcome.result.isHardware && findLeakage(m_board, m_order.wishes.channel) == nullptr) {
        throw InputError({m_board.file.string(), 0},
                         "channel " + std::to_string(m_order.wishes.channel) +
                             " has no transmitter to calibrate, expected a [[leakage]]");
    }
}

/** What tells it from another one. */
std::string CalibrationRun::transmitter() const {
    const int channel = m_order.wishes.channel;
    return m_outcome.result.isHardware ? hardwareFingerprint(m_board, channel)
                                       : fingerprintOf(*findLeakage(m_board, channel));
}

LeakageSummary CalibrationRun::summary() const {
    const Result& result = m_outcome.result;
    return result.isHardware ? summarise(result)
                             : summarise(result, *findLeakage(m_board, m_order.wishes.channel));
}

JournalHeader CalibrationRun::header() const {
    const Result& result = m_outcome.result;
    return {m_board.name,  result.serial,   result.date,      result.version,
            transmitter(), result.settings, result.isHardware};
}

void CalibrationRun::prepare() {
    m_isPrepared = true;
    if (isRehearsal()) {
        return;
    }
    if (!isOffline()) {
        claimChannel();
        claimTables();
    }
    requireWritable(m_tables);
    if (isOffline()) {
        goThroughAgain();
    } else if (m_order.beginning == Beginning::resume) {
        resume();
    } else if (isOrdinaryFile(m_journalFile)) {
        const Journal journal = Journal::hold(m_journalFile);
        requireNoLoss();
    }
}

/** Whatever the journals are called: both would set the same corrections and store the same tables. */
void CalibrationRun::claimChannel() {
    const int channel = m_order.wishes.channel;
    const Claim::Answer answer = m_channelClaim.emplace(m_board.file).take(channel);
    if (answer == Claim::Answer::heldByAnother) {
        throw InputError({m_board.file.string(), 0}, "another calibration of channel " +
                                                         std::to_string(channel) +
                                                         " of this board goes on, expected one at a time");
    }
    if (answer == Claim::Answer::impossible) {
        throw InputError({m_board.file.string(), 0},
                         "cannot be locked: " + std::generic_category().message(errno) +
                             ", expected a board file of which one calibration at a time can be made");
    }
}

/**
 * Two boards may take the same tables, and an editor may have put a new file in the place of a board that is
 * being calibrated. The tables themselves need not be there yet: it is their name in their folder. A folder
 * without locks is no reason not to calibrate.
 */
void CalibrationRun::claimTables() {
    std::error_code error;
    fs::path tables = fs::absolute(m_tables, error);
    if (!error) {
        tables = fs::weakly_canonical(tables, error);
    }
    if (error || (fs::exists(tables, error) && !fs::is_regular_file(tables, error))) {
        return;
    }
    const Claim::Answer answer =
        m_tablesClaim.emplace(tables.parent_path()).take(numberOf(tables.filename().string()));
    if (answer == Claim::Answer::heldByAnother) {
        throw InputError({m_tables.string(), 0},
                         "another calibration is to store its tables here, expected one at a time");
    }
}

void CalibrationRun::open() {
    if (!m_isPrepared) {
        prepare();
    }
    if (!isOffline() && !isRehearsal() && !m_journal) {
        beginJournal();
    }
}

void CalibrationRun::beginJournal() {
    if (!isOrdinaryFile(m_journalFile)) {
        m_journal.emplace(Journal::begin(m_journalFile, header()));
        m_isBegun = true;
        return;
    }
    Journal old = Journal::hold(m_journalFile);
    requireNoLoss();
    m_putAway.backup = moveToBackup(m_journalFile).string();
    try {
        m_journal.emplace(Journal::begin(m_journalFile, header(), old));
    } catch (const InputError&) {
        moveBack(m_putAway.backup, m_journalFile);
        throw;
    }
    m_isBegun = true;
}

/** The content of the journal. Whoever begins anew need not be held up by a damaged one. */
JournalContent CalibrationRun::readKnown() const {
    try {
        return readJournal(m_journalFile);
    } catch (const InputError& error) {
        throw ChoiceError(error, "put away");
    }
}

/** What is there may be put away. */
void CalibrationRun::requireNoLoss() {
    try {
        const JournalContent content = readKnown();
        const bool isWorthIt = !content.isFinished && !content.probes.empty();
        if (isWorthIt && m_order.beginning == Beginning::fresh) {
            throw ChoiceError({m_journalFile.string(), 0}, "of a calibration that is not finished",
                              "resume or restart");
        }
    } catch (const InputError& error) {
        if (m_order.beginning != Beginning::restart) {
            throw;
        }
        m_putAway.remark = error.what();
    }
}

void CalibrationRun::resume() {
    if (!isOrdinaryFile(m_journalFile)) {
        throw InputError({m_journalFile.string(), 0}, "is not there: nothing to resume");
    }
    Journal journal = Journal::open(m_journalFile);
    JournalContent content = readKnown();
    // Nobody has to say again which radio it is, but nobody may say that it is another one.
    if (m_order.serial.empty() && m_board.serial.empty()) {
        m_outcome.result.serial = content.header.serial;
    }
    requireSameCalibration(header(), content.header, m_journalFile);
    journal.cutOff(content.size);
    m_journal.emplace(std::move(journal));
    take(std::move(content));
}

/** What was measured is what it was; only how far the searches go may be chosen anew. */
void CalibrationRun::goThroughAgain() {
    JournalContent content = readJournal(m_journalFile);
    const CalibrationDescription& wishes = m_order.wishes;
    m_outcome.result.isHardware = content.header.isHardware;
    requireTransmitter();
    Settings& settings = m_outcome.result.settings;
    settings = content.header.settings;
    settings.channel = wishes.channel;
    m_outcome.result.serial = content.header.serial;
    requireSameCalibration(header(), content.header, m_journalFile);
    settings.minDelta = wishes.minDelta.value_or(settings.minDelta);
    settings.maxIterations = wishes.maxIterations.value_or(settings.maxIterations);
    take(std::move(content));
}

void CalibrationRun::take(JournalContent content) {
    m_outcome.result.date = content.header.date;
    m_known = std::move(content);
    if (m_known.qualification) {
        adopt(m_outcome.result, *m_known.qualification);
    }
    m_outcome.knownProbes = m_known.uncorrected.size();
    for (const auto& [point, probes] : m_known.probes) {
        m_outcome.knownProbes += probes.size();
    }
}

CalibrationOutcome CalibrationRun::run(CalibrationListener& listener, const CalibrationBench& bench) {
    const Result& result = m_outcome.result;
    m_outcome.journal = m_journalFile.string();
    m_outcome.wanted = result.settings.frequencies.size() * result.settings.temperatures.size();
    Measurement(m_board, m_order, m_known, m_journal ? &*m_journal : nullptr, m_outcome).run(listener, bench);
    if (!m_outcome.refusal.empty()) {
        abandonJournal();
    }
    // Whatever the way was, tables are the same.
    sortByTemperature(m_outcome.result.points, [](const Point& point) { return point.temperature; });
    if (result.fit) {
        sortByTemperature(m_outcome.result.fit->points,
                          [](const Fit::Point& point) { return point.place.temperature; });
    }
    m_outcome.summary = summary();
    m_outcome.verdict = verdictOn(result, m_outcome.summary, m_board.limits);
    m_outcome.result.verdict = m_outcome.verdict.kind();
    if (m_outcome.isComplete) {
        try {
            store();
        } catch (const InputError& error) {
            m_outcome.trouble = error.what();
            // Every probe is in the journal: nothing has to be measured again.
            m_outcome.wayOn = isOffline() ? "" : "resume";
        }
    }
    const LeakageSummary& summary = m_outcome.summary;
    m_outcome.isGood = m_outcome.isComplete && m_outcome.refusal.empty() && m_outcome.trouble.empty() &&
                       summary.failed == 0 &&
                       (summary.edge == 0 || m_order.acceptsEdge || m_tables.empty()) &&
                       result.verdict != VerdictKind::fail && isFitHeld(result);
    return std::move(m_outcome);
}

/** A journal of nothing helps nobody; one that was there before stays. */
void CalibrationRun::abandonJournal() {
    if (m_isBegun) {
        std::error_code ignored;
        fs::remove(m_journalFile, ignored);
        m_outcome.journal.clear();
    }
}

/** A table with a hole is none: either all points are stored or nothing is. */
void CalibrationRun::store() {
    const LeakageSummary& summary = m_outcome.summary;
    m_outcome.wantedTables = m_tables.string();
    if (m_tables.empty() || summary.failed != 0 || asTables(m_outcome.result).points.empty()) {
        return;
    }
    const bool isFail = m_outcome.result.verdict == VerdictKind::fail || !isFitHeld(m_outcome.result);
    m_outcome.isHeldBackByEdge = summary.edge != 0 && !m_order.acceptsEdge;
    m_outcome.isHeldBackByFail = isFail && !m_order.acceptsFail;
    std::ostringstream content;
    writeResult(content, m_outcome.result);
    m_outcome.isUnchanged = isContentOf(m_tables, content.str());
    if (!m_outcome.isUnchanged && (m_outcome.isHeldBackByEdge || m_outcome.isHeldBackByFail)) {
        return;
    }
    if (!m_outcome.isUnchanged) {
        AtomicFile file(m_tables);
        file.stream() << content.str();
        m_outcome.backup = keepBackup(m_tables).string();
        file.commit();
    }
    m_outcome.tables = m_tables.string();
    if (m_journal && !m_known.isFinished) {
        m_journal->finish();
    }
}

} // namespace Radio::Calibration
