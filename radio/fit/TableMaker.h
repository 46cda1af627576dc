#ifndef RADIO_FIT_TABLEMAKER_H
#define RADIO_FIT_TABLEMAKER_H

#include "radio/fit/Order.h"
#include "radio/fit/Outcome.h"
#include "radio/fit/Surface.h"

#include <cstddef>

namespace Radio::Fit {

/** How many nodes a table has along each axis; at least 2. */
struct Size {
    std::size_t carriers = 2;
    std::size_t temperatures = 2;
};

/** Reads a surface out into a table: nodes at equal distances, values rounded and kept within the ranges. */
Table makeTable(const Order& order, const Surface& surface, const Size& size);
/** With as many nodes as there may be. */
Table makeTable(const Order& order, const Surface& surface);

/** What a radio sets with a table at a place, before its DACs: it interpolates between four nodes. */
Corrections correctionsAt(const Table& table, const Place& place);

/** What its DACs make of that. */
Corrections settledAt(const Order& order, const Table& table, const Place& place);

} // namespace Radio::Fit

#endif
