#include "radio/calibration/ProbeRecorder.h"

#include "ResultCode.h"
#include "radio/session/HardwareWrite.h"

#include <cmath>
#include <utility>

namespace Radio::Calibration {

using Standalone::Operation;

namespace {

constexpr const char* journalIsOver = "the journal ends here";

std::string textOf(const Probe& probe) {
    return "I " + std::to_string(probe.i) + ", Q " + std::to_string(probe.q) +
           (probe.reading ? "" : " without a reading");
}

} // namespace

/** Stands before what stands behind a driver. */
class ProbeRecorder::Tap final : public Standalone::DriverBacking {
public:
    Tap(ProbeRecorder& recorder, Standalone::Driver& driver)
        : m_recorder(recorder),
          m_driver(driver),
          m_backing(*driver.backing()) {
        if (driver.wasWritten()) {
            m_given = driver.value();
        }
        m_driver.setBacking(this);
    }
    ~Tap() override { m_driver.setBacking(&m_backing); }

    std::int32_t write(std::int64_t value) override {
        if (m_recorder.isWriteKept()) {
            return ResultOk;
        }
        const std::int32_t code = m_backing.write(value);
        if (isSuccess(code)) {
            m_given = value;
        }
        return code;
    }

    void remember() { m_before = m_given; }
    void restore() {
        if (m_given != m_before) {
            DriverInterface* const record = m_driver.record();
            // What the hardware does not take is told by whoever listens to it.
            static_cast<void>(record->write(record->context, static_cast<int>(m_before.value_or(0))));
        }
    }

    std::int32_t read(std::int64_t& value) override {
        if (!m_recorder.isReadingDue()) {
            return m_backing.read(value);
        }
        const std::optional<std::int32_t> known = m_recorder.knownReading();
        if (!known && m_recorder.refusesToRead()) {
            return ResultFailed;
        }
        std::int64_t reading = known.value_or(0);
        std::int32_t code = known ? ResultOk : m_backing.read(reading);
        if (!known && isSuccess(code)) {
            reading = m_recorder.meanOf(
                reading, [this](std::int64_t& next) { return m_backing.read(next); }, code);
        }
        if (isSuccess(code)) {
            value = reading;
            m_recorder.take(static_cast<std::int32_t>(reading));
        }
        return code;
    }

private:
    ProbeRecorder& m_recorder;
    Standalone::Driver& m_driver;
    Standalone::DriverBacking& m_backing;
    /** What the hardware was given last, which the driver's own value is not for writes that were kept; and
     * what that was before the search. */
    std::optional<std::int64_t> m_given;
    std::optional<std::int64_t> m_before;
};

ProbeRecorder::ProbeRecorder(Standalone::Platform& platform, ModelClock& clock, SearchDrivers drivers,
                             const Probing& probing, std::string journalFile)
    : m_platform(platform),
      m_clock(clock),
      m_drivers(std::move(drivers)),
      m_probing(probing),
      m_journalFile(std::move(journalFile)) {
    m_platform.calls().setListener([this](const Standalone::Call& call) { called(call); });
    tapSource(m_drivers.detector);
    tapSource(m_drivers.highDetector);
    for (const std::string& driver : {m_drivers.i, m_drivers.q, m_drivers.detector, m_drivers.highDetector}) {
        tapBacking(driver);
    }
}

ProbeRecorder::~ProbeRecorder() {
    m_platform.calls().setListener({});
    for (auto& [name, source] : m_sources) {
        m_platform.drivers().find(name)->setSource(source);
    }
}

void ProbeRecorder::tapSource(const std::string& detector) {
    Standalone::Driver* const driver = m_platform.drivers().find(detector);
    if (driver == nullptr || driver->backing() != nullptr) {
        return;
    }
    m_sources[detector] = driver->source();
    driver->setSource([this, live = driver->source()]() -> std::int64_t {
        // The model goes on also when it is not listened to. Without one, only a journal has readings.
        const std::int64_t now = live ? live() : 0;
        if (!isReadingDue()) {
            return now;
        }
        const std::optional<std::int32_t> known = knownReading();
        std::int32_t code = ResultOk;
        const auto readLive = [&live](std::int64_t& next) {
            next = live ? live() : 0;
            return std::int32_t{ResultOk};
        };
        // Noise is to go on as it did, also where the journal has the reading.
        const std::int64_t mean = meanOf(now, readLive, code);
        const std::int32_t reading = known.value_or(static_cast<std::int32_t>(mean));
        take(reading);
        return reading;
    });
}

void ProbeRecorder::tapBacking(const std::string& driver) {
    Standalone::Driver* const found = m_platform.drivers().find(driver);
    if (found != nullptr && found->backing() != nullptr) {
        m_taps.push_back(std::make_unique<Tap>(*this, *found));
    }
}

std::string ProbeRecorder::takeFailedWrite() {
    return std::exchange(m_failedWrite, {});
}

void ProbeRecorder::begin(std::uint32_t frequency, std::int32_t temperature, const JournaledProbes& journaled,
                          bool isReplay) {
    m_frequency = frequency;
    m_temperature = temperature;
    m_journaled = &journaled;
    m_pending.reset();
    m_probes.clear();
    m_whyStopped.clear();
    m_isReplay = isReplay;
    m_isCutShort = false;
    remember();
    m_isSearching = true;
}

void ProbeRecorder::remember() {
    for (const std::unique_ptr<Tap>& tap : m_taps) {
        tap->remember();
    }
}

std::vector<Probe> ProbeRecorder::end() {
    m_isSearching = false;
    setClock(m_probing.isRealTime);
    static_cast<void>(m_platform.calls().clear(Operation::driverWrite, m_drivers.i));
    return std::move(m_probes);
}

void ProbeRecorder::restore() {
    for (const std::unique_ptr<Tap>& tap : m_taps) {
        tap->restore();
    }
}

bool ProbeRecorder::isJournalOver() const {
    return m_whyStopped == journalIsOver;
}

void ProbeRecorder::setClock(bool isRealTime) {
    m_clock.setRealTime(isRealTime, [this] {
        const bool goesOn = m_probing.goOn();
        m_isCutShort |= !goesOn;
        return goesOn;
    });
}

void ProbeRecorder::called(const Standalone::Call& call) {
    if (!m_isSearching && isWrite(call) && isFailure(call.code) && m_failedWrite.empty()) {
        m_failedWrite = call.object;
    }
    if (!m_isSearching || call.operation != Operation::driverWrite || isFailure(call.code)) {
        return;
    }
    if (call.object == m_drivers.i) {
        settlePending();
        m_i = static_cast<std::int32_t>(call.value);
    } else if (call.object == m_drivers.q) {
        m_pending = Probe{m_i, static_cast<std::int32_t>(call.value), std::nullopt};
        setClock(m_probing.isRealTime && !m_isReplay && journaled() == nullptr);
    }
}

std::optional<std::int32_t> ProbeRecorder::knownReading() const {
    const JournaledProbe* const known = journaled();
    return known != nullptr ? known->probe.reading : std::nullopt;
}

bool ProbeRecorder::refusesToRead() {
    if (m_isReplay) {
        stop(journalIsOver);
    } else if (m_isCutShort) {
        // The detector has not settled: what it shows is not what these corrections leave.
        stop("interrupted");
    }
    return !m_whyStopped.empty();
}

std::int64_t ProbeRecorder::meanOf(std::int64_t first, const std::function<std::int32_t(std::int64_t&)>& read,
                                   std::int32_t& code) {
    auto sum = static_cast<double>(first);
    for (std::uint32_t n = 1; n < m_probing.readings && isSuccess(code); ++n) {
        m_clock.sleep(betweenReadings * microsecondsPerMs);
        std::int64_t reading = 0;
        code = read(reading);
        sum += static_cast<double>(reading);
    }
    return std::llround(sum / m_probing.readings);
}

void ProbeRecorder::take(std::int32_t reading) {
    m_pending->reading = reading;
    settlePending();
}

bool ProbeRecorder::isWriteKept() const {
    const std::size_t next = m_probes.size() + (m_pending ? 1 : 0);
    return m_isSearching && (m_isReplay || next < m_journaled->size());
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
    if (m_probing.keepsNothing) {
        ++m_newProbes;
        return;
    }
    if (m_probing.journal == nullptr || m_isReplay) {
        stop(journalIsOver);
        return;
    }
    try {
        m_probing.journal->enter(m_frequency, m_temperature, probe);
        ++m_newProbes;
    } catch (const InputError& error) {
        m_isJournalStuck = true;
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
        m_isOtherSearch = true;
        stop(toString(Place{m_journalFile, known.line}) + ": a probe at " + textOf(known.probe) +
             ", but this search has one at " + textOf(probe) +
             ": the journal is damaged, or of another search");
    }
}

void ProbeRecorder::stop(const std::string& why) {
    if (m_whyStopped.empty()) {
        m_whyStopped = why;
        // The search ends when it cannot set its next corrections.
        m_platform.calls().inject({Operation::driverWrite, m_drivers.i, ResultFailed, {}, {}});
    }
}

} // namespace Radio::Calibration
