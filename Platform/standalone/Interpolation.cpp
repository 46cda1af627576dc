#include "standalone/Interpolation.h"

#include <algorithm>
#include <iterator>

namespace Standalone::Interpolation {

namespace {

/** The number whole + rest / divisor, with 0 <= rest < divisor. */
template <typename Rest>
struct Mixed {
    std::int64_t whole;
    Rest rest;
};

Mixed<std::uint32_t> divide(std::int64_t dividend, std::uint32_t divisor) {
    const auto signedDivisor = static_cast<std::int64_t>(divisor);
    std::int64_t whole = dividend / signedDivisor;
    std::int64_t rest = dividend % signedDivisor;
    if (rest < 0) {
        --whole;
        rest += signedDivisor;
    }
    return {whole, static_cast<std::uint32_t>(rest)};
}

/**
 * `width` times the value at `position` between `low` and `high`. Never beyond 2^31 * (2^32 - 1), which is
 * less than 2^63, because the two weights add up to `width`.
 */
std::int64_t weigh(std::int64_t low, std::int64_t high, const Position& position) {
    return low * static_cast<std::int64_t>(position.width - position.offset) +
           high * static_cast<std::int64_t>(position.offset);
}

std::int32_t roundHalfAwayFromZero(const Mixed<std::uint64_t>& number, std::uint64_t divisor) {
    const std::uint64_t distanceToNext = divisor - number.rest;
    // A negative number has a negative whole part, and its half goes down to it, away from zero.
    const bool toNext = number.whole < 0 ? number.rest > distanceToNext : number.rest >= distanceToNext;
    return static_cast<std::int32_t>(number.whole + (toNext ? 1 : 0));
}

/** The node on the other side of the coordinate; the same node when the coordinate lies on it. */
std::size_t otherIndex(const Position& position) {
    return position.offset != 0 ? position.index + 1 : position.index;
}

} // namespace

Position locate(const std::vector<std::int32_t>& axis, std::int32_t x) {
    if (x < axis.front()) {
        return {0, 0, 1};
    }
    if (x >= axis.back()) {
        return {axis.size() - 1, 0, 1};
    }
    const auto next = std::upper_bound(axis.begin(), axis.end(), x);
    const auto node = std::prev(next);
    const auto start = static_cast<std::uint32_t>(*node);
    return {static_cast<std::size_t>(std::distance(axis.begin(), node)),
            static_cast<std::uint32_t>(x) - start, static_cast<std::uint32_t>(*next) - start};
}

std::int32_t linear(const std::vector<std::int32_t>& axis, const std::vector<std::int32_t>& values,
                    std::int32_t x) {
    const Position position = locate(axis, x);
    const Mixed<std::uint32_t> value =
        divide(weigh(values[position.index], values[otherIndex(position)], position), position.width);
    return roundHalfAwayFromZero({value.whole, value.rest}, position.width);
}

std::int32_t bilinear(const std::vector<std::int32_t>& axis1, const std::vector<std::int32_t>& axis2,
                      const std::vector<std::int32_t>& values, std::int32_t x1, std::int32_t x2) {
    const Position position1 = locate(axis1, x1);
    const Position position2 = locate(axis2, x2);
    // The value along axis 1 at one node of axis 2, exactly: a whole number and a rest over width 1.
    const auto along1 = [&](std::size_t index2) {
        const std::int64_t low = values[position1.index * axis2.size() + index2];
        const std::int64_t high = values[otherIndex(position1) * axis2.size() + index2];
        return divide(weigh(low, high, position1), position1.width);
    };
    const Mixed<std::uint32_t> low = along1(position2.index);
    const Mixed<std::uint32_t> high = along1(otherIndex(position2));

    // Whole numbers and rests are weighed apart. What the whole numbers leave over width 2 and what the rests
    // give over width 1 * width 2 make two proper fractions over one divisor, which fits 64 bits; their sum
    // may not.
    const Mixed<std::uint32_t> whole = divide(weigh(low.whole, high.whole, position2), position2.width);
    const std::uint64_t divisor = static_cast<std::uint64_t>(position1.width) * position2.width;
    const std::uint64_t fromWhole = static_cast<std::uint64_t>(whole.rest) * position1.width;
    const std::uint64_t fromRests =
        static_cast<std::uint64_t>(low.rest) * (position2.width - position2.offset) +
        static_cast<std::uint64_t>(high.rest) * position2.offset;
    const std::uint64_t room = divisor - fromWhole;
    if (fromRests >= room) {
        return roundHalfAwayFromZero({whole.whole + 1, fromRests - room}, divisor);
    }
    return roundHalfAwayFromZero({whole.whole, fromWhole + fromRests}, divisor);
}

} // namespace Standalone::Interpolation
