#ifndef RADIO_CALIBRATION_JOURNAL_H
#define RADIO_CALIBRATION_JOURNAL_H

#include "radio/calibration/Calibration.h"
#include "radio/calibration/LockFile.h"
#include "radio/files/InputError.h"
#include "radio/files/Json.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <istream>
#include <map>
#include <string>
#include <utility>
#include <vector>

/** Journals of calibrations. Touches no radio; may be called on any thread, a Journal on one at a time. */
namespace Radio::Calibration {

/** What a calibration is about; stands in front of its journal. */
struct JournalHeader {
    /** The name of the radio. */
    std::string board;
    std::string serial;
    /** When the calibration began. */
    std::string date;
    std::string version;
    /** What tells one transmitter from another: fingerprintOf() a modelled one, hardwareFingerprint() of a
     * real one. */
    std::string transmitter;
    Settings settings;
    /** A real radio is calibrated. */
    bool isHardware = false;
};

/** A probe that is in a journal, and where. */
struct JournaledProbe {
    Probe probe;
    unsigned line = 0;
};

/** Probes of one carrier at one temperature, in their order. */
using JournaledProbes = std::vector<JournaledProbe>;
/** By temperature and carrier. */
using KnownProbes = std::map<std::pair<std::int32_t, std::uint32_t>, JournaledProbes>;

/** What a spectrum analyser saw, in hundredths of dBc, by temperature and carrier. */
using SeenLevels = std::map<std::pair<std::int32_t, std::uint32_t>, std::int32_t>;

/** What a journal says. */
struct JournalContent {
    JournalHeader header;
    KnownProbes probes;
    /** Readings without corrections, by temperature and carrier. */
    std::map<std::pair<std::int32_t, std::uint32_t>, std::int32_t> uncorrected{};
    SeenLevels analysed{};
    /** What the measuring chain was found to be; journals of before have nothing of it. */
    std::optional<Qualification> qualification{};
    /** The order in which temperatures are gone through; empty: ascending. */
    std::vector<std::int32_t> route{};
    /** The calibration came to its end. */
    bool isFinished = false;
    /** The size of what can be used; a last line behind it that was not written whole counts as never
     * written. */
    std::uintmax_t size = 0;
};

/** True when a file is there. Throws InputError for what can be no journal and is not to be put away: a
 * directory, a device, a pipe, a symbolic link that leads nowhere. */
bool isOrdinaryFile(const std::filesystem::path& file);

/** Reads a journal. Throws InputError for a file that cannot be read, or that is none. */
JournalContent readJournal(const std::filesystem::path& file);
/** The same for what `stream` gives, the content of a file called `name`. */
JournalContent readJournal(std::istream& stream, const std::string& name);

/** Sixteen hexadecimal digits that change with every number of a leakage. */
std::string fingerprintOf(const LeakageDescription& leakage);

/** Throws ChoiceError, with the choice "restart" or "hardware or restart", unless a calibration that `wanted`
 * describes can go on with what the journal was begun with. Dates and versions may differ. */
void requireSameCalibration(const JournalHeader& wanted, const JournalHeader& begun,
                            const std::filesystem::path& file);

/**
 * The journal of a calibration that goes on: whatever was entered is on the disk, and outlives the program
 * and the power. Nobody else can open it meanwhile.
 */
class Journal {
public:
    /** Begins a journal where there is no file. Throws InputError when there is one, or writing fails. */
    static Journal begin(const std::filesystem::path& file, const JournalHeader& header);
    /** The same in the place of one that was held and put away, whose lock it takes over. */
    static Journal begin(const std::filesystem::path& file, const JournalHeader& header, Journal& held);
    /** Opens one that is there, finished or not. Throws InputError when that cannot be done, when the file is
     * no ordinary one, and when another calibration has it open. */
    static Journal open(const std::filesystem::path& file);
    /** The same for one that nobody is to open before it was put away; nothing can be entered in it. */
    static Journal hold(const std::filesystem::path& file);

    Journal(Journal&& other) noexcept;
    Journal& operator=(Journal&& other) = delete;
    ~Journal();

    /** Takes away what stands behind the usable part. As the next five, throws InputError when the file
     * cannot be written. */
    void cutOff(std::uintmax_t size);
    /** `frequency` is in kHz, `temperature` in degrees Celsius. */
    void enter(std::uint32_t frequency, std::int32_t temperature, const Probe& probe);
    /** What was read without corrections before the search. */
    void enterUncorrected(std::uint32_t frequency, std::int32_t temperature, std::int32_t reading);
    /** What the spectrum analyser saw of the corrections found there, in hundredths of dBc. */
    void enterAnalysed(std::uint32_t frequency, std::int32_t temperature, std::int32_t level);
    void enter(const Qualification& qualification);
    /** The order in which temperatures are gone through. */
    void enterRoute(const std::vector<std::int32_t>& temperatures);
    /** Says that nothing will follow. */
    void finish();
    /** Something could not be written for want of room on the disk. */
    bool isFull() const { return m_isFull; }

private:
    /** `flags` are those of open(). */
    Journal(std::filesystem::path file, int flags);

    /** Sees that it is an ordinary file, which nobody else has open. */
    void keepToItself();
    void takeLock();
    void append(const Json& event);
    [[noreturn]] void failWriting(int reason);
    [[noreturn]] void fail(const std::string& what) const;

    std::filesystem::path m_file;
    int m_descriptor = -1;
    LockFile m_lock;
    bool m_isFull = false;
};

/** A time in UTC, for example "2026-03-01T09:30:00Z". */
std::string utcText(std::chrono::system_clock::time_point time);
/** The same with milliseconds, "2026-03-01T09:30:00.250Z". */
std::string preciseUtcText(std::chrono::system_clock::time_point time);

} // namespace Radio::Calibration

#endif
