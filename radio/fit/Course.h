#ifndef RADIO_FIT_COURSE_H
#define RADIO_FIT_COURSE_H

#include "radio/fit/Bench.h"
#include "radio/fit/Knowledge.h"
#include "radio/fit/Outcome.h"
#include "radio/fit/Surface.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Radio::Fit {

/** One calibration from its first probe to its last. */
class Course {
public:
    Course(const Order& order, Prober& prober);

    Outcome run();

private:
    /** The first point of all; false: nothing can be fitted. */
    bool begin(const Place& place);
    // These give whether they came to their end.

    /** Points at one temperature, where the surface knows least, until it knows enough. */
    bool fitAt(std::int32_t temperature, std::size_t least);
    /** Tries the table at one temperature. */
    bool tryAt(std::int32_t temperature, std::size_t count);
    /** Tries the table at temperatures that were not fitted. */
    bool goBack();
    bool showsThatItLives();
    /** By how much what was measured with a table lies beyond the surface's deviation. */
    void learnTried(double measured, const Corrections& set, const Forecast& forecast);
    /** More points where most is claimed, until the limit holds. */
    void improve();
    bool hasFailed() const;
    void fit(const Place& place);
    void add(const Place& place, const Forecast& forecast);
    void addFailed(const Place& place, const std::string& why);
    void refit(bool isDecayChosen);
    /** The carrier where the surface knows least; nothing: everywhere enough, or been there. */
    std::optional<std::uint32_t> leastKnown(std::int32_t temperature, double enough) const;
    bool goesOn() const;

    const Order m_order;
    Bench m_bench;
    Knowledge m_knowledge;
    Surface m_surface;
    std::vector<Sample> m_samples;
    std::set<std::pair<std::uint32_t, std::int32_t>> m_visited;
    /** Deviations of I and Q that will do: of a point, of the surface. */
    double m_wantedPoint = 0.2;
    double m_wantedSurface = 0.2;
    /** So many carriers are thought of for points. */
    std::size_t m_carriers = 49;
    /** Places at the last temperature at which the table left more than was foretold. */
    int m_misses = 0;
    /** The whole range was fitted and tried. */
    bool m_isComplete = false;
    Outcome m_outcome;
};

} // namespace Radio::Fit

#endif
