#include "radio/calibration/Calibrator.h"

#include "InterfaceBroker.h"
#include "radio/board/PlatformWords.h"
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

Calibrator::Calibrator(BootedRadio& booted, const std::string& board, const Settings& settings,
                       const Probing& probing, const std::string& journalFile)
    : m_booted(booted),
      m_settings(settings),
      m_transmitter(*booted.radio().transmitter(settings.channel)),
      m_cancellation(findCancellation(settings.channel, board)),
      m_recorder(booted.radio().platform(), booted.radio().clock(), m_transmitter.description(), probing,
                 journalFile) {}

Point Calibrator::calibrate(std::uint32_t frequency, std::int32_t temperature,
                            const JournaledProbes& journaled) {
    Point point;
    point.frequency = frequency;
    point.temperature = temperature;
    const Surroundings surroundings{frequency, static_cast<double>(temperature)};
    point.before = leakageLevel(m_transmitter.description(), surroundings, {0, 0});
    point.after = point.before;
    m_booted.forget();
    point.remark = goTo(frequency, temperature);
    if (!point.remark.empty()) {
        return point;
    }
    m_booted.forget();
    m_transmitter.rest();
    m_recorder.begin(frequency, temperature, journaled);
    const bool isFound = search(point);
    point.probes = m_recorder.end();
    if (!isFound) {
        point.i = 0;
        point.q = 0;
        point.remark = whyStopped().empty() ? firstComplaint() : whyStopped();
        return point;
    }
    point.after = leakageLevel(m_transmitter.description(), surroundings, {point.i, point.q});
    diagnose(point, m_settings, m_transmitter.description());
    return point;
}

std::string Calibrator::goTo(std::uint32_t frequency, std::int32_t temperature) {
    RadioUnit& radio = m_booted.radio();
    radio.platform().temperature().set(temperature);
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
