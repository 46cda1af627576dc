#include "radio/calibration/Calibrator.h"

#include "InterfaceBroker.h"
#include "ResultCode.h"
#include "radio/board/PlatformWords.h"
#include "radio/calibration/ChannelChain.h"
#include "radio/calibration/Diagnosis.h"
#include "radio/files/InputError.h"

namespace Radio::Calibration {

namespace {

ILoCancellation& findCancellation(int channel, const std::string& board) {
    const std::string name = "ILoCancellation_" + std::to_string(channel);
    auto* const found = InterfaceBroker::getInstance().getInterface<ILoCancellation>(name);
    if (found == nullptr) {
        throw InputError({board, 0}, "channel " + std::to_string(channel) + " does not publish \"" + name +
                                         "\", expected a channel of a type with LO cancellation");
    }
    return *found;
}

} // namespace

Calibrator::Calibrator(BootedRadio& booted, const Board& board, const Result& result, const Probing& probing,
                       const std::string& journalFile, Climate* climate)
    : m_booted(booted),
      m_result(result),
      m_settings(result.settings),
      m_probing(probing),
      m_climate(climate),
      m_transmitter(result.isHardware ? nullptr : booted.radio().transmitter(m_settings.channel)),
      m_drivers(m_transmitter != nullptr ? driversOf(m_transmitter->description())
                                         : driversOf(board, m_settings.channel)),
      m_cancellation(findCancellation(m_settings.channel, board.file.string())),
      m_recorder(booted.radio().platform(), booted.radio().clock(), m_drivers, probing, journalFile) {}

Qualification Calibrator::qualify(std::uint32_t frequency, std::int32_t temperature,
                                  std::optional<std::uint32_t> settleTime, const TellTaken& tell) {
    m_booted.forget();
    Qualification result;
    result.refusal = goTo(frequency, temperature);
    if (!result.refusal.empty()) {
        return result;
    }
    if (m_transmitter != nullptr) {
        m_transmitter->rest();
    }
    RadioUnit& radio = m_booted.radio();
    m_recorder.remember();
    result = Calibration::qualify(
        chainOf({radio.platform(), radio.clock(), m_drivers, m_settings.useHighDetector, m_probing.isRealTime,
                 m_probing.goOn}),
        describeChain(m_settings, m_transmitter == nullptr ? nullptr : &m_transmitter->description(),
                      settleTime, m_result.detectorSlope),
        tell);
    m_recorder.restore();
    return result;
}

Point Calibrator::calibrate(std::uint32_t frequency, std::int32_t temperature,
                            const JournaledProbes& journaled, std::optional<std::int32_t> uncorrected) {
    Point point;
    point.uncorrectedReading = uncorrected;
    point.frequency = frequency;
    point.temperature = temperature;
    if (m_transmitter != nullptr) {
        point.before =
            leakageLevel(m_transmitter->description(), {frequency, static_cast<double>(temperature)}, {0, 0});
        point.after = point.before;
    }
    // On hardware nobody waits for a temperature, or has the radio tuned, for what is known.
    if (m_climate == nullptr || journaled.empty() || !replay(point, journaled)) {
        measure(point, journaled);
    }
    return point;
}

bool Calibrator::replay(Point& point, const JournaledProbes& journaled) {
    m_booted.forget();
    m_recorder.begin(point.frequency, point.temperature, journaled, true);
    Point attempt = point;
    const bool isFound = search(attempt);
    attempt.probes = m_recorder.end();
    if (!isFound && (whyStopped().empty() || m_recorder.isJournalOver())) {
        return false;
    }
    point = std::move(attempt);
    conclude(point, isFound);
    return true;
}

void Calibrator::measure(Point& point, const JournaledProbes& journaled) {
    m_booted.forget();
    // That the journal does not have the whole search is no reason not to measure.
    m_recorder.forgetWhyStopped();
    point.remark = goTo(point.frequency, point.temperature);
    if (!point.remark.empty()) {
        return;
    }
    m_booted.forget();
    if (m_transmitter != nullptr) {
        m_transmitter->rest();
    }
    measureUncorrected(point);
    m_recorder.begin(point.frequency, point.temperature, journaled);
    const bool isFound = search(point);
    point.probes = m_recorder.end();
    conclude(point, isFound);
    if (m_climate != nullptr) {
        if (point.state == PointState::failed) {
            // A real transmitter is not to be left with what was only a probe.
            m_recorder.restore();
        }
        const std::string remark = m_climate->remark(point.temperature);
        point.remark += (point.remark.empty() || remark.empty() ? "" : "; ") + remark;
    }
}

void Calibrator::conclude(Point& point, bool isFound) {
    if (!isFound) {
        point.i = 0;
        point.q = 0;
        point.remark = whyStopped().empty() ? firstComplaint() : whyStopped();
        return;
    }
    judge(point);
}

void Calibrator::judge(Point& point) {
    if (m_transmitter != nullptr) {
        const LeakageDescription& leakage = m_transmitter->description();
        point.after = leakageLevel(leakage, {point.frequency, static_cast<double>(point.temperature)},
                                   {point.i, point.q});
        diagnose(point, m_settings, leakage);
        return;
    }
    if (!point.probes.empty()) {
        point.firstReading = point.probes.front().reading;
        point.lastReading = point.probes.back().reading;
    }
    setLevels(point);
    diagnose(point, m_settings);
}

std::optional<double> Calibrator::slope() const {
    const std::optional<Qualification>& found = m_result.qualification;
    return m_result.detectorSlope || !found ? m_result.detectorSlope : found->slope;
}

void Calibrator::measureUncorrected(Point& point) {
    const auto mayBeNone = [](const Range& range) { return range.low <= 0 && range.high >= 0; };
    if (m_transmitter != nullptr || point.uncorrectedReading || !slope() || m_probing.journal == nullptr ||
        !mayBeNone(m_settings.i) || !mayBeNone(m_settings.q)) {
        return;
    }
    RadioUnit& radio = m_booted.radio();
    const MeasuringChain chain = chainOf({radio.platform(), radio.clock(), m_drivers,
                                          m_settings.useHighDetector, m_probing.isRealTime, m_probing.goOn});
    m_recorder.remember();
    try {
        point.uncorrectedReading = readMean(chain, {0, 0}, m_settings.settleTime, m_settings.readings);
        m_probing.journal->enterUncorrected(point.frequency, point.temperature, *point.uncorrectedReading);
        ++m_uncorrectedReadings;
    } catch (const ChainFailure&) {
        // The search says it in the words of the radio.
    } catch (const InputError& error) {
        m_whyStopped = error.what();
    }
    m_recorder.restore();
}

void Calibrator::setLevels(Point& point) const {
    const std::optional<double> unitsPerDecibel = slope();
    if (!unitsPerDecibel || !point.uncorrectedReading || !point.lastReading) {
        return;
    }
    const double before = *point.uncorrectedReading / *unitsPerDecibel;
    const double after = *point.lastReading / *unitsPerDecibel;
    if (m_result.detectorSlope && m_result.detectorZero) {
        point.before = *m_result.detectorZero + before;
        point.after = *m_result.detectorZero + after;
    } else {
        point.improvement = before - after;
    }
}

std::string Calibrator::goTo(std::uint32_t frequency, std::int32_t temperature) {
    RadioUnit& radio = m_booted.radio();
    if (m_climate != nullptr) {
        std::string why = m_climate->reach(temperature, radio.platform(), m_probing.goOn);
        if (!why.empty()) {
            return why;
        }
    } else {
        radio.platform().temperature().set(temperature);
    }
    static_cast<void>(m_recorder.takeFailedWrite());
    // A module says that all is well whether or not its hardware took the carrier.
    const bool isTuned = isSuccess(radio.tune(Direction::tx, m_settings.channel, frequency));
    const std::string failed = m_recorder.takeFailedWrite();
    if (isTuned && failed.empty()) {
        return {};
    }
    return "the radio could not be tuned: " +
           (failed.empty() ? firstComplaint() : failed + " did not take its value");
}

void Calibrator::begin(std::uint32_t frequency, std::int32_t temperature, const JournaledProbes& journaled,
                       bool isReplay) {
    m_booted.forget();
    if (m_transmitter != nullptr) {
        m_transmitter->rest();
    }
    m_recorder.begin(frequency, temperature, journaled, isReplay);
}

bool Calibrator::bring(const Point& point) {
    return goTo(point.frequency, point.temperature).empty() && probe(point.i, point.q);
}

std::optional<std::int32_t> Calibrator::probe(std::int32_t i, std::int32_t q) {
    const auto recordOf = [this](const std::string& driver) {
        Standalone::Driver* const found = m_booted.radio().platform().drivers().find(driver);
        return found == nullptr ? nullptr : found->record();
    };
    const auto isWritten = [&](const std::string& driver, std::int32_t value) {
        const DriverInterface* const record = recordOf(driver);
        return record != nullptr && record->write != nullptr &&
               isSuccess(record->write(record->context, value));
    };
    for (const auto& [driver, value] : {std::pair(m_drivers.i, i), {m_drivers.q, q}}) {
        if (!isWritten(driver, value)) {
            m_whyNotProbed = driver + " did not take " + std::to_string(value);
            return std::nullopt;
        }
    }
    m_booted.radio().clock().sleep(m_settings.settleTime * microsecondsPerMs);
    const DriverInterface* const detector = recordOf(this->detector());
    int reading = 0;
    const bool isRead = detector != nullptr && detector->read != nullptr &&
                        isSuccess(detector->read(detector->context, &reading));
    if (!isRead) {
        m_whyNotProbed = this->detector() + " could not be read";
        return std::nullopt;
    }
    return reading;
}

bool Calibrator::search(Point& point) {
    return isSuccess(m_cancellation.calibrateLoCancellation(
        static_cast<int>(m_settings.i.low), static_cast<int>(m_settings.i.high),
        static_cast<int>(m_settings.q.low), static_cast<int>(m_settings.q.high), m_settings.shrinkFactor,
        m_settings.minDelta, m_settings.maxIterations, m_settings.settleTime, &point.i, &point.q,
        &point.maxDelta, &point.iterations, m_settings.useHighDetector));
}

std::string Calibrator::firstComplaint() const {
    const std::vector<std::string>& complaints = m_booted.complaints();
    return complaints.empty() ? "the radio did not say why" : complaints.front();
}

} // namespace Radio::Calibration
