#include "standalone/Interpolation.h"

#include <limits>

namespace Standalone::Interpolation {

namespace {

/** Two neighbouring nodes and a coordinate between them; both are the same node outside the axis. */
struct Segment {
    std::size_t low;
    std::size_t high;
    /** Distance of the coordinate from the low node, and of the nodes; 0 and 1 outside the axis. */
    std::uint32_t offset;
    std::uint32_t width;
};

/** The values at the two ends of one side of a cell, along axis 1. */
struct Side {
    std::int64_t low;
    std::int64_t high;
};

/** The number whole + rest / divisor, with 0 <= rest < divisor. */
struct Mixed {
    std::int64_t whole;
    std::uint64_t rest;
};

Mixed divide(std::int64_t dividend, std::uint32_t divisor) {
    const auto signedDivisor = static_cast<std::int64_t>(divisor);
    const std::int64_t whole = dividend / signedDivisor;
    const std::int64_t rest = dividend % signedDivisor;
    return rest < 0 ? Mixed{whole - 1, static_cast<std::uint64_t>(rest + signedDivisor)}
                    : Mixed{whole, static_cast<std::uint64_t>(rest)};
}

/** Inlined, as nearly all that an interpolation costs is finding the nodes. */
inline Segment find(const std::vector<std::int32_t>& axis, std::int32_t x) {
    // The last node that is not above x is one of the `count` from `node` on; below the axis it is the first.
    const std::int32_t* node = axis.data();
    for (std::size_t count = axis.size(); count > 1;) {
        const std::size_t half = count / 2;
        node = node[half] <= x ? node + half : node;
        count -= half;
    }
    const auto low = static_cast<std::size_t>(node - axis.data());
    if (x < *node || low + 1 == axis.size()) {
        return {low, low, 0, 1};
    }
    const auto start = static_cast<std::uint32_t>(node[0]);
    return {low, low + 1, static_cast<std::uint32_t>(x) - start, static_cast<std::uint32_t>(node[1]) - start};
}

/**
 * `width` times the value in `segment` between `low` and `high`. Never beyond 2^31 * (2^32 - 1), which is
 * less than 2^63, because the two weights add up to `width`.
 */
std::int64_t weigh(std::int64_t low, std::int64_t high, const Segment& segment) {
    return low * static_cast<std::int64_t>(segment.width - segment.offset) +
           high * static_cast<std::int64_t>(segment.offset);
}

/**
 * The integer nearest to dividend / divisor, of two the one away from zero; it is known to fit. Divided are
 * doubles, which processors without a division of 64 bits do many times faster, and what remains exactly
 * mends the result.
 */
std::int32_t roundedQuotient(std::int64_t dividend, std::uint32_t divisor) {
    const auto quotient = static_cast<std::int32_t>(static_cast<double>(dividend) / divisor);
    const auto signedDivisor = static_cast<std::int64_t>(divisor);
    const std::int64_t twiceTheRest = 2 * (dividend - quotient * signedDivisor);
    if (twiceTheRest >= signedDivisor) {
        return quotient + 1;
    }
    return twiceTheRest <= -signedDivisor ? quotient - 1 : quotient;
}

std::int32_t roundHalfAwayFromZero(const Mixed& number, std::uint64_t divisor) {
    const std::uint64_t distanceToNext = divisor - number.rest;
    // A negative number has a negative whole part, and its half goes down to it, away from zero.
    const bool toNext = number.whole < 0 ? number.rest > distanceToNext : number.rest >= distanceToNext;
    return static_cast<std::int32_t>(number.whole + (toNext ? 1 : 0));
}

/**
 * The value in a cell so large that what is weighed along both axes does not fit 64 bits. No table of a radio
 * has one; not inlined, so that the others do without its registers.
 */
[[gnu::noinline]] std::int32_t bilinearInLargeCell(const Side& low, const Side& high, const Segment& along1,
                                                   const Segment& along2) {
    // The value along axis 1 on either side, exactly: a whole number and a rest over width 1.
    const Mixed atLow = divide(weigh(low.low, low.high, along1), along1.width);
    const Mixed atHigh = divide(weigh(high.low, high.high, along1), along1.width);

    // Whole numbers and rests are weighed apart. What the whole numbers leave over width 2 and what the rests
    // give over width 1 * width 2 make two proper fractions over one divisor, which fits 64 bits; their sum
    // may not.
    const Mixed whole = divide(weigh(atLow.whole, atHigh.whole, along2), along2.width);
    const std::uint64_t divisor = std::uint64_t{along1.width} * along2.width;
    const std::uint64_t fromWhole = whole.rest * along1.width;
    const std::uint64_t fromRests = atLow.rest * (along2.width - along2.offset) + atHigh.rest * along2.offset;
    const std::uint64_t room = divisor - fromWhole;
    if (fromRests >= room) {
        return roundHalfAwayFromZero({whole.whole + 1, fromRests - room}, divisor);
    }
    return roundHalfAwayFromZero({whole.whole, fromWhole + fromRests}, divisor);
}

} // namespace

Position locate(const std::vector<std::int32_t>& axis, std::int32_t x) {
    const Segment segment = find(axis, x);
    return {segment.low, segment.offset, segment.width};
}

std::int32_t linear(const std::vector<std::int32_t>& axis, const std::vector<std::int32_t>& values,
                    std::int32_t x) {
    const Segment segment = find(axis, x);
    return roundedQuotient(weigh(values[segment.low], values[segment.high], segment), segment.width);
}

std::int32_t bilinear(const std::vector<std::int32_t>& axis1, const std::vector<std::int32_t>& axis2,
                      const std::vector<std::int32_t>& values, std::int32_t x1, std::int32_t x2) {
    const Segment along1 = find(axis1, x1);
    const Segment along2 = find(axis2, x2);
    const std::int32_t* const lowRow = values.data() + along1.low * axis2.size();
    const std::int32_t* const highRow = values.data() + along1.high * axis2.size();
    const Side low{lowRow[along2.low], highRow[along2.low]};
    const Side high{lowRow[along2.high], highRow[along2.high]};

    const std::uint64_t area = std::uint64_t{along1.width} * along2.width;
    if (area > std::numeric_limits<std::uint32_t>::max()) {
        return bilinearInLargeCell(low, high, along1, along2);
    }
    const std::int64_t weighed =
        weigh(weigh(low.low, low.high, along1), weigh(high.low, high.high, along1), along2);
    return roundedQuotient(weighed, static_cast<std::uint32_t>(area));
}

} // namespace Standalone::Interpolation
