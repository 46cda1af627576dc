#include "radio/board/TableReader.h"

#include "radio/files/FileWait.h"

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace Radio {

namespace {

std::vector<std::int32_t> readAxis(const TomlItem& item) {
    std::vector<std::int32_t> axis = item.integers();
    const auto wrong = std::adjacent_find(
        axis.begin(), axis.end(), [](std::int32_t left, std::int32_t right) { return left >= right; });
    if (wrong != axis.end()) {
        // cppcheck-suppress derefInvalidIteratorRedundantCheck // there are two neighbours
        item.fail("expected ascending nodes, found " + std::to_string(*(wrong + 1)) + " after " +
                  std::to_string(*wrong));
    }
    return axis;
}

/** Small entries may all mean one large file, of which each table is a copy. */
void takeRoom(std::uint64_t nodes, const TomlItem& item, TableFiles& files) {
    if (!files.hasRoomFor(nodes)) {
        item.fail("has " + counted(nodes, "node") + ", which makes more than " +
                  std::to_string(TableFiles::mostNodes) +
                  " of all tables of the board, expected fewer or smaller ones");
    }
}

TableDescription readFromFile(const std::string& name, const TomlItem& item, TableFiles& files) {
    if (const std::optional<std::string_view> other = item.firstOf({"axis", "axes", "values"})) {
        item.fail("expected either file and column, or axes and values, found " +
                  std::string(*item.firstOf({"file", "column"})) + " and " + std::string(*other));
    }
    TableDescription description{{name, {}, {}, {}}, item.place()};
    const TomlItem file = item.get("file", "the name of a CSV file");
    const TomlItem column = item.get("column", "the name of a column of the file");
    description.file =
        std::filesystem::path(item.place().file).parent_path() / file.nonEmptyText("the name of a CSV file");
    description.column = column.nonEmptyText("the name of a column of the file");
    if (const TableFile* const content = files.find(description.file)) {
        takeRoom(content->grid.rows.size(), item, files);
        description.table = readTableFile(*content, name, description.column);
        for (const char* const key : {"serial", "channel"}) {
            if (const std::optional<CsvItem> found = content->rows.findProperty(key)) {
                description.origins.push_back({key, found->text(), found->place()});
            }
        }
    }
    return description;
}

} // namespace

TableDescription readTable(const std::string& name, const TomlItem& item, TableFiles& files) {
    if (const int signal = waitForFile(FileUse::reading, -1, std::chrono::milliseconds(0))) {
        throw GivenUp(item.place(), signal);
    }
    item.entries({"axis", "axes", "values", "file", "column"});
    if (item.firstOf({"file", "column"})) {
        return readFromFile(name, item, files);
    }
    CalibrationTable table;
    table.name = name;
    const std::optional<TomlItem> axis = item.find("axis");
    const std::optional<TomlItem> axes = item.find("axes");
    if (axis.has_value() == axes.has_value()) {
        item.fail(std::string("expected either axis or axes, found ") + (axis ? "both" : "neither"));
    }
    const TomlItem values = item.get("values", axis ? "an array of integers" : "an array of rows");
    if (axis) {
        table.axis1 = readAxis(*axis);
        table.values = values.integers();
        takeRoom(table.values.size(), item, files);
        values.requireCount(table.values.size(), table.axis1.size(), "one value for each node of the axis");
        return {table, item.place()};
    }
    const std::vector<TomlItem> both = axes->elements();
    axes->requireCount(both.size(), 2, "two axes");
    table.axis1 = readAxis(both[0]);
    table.axis2 = readAxis(both[1]);
    const std::vector<TomlItem> rows = values.elements();
    values.requireCount(rows.size(), table.axis1.size(), "one row for each node of the first axis");
    for (const TomlItem& row : rows) {
        const std::vector<std::int32_t> rowValues = row.integers();
        row.requireCount(rowValues.size(), table.axis2.size(),
                         "one value in each row for each node of the second axis");
        table.values.insert(table.values.end(), rowValues.begin(), rowValues.end());
    }
    takeRoom(table.values.size(), item, files);
    return {table, item.place()};
}

} // namespace Radio
