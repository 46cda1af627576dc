#include "Arithmetic.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Told {

namespace {

/** A number as a fraction; the denominator is positive. */
struct Fraction {
    Wide numerator;
    Wide denominator;
};

/** The two nodes around a coordinate, and how far it lies from the first to the second. */
struct Place {
    std::size_t from;
    std::size_t to;
    Fraction share;
};

Place placeOn(const std::vector<std::int32_t>& axis, Wide x) {
    for (std::size_t node = 0; node < axis.size(); ++node) {
        if (x <= axis[node]) {
            if (node == 0 || x == axis[node]) {
                return {node, node, {0, 1}};
            }
            const Wide before = axis[node - 1];
            return {node - 1, node, {x - before, Wide{axis[node]} - before}};
        }
    }
    return {axis.size() - 1, axis.size() - 1, {0, 1}};
}

std::int32_t rounded(const Fraction& fraction) {
    const Wide twice = 2 * fraction.numerator;
    const Wide away = fraction.numerator < 0 ? -fraction.denominator : fraction.denominator;
    return asInt((twice + away) / (2 * fraction.denominator)); // toward zero, from half a unit further out
}

} // namespace

std::int32_t truncated(double number) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (std::isnan(number)) {
        return 0;
    }
    return static_cast<std::int32_t>(std::clamp(std::trunc(number), static_cast<double>(Limits::min()),
                                                static_cast<double>(Limits::max())));
}

std::int32_t interpolated(const Table& table, std::int32_t x1, std::int32_t x2) {
    static const std::vector<std::int32_t> single{0};
    const std::vector<std::int32_t>& axis2 = table.axis2.empty() ? single : table.axis2;
    const Place first = placeOn(table.axis1, x1);
    const Place second = placeOn(axis2, x2);
    const auto value = [&](std::size_t i, std::size_t j) { return Wide{table.values[i * axis2.size() + j]}; };
    const auto weighed = [](Wide low, Wide high, const Fraction& share) {
        return low * (share.denominator - share.numerator) + high * share.numerator;
    };
    const Wide low = weighed(value(first.from, second.from), value(first.to, second.from), first.share);
    const Wide high = weighed(value(first.from, second.to), value(first.to, second.to), first.share);
    return rounded({weighed(low, high, second.share), first.share.denominator * second.share.denominator});
}

} // namespace Told
