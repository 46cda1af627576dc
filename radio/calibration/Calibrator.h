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

    /** `journaled` are the probes of this point that are known. */
    Point calibrate(std::uint32_t frequency, std::int32_t temperature, const JournaledProbes& journaled);
    /** How many probes were made that the journal did not have. */
    std::uint64_t newProbes() const { return m_recorder.newProbes(); }
    /** Why the last search was broken off, or why there can be no more; empty: neither. */
    const std::string& whyStopped() const {
        return isGivenUp() ? m_climate->whyGivenUp() : m_recorder.whyStopped();
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
    /** Gives why the radio is not there; empty: it is. */
    std::string goTo(std::uint32_t frequency, std::int32_t temperature);
    /** What is left of a point after its search. */
    void conclude(Point& point, bool isFound);
    bool search(Point& point);
    bool isGivenUp() const { return m_climate != nullptr && !m_climate->whyGivenUp().empty(); }
    void judge(Point& point);
    std::string firstComplaint() const;

    BootedRadio& m_booted;
    const Settings& m_settings;
    const Probing& m_probing;
    Climate* m_climate;
    /** Null when nothing is modelled. */
    LeakingTransmitter* m_transmitter;
    ILoCancellation& m_cancellation;
    ProbeRecorder m_recorder;
};

} // namespace Radio::Calibration

#endif
