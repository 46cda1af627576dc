#ifndef RADIO_FIT_BENCH_H
#define RADIO_FIT_BENCH_H

#include "radio/fit/Order.h"
#include "radio/fit/Outcome.h"
#include "radio/fit/Prober.h"
#include "radio/fit/Scale.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace Radio::Fit {

/** Counts what is asked of a prober, and keeps within what was ordered. */
class Bench {
public:
    Bench(const Order& order, Prober& prober) : m_order(order), m_prober(prober) {}

    bool goTo(const Place& place);
    /** With corrections that can be set, nearest to `wanted`. Nothing: the detector cannot be read, the
     * budget is spent, or the caller does not go on. */
    std::optional<Reading> probe(const Pair& wanted);
    bool hasRoomForASearch() const { return left() >= m_order.probesOfSearch; }
    /** By other means. Nothing: the budget has no room for one, it found none, or the caller does not go on.
     */
    std::optional<Corrections> search(const Place& place);

    void tell(const Point& point) { m_prober.fitted(point); }
    void tell(const Verification& verification) { m_prober.tried(verification); }

    /** What can be set, nearest to `wanted`. */
    Corrections settable(const Pair& wanted) const;
    /** Within the ranges. */
    Pair inside(const Pair& wanted) const;

    /** Probes that may still be made. */
    std::uint32_t left() const { return m_order.budget - std::min(m_order.budget, m_probes); }
    std::uint32_t probes() const { return m_probes; }
    std::uint32_t probesHere() const { return m_probesHere; }
    std::uint32_t temperatureChanges() const { return m_temperatureChanges; }
    bool isInterrupted() const { return m_isInterrupted; }
    std::int32_t temperature() const { return m_temperature; }
    const Order& order() const { return m_order; }

private:
    bool goOn();

    const Order& m_order;
    Prober& m_prober;
    std::uint32_t m_probes = 0;
    std::uint32_t m_probesHere = 0;
    std::uint32_t m_temperatureChanges = 0;
    std::int32_t m_temperature = 0;
    bool m_isThere = false;
    bool m_isInterrupted = false;
};

} // namespace Radio::Fit

#endif
