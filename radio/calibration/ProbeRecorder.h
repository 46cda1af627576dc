#ifndef RADIO_CALIBRATION_PROBERECORDER_H
#define RADIO_CALIBRATION_PROBERECORDER_H

#include "radio/calibration/Calibration.h"
#include "radio/calibration/Journal.h"
#include "radio/calibration/SearchDrivers.h"
#include "radio/session/ModelClock.h"
#include "standalone/Platform.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Radio::Calibration {

/** How probes are carried out. */
struct Probing {
    /** Where new probes are entered; null: none is made, all readings come from the journal that is there. */
    Journal* journal = nullptr;
    /** Asked after each new probe whether to go on; never empty. */
    std::function<bool()> goOn;
    /** Settle times of new probes are waited for. */
    bool isRealTime = false;
    /** So many readings make that of a new probe. */
    std::uint32_t readings = 1;
    /** New probes are made and entered nowhere; there is no journal. */
    bool keepsNothing = false;
};

/**
 * Stands between the library and the hardware, modelled or real, while a search goes on: it enters each probe
 * in the journal before the next is set, and answers from the journal the probes that are in it already.
 * Thereby a search that was interrupted is gone through again without measuring anything twice. Of real
 * hardware nothing is touched for probes that the journal has.
 */
class ProbeRecorder {
public:
    /** Takes the listener of the platform for itself, and what stands behind its detectors and corrections.
     * What is borrowed must outlive it. */
    ProbeRecorder(Standalone::Platform& platform, ModelClock& clock, SearchDrivers drivers,
                  const Probing& probing, std::string journalFile);
    ProbeRecorder(const ProbeRecorder&) = delete;
    ProbeRecorder& operator=(const ProbeRecorder&) = delete;
    ~ProbeRecorder();

    /** The first driver that took no write since the last question, outside of searches; empty: all did. */
    std::string takeFailedWrite();

    /** A search begins; `journaled` is borrowed until its end. `isReplay`: the search ends with the journal,
     * and hardware is not touched at all. */
    void begin(std::uint32_t frequency, std::int32_t temperature, const JournaledProbes& journaled,
               bool isReplay = false);
    /** The search came to its end. Gives its probes; corrections that were set and not read are none. */
    std::vector<Probe> end();
    /** Its probes so far. */
    const std::vector<Probe>& probes() const { return m_probes; }
    /** What real hardware was given until now is what restore() writes. A search begins with it. */
    void remember();
    /** Writes what real hardware was given before the search again, and 0 where it was given nothing. Not
     * during a search. */
    void restore();

    /** How many probes were made that the journal did not have. */
    std::uint64_t newProbes() const { return m_newProbes; }
    /** Why the search had to be broken off; empty when it was not. */
    const std::string& whyStopped() const { return m_whyStopped; }
    /** Forgets that. */
    void forgetWhyStopped() { m_whyStopped.clear(); }

    /** A probe could not be entered in the journal. Nothing that was entered before is lost. */
    bool isJournalStuck() const { return m_isJournalStuck; }
    /** The journal has another search than the one that goes on. */
    bool isOtherSearch() const { return m_isOtherSearch; }

    /** It was broken off because a probe would have had to be made. */
    bool isJournalOver() const;

private:
    class Tap;

    void called(const Standalone::Call& call);
    void tapSource(const std::string& detector);
    void tapBacking(const std::string& driver);
    void setClock(bool isRealTime);

    /** Something is set and wants its reading. */
    bool isReadingDue() const { return m_isSearching && m_pending.has_value(); }
    /** That reading, if the journal has it. */
    std::optional<std::int32_t> knownReading() const;
    /** The reading that is due cannot be taken from hardware. */
    bool refusesToRead();
    /** That of the probe that is set. */
    void take(std::int32_t reading);
    /** The mean of as many readings as a probe has, of which the first is there already; `code` becomes that
     * of one that failed. */
    std::int64_t meanOf(std::int64_t first, const std::function<std::int32_t(std::int64_t&)>& read,
                        std::int32_t& code);
    /** The next write belongs to a probe that is not made. */
    bool isWriteKept() const;

    /** What was set and not read was a probe without a reading, now that the next is set. */
    void settlePending();
    void enter(const Probe& probe);
    const JournaledProbe* journaled() const;
    void compare(const Probe& probe, const JournaledProbe& known);
    void stop(const std::string& why);

    Standalone::Platform& m_platform;
    ModelClock& m_clock;
    const SearchDrivers m_drivers;
    const Probing& m_probing;
    std::string m_journalFile;
    std::map<std::string, std::function<std::int64_t()>> m_sources;
    std::vector<std::unique_ptr<Tap>> m_taps;

    bool m_isSearching = false;
    bool m_isReplay = false;
    /** A settle time was not waited for to its end. */
    bool m_isCutShort = false;
    std::uint32_t m_frequency = 0;
    std::int32_t m_temperature = 0;
    const JournaledProbes* m_journaled = nullptr;
    std::int32_t m_i = 0;
    /** What is set, and has not been read. */
    std::optional<Probe> m_pending;
    std::vector<Probe> m_probes;
    std::string m_whyStopped;
    bool m_isJournalStuck = false;
    bool m_isOtherSearch = false;
    std::string m_failedWrite;
    std::uint64_t m_newProbes = 0;
};

} // namespace Radio::Calibration

#endif
