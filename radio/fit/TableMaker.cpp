#include "radio/fit/TableMaker.h"

#include "radio/fit/Plan.h"
#include "standalone/Interpolation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace Radio::Fit {

namespace {

std::int32_t node(double value, const Branch& branch) {
    return static_cast<std::int32_t>(
        std::lround(std::clamp(value, static_cast<double>(branch.low), static_cast<double>(branch.high))));
}

std::vector<std::int32_t> evenTemperatures(const Order& order, std::size_t most) {
    const auto span = static_cast<std::size_t>(order.highTemperature - order.lowTemperature);
    const std::size_t count = std::min(most, span + 1);
    std::vector<std::int32_t> temperatures;
    for (std::size_t n = 0; n < count; ++n) {
        const double part = count > 1 ? static_cast<double>(n) / static_cast<double>(count - 1) : 0.0;
        temperatures.push_back(order.lowTemperature +
                               static_cast<std::int32_t>(std::lround(part * static_cast<double>(span))));
    }
    return temperatures;
}

std::int32_t dac(std::int32_t value, const Branch& branch) {
    const std::int32_t last = (branch.high - branch.low) / branch.step;
    const double steps = std::floor((static_cast<double>(value) - branch.low) / branch.step + 0.5);
    return branch.low + std::clamp(static_cast<std::int32_t>(steps), 0, last) * branch.step;
}

} // namespace

Table makeTable(const Order& order, const Surface& surface, const Size& size) {
    Table table;
    const std::vector<std::uint32_t> carriers = evenCarriers(order, size.carriers);
    for (const std::uint32_t carrier : carriers) {
        table.carriers.push_back(static_cast<std::int32_t>(carrier));
    }
    table.temperatures = evenTemperatures(order, size.temperatures);
    const std::size_t rows = table.temperatures.size();
    table.i.resize(carriers.size() * rows);
    table.q.resize(carriers.size() * rows);
    for (std::size_t row = 0; row < rows; ++row) {
        const std::vector<Pair> bottoms = surface.bottomsAt(table.temperatures[row], carriers);
        for (std::size_t column = 0; column < carriers.size(); ++column) {
            table.i[column * rows + row] = node(bottoms[column].i, order.i);
            table.q[column * rows + row] = node(bottoms[column].q, order.q);
        }
    }
    return table;
}

Table makeTable(const Order& order, const Surface& surface) {
    return makeTable(order, surface, {order.mostCarriers, order.mostTemperatures});
}

Corrections correctionsAt(const Table& table, const Place& place) {
    const auto carrier = static_cast<std::int32_t>(place.carrier);
    using Standalone::Interpolation::bilinear;
    return {bilinear(table.carriers, table.temperatures, table.i, carrier, place.temperature),
            bilinear(table.carriers, table.temperatures, table.q, carrier, place.temperature)};
}

Corrections settledAt(const Order& order, const Table& table, const Place& place) {
    const Corrections set = correctionsAt(table, place);
    return {dac(set.i, order.i), dac(set.q, order.q)};
}

} // namespace Radio::Fit
