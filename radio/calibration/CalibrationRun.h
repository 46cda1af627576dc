#ifndef RADIO_CALIBRATION_CALIBRATIONRUN_H
#define RADIO_CALIBRATION_CALIBRATIONRUN_H

#include "radio/board/Board.h"
#include "radio/board/Verdict.h"
#include "radio/calibration/Calibration.h"
#include "radio/calibration/CalibrationBench.h"
#include "radio/calibration/Claim.h"
#include "radio/calibration/Climate.h"
#include "radio/calibration/Journal.h"
#include "radio/calibration/Surface.h"
#include "radio/session/RadioUnit.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace Radio::Calibration {

/** What becomes of a journal that is there. */
enum class Beginning : std::uint8_t {
    fresh,     ///< a finished one, or one without probes, is kept as a backup, an unfinished one is an error
    resume,    ///< its calibration goes on
    restart,   ///< it is kept as a backup, finished or not, and also what is there in place of a journal
    offline,   ///< it is gone through again, and nothing is measured
    rehearsal, ///< of a modelled transmitter: nothing is read or kept, neither journal nor tables
};

/** What a calibration is to do. */
struct CalibrationOrder {
    /**
     * What was chosen of the calibration itself; `channel` is one of the board's, which has a [[leakage]],
     * or on hardware what a calibration needs there. */
    CalibrationDescription wishes;
    /** Empty: the board's. */
    std::string serial{};
    Beginning beginning = Beginning::fresh;
    /** A file; empty: the usual one beside the board. */
    std::filesystem::path journal{};
    /** Where the tables go; empty: to the file from which the board takes them, or nowhere when offline. */
    std::filesystem::path tables{};
    /** Points whose search ended at the edge of a range are stored, too. */
    bool acceptsEdge = false;
    /** Tables are stored even if the limits of the board are not held. */
    bool acceptsFail = false;
    /** The measuring chain is qualified before the first point, unless the journal has that, or probes. */
    bool qualifies = false;
    /** Settle times are waited for; on hardware they are in any case. */
    bool isRealTime = false;
    /** A real radio is calibrated; what is modelled of the channel does not matter then. Not with
     * Beginning::offline, where the journal says it. */
    bool isHardware = false;
    /** Somebody is there who brings temperatures about where no chamber does, and tells them where no sensor
     * does. On hardware. */
    bool isAttended = false;
    /** Of the program that calibrates; stands in files behind the word "radioctl". */
    std::string version{};
    /** Where it is calibrated; stands in the tables. Empty: nobody says. */
    std::string station{};
};

/** How far a calibration has come. */
struct CalibrationProgress {
    std::size_t points = 0;
    std::size_t wantedPoints = 0;
    /** Of a fit, which has as many points as it takes: probes so far, and how many there may be; else 0. */
    std::size_t probes = 0;
    std::size_t mostProbes = 0;
    /** The highest leakage so far that the corrections found leave, in dBc; nothing before the first, and on
     * hardware. */
    std::optional<double> worst;
    /** On hardware the highest reading so far at the last probe of a point. */
    std::optional<std::int32_t> highestReading;
    /** Of the last point: the journal had all of its probes, and nothing was measured. */
    bool isFromJournal = false;
    /** On hardware: the temperature for which the next point waits. */
    std::optional<AwaitedTemperature> awaited;
};

/** Is told of a calibration while it goes on, on its thread; what it is given is valid during the call. */
class CalibrationListener {
public:
    CalibrationListener() = default;
    CalibrationListener(const CalibrationListener&) = delete;
    CalibrationListener& operator=(const CalibrationListener&) = delete;
    virtual ~CalibrationListener() = default;

    /**
     * The radio that is calibrated. It may be looked at while the listener is told or asked something, until
     * goes(); to change it is what the calibration does. Faults may be injected here, before anything is
     * measured.
     */
    virtual void isUp(RadioUnit& /*radio*/) {}
    /** The same is to be forgotten. */
    virtual void goes(RadioUnit& /*radio*/) {}
    /** The radio is up, and the first point begins. `result` has no points yet. */
    virtual void begins(const Board& board, const Result& result, std::size_t knownProbes) = 0;
    /** Before the first point, unless nobody asked: it may be refused. Figures that the journal had are told,
     * too. */
    virtual void qualified(const Qualification& /*qualification*/) {}
    virtual void calibrated(const Point& point) = 0;
    /**
     * Asked after each new probe and each point whether to go on; with CalibrationOrder::isRealTime and
     * on hardware about every 20 ms of a settle time, and of waiting for a temperature. May be asked
     * again after it said no.
     */
    virtual bool goOn(const CalibrationProgress& progress) = 0;
};

/** A file that had to make room for the journal of a new calibration. */
struct PutAway {
    /** What it is called now; empty: there was none. */
    std::string backup;
    /** Why it was no journal to go on with; empty: it was one. */
    std::string remark;
};

/** What a calibration came to. */
struct CalibrationOutcome {
    /** All points were calibrated. */
    bool isComplete = false;
    /** What went wrong with the calibration or with storing it; empty: nothing. */
    std::string trouble{};
    /** Why the measuring chain is no good, so that no point was calibrated; empty: it is. */
    std::string refusal{};
    /** How one could go on after it, if that is known: "resume" once the files can be written, "room" to
     * resume once there is room on the disk, "measure" to resume once what was wrong with the radio is
     * mended, "put away" to begin anew. */
    std::string wayOn{};
    Result result{};
    LeakageSummary summary{};
    /** What the limits of the board make of it. */
    Verdict verdict{};
    /** The points that it was to have. */
    std::size_t wanted = 0;
    /** Probes that were in the journal before, and those that were made, among them so many readings that
     * qualified the chain. */
    std::size_t knownProbes = 0;
    std::uint64_t newProbes = 0;
    std::uint64_t qualifyingReadings = 0;
    /** From the beginning of the first point to the end of the last. */
    double seconds = 0;
    /** What of that was slept, or would have been where nobody waits: settle times, and the like. */
    double modelledSeconds = 0;
    /** Where tables were to go; empty: nowhere, or the calibration is not complete. */
    std::string wantedTables{};
    /** The tables that are stored, and what the old ones are called now; empty when there are none. */
    std::string tables{};
    std::string backup{};
    /** Why complete tables were not stored: edges, or a missed limit, that were not accepted. */
    bool isHeldBackByEdge = false;
    bool isHeldBackByFail = false;
    /** The tables were there already, with the same content. */
    bool isUnchanged = false;
    /** Where the probes are; empty when the journal was taken back with a refusal. */
    std::string journal{};
    /** Nothing went wrong, all points have corrections, tables that were asked for could be made of them, and
     * no limit of the board is missed. */
    bool isGood = false;
};

/**
 * Calibrates one channel over its band and temperatures: settles what is to be done, keeps every probe in the
 * journal before the next is set, and stores the tables when all points have corrections. What is in the
 * journal is on the disk, and a run that was killed goes on from there.
 *
 * One at a time in a process, on one thread: it boots a radio.
 */
class CalibrationRun {
public:
    /**
     * Settles what is to be done, and writes nothing. `board` must outlive the object. Throws ChoiceError
     * when something has to be said and neither the order nor the board does: with the choice "band", "step",
     * "temperatures", "tables", on hardware "i-range" or "q-range"; and InputError for a channel without a
     * leakage, or whose hardware does not do. A rehearsal on hardware is std::invalid_argument.
     */
    CalibrationRun(const Board& board, const CalibrationOrder& order);

    /** What it is about; offline that is known after prepare(). */
    const Settings& settings() const { return m_outcome.result.settings; }
    const std::filesystem::path& journalFile() const { return m_journalFile; }
    /** Where the tables go; empty: nowhere. */
    const std::filesystem::path& tablesFile() const { return m_tables; }

    /**
     * As far as it goes without leaving anything behind: opens a journal that is gone on with, or sees that
     * one can be begun. From now on no other calibration can have the channel of this board, nor these
     * tables, until the object is destroyed; offline any can. Throws what open() would throw then.
     */
    void prepare();
    /**
     * Opens the journal, or begins one, whether or not prepare() was called. Throws InputError when that
     * cannot be done, when another calibration has the channel, when the tables could not be written, and
     * when the journal is not what the order takes it for (ChoiceError, with the choice "restart", "resume or
     * restart" or "hardware or restart") or is damaged or none at all ("put away"); then whatever was there
     * is as it was.
     */
    void open();
    /** What was at the place of the journal and had to make room for it; known after open(). */
    const PutAway& putAway() const { return m_putAway; }
    /**
     * Calibrates all points that the journal does not have. To be called once, after open(); without that
     * nothing is measured. `listener` is borrowed during the call only. Throws InputError when the channel
     * does not offer to search, and RadioError when the radio does not boot. What goes wrong later is in the
     * outcome.
     *
     * On hardware `bench` is the radio, and borrowed during the call; otherwise it is not needed.
     */
    CalibrationOutcome run(CalibrationListener& listener, const CalibrationBench& bench = {});

private:
    bool isOffline() const { return m_order.beginning == Beginning::offline; }
    bool isRehearsal() const { return m_order.beginning == Beginning::rehearsal; }
    std::optional<Settings> settingsOfJournal() const;
    void requireTransmitter() const;
    std::string transmitter() const;
    LeakageSummary summary() const;
    JournalHeader header() const;
    void claimChannel();
    void claimTables();
    JournalContent readKnown() const;
    void requireNoLoss();
    void beginJournal();
    void resume();
    void goThroughAgain();
    void take(JournalContent content);
    void abandonJournal();
    void store();

    const Board& m_board;
    const CalibrationOrder m_order;
    const std::filesystem::path m_journalFile;
    std::filesystem::path m_tables;
    JournalContent m_known;
    std::optional<Journal> m_journal;
    std::optional<Claim> m_channelClaim;
    std::optional<Claim> m_tablesClaim;
    PutAway m_putAway;
    bool m_isPrepared = false;
    bool m_isBegun = false;
    CalibrationOutcome m_outcome;
};

} // namespace Radio::Calibration

#endif
