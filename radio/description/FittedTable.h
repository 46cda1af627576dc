#ifndef RADIO_DESCRIPTION_FITTEDTABLE_H
#define RADIO_DESCRIPTION_FITTEDTABLE_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace Radio::Describing {

/** What was asked of a table and answered, by place; the second coordinate of a table with one axis is 0. */
using Answers = std::map<std::pair<std::int32_t, std::int32_t>, std::int32_t>;

/** A table that gives each answer again. */
struct FittedTable {
    std::vector<std::int32_t> axis1;
    /** Empty: it has one axis. */
    std::vector<std::int32_t> axis2;
    /** The value for nodes (i, j) is at i * (nodes of axis 2) + j. */
    std::vector<std::int32_t> values;
    /** So many values nobody asked for; they lie between the answers beside them. */
    std::size_t guessed = 0;
};

/** So many nodes a table has at most that gives each of the answers again. */
std::size_t nodesOf(const Answers& answers);

/**
 * Nodes lie where was asked. Those of the first axis are left out that the platform's interpolation between
 * two others gives to the last unit. `answers` has one at least.
 */
FittedTable fitTable(const Answers& answers, bool hasTwoAxes);

} // namespace Radio::Describing

#endif
