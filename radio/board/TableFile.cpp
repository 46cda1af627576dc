#include "radio/board/TableFile.h"

#include "radio/text/Words.h"

#include <algorithm>
#include <iterator>
#include <tuple>

namespace Radio {

namespace {

constexpr std::size_t axisColumns = 2;

/** Where a row lies. */
struct Node {
    std::int32_t x1;
    std::int32_t x2;
    std::size_t row;

    bool isSameAs(const Node& other) const { return x1 == other.x1 && x2 == other.x2; }
};

std::vector<Node> readNodes(const CsvFile& file) {
    if (file.columns().size() <= axisColumns) {
        throw InputError({file.place().file, file.headingLine()},
                         "expected two columns for the axes and columns of values behind them, found " +
                             std::to_string(file.columns().size()) + " in all");
    }
    std::vector<Node> nodes;
    nodes.reserve(file.rows());
    for (std::size_t row = 0; row < file.rows(); ++row) {
        nodes.push_back({file.item(row, 0).integer(), file.item(row, 1).integer(), row});
    }
    return nodes;
}

/** The distinct values, ascending. */
std::vector<std::int32_t> axisOf(const std::vector<Node>& nodes, std::int32_t Node::*member) {
    std::vector<std::int32_t> values;
    values.reserve(nodes.size());
    std::transform(nodes.begin(), nodes.end(), std::back_inserter(values),
                   [member](const Node& node) { return node.*member; });
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}

/** For example "frequency_khz 18700000, temperature_c 25". */
std::string pairText(const CsvFile& file, std::int32_t x1, std::int32_t x2) {
    return harmless(file.columns()[0]) + " " + std::to_string(x1) + ", " + harmless(file.columns()[1]) + " " +
           std::to_string(x2);
}

/** Takes nodes that are there more than once out of `nodes`, which is sorted. */
std::vector<NodeProblem> takeDoubles(const CsvFile& file, std::vector<Node>& nodes) {
    std::vector<NodeProblem> problems;
    std::vector<Node> kept;
    for (const Node& node : nodes) {
        if (!kept.empty() && node.isSameAs(kept.back())) {
            problems.push_back({file.line(node.row), pairText(file, node.x1, node.x2) + " stands on line " +
                                                         std::to_string(file.line(kept.back().row)) +
                                                         " already, expected each pair once"});
        } else {
            kept.push_back(node);
        }
    }
    nodes = std::move(kept);
    std::sort(problems.begin(), problems.end(),
              [](const NodeProblem& a, const NodeProblem& b) { return a.line < b.line; });
    return problems;
}

/** `nodes` is sorted and without doubles, and there are fewer than the axes make. */
NodeProblem firstMissing(const CsvFile& file, const std::vector<Node>& nodes, const NodeGrid& grid) {
    const std::size_t width = grid.axis2.size();
    std::size_t index = 0;
    while (index < nodes.size() && nodes[index].x1 == grid.axis1[index / width] &&
           nodes[index].x2 == grid.axis2[index % width]) {
        ++index;
    }
    const std::int32_t x1 = grid.axis1[index / width];
    unsigned line = 0;
    for (const Node& node : nodes) {
        const unsigned candidate = file.line(node.row);
        if (node.x1 == x1 && (line == 0 || candidate < line)) {
            line = candidate;
        }
    }
    const std::uint64_t missing = std::uint64_t{grid.axis1.size()} * width - nodes.size();
    return {line, "no row for " + pairText(file, x1, grid.axis2[index % width]) +
                      (missing == 1 ? "" : " and " + std::to_string(missing - 1) + " more") +
                      ", expected one for each pair of the values of the two columns"};
}

} // namespace

NodeGrid gridOf(const CsvFile& file) {
    std::vector<Node> nodes = readNodes(file);
    std::sort(nodes.begin(), nodes.end(), [](const Node& a, const Node& b) {
        return std::tie(a.x1, a.x2, a.row) < std::tie(b.x1, b.x2, b.row);
    });
    NodeGrid grid;
    grid.axis1 = axisOf(nodes, &Node::x1);
    grid.axis2 = axisOf(nodes, &Node::x2);
    grid.problems = takeDoubles(file, nodes);
    if (std::uint64_t{grid.axis1.size()} * grid.axis2.size() != nodes.size()) {
        grid.problems.push_back(firstMissing(file, nodes, grid));
    }
    if (grid.problems.empty()) {
        std::transform(nodes.begin(), nodes.end(), std::back_inserter(grid.rows),
                       [](const Node& node) { return node.row; });
    }
    return grid;
}

std::vector<std::int32_t> valuesOf(const CsvFile& file, const NodeGrid& grid, std::size_t column) {
    std::vector<std::int32_t> values;
    values.reserve(grid.rows.size());
    std::transform(grid.rows.begin(), grid.rows.end(), std::back_inserter(values),
                   [&](std::size_t row) { return file.item(row, column).integer(); });
    return values;
}

const TableFile* TableFiles::find(const std::filesystem::path& file) {
    const auto known = m_files.find(file);
    if (known != m_files.end()) {
        return known->second ? &*known->second : nullptr;
    }
    std::optional<TableFile>& entry = m_files[file];
    if (std::optional<CsvFile> rows = m_csv(file)) {
        NodeGrid grid = gridOf(*rows);
        entry.emplace(TableFile{std::move(*rows), std::move(grid)});
    }
    return entry ? &*entry : nullptr;
}

bool TableFiles::hasRoomFor(std::uint64_t nodes) {
    m_nodes += nodes;
    return m_nodes <= mostNodes;
}

CalibrationTable readTableFile(const TableFile& table, const std::string& name, const std::string& column) {
    const CsvFile& file = table.rows;
    const NodeGrid& grid = table.grid;
    const std::size_t index = file.column(column);
    if (index < axisColumns) {
        throw InputError({file.place().file, file.headingLine()},
                         "column " + inQuotes(column) + " is an axis, expected one of values");
    }
    if (!grid.problems.empty()) {
        throw InputError({file.place().file, grid.problems.front().line}, grid.problems.front().text);
    }
    return {name, grid.axis1, grid.axis2, valuesOf(file, grid, index)};
}

} // namespace Radio
