#include "radio/calibration/ProbeRecorder.h"

#include "radio/session/HardwareWrite.h"

#include <utility>

namespace Radio::Calibration {

using Standalone::Operation;

namespace {

std::string textOf(const Probe& probe) {
    return "I " + std::to_string(probe.i) + ", Q " + std::to_string(probe.q) +
           (probe.reading ? "" : " without a reading");
}

} // namespace

ProbeRecorder::ProbeRecorder(Standalone::Platform& platform, ModelClock& clock,
                             const LeakageDescription& leakage, const Probing& probing,
                             std::string journalFile)
    : m_platform(platform),
      m_clock(clock),
      m_leakage(leakage),
      m_probing(probing),
      m_journalFile(std::move(journalFile)) {
    m_platform.calls().setListener([this](const Standalone::Call& call) { called(call); });
    m_sources[leakage.detector.driver] = {};
    if (leakage.highDetector) {
        m_sources[leakage.highDetector->driver] = {};
    }
    for (auto& [name, source] : m_sources) {
        Standalone::Driver& driver = *m_platform.drivers().find(name);
        source = driver.source();
        driver.setSource([this, live = source] { return read(live()); });
    }
}

ProbeRecorder::~ProbeRecorder() {
    m_platform.calls().setListener({});
    for (auto& [name, source] : m_sources) {
        m_platform.drivers().find(name)->setSource(source);
    }
}

std::string ProbeRecorder::takeFailedWrite() {
    return std::exchange(m_failedWrite, {});
}

void ProbeRecorder::begin(std::uint32_t frequency, std::int32_t temperature,
                          const JournaledProbes& journaled) {
    m_frequency = frequency;
    m_temperature = temperature;
    m_journaled = &journaled;
    m_pending.reset();
    m_probes.clear();
    m_whyStopped.clear();
    m_isSearching = true;
}

std::vector<Probe> ProbeRecorder::end() {
    m_isSearching = false;
    static_cast<void>(m_platform.calls().clear(Operation::driverWrite, m_leakage.i.driver));
    return std::move(m_probes);
}

void ProbeRecorder::called(const Standalone::Call& call) {
    if (!m_isSearching && isWrite(call) && isFailure(call.code) && m_failedWrite.empty()) {
        m_failedWrite = call.object;
    }
    if (!m_isSearching || call.operation != Operation::driverWrite || isFailure(call.code)) {
        return;
    }
    if (call.object == m_leakage.i.driver) {
        settlePending();
        m_i = static_cast<std::int32_t>(call.value);
    } else if (call.object == m_leakage.q.driver) {
        m_pending = Probe{m_i, static_cast<std::int32_t>(call.value), std::nullopt};
        m_clock.setRealTime(m_probing.isRealTime && journaled() == nullptr, m_probing.goOn);
    }
}

std::int64_t ProbeRecorder::read(std::int64_t live) {
    if (!m_isSearching || !m_pending) {
        return live;
    }
    const JournaledProbe* const known = journaled();
    const bool isKnown = known != nullptr && known->probe.reading;
    const std::int32_t reading = isKnown ? *known->probe.reading : static_cast<std::int32_t>(live);
    m_pending->reading = reading;
    settlePending();
    return reading;
}

void ProbeRecorder::settlePending() {
    if (!m_pending) {
        return;
    }
    const Probe probe = *std::exchange(m_pending, std::nullopt);
    const JournaledProbe* const known = journaled();
    if (known != nullptr) {
        compare(probe, *known);
    } else if (m_whyStopped.empty()) {
        enter(probe);
    }
    m_probes.push_back(probe);
    if (known == nullptr && !m_probing.goOn()) {
        stop("interrupted");
    }
}

void ProbeRecorder::enter(const Probe& probe) {
    if (m_probing.journal == nullptr) {
        stop("the journal ends here");
        return;
    }
    try {
        m_probing.journal->enter(m_frequency, m_temperature, probe);
        ++m_newProbes;
    } catch (const InputError& error) {
        stop(error.what());
    }
}

const JournaledProbe* ProbeRecorder::journaled() const {
    return m_probes.size() < m_journaled->size() ? &(*m_journaled)[m_probes.size()] : nullptr;
}

void ProbeRecorder::compare(const Probe& probe, const JournaledProbe& known) {
    const bool isSame = known.probe.i == probe.i && known.probe.q == probe.q &&
                        known.probe.reading.has_value() == probe.reading.has_value();
    if (!isSame) {
        stop(toString(Place{m_journalFile, known.line}) + ": a probe at " + textOf(known.probe) +
             ", but this search has one at " + textOf(probe) +
             ": the journal is damaged, or of another search");
    }
}

void ProbeRecorder::stop(const std::string& why) {
    if (m_whyStopped.empty()) {
        m_whyStopped = why;
        // The search ends when it cannot set its next corrections.
        m_platform.calls().inject({Operation::driverWrite, m_leakage.i.driver, ResultFailed, {}, {}});
    }
}

} // namespace Radio::Calibration
