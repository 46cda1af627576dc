#include "radio/fit/FirstPoint.h"

#include "radio/fit/PointFit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <vector>

namespace Radio::Fit {

namespace {

/** A slope that differs by more than this from the described one is another one. */
constexpr double slopeTolerance = 0.04;
/** Part of a power by which the probes of a place miss its bowl at most. */
constexpr double mostMisfit = 0.2;

std::string oneDecimal(double number) {
    std::array<char, 32> text{};
    static_cast<void>(std::snprintf(text.data(), text.size(), "%.1f", number));
    return text.data();
}

class FirstPoint {
public:
    FirstPoint(Bench& bench, Knowledge& knowledge, const Place& place)
        : m_bench(bench),
          m_knowledge(knowledge),
          m_place(place) {}

    FirstBowl run() {
        const Detector& detector = m_bench.order().detector;
        m_knowledge.scale.slope = detector.slope.value_or(20.0);
        m_knowledge.scale.zero = detector.zero.value_or(0.0);
        const Branch& i = m_bench.order().i;
        const Branch& q = m_bench.order().q;
        m_centre = {(static_cast<double>(i.low) + i.high) / 2.0, (static_cast<double>(q.low) + q.high) / 2.0};
        m_radius = 0.3 * std::min(static_cast<double>(i.high) - i.low, static_cast<double>(q.high) - q.low);
        const auto uncorrected = m_bench.probe(m_bench.inside({0.0, 0.0}));
        if (!uncorrected) {
            return trouble(unread());
        }
        m_readings.push_back(*uncorrected);
        if (!findBowl() || !narrow()) {
            // With a wrong slope there is no bowl, which is the better thing to say.
            static_cast<void>(m_readings.size() > 12 && !isStuck() && !isSlopeDescribed());
            return m_first;
        }
        if (!isSlopeDescribed() || !isLogarithmic()) {
            return m_first;
        }
        if (!detector.zero) {
            // Levels are relative to the uncorrected one.
            m_knowledge.scale.zero = -uncorrected->reading / m_knowledge.scale.slope;
            fitAll();
        }
        m_knowledge.learnFirst(m_knowledge.powersOf(m_readings));
        return m_first;
    }

private:
    FirstBowl trouble(const std::string& why) {
        m_first.trouble = why;
        return m_first;
    }
    bool fails(const std::string& why) {
        m_first.trouble = why;
        return false;
    }
    std::string unread() const {
        return m_bench.isInterrupted() ? "it was interrupted"
               : m_bench.left() == 0   ? "the budget of probes was spent at the first point"
                                       : "the detector could not be read";
    }

    bool addRing(const Pair& centre, double radius, int corners) {
        const std::vector<Reading> ring = probeRing(m_bench, centre, radius, corners);
        m_readings.insert(m_readings.end(), ring.begin(), ring.end());
        return static_cast<int>(ring.size()) == corners;
    }

    const Reading& lowest() const {
        return *std::min_element(m_readings.begin(), m_readings.end(),
                                 [](const Reading& a, const Reading& b) { return a.reading < b.reading; });
    }

    std::vector<Reading> seen() const {
        std::vector<Reading> inside;
        std::copy_if(
            m_readings.begin(), m_readings.end(), std::back_inserter(inside),
            [this](const Reading& reading) { return isInside(m_bench.order().detector, reading.reading); });
        return inside;
    }

    std::optional<Bowl> fitAll() {
        if (!m_bench.order().detector.slope) {
            if (const auto estimate = estimateSlope(seen())) {
                m_knowledge.scale.slope = estimate->slope;
            }
        }
        auto bowl = fitBowl(m_knowledge.powersOf(m_readings));
        if (bowl) {
            m_knowledge.curvature = bowl->curvature;
        }
        return bowl;
    }

    /** The bottom is where rings around it are worth their probes. */
    bool isNear(const Pair& bottom) const {
        const Pair inside = m_bench.inside(bottom);
        const double beyond = std::hypot(inside.i - bottom.i, inside.q - bottom.q);
        return beyond < m_radius;
    }

    bool isStuck() const {
        return m_readings.size() > 6 &&
               std::all_of(m_readings.begin(), m_readings.end(), [this](const Reading& reading) {
                   return reading.reading == m_readings.front().reading;
               });
    }

    bool findBowl() {
        constexpr int mostRings = 7;
        for (int ring = 0; ring < mostRings; ++ring) {
            if (!addRing(m_centre, m_radius, 6)) {
                return fails(unread());
            }
            const auto bowl = fitAll();
            m_lastBottom = bowl ? std::optional(bowl->bottom) : std::nullopt;
            if (bowl && !isStuck() && isNear(bowl->bottom)) {
                m_bottom = bowl->bottom;
                return true;
            }
            m_centre = {static_cast<double>(lowest().at.i), static_cast<double>(lowest().at.q)};
            m_radius *= ring == 0 ? 0.7 : 0.6;
            if (ring == 2 && !seesSomething() && !searchForIt()) {
                break;
            }
        }
        if (isStuck()) {
            return fails("every reading is " + std::to_string(m_readings.front().reading) +
                         ": the detector is stuck or saturated");
        }
        if (isNoise()) {
            return fails("readings differ with the same corrections as much as between others, around " +
                         std::to_string(m_readings.front().reading) +
                         ": the detector is stuck, noisy, or not settled");
        }
        const std::string beyond = m_lastBottom ? whyBeyond(*m_lastBottom) : "";
        return fails(!beyond.empty() ? beyond
                                     : "the leaking power is no bowl over I and Q at the first point");
    }

    /** What was read around the first ring once more tells what is noise. */
    bool isNoise() {
        constexpr std::size_t corners = 6;
        std::vector<Reading> again;
        for (std::size_t n = 1; n <= corners; ++n) {
            const Corrections& at = m_readings.at(n).at;
            const auto reading = m_bench.probe({static_cast<double>(at.i), static_cast<double>(at.q)});
            if (!reading) {
                return false;
            }
            again.push_back(*reading);
        }
        double mean = 0.0;
        for (std::size_t n = 0; n < corners; ++n) {
            mean += (m_readings[n + 1].reading + again[n].reading) / (2.0 * corners);
        }
        double within = 0.0;
        double between = 0.0;
        for (std::size_t n = 0; n < corners; ++n) {
            const double half = (m_readings[n + 1].reading - again[n].reading) / 2.0;
            const double middle = (m_readings[n + 1].reading + again[n].reading) / 2.0;
            within += 2.0 * half * half / corners;
            between += 2.0 * (middle - mean) * (middle - mean) / (corners - 1);
        }
        // Noise alone has both the same; that it has them so different happens once in a hundred times.
        constexpr double most = 8.7;
        return between < most * within;
    }

    bool seesSomething() const { return seen().size() >= 3; }

    /** Where nothing can be seen, the caller may know where to look. */
    bool searchForIt() {
        const auto found = m_bench.search(m_place);
        if (found) {
            m_centre = {static_cast<double>(found->i), static_cast<double>(found->q)};
            m_radius = 10.0 * m_knowledge.leastRadius();
        }
        return found.has_value();
    }

    /** The clause about a bottom that cannot be set; empty where it can, and where it is so far off that it
     * was made of noise. */
    std::string whyBeyond(const Pair& bottom) const {
        const Order& order = m_bench.order();
        const Corrections end = m_bench.settable(bottom);
        const double beyondI = std::abs(end.i - bottom.i);
        const double beyondQ = std::abs(end.q - bottom.q);
        const auto widthOf = [](const Branch& branch) {
            return static_cast<double>(branch.high) - branch.low;
        };
        if (beyondI > 5.0 * widthOf(order.i) || beyondQ > 5.0 * widthOf(order.q)) {
            return {};
        }
        const bool isI = beyondI > order.i.step;
        if (!isI && beyondQ <= order.q.step) {
            return {};
        }
        return std::string("at the first point the best ") + (isI ? "I" : "Q") + " is about " +
               std::to_string(std::lround(isI ? bottom.i : bottom.q)) + ", beyond what can be set";
    }

    /** Rings that are each so wide that they surely surround the bottom, down to the narrowest. */
    bool narrow() {
        for (int ring = 0; ring < 6; ++ring) {
            const double least = m_knowledge.leastRadius();
            const double radius = std::max(least, std::min(0.1 * m_radius, m_radius));
            if (!addRing(m_bottom, radius, 4)) {
                return fails(unread());
            }
            fitAll();
            const std::vector<Reading> ringReadings(m_readings.end() - 4, m_readings.end());
            const std::vector<PowerProbe> powers = m_knowledge.powersOf(ringReadings);
            const auto local = fitBottom(powers, m_knowledge.curvature);
            if (!local) {
                m_radius *= 0.5;
                continue;
            }
            const double off = std::hypot(local->bottom.i - m_bottom.i, local->bottom.q - m_bottom.q);
            m_bottom = local->bottom;
            m_radius = off > radius ? 10.0 * off : radius;
            if (radius <= 2.0 * least && off < 2.0 * radius) {
                m_first.bottom = m_bottom;
                m_first.deviation = std::max(least, 0.2 * radius);
                return true;
            }
        }
        if (const std::string beyond = whyBeyond(m_bottom); !beyond.empty()) {
            return fails(beyond);
        }
        return fails("the bottom of the bowl at the first point was not found");
    }

    bool isSlopeDescribed() {
        m_slope = estimateSlope(seen());
        const auto& described = m_bench.order().detector.slope;
        if (!m_slope || !described) {
            return true;
        }
        const double off = std::abs(m_slope->slope / *described - 1.0);
        if (off > slopeTolerance && off > 4.0 * m_slope->deviation && relativeMisfit() < mostMisfit) {
            return fails("the detector has " + oneDecimal(m_slope->slope) + " units for each dB, not the " +
                         oneDecimal(*described) + " described");
        }
        m_knowledge.slopeDoubt = off;
        return true;
    }

    double relativeMisfit() const { return m_slope->misfit * Scale{m_slope->slope, 0.0}.relativeError(); }

    bool isLogarithmic() {
        if (!m_slope) {
            return fails("the probes of the first point do not tell the slope of the detector");
        }
        const double misfit = relativeMisfit();
        if (misfit > mostMisfit) {
            return fails("the detector is not logarithmic, or too noisy: its readings miss a bowl by " +
                         oneDecimal(m_slope->misfit) + " units");
        }
        m_knowledge.firstMisfit = misfit;
        m_knowledge.slopeDoubt = std::max(m_knowledge.slopeDoubt, 2.0 * m_slope->deviation);
        constexpr double usual = 0.06;
        m_knowledge.learnNoise(std::min(misfit, usual), static_cast<int>(seen().size()) - 7);
        return true;
    }

    Bench& m_bench;
    Knowledge& m_knowledge;
    const Place m_place;
    FirstBowl m_first;
    std::vector<Reading> m_readings;
    Pair m_centre{};
    Pair m_bottom{};
    double m_radius = 0.0;
    /** Of the bowl through all that was read so far. */
    std::optional<Pair> m_lastBottom;
    std::optional<SlopeEstimate> m_slope;
};

} // namespace

FirstBowl findFirstBowl(Bench& bench, Knowledge& knowledge, const Place& place) {
    return FirstPoint(bench, knowledge, place).run();
}

} // namespace Radio::Fit
