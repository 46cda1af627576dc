#include "radio/fit/Course.h"

#include "radio/fit/Claim.h"
#include "radio/fit/Conclusion.h"
#include "radio/fit/FirstPoint.h"
#include "radio/fit/Fit.h"
#include "radio/fit/Plan.h"
#include "radio/fit/PointFit.h"
#include "radio/fit/TableMaker.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace Radio::Fit {

namespace {

/** A point takes so many probes or so. */
constexpr std::uint32_t probesOfPoint = 9;

double rangeOf(const Order& order) {
    return std::max({std::abs(static_cast<double>(order.i.low)), std::abs(static_cast<double>(order.i.high)),
                     std::abs(static_cast<double>(order.q.low)),
                     std::abs(static_cast<double>(order.q.high))});
}

} // namespace

Course::Course(const Order& order, Prober& prober)
    : m_order(order),
      m_bench(m_order, prober),
      m_knowledge(m_order),
      m_surface(m_order, rangeOf(order)) {}

bool Course::goesOn() const {
    return !m_bench.isInterrupted() && !hasFailed() && m_bench.left() >= probesOfPoint;
}

Outcome Course::run() {
    const std::vector<std::int32_t> temperatures = fitTemperatures(m_order);
    const std::uint32_t middle =
        evenCarriers(m_order, 3).at(m_order.lowCarrier < m_order.highCarrier ? 1 : 0);
    if (begin({middle, temperatures.front()})) {
        m_isComplete = fitAt(temperatures.front(), 6);
        for (std::size_t n = 1; n < temperatures.size(); ++n) {
            m_isComplete = fitAt(temperatures[n], 3) && m_isComplete;
        }
        m_isComplete = goBack() && m_isComplete;
        improve();
    }
    m_outcome.probes = m_bench.probes();
    m_outcome.temperatureChanges = m_bench.temperatureChanges();
    m_outcome.isBudgetSpent = m_bench.left() < probesOfPoint;
    conclude(m_outcome, {m_order, m_knowledge, m_surface, m_bench.isInterrupted(), m_isComplete, m_misses});
    return std::move(m_outcome);
}

bool Course::begin(const Place& place) {
    m_visited.emplace(place.carrier, place.temperature);
    if (!m_bench.goTo(place)) {
        addFailed(place, "the place cannot be had");
        m_outcome.reason = "the first place cannot be had";
        return false;
    }
    const FirstBowl first = findFirstBowl(m_bench, m_knowledge, place);
    if (!first.trouble.empty()) {
        addFailed(place, first.trouble);
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
    if (m_outcome.points.empty()) {
        addFailed(place, "the budget of probes was spent at the first point");
    }
    if (m_bench.isInterrupted()) {
        return false;
    }
    const Point& point = m_outcome.points.back();
    if (point.state == PointState::failed) {
        m_outcome.reason = "the first point failed: " + point.remark;
    }
    return point.state != PointState::failed;
}

void Course::add(const Place& place, const Forecast& forecast) {
    const FittedPoint fitted = fitPoint(m_bench, m_knowledge, place, forecast, m_wantedPoint);
    const bool isCutShort = m_bench.isInterrupted() || m_bench.left() == 0;
    if (isCutShort && fitted.point.state == PointState::failed) {
        // That it did not come to its end says nothing about the place.
        return;
    }
    m_outcome.points.push_back(fitted.point);
    m_bench.tell(fitted.point);
    if (fitted.sample) {
        m_samples.push_back(*fitted.sample);
        refit(m_samples.size() > 3);
    }
}

void Course::fit(const Place& place) {
    m_visited.emplace(place.carrier, place.temperature);
    const Forecast forecast = m_surface.at(place);
    if (m_bench.goTo(place)) {
        add(place, forecast);
    } else {
        addFailed(place, "the place cannot be had");
    }
}

void Course::addFailed(const Place& place, const std::string& why) {
    if (m_bench.isInterrupted()) {
        return;
    }
    Point& point = m_outcome.points.emplace_back();
    point.place = place;
    point.remark = why;
    point.probes = m_bench.probesHere();
    m_bench.tell(point);
}

void Course::refit(bool isDecayChosen) {
    m_surface.fit(m_samples, isDecayChosen);
}

std::optional<std::uint32_t> Course::leastKnown(std::int32_t temperature, double enough) const {
    std::optional<std::uint32_t> found;
    double most = enough;
    for (const std::uint32_t carrier : evenCarriers(m_order, m_carriers)) {
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

bool Course::fitAt(std::int32_t temperature, std::size_t least) {
    for (std::size_t count = 0;; ++count) {
        const auto carrier = leastKnown(temperature, count < least ? 0.0 : m_wantedSurface);
        if (!carrier) {
            return true;
        }
        if (!goesOn()) {
            return false;
        }
        fit({*carrier, temperature});
    }
}

bool Course::tryAt(std::int32_t temperature, std::size_t count) {
    m_misses = 0;
    Table table = makeTable(m_order, m_surface);
    const std::vector<std::uint32_t> carriers = evenCarriers(m_order, 2 * count + 1);
    for (std::size_t n = 0; n < count; ++n) {
        const Place place{carriers.at(std::min(2 * n + 1, carriers.size() - 1)), temperature};
        if (!m_visited.emplace(place.carrier, place.temperature).second) {
            continue;
        }
        if (!goesOn()) {
            return false;
        }
        if (!m_bench.goTo(place)) {
            addFailed(place, "the place cannot be had");
            continue;
        }
        const Forecast forecast = m_surface.at(place);
        const Corrections set = settledAt(m_order, table, place);
        const double foretold = claimedPower(m_order, m_knowledge, m_surface, table, place);
        const auto reading = m_bench.probe({static_cast<double>(set.i), static_cast<double>(set.q)});
        if (!reading) {
            addFailed(place, "the detector could not be read");
            continue;
        }
        const double noise = m_knowledge.noise();
        const double measured = m_knowledge.scale.power(reading->reading);
        const double most = (foretold + 1.5 * m_knowledge.floor()) * (1.0 + 4.0 * noise);
        const bool isAsForetold = measured <= most;
        learnTried(measured * (1.0 - noise), set, forecast);
        m_outcome.verifications.push_back(
            {place, set, reading->reading, m_knowledge.scale.level(reading->reading), isAsForetold});
        m_bench.tell(m_outcome.verifications.back());
        if (!isAsForetold) {
            ++m_misses;
            const double off = std::sqrt(measured) / m_knowledge.curvature.amplitude();
            add(place, {forecast.bottom, std::max(forecast.deviation, off)});
            table = makeTable(m_order, m_surface);
        }
    }
    return showsThatItLives() && !m_bench.isInterrupted();
}

/** Places that read as little as was foretold may be those of a detector that reads nothing any more. */
bool Course::showsThatItLives() {
    if (m_outcome.verifications.empty() || !goesOn()) {
        return goesOn();
    }
    const Verification& last = m_outcome.verifications.back();
    const auto beside = probeBeside(m_bench, m_knowledge, last.corrections);
    if (!beside) {
        addFailed(last.place, "the detector could not be read");
        return false;
    }
    const double distance = beside->at.i - last.corrections.i;
    const double power = m_knowledge.curvature.power({distance, 0.0});
    const double read = m_knowledge.scale.power(beside->reading);
    // Four times too much or too little is neither noise nor a bowl that differs from place to place.
    constexpr double most = 4.0;
    const bool isShown = !isInside(m_order.detector, beside->reading) ||
                         (read > power / most && read < power * most + m_knowledge.floor() * most);
    if (!isShown) {
        addFailed(last.place, "beside the corrections the detector reads " + std::to_string(beside->reading) +
                                  ", where " +
                                  std::to_string(std::lround(m_knowledge.scale.slope *
                                                             (levelOf(power) - m_knowledge.scale.zero))) +
                                  " was foretold: it does not follow them");
    }
    return true;
}

void Course::learnTried(double measured, const Corrections& set, const Forecast& forecast) {
    const double seen = std::sqrt(std::max(0.0, measured - m_knowledge.floor()));
    const double foreseen = std::sqrt(residualPower(m_knowledge.curvature, set, forecast.bottom));
    m_knowledge.learnTried((seen - foreseen) / (forecast.deviation * m_knowledge.curvature.amplitude()));
}

bool Course::goBack() {
    constexpr std::size_t triedAt = 2;
    constexpr std::size_t places = 10;
    int misses = 0;
    bool isComplete = true;
    std::vector<std::int32_t> tried = triedTemperatures(fitTemperatures(m_order), triedAt);
    if (tried.empty()) {
        tried.push_back(m_bench.temperature());
    }
    for (std::size_t n = 0; n < tried.size(); ++n) {
        isComplete = fitAt(tried[n], 0) && isComplete;
        // Other carriers each time: what bends over frequency does so at all temperatures.
        isComplete = tryAt(tried[n], places + n) && isComplete;
        misses += m_misses;
    }
    m_misses = misses;
    return isComplete;
}

void Course::improve() {
    constexpr std::size_t places = 7;
    constexpr std::size_t mostCarriers = 769;
    for (std::size_t round = 0; goesOn(); ++round) {
        const Table table = makeTable(m_order, m_surface);
        const LevelAt claim = claimAnywhere(m_order, m_knowledge, m_surface, table);
        if (m_misses == 0 && isWithinLimit(m_order, claim.level)) {
            return;
        }
        const std::size_t before = m_outcome.points.size();
        m_wantedSurface *= isWithinLimit(m_order, claim.level) ? 1.0 : 0.7;
        fitAt(claim.place.temperature, m_misses > 0 ? 2 : 0);
        tryAt(claim.place.temperature, places + round);
        if (m_outcome.points.size() == before) {
            // Between the carriers that were thought of there are others.
            if (m_carriers >= mostCarriers) {
                return;
            }
            m_carriers = 2 * m_carriers - 1;
        }
    }
}

bool Course::hasFailed() const {
    // A transmitter that fails here and there is not to be probed to its end.
    constexpr int most = 3;
    return std::count_if(m_outcome.points.begin(), m_outcome.points.end(), [this](const Point& point) {
               const bool isBeyond =
                   point.state == PointState::edge && !isWithinLimit(m_order, point.level.value_or(0.0));
               return isBeyond || point.state == PointState::failed;
           }) >= most;
}

namespace {

void require(bool holds, const char* what) {
    if (!holds) {
        throw std::invalid_argument(what);
    }
}

bool isSane(const Branch& branch) {
    return branch.low < branch.high && branch.step > 0;
}

} // namespace

Outcome calibrate(const Order& order, Prober& prober) {
    require(order.lowCarrier > 0 && order.lowCarrier <= order.highCarrier, "the band is empty");
    require(order.highCarrier <= 0x7fffffffU, "a table has carriers of 31 bits");
    require(order.lowTemperature <= order.highTemperature, "the temperatures are empty");
    require(order.lowTemperature >= -1000 && order.highTemperature <= 1000, "a temperature is none");
    require(isSane(order.i) && isSane(order.q), "a correction has no range, or no step");
    require(!order.detector.slope || *order.detector.slope > 0.0, "the slope of the detector is not above 0");
    for (const auto& level : {order.detector.zero, order.detector.floor, order.limit, order.detector.slope}) {
        require(std::isfinite(level.value_or(0.0)), "a level is no number");
    }
    require(order.mostCarriers >= 2 && order.mostTemperatures >= 2, "a table has less than two nodes");
    return Course(order, prober).run();
}

} // namespace Radio::Fit
