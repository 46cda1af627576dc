#include "radio/fit/PointFit.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace Radio::Fit {

namespace {

constexpr double wholeTurn = 6.283185307179586;
/** In dB: well beside the bottom there is more. */
constexpr double leastRise = 3.0;
/** Part of a ring's power by which it may lie below that of its bowl, whose form is not quite the same
 * everywhere. */
constexpr double leastShown = 0.3;

bool isWithin(const Branch& branch, double value) {
    return value >= branch.low - 0.5 * branch.step && value <= branch.high + 0.5 * branch.step;
}

/** Rings and last probes of one place. */
class PointFit {
public:
    PointFit(Bench& bench, Knowledge& knowledge, const Place& place, double wanted)
        : m_bench(bench),
          m_knowledge(knowledge),
          m_wanted(wanted) {
        m_fitted.point.place = place;
    }

    FittedPoint run(const Forecast& forecast) {
        m_centre = forecast.bottom;
        m_radius = std::max(m_knowledge.leastRadius(), forecast.deviation);
        constexpr int mostRounds = 6;
        for (int round = 0; round < mostRounds && !m_isOver; ++round) {
            ring();
        }
        if (!m_isOver) {
            giveBack();
        }
        m_fitted.point.probes = m_bench.probesHere();
        return m_fitted;
    }

private:
    void ring() {
        const std::vector<Reading> readings = probeRing(m_bench, m_centre, m_radius, 4);
        if (readings.size() < 4) {
            fail();
            return;
        }
        m_probes = m_knowledge.powersOf(readings);
        const auto bowl = fitBottom(m_probes, m_knowledge.curvature);
        if (!bowl || m_probes.size() < 4) {
            // Too low to be seen, or too high: the other way.
            const bool isHigh = m_bench.order().detector.highest &&
                                readings.front().reading >= *m_bench.order().detector.highest;
            m_radius *= isHigh ? 0.5 : 2.0;
            return;
        }
        const double off = std::hypot(bowl->bottom.i - m_centre.i, bowl->bottom.q - m_centre.q);
        if (!showsBowl(*bowl)) {
            // The ring reads less than it does around any bottom. Wider, it would read more of one.
            m_radius *= 2.0;
            return;
        }
        m_centre = bowl->bottom;
        const double deviation = bowl->spread * m_knowledge.noise() + 0.02 * off;
        if (!isInReach(bowl->bottom) && m_isBeyond) {
            // Rings cannot follow it beyond what can be set.
            tryBottom(*bowl, deviation);
            return;
        }
        m_isBeyond = !isInReach(bowl->bottom);
        const double least = m_knowledge.leastRadius();
        if (deviation > m_wanted && m_radius > 1.05 * least) {
            m_radius = std::clamp(3.0 * deviation, least, 0.6 * m_radius);
            return;
        }
        // A ring far beside the bottom does not surround it.
        if (off > 2.0 * m_radius && m_rounds++ < 2) {
            m_radius = std::max(least, 0.2 * off);
            return;
        }
        tryBottom(*bowl, deviation);
    }

    /** What leaks cannot be less than nothing: a ring that is too low all around was not read. */
    bool showsBowl(const Bowl& bowl) const {
        const double amplitude = m_radius * m_knowledge.curvature.amplitude();
        return bowl.floor > -std::max(leastShown, 5.0 * m_knowledge.noise()) * amplitude * amplitude;
    }

    void tryBottom(const Bowl& bowl, double deviation) {
        const Curvature& curvature = m_knowledge.curvature;
        const Corrections best = bestSettable(m_bench, curvature, bowl.bottom);
        const auto reading = m_bench.probe({static_cast<double>(best.i), static_cast<double>(best.q)});
        if (!reading) {
            fail();
            return;
        }
        Point& point = m_fitted.point;
        point.corrections = best;
        point.reading = reading->reading;
        point.level = m_knowledge.scale.level(reading->reading);
        const double measured = m_knowledge.scale.power(reading->reading);
        const double left = residualPower(curvature, best, bowl.bottom);
        const double noise = m_knowledge.noise();
        const double beyond =
            std::max(0.0, measured * (1.0 - 3.0 * noise) - m_knowledge.floor() * (1.0 + 3.0 * noise) - left);
        const double off = std::sqrt(beyond) / std::max(curvature.amplitude(), 1e-12);
        const double step = std::max(m_bench.order().i.step, m_bench.order().q.step);
        const double allowed =
            std::max(1.2 * step, 4.0 * deviation) + 0.05 * std::sqrt(left) / curvature.amplitude();
        if (off > allowed && !isFirst() && !m_isBeyond) {
            m_radius = std::max(m_knowledge.leastRadius(), std::min(m_radius, 2.0 * off));
            return;
        }
        conclude(bowl, *reading, deviation);
    }

    bool isInReach(const Pair& bottom) const {
        return isWithin(m_bench.order().i, bottom.i) && isWithin(m_bench.order().q, bottom.q);
    }
    bool isFirst() const { return m_knowledge.floor() == 0.0; }

    void conclude(const Bowl& bowl, const Reading& last, double deviation) {
        m_isOver = true;
        const Curvature& curvature = m_knowledge.curvature;
        std::vector<PowerProbe> probes = m_probes;
        if (isInside(m_bench.order().detector, last.reading)) {
            probes.push_back({last.at, m_knowledge.scale.power(last.reading)});
        }
        const Bowl whole = fitBottom(probes, curvature).value_or(bowl);
        const double left = residualPower(curvature, last.at, whole.bottom);
        const bool isGood = isInReach(whole.bottom);
        Point& point = m_fitted.point;
        point.state = isGood ? PointState::good : PointState::edge;
        point.uncorrected =
            levelOf(residualPower(curvature, {0, 0}, whole.bottom) + std::max(0.0, whole.floor));
        if (!isGood) {
            const bool isI = !isWithin(m_bench.order().i, whole.bottom.i);
            point.remark = std::string("the best ") + (isI ? "I" : "Q") + " is about " +
                           std::to_string(std::lround(isI ? whole.bottom.i : whole.bottom.q)) +
                           ", beyond what can be set";
        }
        if (isGood) {
            m_knowledge.learn(probes, whole, m_knowledge.scale.power(last.reading) - left);
        }
        m_fitted.sample = Sample{point.place, whole.bottom, std::max(0.1, deviation)};
    }

    void giveBack() {
        const bool isSearched = m_bench.hasRoomForASearch();
        const auto found = m_bench.search(m_fitted.point.place);
        if (!found) {
            m_fitted.point.remark = isSearched ? "neither a fit nor a search found corrections"
                                               : "its probes are no bowl, and too few are left for a search";
            fail();
            return;
        }
        const Pair at{static_cast<double>(found->i), static_cast<double>(found->q)};
        const auto beside = probeBeside(m_bench, m_knowledge, *found);
        // The last probe at a place is the one with its corrections.
        const auto reading = m_bench.probe(at);
        if (!reading || !beside) {
            fail();
            return;
        }
        if (m_knowledge.scale.level(beside->reading) <
            m_knowledge.scale.level(reading->reading) + leastRise) {
            m_fitted.point.remark = "neither a fit nor a search found corrections: beside them " +
                                    std::to_string(beside->reading) + " is read, and with them " +
                                    std::to_string(reading->reading);
            fail();
            return;
        }
        Point& point = m_fitted.point;
        point.corrections = *found;
        point.reading = reading->reading;
        point.level = m_knowledge.scale.level(reading->reading);
        point.state = PointState::good;
        point.remark = "found by a search, since its probes are no bowl";
        const double power = m_knowledge.scale.power(reading->reading);
        const double amplitude = std::sqrt(power) / std::max(m_knowledge.curvature.amplitude(), 1e-12);
        m_fitted.sample = Sample{point.place, at, std::max(0.5, amplitude)};
        m_isOver = true;
    }

    void fail() {
        Point& point = m_fitted.point;
        point.state = PointState::failed;
        point.corrections = {};
        if (point.remark.empty()) {
            point.remark = m_bench.isInterrupted() ? "it was interrupted"
                           : m_bench.left() == 0   ? "the budget of probes is spent"
                                                   : "the detector could not be read";
        }
        m_isOver = true;
    }

    Bench& m_bench;
    Knowledge& m_knowledge;
    const double m_wanted;
    FittedPoint m_fitted;
    Pair m_centre{};
    double m_radius = 0.0;
    std::vector<PowerProbe> m_probes;
    int m_rounds = 0;
    bool m_isBeyond = false;
    bool m_isOver = false;
};

} // namespace

FittedPoint fitPoint(Bench& bench, Knowledge& knowledge, const Place& place, const Forecast& forecast,
                     double wanted) {
    return PointFit(bench, knowledge, place, wanted).run(forecast);
}

double residualPower(const Curvature& curvature, const Corrections& at, const Pair& bottom) {
    return curvature.power({at.i - bottom.i, at.q - bottom.q});
}

std::optional<Reading> probeBeside(Bench& bench, const Knowledge& knowledge, const Corrections& at) {
    const Branch& i = bench.order().i;
    const double away = 2.0 * knowledge.leastRadius();
    const bool isRoomAbove = at.i + away <= i.high;
    return bench.probe(bench.inside({at.i + (isRoomAbove ? away : -away), static_cast<double>(at.q)}));
}

std::vector<Reading> probeRing(Bench& bench, const Pair& centre, double radius, int corners) {
    const Order& order = bench.order();
    const auto drawn = [radius](double value, const Branch& branch) {
        const double middle = (static_cast<double>(branch.low) + branch.high) / 2.0;
        const double low = std::min(middle, branch.low + radius);
        return std::clamp(value, low, 2.0 * middle - low);
    };
    const Pair middle{drawn(centre.i, order.i), drawn(centre.q, order.q)};
    std::vector<Reading> readings;
    for (int corner = 0; corner < corners; ++corner) {
        const double angle = wholeTurn * corner / corners;
        const auto reading =
            bench.probe({middle.i + radius * std::cos(angle), middle.q + radius * std::sin(angle)});
        if (!reading) {
            break;
        }
        readings.push_back(*reading);
    }
    return readings;
}

Corrections bestSettable(const Bench& bench, const Curvature& curvature, const Pair& bottom) {
    // Of a bottom beyond a range, the end of the range and what is best of the other one then.
    const Pair inside = bench.inside(bottom);
    Pair wanted = inside;
    if (inside.i != bottom.i && inside.q == bottom.q) {
        wanted.q = bottom.q - curvature.iq / curvature.qq * (inside.i - bottom.i);
    } else if (inside.q != bottom.q && inside.i == bottom.i) {
        wanted.i = bottom.i - curvature.iq / curvature.ii * (inside.q - bottom.q);
    }
    return bench.settable(bench.inside(wanted));
}

} // namespace Radio::Fit
