#include "radio/calibration/StepResponse.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Radio::Calibration {

bool StepResponse::isOver() const {
    return m_readings.size() > 1 &&
           std::abs(last() - secondLast()) <= std::max(m_noise, settledPart * height());
}

double StepResponse::height() const {
    return std::abs(m_before - last());
}

double StepResponse::errorAt(const Moment& moment) const {
    return std::abs(moment.reading - last());
}

double StepResponse::timeTo(double part) const {
    const double allowed = std::max(m_noise, part * height());
    Moment outside{0.0, m_before};
    std::size_t inside = 0;
    for (std::size_t n = 0; n < m_readings.size(); ++n) {
        if (errorAt(m_readings[n]) > allowed) {
            outside = m_readings[n];
            inside = n + 1;
        }
    }
    if (inside == 0 || inside == m_readings.size()) {
        return m_readings.front().time;
    }
    // What is left falls by the same factor in the same time.
    const Moment& next = m_readings[inside];
    const double left = std::max({errorAt(next), allowed / 20, 0.5});
    const double way = std::log(errorAt(outside) / allowed) / std::log(errorAt(outside) / left);
    const double time = outside.time + (next.time - outside.time) * std::min(1.0, way);
    // Below the noise it goes on falling as it did above.
    const double longer = std::log(part) / std::log(allowed / height());
    return std::min(lastTime(), allowed < height() ? time * std::max(1.0, longer) : time);
}

double StepResponse::partAfter(double time) const {
    if (height() <= m_noise) {
        return 0.0;
    }
    const double least = m_noise / 2;
    Moment earlier{0.0, m_before};
    for (const Moment& later : m_readings) {
        if (later.time >= time) {
            const double way =
                later.time == earlier.time ? 1.0 : (time - earlier.time) / (later.time - earlier.time);
            const double from = std::max(least, errorAt(earlier));
            const double left = from * std::pow(std::max(least, errorAt(later)) / from, way);
            return left <= m_noise ? 0.0 : left / height();
        }
        earlier = later;
    }
    return 0.0;
}

} // namespace Radio::Calibration
