#ifndef RADIO_FIT_PLAN_H
#define RADIO_FIT_PLAN_H

#include "radio/fit/Order.h"

#include <cstdint>
#include <vector>

namespace Radio::Fit {

/**
 * The temperatures at which points are fitted, in degrees Celsius, in the order in which they cost least:
 * from the end of the range that is nearer to where the unit is to the other end. Both ends belong to them;
 * between them they lie as the nodes of Chebyshev polynomials do.
 */
std::vector<std::int32_t> fitTemperatures(const Order& order);

/** Those at which the table is tried, on the way back: in the middle between fitted ones, ends first. */
std::vector<std::int32_t> triedTemperatures(const std::vector<std::int32_t>& fitted, std::size_t most);

/** Carriers that are thought of, in kHz, ascending: `count` at equal distances, both ends included. */
std::vector<std::uint32_t> evenCarriers(const Order& order, std::size_t count);

} // namespace Radio::Fit

#endif
