#include "radio/description/FittedTable.h"

#include "standalone/Interpolation.h"

#include <algorithm>
#include <optional>
#include <set>

namespace Radio::Describing {

namespace {

using Standalone::Interpolation::linear;

/** One node of the first axis: for each of the second what was answered there, and what it is taken for. */
struct Row {
    std::int32_t at;
    std::vector<std::optional<std::int32_t>> answers;
    std::vector<std::int32_t> values;
};

std::vector<std::int32_t> secondAxis(const Answers& answers) {
    std::set<std::int32_t> axis;
    for (const auto& [place, value] : answers) {
        axis.insert(place.second);
    }
    return {axis.begin(), axis.end()};
}

/** What nobody asked for lies between the answers beside it. */
void fillIn(Row& row, const std::vector<std::int32_t>& axis2) {
    std::vector<std::int32_t> known;
    std::vector<std::int32_t> values;
    for (std::size_t column = 0; column < axis2.size(); ++column) {
        if (row.answers[column]) {
            known.push_back(axis2[column]);
            values.push_back(*row.answers[column]);
        }
    }
    row.values.reserve(axis2.size());
    for (const std::int32_t at : axis2) {
        row.values.push_back(linear(known, values, at));
    }
}

std::vector<Row> rowsOf(const Answers& answers, const std::vector<std::int32_t>& axis2) {
    std::vector<Row> rows;
    for (const auto& [place, value] : answers) {
        if (rows.empty() || rows.back().at != place.first) {
            rows.push_back({place.first, std::vector<std::optional<std::int32_t>>(axis2.size()), {}});
        }
        const auto column = std::lower_bound(axis2.begin(), axis2.end(), place.second) - axis2.begin();
        rows.back().answers[static_cast<std::size_t>(column)] = value;
    }
    for (Row& row : rows) {
        fillIn(row, axis2);
    }
    return rows;
}

/** Each answer of `row` comes out between `low` and `high`, too. */
bool isBetween(const Row& low, const Row& row, const Row& high) {
    const std::vector<std::int32_t> axis{low.at, high.at};
    for (std::size_t column = 0; column < row.answers.size(); ++column) {
        if (row.answers[column] &&
            linear(axis, {low.values[column], high.values[column]}, row.at) != *row.answers[column]) {
            return false;
        }
    }
    return true;
}

/** The rows that have to stay. */
std::vector<const Row*> necessary(const std::vector<Row>& rows) {
    // Beyond so many, to look whether one more can be left out is not worth the time.
    constexpr std::size_t longest = 64;
    std::vector<const Row*> kept{&rows.front()};
    for (std::size_t low = 0; low + 1 < rows.size();) {
        std::size_t high = low + 1;
        for (std::size_t next = low + 2; next < std::min(rows.size(), low + longest); ++next) {
            const bool isStraight =
                std::all_of(rows.begin() + static_cast<std::ptrdiff_t>(low) + 1,
                            rows.begin() + static_cast<std::ptrdiff_t>(next),
                            [&](const Row& row) { return isBetween(rows[low], row, rows[next]); });
            if (!isStraight) {
                break;
            }
            high = next;
        }
        kept.push_back(&rows[high]);
        low = high;
    }
    return kept;
}

} // namespace

std::size_t nodesOf(const Answers& answers) {
    std::set<std::int32_t> first;
    for (const auto& [place, value] : answers) {
        first.insert(place.first);
    }
    return first.size() * secondAxis(answers).size();
}

FittedTable fitTable(const Answers& answers, bool hasTwoAxes) {
    FittedTable table;
    const std::vector<std::int32_t> axis2 = secondAxis(answers);
    const std::vector<Row> rows = rowsOf(answers, axis2);
    for (const Row* const row : necessary(rows)) {
        table.axis1.push_back(row->at);
        table.values.insert(table.values.end(), row->values.begin(), row->values.end());
        table.guessed +=
            static_cast<std::size_t>(std::count(row->answers.begin(), row->answers.end(), std::nullopt));
    }
    if (hasTwoAxes) {
        table.axis2 = axis2;
    }
    return table;
}

} // namespace Radio::Describing
