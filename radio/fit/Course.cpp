#include "radio/fit/Fit.h"
#include "radio/fit/Course.h"

#include "radio/fit/Claim.h"
#include "radio/fit/FirstPoint.h"
#include "radio/fit/Plan.h"
#include "radio/fit/PointFit.h"
#include "radio/fit/TableMaker.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace Radio::Fit {

namespace {

double rangeOf(const Order& order) {
    return std::max({std::abs(static_cast<double>(order.i.low)), std::abs(static_cast<double>(order.i.high)),
                     std::abs(static_cast<double>(order.q.low)), std::abs(static_cast<double>(order.q.high))});
}

} // namespace

Course::Course(const Order& order, Prober& prober)
    : m_order(order),
      m_bench(m_order, prober),
      m_knowledge(m_order),
      m_surface(m_order, rangeOf(order)) {}

bool Course::goesOn() const {
    return !m_bench.isInterrupted() && m_bench.left() > 8;
}

Outcome Course::run() {
    const std::vector<std::int32_t> temperatures = fitTemperatures(m_order);
    const std::uint32_t middle = evenCarriers(m_order, 3).at(m_order.lowCarrier < m_order.highCarrier ? 1 : 0);
    if (begin({middle, temperatures.front()})) {
        bool isFirst = true;
        for (const std::int32_t temperature : temperatures) {
            fitAt(temperature, isFirst ? 6 : 3);
            isFirst = false;
        }
        goBack();
    }
    conclude();
    return m_outcome;
}

bool Course::begin(const Place& place) {
    m_visited.emplace(place.carrier, place.temperature);
    if (!m_bench.goTo(place)) {
        m_outcome.reason = "the first place cannot be had";
        return false;
    }
    const FirstBowl first = findFirstBowl(m_bench, m_knowledge);
    if (!first.trouble.empty()) {
        m_outcome.reason = first.trouble;
        return false;
    }
    const double amplitude = m_knowledge.curvature.amplitude();
    const double step = std::max(m_order.i.step, m_order.q.step);
    if (m_order.limit && m_order.detector.zero) {
        const double allowed = std::sqrt(powerOf(*m_order.limit)) / amplitude;
        m_wantedPoint = std::clamp(0.15 * allowed, 0.12 * step, 20.0 * step);
        m_wantedSurface = std::max(0.1 * step, (allowed - 1.25 * step) / claimedDeviations / 1.4);
    } else {
        m_wantedPoint = 0.15 * step;
        m_wantedSurface = 0.1 * step;
    }
    add(place, {first.bottom, first.deviation});
    return m_outcome.points.back().state != PointState::failed;
}

void Course::add(const Place& place, const Forecast& forecast) {
    const FittedPoint fitted = fitPoint(m_bench, m_knowledge, place, forecast, m_wantedPoint);
    m_outcome.points.push_back(fitted.point);
    if (fitted.sample) {
        m_samples.push_back(*fitted.sample);
        refit(m_samples.size() > 3);
    }
}

void Course::fit(const Place& place) {
    m_visited.emplace(place.carrier, place.temperature);
    const Forecast forecast = m_surface.at(place);
    if (!m_bench.goTo(place)) {
        Point& point = m_outcome.points.emplace_back();
        point.place = place;
        point.remark = "the place cannot be had";
        return;
    }
    add(place, forecast);
}

void Course::refit(bool isDecayChosen) {
    m_surface.fit(m_samples, isDecayChosen);
}

std::optional<std::uint32_t> Course::leastKnown(std::int32_t temperature, double enough) const {
    std::optional<std::uint32_t> found;
    double most = enough;
    for (const std::uint32_t carrier : evenCarriers(m_order, 49)) {
        if (m_visited.count({carrier, temperature}) != 0) {
            continue;
        }
        const double deviation = m_surface.at({carrier, temperature}).deviation;
        if (deviation > most) {
            most = deviation;
            found = carrier;
        }
    }
    return found;
}

void Course::fitAt(std::int32_t temperature, std::size_t least) {
    for (std::size_t count = 0; goesOn(); ++count) {
        const auto carrier = leastKnown(temperature, count < least ? 0.0 : m_wantedSurface);
        if (!carrier) {
            return;
        }
        fit({*carrier, temperature});
    }
}

int Course::tryAt(std::int32_t temperature, std::size_t count) {
    int misses = 0;
    Table table = makeTable(m_order, m_surface);
    const std::vector<std::uint32_t> carriers = evenCarriers(m_order, 2 * count + 1);
    for (std::size_t n = 0; n < count && goesOn(); ++n) {
        const Place place{carriers.at(std::min(2 * n + 1, carriers.size() - 1)), temperature};
        if (!m_visited.emplace(place.carrier, place.temperature).second || !m_bench.goTo(place)) {
            continue;
        }
        const Forecast forecast = m_surface.at(place);
        const Corrections set = correctionsAt(table, place);
        const double foretold = claimedPower(m_order, m_knowledge, m_surface, table, place);
        const auto reading = m_bench.probe({static_cast<double>(set.i), static_cast<double>(set.q)});
        if (!reading) {
            continue;
        }
        const double noise = m_knowledge.noise();
        const double measured = m_knowledge.scale.power(reading->reading);
        const double most = (foretold + 1.5 * m_knowledge.floor()) * (1.0 + 4.0 * noise);
        const bool isAsForetold = measured <= most;
        m_outcome.verifications.push_back(
            {place, set, reading->reading, m_knowledge.scale.level(reading->reading), isAsForetold});
        if (!isAsForetold) {
            ++misses;
            const double off = std::sqrt(measured) / m_knowledge.curvature.amplitude();
            add(place, {forecast.bottom, std::max(forecast.deviation, off)});
            table = makeTable(m_order, m_surface);
        }
    }
    return misses;
}

void Course::goBack() {
    const auto tried = triedTemperatures(fitTemperatures(m_order), 2);
    for (const std::int32_t temperature : tried) {
        fitAt(temperature, 0);
        m_lastMisses = tryAt(temperature, 8);
    }
}

void Course::conclude() {
    m_outcome.probes = m_bench.probes();
    m_outcome.temperatureChanges = m_bench.temperatureChanges();
    m_outcome.isRelative = !m_order.detector.zero;
    m_outcome.slope = m_knowledge.scale.slope;
    if (m_bench.isInterrupted()) {
        m_outcome.verdict = Verdict::interrupted;
        m_outcome.reason = "it was interrupted";
        return;
    }
    if (!m_outcome.reason.empty()) {
        m_outcome.verdict = Verdict::failed;
        return;
    }
    m_outcome.table = makeTable(m_order, m_surface);
    m_outcome.claim = claimAnywhere(m_order, m_knowledge, m_surface, m_outcome.table);
    const bool isHeld = !m_order.limit || m_outcome.claim->level <= *m_order.limit;
    m_outcome.verdict = isHeld ? Verdict::held : Verdict::missed;
    if (std::getenv("FIT_DEBUG")) {
        std::fprintf(stderr, "decay %.2f %.2f excess %.2f noise %.4f floor %.1f\n", m_surface.decay().carrier, m_surface.decay().temperature, m_surface.excess(), m_knowledge.noise(), levelOf(m_knowledge.floor()));
    }
}

Outcome calibrate(const Order& order, Prober& prober) {
    return Course(order, prober).run();
}

} // namespace Radio::Fit
