#include "radio/fit/Bench.h"

#include <algorithm>
#include <cmath>

namespace Radio::Fit {

namespace {

std::int32_t settable(double wanted, const Branch& branch) {
    const double steps = std::floor((wanted - branch.low) / branch.step + 0.5);
    const double last = std::floor((static_cast<double>(branch.high) - branch.low) / branch.step);
    return static_cast<std::int32_t>(branch.low + std::clamp(steps, 0.0, last) * branch.step);
}

} // namespace

bool Bench::goOn() {
    m_isInterrupted = m_isInterrupted || !m_prober.goOn();
    return !m_isInterrupted;
}

bool Bench::goTo(const Place& place) {
    if (m_isInterrupted) {
        return false;
    }
    m_probesHere = 0;
    m_temperatureChanges += !m_isThere || place.temperature != m_temperature ? 1U : 0U;
    m_isThere = true;
    m_temperature = place.temperature;
    const bool isReached = m_prober.goTo(place);
    return goOn() && isReached;
}

std::optional<Reading> Bench::probe(const Pair& wanted) {
    if (m_isInterrupted || left() == 0) {
        return std::nullopt;
    }
    const Corrections at = settable(wanted);
    const std::optional<std::int32_t> reading = m_prober.probe(at);
    ++m_probes;
    ++m_probesHere;
    if (!goOn() || !reading) {
        return std::nullopt;
    }
    return Reading{at, *reading};
}

std::optional<Corrections> Bench::search(const Place& place) {
    if (m_isInterrupted || !hasRoomForASearch()) {
        return std::nullopt;
    }
    const Searched searched = m_prober.search(place);
    m_probes += searched.probes;
    m_probesHere += searched.probes;
    return goOn() ? searched.found : std::nullopt;
}

Corrections Bench::settable(const Pair& wanted) const {
    return {Fit::settable(wanted.i, m_order.i), Fit::settable(wanted.q, m_order.q)};
}

Pair Bench::inside(const Pair& wanted) const {
    return {std::clamp(wanted.i, static_cast<double>(m_order.i.low), static_cast<double>(m_order.i.high)),
            std::clamp(wanted.q, static_cast<double>(m_order.q.low), static_cast<double>(m_order.q.high))};
}

} // namespace Radio::Fit
