#ifndef PLATFORM_STANDALONE_INTERPOLATION_H
#define PLATFORM_STANDALONE_INTERPOLATION_H

#include "Visibility.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/**
 * Interpolation in tables of integers: exact, rounded once to the nearest integer with halves away from zero,
 * with 64-bit intermediates that cannot overflow over the whole 32-bit range of axes and values.
 */
namespace Standalone::Interpolation {

/** Where a coordinate lies on an axis: between nodes `index` and `index` + 1, or on node `index`. */
struct Position {
    std::size_t index;
    /** Distance from node `index`; 0 on it. */
    std::uint32_t offset;
    /** Distance of the two nodes; 1 when the coordinate lies on the last node or outside the axis. */
    std::uint32_t width;
};

/** Finds `x` on an ascending axis with at least one node, by binary search; clamps outside the axis. */
RADIO_API Position locate(const std::vector<std::int32_t>& axis, std::int32_t x);

/** The value of `values`, one for each node of `axis`, at `x`. */
RADIO_API std::int32_t linear(const std::vector<std::int32_t>& axis, const std::vector<std::int32_t>& values,
                              std::int32_t x);

/** The value at (`x1`, `x2`); the value for nodes (i, j) is `values[i * axis2.size() + j]`. */
RADIO_API std::int32_t bilinear(const std::vector<std::int32_t>& axis1,
                                const std::vector<std::int32_t>& axis2,
                                const std::vector<std::int32_t>& values, std::int32_t x1, std::int32_t x2);

} // namespace Standalone::Interpolation

#endif
