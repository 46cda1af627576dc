#ifndef RADIO_CALIBRATION_PROBERECORDER_H
#define RADIO_CALIBRATION_PROBERECORDER_H

#include "radio/calibration/Calibration.h"
#include "radio/calibration/Journal.h"
#include "radio/model/LeakageModel.h"
#include "radio/session/ModelClock.h"
#include "standalone/Platform.h"

#include <cstdint>
#include <functional>
#include <map>
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
};

/**
 * Stands between the library and the modelled hardware while a search goes on: it enters each probe in the
 * journal before the next is set, and answers from the journal the probes that are in it already. Thereby a
 * search that was interrupted is gone through again without measuring anything twice.
 */
class ProbeRecorder {
public:
    /** Takes the listener and the detectors of the platform for itself. What is borrowed must outlive it. */
    ProbeRecorder(Standalone::Platform& platform, ModelClock& clock, const LeakageDescription& leakage,
                  const Probing& probing, std::string journalFile);
    ProbeRecorder(const ProbeRecorder&) = delete;
    ProbeRecorder& operator=(const ProbeRecorder&) = delete;
    ~ProbeRecorder();

    /** The first driver that took no write since the last question, outside of searches; empty: all did. */
    std::string takeFailedWrite();

    /** A search begins; `journaled` is borrowed until its end. */
    void begin(std::uint32_t frequency, std::int32_t temperature, const JournaledProbes& journaled);
    /** The search came to its end. Gives its probes; corrections that were set and not read are none. */
    std::vector<Probe> end();

    /** How many probes were made that the journal did not have. */
    std::uint64_t newProbes() const { return m_newProbes; }
    /** Why the search had to be broken off; empty when it was not. */
    const std::string& whyStopped() const { return m_whyStopped; }

private:
    void called(const Standalone::Call& call);
    std::int64_t read(std::int64_t live);
    /** What was set and not read was a probe without a reading, now that the next is set. */
    void settlePending();
    void enter(const Probe& probe);
    const JournaledProbe* journaled() const;
    void compare(const Probe& probe, const JournaledProbe& known);
    void stop(const std::string& why);

    Standalone::Platform& m_platform;
    ModelClock& m_clock;
    const LeakageDescription& m_leakage;
    const Probing& m_probing;
    std::string m_journalFile;
    std::map<std::string, std::function<std::int64_t()>> m_sources;

    bool m_isSearching = false;
    std::uint32_t m_frequency = 0;
    std::int32_t m_temperature = 0;
    const JournaledProbes* m_journaled = nullptr;
    std::int32_t m_i = 0;
    /** What is set, and has not been read. */
    std::optional<Probe> m_pending;
    std::vector<Probe> m_probes;
    std::string m_whyStopped;
    std::string m_failedWrite;
    std::uint64_t m_newProbes = 0;
};

} // namespace Radio::Calibration

#endif
