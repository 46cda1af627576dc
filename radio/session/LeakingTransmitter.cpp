#include "radio/session/LeakingTransmitter.h"

#include <cmath>
#include <utility>

namespace Radio {

// The noise is to be the same each time. NOLINTNEXTLINE(cert-msc32-c, cert-msc51-cpp)
LeakingTransmitter::LeakingTransmitter(LeakageDescription leakage, Standalone::DriverBank& drivers,
                                       std::function<Surroundings()> surroundings)
    : m_leakage(std::move(leakage)),
      m_surroundings(std::move(surroundings)),
      m_i(*drivers.find(m_leakage.i.driver)),
      m_q(*drivers.find(m_leakage.q.driver)),
      m_detectors{{m_leakage.detector, *drivers.find(m_leakage.detector.driver), 0.0}} {
    if (m_leakage.highDetector) {
        m_detectors.push_back({*m_leakage.highDetector, *drivers.find(m_leakage.highDetector->driver), 0.0});
    }
    for (Detector& detector : m_detectors) {
        detector.driver.setSource([this, &detector] { return read(detector); });
    }
    rest();
}

LeakingTransmitter::~LeakingTransmitter() {
    for (Detector& detector : m_detectors) {
        detector.driver.setSource({});
    }
}

LoCorrections LeakingTransmitter::corrections() const {
    // A driver that was written a buffer may have more than 32 bits; its read gives the low ones.
    return {static_cast<std::int32_t>(m_i.value()), static_cast<std::int32_t>(m_q.value())};
}

double LeakingTransmitter::level() const {
    return leakageLevel(m_leakage, surroundings(), corrections());
}

void LeakingTransmitter::elapse(double milliseconds) {
    const double now = level();
    for (Detector& detector : m_detectors) {
        const double target = detectorOutput(detector.description, now);
        const double settling = detector.description.settling;
        const double followed = settling > 0.0 ? -std::expm1(-milliseconds / settling) : 1.0;
        detector.output += (target - detector.output) * followed;
    }
}

void LeakingTransmitter::rest() {
    const Surroundings now = surroundings();
    for (Detector& detector : m_detectors) {
        detector.output = detectorOutput(detector.description, leakageLevel(m_leakage, now, {0, 0}));
    }
    std::seed_seq seeds{m_leakage.seed, static_cast<std::uint32_t>(m_leakage.channel), now.carrier,
                        static_cast<std::uint32_t>(std::llround(now.temperature))};
    m_random.seed(seeds);
}

std::int64_t LeakingTransmitter::read(Detector& detector) {
    if (detector.description.settling == 0.0) {
        detector.output = detectorOutput(detector.description, level());
    }
    const double sigma = detector.description.noise;
    return detectorReading(detector.description, detector.output + (sigma > 0.0 ? sigma * noise() : 0.0));
}

double LeakingTransmitter::noise() {
    // Twelve uniform numbers have a variance of 1 together. Unlike std::normal_distribution this gives the
    // same numbers with every standard library.
    constexpr int count = 12;
    constexpr double perUnit = 1.0 / 9007199254740992.0; // 2^-53
    double sum = 0.0;
    for (int n = 0; n < count; ++n) {
        sum += static_cast<double>(m_random() >> 11U) * perUnit;
    }
    return sum - count / 2.0;
}

} // namespace Radio
