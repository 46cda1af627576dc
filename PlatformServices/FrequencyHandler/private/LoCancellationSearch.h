#ifndef FREQUENCYHANDLER_PRIVATE_LOCANCELLATIONSEARCH_H
#define FREQUENCYHANDLER_PRIVATE_LOCANCELLATIONSEARCH_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace RL::FrequencyHandler {

/**
 * The search for the pair of I and Q corrections with the least detector reading: numbers in, numbers out.
 *
 * Two ranges, one for I and one for Q, are narrowed again and again. Each iteration probes four points, a
 * grid of two by two, and keeps of each range the part on the side of the probe with the least reading. The
 * caller sets each probe on the hardware and enters its reading; a reading that is not entered keeps the
 * value that it had.
 */
class LoCancellationSearch {
public:
    static constexpr std::size_t probeCount = 4;

    struct Point {
        std::int32_t i;
        std::int32_t q;
    };

    /** The first four probes are the corners of the ranges. `shrinkFactor` is the fraction of a range that is
     * kept. */
    LoCancellationSearch(std::int32_t iLow, std::int32_t iHigh, std::int32_t qLow, std::int32_t qHigh,
                         double shrinkFactor);

    Point probe(std::size_t index) const;
    /** Where the reading of a probe belongs; 0 at the start, never cleared. */
    std::int32_t& reading(std::size_t index) { return m_readings[index]; }

    /** Ends an iteration: narrows both ranges and places the next probes. Returns the wider of the new
     * widths. */
    std::int32_t narrow();

    /** The middle of both ranges: the result, once they are narrow enough. */
    Point midpoint() const;

private:
    /** One of the two ranges, and the two coordinates at which it is probed. */
    struct Range {
        std::int32_t low;
        std::int32_t high;
        std::array<std::int32_t, 2> probes;

        std::int32_t width() const;
        void keep(bool lowSide, double fraction);
        void placeProbes(double fraction);
        std::int32_t middle() const;
    };

    std::size_t bestProbe() const;

    Range m_i;
    Range m_q;
    std::array<std::int32_t, probeCount> m_readings{};
    double m_shrinkFactor;
};

} // namespace RL::FrequencyHandler

#endif
