#ifndef RADIO_BOARD_TABLEFILE_H
#define RADIO_BOARD_TABLEFILE_H

#include "radio/files/CsvFile.h"
#include "standalone/TableStore.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

/** Calibration tables in CSV files, and what can be said of them. */
namespace Radio {

/** Gives the CSV file to which a board refers; nothing when there is none. */
using CsvSource = std::function<std::optional<CsvFile>(const std::filesystem::path& file)>;

/** Something because of which rows make no table. */
struct NodeProblem {
    unsigned line;
    std::string text;
};

/** The nodes of a CSV file, whose first two columns are the axes. Rows may stand in any order. */
struct NodeGrid {
    /** The distinct values of the columns, ascending. */
    std::vector<std::int32_t> axis1;
    std::vector<std::int32_t> axis2;
    /** The number of the row of each node, the node of axis 2 running fastest. Empty when there are problems.
     */
    std::vector<std::size_t> rows;
    /** Nodes that are there twice, in the order of their lines, and the first that is not there. */
    std::vector<NodeProblem> problems;
};

/** Finds the nodes. Throws InputError for a file without axes and values behind them. */
NodeGrid gridOf(const CsvFile& file);

/** The values of a column at the nodes of a grid without problems. */
std::vector<std::int32_t> valuesOf(const CsvFile& file, const NodeGrid& grid, std::size_t column);

/** A CSV file, and how its nodes lie. */
struct TableFile {
    CsvFile rows;
    NodeGrid grid;
};

/** The CSV files of one board: each is read once, however many tables are in it. */
class TableFiles {
public:
    /** `csv` must outlive the object. */
    explicit TableFiles(const CsvSource& csv) : m_csv(csv) {}

    /** Null when there is no such file. Throws InputError for one that cannot be used. */
    const TableFile* find(const std::filesystem::path& file);

    /** Counts the nodes of one more table; false when all tables of the board have too many by then. */
    bool hasRoomFor(std::uint64_t nodes);
    static constexpr std::uint64_t mostNodes = 4'000'000;

private:
    std::uint64_t m_nodes = 0;
    const CsvSource& m_csv;
    std::map<std::filesystem::path, std::optional<TableFile>> m_files;
};

/**
 * The table whose values stand in column `column`. Throws InputError when the file has no such column, and
 * unless it has each pair of nodes once.
 */
CalibrationTable readTableFile(const TableFile& file, const std::string& name, const std::string& column);

} // namespace Radio

#endif
