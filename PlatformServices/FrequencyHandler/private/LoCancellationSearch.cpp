#include "LoCancellationSearch.h"

#include <algorithm>
#include <limits>

// Built without contraction of floating-point expressions: a product is rounded before it is added, so that
// every processor narrows the ranges alike.

namespace RL::FrequencyHandler {

namespace {

/** Toward zero; saturates outside the range, and what is not a number gives 0, as 32-bit ARM converts. */
std::int32_t truncated(double value) {
    constexpr double lowest = std::numeric_limits<std::int32_t>::min();
    constexpr double highest = std::numeric_limits<std::int32_t>::max();
    return value == value ? static_cast<std::int32_t>(std::clamp(value, lowest, highest)) : 0;
}

/** Sum and difference with 32-bit wrap-around. */
std::int32_t sum(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

std::int32_t difference(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

} // namespace

std::int32_t LoCancellationSearch::Range::width() const {
    return difference(high, low);
}

void LoCancellationSearch::Range::keep(bool lowSide, double fraction) {
    const double kept = width() * fraction;
    if (lowSide) {
        high = truncated(low + kept);
    } else {
        low = truncated(high - kept);
    }
}

void LoCancellationSearch::Range::placeProbes(double fraction) {
    const double lowOffset = (1.0 - fraction) * width();
    const double highOffset = fraction * width();
    probes = {truncated(low + lowOffset), truncated(low + highOffset)};
}

std::int32_t LoCancellationSearch::Range::middle() const {
    return sum(low, high) / 2;
}

LoCancellationSearch::LoCancellationSearch(std::int32_t iLow, std::int32_t iHigh, std::int32_t qLow,
                                           std::int32_t qHigh, double shrinkFactor)
    : m_i{iLow, iHigh, {iLow, iHigh}},
      m_q{qLow, qHigh, {qLow, qHigh}},
      m_shrinkFactor(shrinkFactor) {}

LoCancellationSearch::Point LoCancellationSearch::probe(std::size_t index) const {
    return {m_i.probes[index % 2], m_q.probes[index / 2]};
}

std::size_t LoCancellationSearch::bestProbe() const {
    std::size_t best = 0;
    for (std::size_t index = 1; index < probeCount; ++index) {
        if (m_readings[index] <= m_readings[best]) {
            best = index; // of equal readings the later one wins
        }
    }
    return best;
}

std::int32_t LoCancellationSearch::narrow() {
    const std::size_t best = bestProbe();
    m_i.keep(best % 2 == 0, m_shrinkFactor);
    m_q.keep(best / 2 == 0, m_shrinkFactor);
    m_i.placeProbes(m_shrinkFactor);
    m_q.placeProbes(m_shrinkFactor);
    return std::max(m_i.width(), m_q.width());
}

LoCancellationSearch::Point LoCancellationSearch::midpoint() const {
    return {m_i.middle(), m_q.middle()};
}

} // namespace RL::FrequencyHandler
