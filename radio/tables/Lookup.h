#ifndef RADIO_TABLES_LOOKUP_H
#define RADIO_TABLES_LOOKUP_H

#include "standalone/TableStore.h"

#include <cstdint>
#include <string>
#include <vector>

/** How tables are read, step by step. Touches no radio; may be called on any thread. */
namespace Radio::Tables {

/** The number whole + numerator / divisor, with 0 <= numerator < divisor. */
struct MixedNumber {
    std::int64_t whole;
    std::uint64_t numerator;
    std::uint64_t divisor;

    /** The nearest integer, halves away from zero. */
    std::int64_t rounded() const;
};

/** For example "436 + 17/40", "-(436 + 17/40)" or "436". */
std::string toString(const MixedNumber& number);

/** Where a coordinate lies on an axis. */
struct AxisLookup {
    /** The coordinate that was asked for. */
    std::int32_t at;
    /** Nodes on both sides; the same twice on a node and outside the axis. */
    std::size_t low;
    std::size_t high;
    /** Distance from the lower node, and of the two nodes; 0 and 1 when they are the same. */
    std::uint32_t offset;
    std::uint32_t width;
    /** The coordinate lies outside the axis: its nearest node holds. */
    bool isClamped;
};

/** One node that takes part. */
struct WeighedNode {
    std::int32_t x1;
    std::int32_t x2;
    std::int32_t value;
    /** weight1 / width of axis 1, times weight2 / width of axis 2. */
    std::uint32_t weight1;
    std::uint32_t weight2;
};

/** How a value is found in a table with two axes. */
struct Lookup {
    AxisLookup axis1;
    AxisLookup axis2;
    /** One, two or four. */
    std::vector<WeighedNode> nodes;
    /** Exact. */
    MixedNumber value;
};

/** `table` has two axes, and is borrowed during the call only. `x1` and `x2` are in the units of its axes. */
Lookup lookUp(const CalibrationTable& table, std::int32_t x1, std::int32_t x2);

} // namespace Radio::Tables

#endif
