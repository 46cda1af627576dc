// Variables and calibration tables, which boards with synthesisers of their own ask for.
#include "CCalibrationHandler.h"
#include "CStorageManager.h"
#include "Kept.h"
#include "MinimalPlatform.h"
#include "ResultCode.h"

#include <algorithm>

using namespace Minimal;

namespace {

/** The node at or before x, or the last but one, and how far x is beyond it, from 0 to 1. */
std::pair<std::size_t, double> locate(const std::vector<int>& axis, int x) {
    if (axis.size() == 1) {
        return {0, 0.0};
    }
    const auto after = std::upper_bound(axis.begin() + 1, axis.end() - 1, x) - axis.begin();
    const auto node = static_cast<std::size_t>(after) - 1;
    return {node, std::clamp((double{1} * x - axis[node]) / (double{1} * axis[node + 1] - axis[node]), 0.0, 1.0)};
}
int valueOf(const Table& table, int x1, int x2) {
    const auto [n1, part1] = locate(table.first, x1);
    const auto [n2, part2] = locate(table.second, x2);
    const auto along = [&table, column = n2, part = part2](std::size_t n) {
        const int* const row = &table.values[n * table.second.size() + column];
        return part == 0.0 ? row[0] : row[0] + part * (double{1} * row[1] - row[0]);
    };
    const double value = part1 == 0.0 ? along(n1) : along(n1) + part1 * (along(n1 + 1) - along(n1));
    return static_cast<int>(value + (value < 0 ? -0.5 : 0.5));
}

} // namespace

std::map<std::string, std::vector<int>>& Minimal::variables() {
    return kept<std::map<std::string, std::vector<int>>>();
}
std::map<std::string, Table>& Minimal::tables() { return kept<std::map<std::string, Table>>(); }

EAFResult CStorageManager_GetVariableContentAddressByName(const char* name, void** address, int /*reserved*/) {
    std::vector<int>* const content = find(variables(), name);
    *address = content != nullptr ? content->data() : nullptr;
    return *address != nullptr ? ResultOk : ResultFailed;
}
EAFResult CStorageManager_GetVariableByName(const char* name, StorageVariable** out) {
    StorageVariable& record = kept<std::map<std::string, StorageVariable>>()[name];
    *out = &record;
    return CStorageManager_GetVariableContentAddressByName(name, &record.content, 0);
}
ECHResult CCalibrationHandler_GetTable(const char* name, CalibrationTableHandle* out) {
    *out = reinterpret_cast<CalibrationTableHandle>(find(tables(), name));
    return ECHResult{*out != nullptr ? 0 : notFound};
}
ECHResult CCalibrationTable_LinearInterpolate(CalibrationTableHandle table, int x, int* y) {
    return CCalibrationTable_BiLinearInterpolate(table, x, 0, y);
}
ECHResult CCalibrationTable_BiLinearInterpolate(CalibrationTableHandle table, int x1, int x2, int* y) {
    if (table == nullptr) {
        return ECHResult{notFound};
    }
    *y = valueOf(*reinterpret_cast<const Table*>(table), x1, x2);
    return ECHResult{0};
}
