#ifndef RADIO_CALIBRATION_CALIBRATOR_H
#define RADIO_CALIBRATION_CALIBRATOR_H

#include "ILoCancellation.h"
#include "radio/board/Board.h"
#include "radio/calibration/Calibration.h"
#include "radio/calibration/Climate.h"
#include "radio/calibration/Journal.h"
#include "radio/calibration/ProbeRecorder.h"
#include "radio/session/BootedRadio.h"
#include "radio/session/LeakingTransmitter.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Radio::Calibration {

/**
 * Calibrates one point after the other on a booted radio: has it at the temperature, tunes the transmitter,
 * and has the library search, through the interface that it publishes for that.
 */
class Calibrator {
public:
    /** What is borrowed must outlive the object. `climate` is that of a real radio, else null. Throws
     * InputError when the radio has nothing to search with. */
    Calibrator(BootedRadio& booted, const Board& board, const Result& result, const Probing& probing,
               const std::string& journalFile, Climate* climate);

    /** What the measuring chain is good for, at this point. `settleTime` is what somebody stated. A point
     * that cannot be had is a refusal. Leaves the corrections of real hardware as they were. */
    Qualification qualify(std::uint32_t frequency, std::int32_t temperature,
                          std::optional<std::uint32_t> settleTime, const TellTaken& tell = {});
    /** `journaled` are the probes of this point that are known, and `uncorrected` what was read before them.
     */
    Point calibrate(std::uint32_t frequency, std::int32_t temperature, const JournaledProbes& journaled,
                    std::optional<std::int32_t> uncorrected = std::nullopt);
    // What a fit asks for, one probe after the other.

    /** Has the radio at a place; gives why it is not there; empty: it is. */
    std::string goTo(std::uint32_t frequency, std::int32_t temperature);
    /** Probes at a place follow, of which `journaled` are known; it is borrowed until end(). `isReplay`: they
     * end with the journal, and hardware is not touched. */
    void begin(std::uint32_t frequency, std::int32_t temperature, const JournaledProbes& journaled,
               bool isReplay);
    /** Sets both corrections, waits the settle time and reads the detector; nothing when one of them fails.
     */
    std::optional<std::int32_t> probe(std::int32_t i, std::int32_t q);
    /** Why probe() gave nothing the last time. */
    const std::string& whyNotProbed() const { return m_whyNotProbed; }
    /** What the radio complained of first since the last place. */
    std::string firstComplaint() const;
    /** Has the library search where the radio is, between begin() and end(). */
    bool search(Point& point);
    /** Those since begin(). */
    const std::vector<Probe>& probes() const { return m_recorder.probes(); }
    std::vector<Probe> end() { return m_recorder.end(); }
    /** Has the radio at a point, with the corrections of that. */
    bool bring(const Point& point);
    Standalone::Platform& platform() const { return m_booted.radio().platform(); }
    /** Real hardware gets the corrections that it had before the last begin(). */
    void restore() { m_recorder.restore(); }

    /** The driver that is read. */
    const std::string& detector() const { return m_drivers.read(m_settings.useHighDetector); }
    /** How many probes were made that the journal did not have. */
    std::uint64_t newProbes() const { return m_recorder.newProbes() + m_uncorrectedReadings; }
    /** Why the last search was broken off, or why there can be no more; empty: neither. */
    const std::string& whyStopped() const {
        return isGivenUp()             ? m_climate->whyGivenUp()
               : !m_whyStopped.empty() ? m_whyStopped
                                       : m_recorder.whyStopped();
    }

    /** How one could go on after that: "resume" where the journal takes no more, "put away" where it has
     * another search; empty: nobody knows. */
    std::string wayOn() const {
        return m_recorder.isJournalStuck() ? "resume" : m_recorder.isOtherSearch() ? "put away" : "";
    }

private:
    /** From the journal alone; false when that does not have the whole search. */
    bool replay(Point& point, const JournaledProbes& journaled);
    void measure(Point& point, const JournaledProbes& journaled);
    /** What is left of a point after its search. */
    void conclude(Point& point, bool isFound);
    bool isGivenUp() const { return m_climate != nullptr && !m_climate->whyGivenUp().empty(); }
    void judge(Point& point);
    /** Units of the reading for each dB, if anybody knows. */
    std::optional<double> slope() const;
    /** Reads without corrections, if that says anything and they may be 0. */
    void measureUncorrected(Point& point);
    /** What readings come to in dB. */
    void setLevels(Point& point) const;

    BootedRadio& m_booted;
    const Result& m_result;
    const Settings& m_settings;
    const Probing& m_probing;
    Climate* m_climate;
    /** Null when nothing is modelled. */
    LeakingTransmitter* m_transmitter;
    const SearchDrivers m_drivers;
    ILoCancellation& m_cancellation;
    ProbeRecorder m_recorder;
    std::uint64_t m_uncorrectedReadings = 0;
    std::string m_whyStopped;
    std::string m_whyNotProbed;
};

} // namespace Radio::Calibration

#endif
