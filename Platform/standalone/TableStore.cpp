#include "standalone/TableStore.h"

#include "standalone/Codes.h"
#include "standalone/Interpolation.h"

#include <stdexcept>
#include <utility>

namespace Standalone {

namespace {

/** What is wrong with one axis that has nodes; empty: nothing. */
std::string whatIsWrongWithNodes(const char* axisName, const std::vector<std::int32_t>& axis) {
    for (std::size_t i = 1; i < axis.size(); ++i) {
        if (axis[i] <= axis[i - 1]) {
            return std::string(axisName) + " is not ascending: node " + std::to_string(i + 1) + " is " +
                   std::to_string(axis[i]) + " after " + std::to_string(axis[i - 1]);
        }
    }
    return {};
}

std::string_view nameOf(const CalibrationTable* table) {
    return table != nullptr ? std::string_view(table->name) : "";
}

std::int32_t interpolateLinear(const CalibrationTable* table, std::int32_t x, int* y) {
    if (table == nullptr || y == nullptr || !table->axis2.empty()) {
        return Codes::badArgument;
    }
    *y = Interpolation::linear(table->axis1, table->values, x);
    return ResultOk;
}

std::int32_t interpolateBilinear(const CalibrationTable* table, std::int32_t x1, std::int32_t x2, int* y) {
    if (table == nullptr || y == nullptr || table->axis2.empty()) {
        return Codes::badArgument;
    }
    *y = Interpolation::bilinear(table->axis1, table->axis2, table->values, x1, x2);
    return ResultOk;
}

} // namespace

std::string TableStore::whatIsWrongWith(const CalibrationTable& table) {
    if (table.axis1.empty()) {
        return "axis 1 has no nodes";
    }
    std::string wrong = whatIsWrongWithNodes("axis 1", table.axis1);
    if (wrong.empty()) {
        wrong = whatIsWrongWithNodes("axis 2", table.axis2);
    }
    const std::size_t needed = table.axis1.size() * (table.axis2.empty() ? 1 : table.axis2.size());
    if (wrong.empty() && table.values.size() != needed) {
        wrong = std::to_string(needed) + " values are needed and " + std::to_string(table.values.size()) +
                " given";
    }
    return wrong;
}

CalibrationTable& TableStore::add(CalibrationTable table) {
    const std::string wrong = whatIsWrongWith(table);
    if (!wrong.empty()) {
        throw std::invalid_argument("table \"" + table.name + "\": " + wrong);
    }
    std::unique_ptr<CalibrationTable>& place = m_tables[table.name];
    if (place == nullptr) {
        place = std::make_unique<CalibrationTable>();
    }
    *place = std::move(table);
    return *place;
}

CalibrationTable* TableStore::find(std::string_view name) {
    const auto found = m_tables.find(name);
    return found != m_tables.end() ? found->second.get() : nullptr;
}

std::int32_t TableStore::lookup(const char* name, CalibrationTable** out) {
    const std::string_view wanted = name != nullptr ? name : "";
    const auto carryOut = [&](std::int64_t& /*given*/) -> std::int32_t {
        if (name == nullptr || out == nullptr) {
            return Codes::badArgument;
        }
        CalibrationTable* const table = find(wanted);
        if (table == nullptr) {
            return Codes::notFound;
        }
        *out = table;
        return ResultOk;
    };
    return m_calls.answer(wanted, {Operation::tableLookup}, carryOut, out);
}

std::int32_t TableStore::interpolate(CalibrationTable* table, std::int32_t x, int* y) {
    return m_calls.isIdle() ? interpolateLinear(table, x, y) : interpolateOpenly(table, x, y);
}

std::int32_t TableStore::interpolate(CalibrationTable* table, std::int32_t x1, std::int32_t x2, int* y) {
    return m_calls.isIdle() ? interpolateBilinear(table, x1, x2, y) : interpolateOpenly(table, x1, x2, y);
}

std::int32_t TableStore::interpolateOpenly(CalibrationTable* table, std::int32_t x, int* y) {
    const auto interpolate = [&](std::int64_t& given) {
        const std::int32_t code = interpolateLinear(table, x, y);
        given = isSuccess(code) ? *y : given;
        return code;
    };
    return m_calls.answer(nameOf(table), {Operation::tableLinear, 0, {x, 0}}, interpolate, y);
}

std::int32_t TableStore::interpolateOpenly(CalibrationTable* table, std::int32_t x1, std::int32_t x2,
                                           int* y) {
    const auto interpolate = [&](std::int64_t& given) {
        const std::int32_t code = interpolateBilinear(table, x1, x2, y);
        given = isSuccess(code) ? *y : given;
        return code;
    };
    return m_calls.answer(nameOf(table), {Operation::tableBilinear, 0, {x1, x2}}, interpolate, y);
}

} // namespace Standalone
