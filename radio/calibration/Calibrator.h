#ifndef RADIO_CALIBRATION_CALIBRATOR_H
#define RADIO_CALIBRATION_CALIBRATOR_H

#include "ILoCancellation.h"
#include "radio/calibration/Calibration.h"
#include "radio/calibration/Journal.h"
#include "radio/calibration/ProbeRecorder.h"
#include "radio/session/BootedRadio.h"
#include "radio/session/LeakingTransmitter.h"

#include <cstdint>
#include <string>

namespace Radio::Calibration {

/**
 * Calibrates one point after the other on a booted radio: sets the temperature, tunes the transmitter, and
 * has the library search, through the interface that it publishes for that.
 */
class Calibrator {
public:
    /** What is borrowed must outlive the object. Throws InputError when the radio has nothing to search with.
     */
    Calibrator(BootedRadio& booted, const std::string& board, const Settings& settings,
               const Probing& probing, const std::string& journalFile);

    /** `journaled` are the probes of this point that are known. */
    Point calibrate(std::uint32_t frequency, std::int32_t temperature, const JournaledProbes& journaled);
    /** How many probes were made that the journal did not have. */
    std::uint64_t newProbes() const { return m_recorder.newProbes(); }
    /** Why the last search was broken off; empty when it was not. */
    const std::string& whyStopped() const { return m_recorder.whyStopped(); }

private:
    /** Gives why the radio is not there; empty: it is. */
    std::string goTo(std::uint32_t frequency, std::int32_t temperature);
    bool search(Point& point);
    std::string firstComplaint() const;

    BootedRadio& m_booted;
    const Settings& m_settings;
    LeakingTransmitter& m_transmitter;
    ILoCancellation& m_cancellation;
    ProbeRecorder m_recorder;
};

} // namespace Radio::Calibration

#endif
