#include "radio/fit/Conclusion.h"

#include "radio/fit/Claim.h"
#include "radio/fit/TableMaker.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>

namespace Radio::Fit {

namespace {

std::string inWords(const Place& place) {
    return std::to_string(place.carrier) + " kHz, " + std::to_string(place.temperature) + " degrees";
}

std::string inWords(double level) {
    std::array<char, 32> text{};
    static_cast<void>(std::snprintf(text.data(), text.size(), "%.2f", level));
    return text.data();
}

std::string remarkAt(const Point& point) {
    return "at " + inWords(point.place) + " " + point.remark;
}

class Conclusion {
public:
    Conclusion(Outcome& outcome, const CourseEnd& end) : m_outcome(outcome), m_end(end) {}

    void run() {
        m_outcome.isRelative = !m_end.order.detector.zero;
        m_outcome.slope = m_end.knowledge.scale.slope;
        if (m_end.isInterrupted) {
            m_outcome.verdict = Verdict::interrupted;
            m_outcome.reason = "it was interrupted";
            return;
        }
        const bool isAnyFitted =
            std::any_of(m_outcome.points.begin(), m_outcome.points.end(),
                        [](const Point& point) { return point.state != PointState::failed; });
        if (!m_outcome.reason.empty() || !isAnyFitted) {
            m_outcome.verdict = Verdict::failed;
            return;
        }
        makeTables();
        claimWhatWasTried();
        m_outcome.reason = whyMissed();
        m_outcome.verdict = m_outcome.reason.empty() ? Verdict::held : Verdict::missed;
        claimNoMoreThanThereIs();
    }

private:
    bool isWithin(double level) const { return isWithinLimit(m_end.order, level); }

    /** With as many nodes as there may be; where that is not enough, with the number whose roundings fall
     * best. */
    void makeTables() {
        const Order& order = m_end.order;
        m_outcome.table = makeTable(order, m_end.surface);
        m_outcome.claim = claimAnywhere(order, m_end.knowledge, m_end.surface, m_outcome.table);
        for (std::size_t less = 1; less <= 8 && !(order.limit && isWithin(m_outcome.claim->level)); ++less) {
            const std::size_t carriers = order.mostCarriers - std::min(order.mostCarriers - 2, less);
            for (const std::size_t temperatures :
                 {order.mostTemperatures, (order.mostTemperatures + 2) / 2}) {
                Table table = makeTable(order, m_end.surface, {carriers, temperatures});
                const LevelAt claim = claimAnywhere(order, m_end.knowledge, m_end.surface, table);
                if (claim.level < m_outcome.claim->level) {
                    m_outcome.table = std::move(table);
                    m_outcome.claim = claim;
                }
            }
        }
    }

    void claimWhatWasTried() {
        for (const Verification& tried : m_outcome.verifications) {
            // What was missed was mended, but who missed may miss again.
            if (!tried.isAsForetold && !m_outcome.isRelative && m_end.misses > 0 &&
                tried.level > m_outcome.claim->level) {
                m_outcome.claim = LevelAt{tried.level, tried.place};
            }
        }
    }

    /** A surface that knows nothing of some of its places claims more than there is to cancel. */
    void claimNoMoreThanThereIs() {
        const double least = -200.0;
        double most = least;
        for (const Point& point : m_outcome.points) {
            most = std::max(most, point.uncorrected.value_or(least));
        }
        if (most > least && m_outcome.claim->level > most) {
            m_outcome.claim.reset();
        }
    }

    const Point* find(PointState state) const {
        const auto found = std::find_if(m_outcome.points.begin(), m_outcome.points.end(),
                                        [state](const Point& point) { return point.state == state; });
        return found == m_outcome.points.end() ? nullptr : &*found;
    }

    std::string whyMissed() const {
        const bool isHeld = isWithin(m_outcome.claim->level);
        if (const Point* const failed = find(PointState::failed)) {
            return "the point at " + inWords(failed->place) + " failed: " + failed->remark;
        }
        const Point* const edge = find(PointState::edge);
        if (edge != nullptr && (!m_end.isComplete || !isHeld)) {
            return remarkAt(*edge);
        }
        if (!m_end.isComplete) {
            return "the budget of probes was spent before all was tried";
        }
        if (m_end.misses > 0) {
            const auto missed = std::find_if(m_outcome.verifications.rbegin(), m_outcome.verifications.rend(),
                                             [](const Verification& tried) { return !tried.isAsForetold; });
            return "the surface does not foretell what is left: " + inWords(missed->level) + " dBc at " +
                   inWords(missed->place);
        }
        if (isHeld) {
            return {};
        }
        return m_outcome.isRelative
                   ? "the limit is in dBc, and the detector's zero is not known"
                   : "up to " + inWords(m_outcome.claim->level) + " dBc may be left at " +
                         inWords(m_outcome.claim->place) + ", more than the limit of " +
                         inWords(*m_end.order.limit) +
                         (m_outcome.isBudgetSpent ? ", and the budget of probes is spent" : "");
    }

    Outcome& m_outcome;
    const CourseEnd& m_end;
};

} // namespace

void conclude(Outcome& outcome, const CourseEnd& end) {
    Conclusion(outcome, end).run();
}

} // namespace Radio::Fit
