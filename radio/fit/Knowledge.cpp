#include "radio/fit/Knowledge.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Radio::Fit {

std::vector<PowerProbe> Knowledge::powersOf(const std::vector<Reading>& readings) const {
    std::vector<PowerProbe> probes;
    for (const Reading& reading : readings) {
        if (isInside(m_order.detector, reading.reading)) {
            probes.push_back({reading.at, scale.power(reading.reading)});
        }
    }
    return probes;
}

void Knowledge::learn(const std::vector<PowerProbe>& probes, const Bowl& bowl, double bottomPower) {
    m_floors.push_back(std::max(0.0, bottomPower));
    learnNoise(bowl.misfit, bowl.freedom);
    m_places.push_back(probes);
    if (const auto fitted = fitCurvature(m_places)) {
        curvature = *fitted;
    }
}

void Knowledge::learnNoise(double misfit, int freedom) {
    m_noiseSquare += misfit * misfit * freedom;
    m_noiseFreedom += freedom;
}

void Knowledge::learnTried(double deviations) {
    m_mostOff = std::max(m_mostOff, deviations);
    ++m_tries;
}

double Knowledge::excess() const {
    // What lies on a plane with a deviation of 1 in each direction is that far away at most in so many tries.
    constexpr std::size_t fewest = 20;
    const double usual = std::sqrt(2.0 * std::log(static_cast<double>(std::max(m_tries, fewest))));
    return std::max(1.0, m_mostOff / usual);
}

double Knowledge::noise() const {
    // Readings are whole numbers; and before much is known, so much is expected.
    const double rounding = 0.3 * scale.relativeError();
    constexpr double expected = 0.03;
    constexpr double weight = 4.0;
    const double square = (m_noiseSquare + weight * expected * expected) / (m_noiseFreedom + weight);
    return std::max(rounding, std::sqrt(square));
}

double Knowledge::floor() const {
    if (m_floors.empty()) {
        return 0.0;
    }
    std::vector<double> floors = m_floors;
    const auto middle = floors.begin() + static_cast<std::ptrdiff_t>(floors.size() / 2);
    std::nth_element(floors.begin(), middle, floors.end());
    return *middle;
}

double Knowledge::uncancelled() const {
    if (m_floors.empty()) {
        return 0.0;
    }
    const double ofDetector =
        m_order.detector.floor ? powerOf(*m_order.detector.floor) * (1.0 + 3.0 * noise()) : 0.0;
    // With a stated floor the usual place counts, since single ones are noisy; without, the highest.
    const double seen =
        m_order.detector.floor ? floor() : *std::max_element(m_floors.begin(), m_floors.end());
    return std::max(0.0, seen - ofDetector);
}

double Knowledge::doubt() const {
    // Levels are right where the scale is anchored: at the reading 0, or without corrections.
    const double anchor = m_order.detector.zero.value_or(0.0);
    const double ring = leastRadius() * curvature.amplitude();
    const double span = std::abs(levelOf(ring * ring) - anchor);
    const double systematic = firstMisfit * firstMisfit - noise() * noise();
    return slopeDoubt * span + levelOf(1.0 + std::sqrt(std::max(0.0, systematic)));
}

double Knowledge::leastRadius() const {
    const double amplitude = curvature.amplitude();
    const double step = std::max(m_order.i.step, m_order.q.step);
    const double overFloor = amplitude > 0.0 ? 4.0 * std::sqrt(floor()) / amplitude : 0.0;
    // Rings that the detector cannot see because they are too low say nothing.
    double overLowest = 0.0;
    if (m_order.detector.lowest && amplitude > 0.0) {
        overLowest = 1.5 * std::sqrt(scale.power(*m_order.detector.lowest)) / amplitude;
    }
    return std::max({6.0 * step, overFloor, overLowest});
}

} // namespace Radio::Fit
