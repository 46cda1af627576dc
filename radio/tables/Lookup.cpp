#include "radio/tables/Lookup.h"

#include "standalone/Interpolation.h"

#include <numeric>

namespace Radio::Tables {

namespace {

AxisLookup locate(const std::vector<std::int32_t>& axis, std::int32_t at) {
    const auto [low, offset, width] = Standalone::Interpolation::locate(axis, at);
    return {at, low, offset == 0 ? low : low + 1, offset, width, at < axis.front() || at > axis.back()};
}

MixedNumber divide(std::int64_t dividend, std::uint32_t divisor) {
    const std::int64_t signedDivisor = divisor;
    std::int64_t whole = dividend / signedDivisor;
    std::int64_t rest = dividend % signedDivisor;
    if (rest < 0) {
        --whole;
        rest += signedDivisor;
    }
    return {whole, static_cast<std::uint64_t>(rest), divisor};
}

/** Between two values on an axis, times its width. The weights add up to the width, so it fits. */
std::int64_t weigh(std::int64_t low, std::int64_t high, const AxisLookup& axis) {
    return low * static_cast<std::int64_t>(axis.width - axis.offset) +
           high * static_cast<std::int64_t>(axis.offset);
}

MixedNumber reduced(const MixedNumber& number) {
    const std::uint64_t common = std::gcd(number.numerator, number.divisor);
    return {number.whole, number.numerator / common, number.divisor / common};
}

/**
 * The number between `low` and `high`, whose divisor is `width1` for both. Whole parts and fractions are
 * weighed apart; each of the two sums then is a proper fraction over both widths, and so is less than 64
 * bits.
 */
MixedNumber between(const MixedNumber& low, const MixedNumber& high, std::uint32_t width1,
                    const AxisLookup& axis2) {
    const MixedNumber fromWhole = divide(weigh(low.whole, high.whole, axis2), axis2.width);
    const std::uint64_t divisor = std::uint64_t{width1} * axis2.width;
    const std::uint64_t one = fromWhole.numerator * width1;
    const std::uint64_t other = low.numerator * (axis2.width - axis2.offset) + high.numerator * axis2.offset;
    const std::uint64_t room = divisor - one;
    return other >= room ? reduced({fromWhole.whole + 1, other - room, divisor})
                         : reduced({fromWhole.whole, one + other, divisor});
}

void addNodes(Lookup& lookup, const CalibrationTable& table) {
    const auto add = [&](std::size_t index1, std::uint32_t weight1, std::size_t index2,
                         std::uint32_t weight2) {
        lookup.nodes.push_back({table.axis1[index1], table.axis2[index2],
                                table.values[index1 * table.axis2.size() + index2], weight1, weight2});
    };
    const auto addAlong2 = [&](std::size_t index1, std::uint32_t weight1) {
        add(index1, weight1, lookup.axis2.low, lookup.axis2.width - lookup.axis2.offset);
        if (lookup.axis2.offset != 0) {
            add(index1, weight1, lookup.axis2.high, lookup.axis2.offset);
        }
    };
    addAlong2(lookup.axis1.low, lookup.axis1.width - lookup.axis1.offset);
    if (lookup.axis1.offset != 0) {
        addAlong2(lookup.axis1.high, lookup.axis1.offset);
    }
}

} // namespace

std::int64_t MixedNumber::rounded() const {
    const std::uint64_t toNext = divisor - numerator;
    const bool isUp = whole < 0 ? numerator > toNext : numerator >= toNext;
    return whole + (isUp ? 1 : 0);
}

std::string toString(const MixedNumber& number) {
    const auto fraction = [&](std::uint64_t numerator) {
        return " + " + std::to_string(numerator) + "/" + std::to_string(number.divisor);
    };
    if (number.numerator == 0) {
        return std::to_string(number.whole);
    }
    if (number.whole >= 0) {
        return std::to_string(number.whole) + fraction(number.numerator);
    }
    return "-(" + std::to_string(-(number.whole + 1)) + fraction(number.divisor - number.numerator) + ")";
}

Lookup lookUp(const CalibrationTable& table, std::int32_t x1, std::int32_t x2) {
    Lookup lookup{locate(table.axis1, x1), locate(table.axis2, x2), {}, {}};
    addNodes(lookup, table);
    const auto along1 = [&](std::size_t index2) {
        const std::size_t width = table.axis2.size();
        return divide(weigh(table.values[lookup.axis1.low * width + index2],
                            table.values[lookup.axis1.high * width + index2], lookup.axis1),
                      lookup.axis1.width);
    };
    lookup.value =
        between(along1(lookup.axis2.low), along1(lookup.axis2.high), lookup.axis1.width, lookup.axis2);
    return lookup;
}

} // namespace Radio::Tables
