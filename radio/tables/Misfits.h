#ifndef RADIO_TABLES_MISFITS_H
#define RADIO_TABLES_MISFITS_H

#include "standalone/TableStore.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Radio::Tables {

/** A node whose value does not go with those around it. */
struct Misfit {
    /** Which of the table's values it is. */
    std::size_t node;
    std::int32_t value;
    /** The value that its neighbours make likely. */
    double suggested;
    /** All neighbours have the other sign, and so would a likely value. */
    bool isSignFlip;
};

struct Misfits {
    /** Sign flips first, then the others, the worst first. */
    std::vector<Misfit> nodes;
    /** How far values usually are from what their neighbours suggest, in units of the table: the median. */
    double usualDeviation = 0.0;
    /** There are more; so many say something about the table, not about its nodes. */
    bool isCut = false;
};

/**
 * Looks for nodes that were stored by mistake in a table with two axes. What a node should have is guessed
 * from its neighbours: on the line between them along each axis, and at a corner as the plane through the
 * three others of its cell has it. A node does not fit when it is off by more than 5, and by more than 8
 * times as much as is usual in the table. A table of one node, or the ends of a row of nodes, tell nothing.
 */
Misfits findMisfits(const CalibrationTable& table);

} // namespace Radio::Tables

#endif
