#include "python/binding/Binding.h"
#include "python/binding/BoardHandle.h"
#include "python/binding/Reading.h"
#include "radio/board/BoardCheck.h"
#include "radio/board/BoardFile.h"
#include "radio/board/BoardNames.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"

#include <pybind11/numpy.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace Radio::Python {

namespace {

using Numbers = py::array_t<std::int32_t, py::array::c_style>;

py::object range(const std::optional<Range>& range) {
    return range ? py::object(py::make_tuple(range->low, range->high)) : py::object(py::none());
}

py::list channels(const BoardHandle& handle) {
    py::list list;
    for (const ChannelDescription& channel : handle.board.channels) {
        list.append(py::make_tuple(channel.number, text(toString(channel.type)), channel.iqCompensation,
                                   findLeakage(handle.board, channel.number) != nullptr,
                                   toPython(channel.place)));
    }
    return list;
}

py::dict limits(const BoardHandle& handle) {
    const Limits& limits = handle.board.limits;
    py::dict dict;
    dict["if_pll_khz"] = range(limits.ifPll);
    dict["rf_pll_khz"] = range(limits.rfPll);
    dict["carrier_error_hz"] = orNone(limits.carrierError);
    dict["temperature"] = range(limits.temperature);
    dict["leakage_dbc"] = orNone(limits.leakage);
    dict["leakage_at_nodes_dbc"] = orNone(limits.leakageAtNodes);
    dict["leakage_improvement_db"] = orNone(limits.leakageImprovement);
    dict["image_dbc"] = orNone(limits.image);
    dict["carrier_leakage_dbc"] = orNone(limits.carrierLeakage);
    return dict;
}

py::list rasters(const BoardHandle& handle) {
    py::list list;
    for (const RasterDescription& raster : handle.board.rasters) {
        py::list rows;
        for (const CarrierRow& row : raster.rows) {
            rows.append(py::make_tuple(row.transmit ? "tx" : "rx", row.first, row.step, row.count));
        }
        list.append(py::make_tuple(text(raster.name), numbers(raster.channels), rows,
                                   numbers(raster.channelSpacings)));
    }
    return list;
}

template <typename Described>
py::list namesOf(const std::vector<Described>& items) {
    py::list names;
    for (const Described& item : items) {
        names.append(text(item.name));
    }
    return names;
}

py::list tableNames(const BoardHandle& handle) {
    py::list names;
    for (const TableDescription& table : handle.board.tables) {
        names.append(text(table.table.name));
    }
    return names;
}

TableDescription& tableOf(Board& board, const std::string& name) {
    const auto found = std::find_if(board.tables.begin(), board.tables.end(),
                                    [&name](const TableDescription& one) { return one.table.name == name; });
    if (found == board.tables.end()) {
        throw WordError("the board has no table " + inQuotes(name));
    }
    return *found;
}

py::object arrayOf(const std::vector<std::int32_t>& values, const std::vector<py::ssize_t>& shape) {
    Numbers array(shape);
    std::copy(values.begin(), values.end(), array.mutable_data());
    return array;
}

/** (axis 1, axis 2, values, file, column, (file, line)): axis 2 is None for a table with one axis, and values
 * have a dimension for each. */
py::tuple table(BoardHandle& handle, const std::string& name) {
    const TableDescription& described = tableOf(handle.board, name);
    const CalibrationTable& table = described.table;
    const auto rows = static_cast<py::ssize_t>(table.axis1.size());
    const auto columns = static_cast<py::ssize_t>(table.axis2.size());
    const bool hasOne = table.axis2.empty();
    const bool isOfFile = handle.replaced.count(name) == 0;
    return py::make_tuple(arrayOf(table.axis1, {rows}),
                          hasOne ? py::object(py::none()) : arrayOf(table.axis2, {columns}),
                          arrayOf(table.values, hasOne ? std::vector<py::ssize_t>{rows}
                                                       : std::vector<py::ssize_t>{rows, columns}),
                          orNone(isOfFile ? described.file.string() : ""),
                          orNone(isOfFile ? described.column : ""), toPython(described.place));
}

std::vector<std::int32_t> vectorOf(const Numbers& array) {
    return {array.data(), array.data() + array.size()};
}

bool ascends(const std::vector<std::int32_t>& axis) {
    return std::adjacent_find(axis.begin(), axis.end(), std::greater_equal<>()) == axis.end();
}

bool isSame(const CalibrationTable& one, const CalibrationTable& other) {
    return one.axis1 == other.axis1 && one.axis2 == other.axis2 && one.values == other.values;
}

/** The table from then on, in place of whatever it was. Where a calibration stores it, and is compared with
 * it, stays the same. `axis2` is empty for a table with one axis. */
void setTable(BoardHandle& handle, const std::string& name, const Numbers& axis1, const Numbers& axis2,
              const Numbers& values) {
    CalibrationTable table{name, vectorOf(axis1), vectorOf(axis2), vectorOf(values)};
    const std::size_t nodes = table.axis1.size() * std::max<std::size_t>(table.axis2.size(), 1);
    if (table.axis1.empty() || table.values.size() != nodes) {
        throw WordError("table " + inQuotes(name) + ": " + counted(table.values.size(), "value") + " for " +
                        counted(nodes, "node") + ", expected one for each of at least one");
    }
    if (!ascends(table.axis1) || !ascends(table.axis2)) {
        throw WordError("table " + inQuotes(name) + ": expected axes that ascend, no node twice");
    }
    const auto isIt = [&name](const TableDescription& one) { return one.table.name == name; };
    std::vector<TableDescription>& tables = handle.board.tables;
    const auto found = std::find_if(tables.begin(), tables.end(), isIt);
    if (found != tables.end()) {
        if (!isSame(found->table, table)) {
            handle.replaced.insert(name);
        }
        found->table = std::move(table);
    } else {
        tables.push_back({std::move(table), {handle.board.file.string(), 0}});
    }
}

} // namespace

std::string named(const char* what, const Board& board) {
    return std::string(what) + " of " + harmless(board.file.string());
}

const ChannelDescription& channelOf(const Board& board, int number) {
    const ChannelDescription* const channel = findChannel(board, number);
    if (channel == nullptr) {
        throw WordError("the board has no channel " + std::to_string(number) + ", expected one of " +
                        joined(BoardNames(board).channels, ", "));
    }
    return *channel;
}

Direction directionOf(const std::string& word) {
    const std::optional<Direction> direction = directionFromString(word);
    if (!direction) {
        throw WordError(inQuotes(word) + " is no direction, expected tx or rx");
    }
    return *direction;
}

py::list toPython(const std::vector<Finding>& findings) {
    py::list list;
    for (const Finding& finding : findings) {
        list.append(
            py::make_tuple(text(toString(finding.severity)), toPython(finding.place), text(finding.text)));
    }
    return list;
}

void bindBoards(py::module_& module) {
    py::class_<BoardHandle> type(module, "Board", "A board as it is in memory.");
    madeByTheModuleAlone(type);
    type.def_static("load",
                    [](const std::string& file) {
                        return patiently([&file](const std::function<void()>& /*tick*/) {
                            return BoardHandle{loadBoard(file)};
                        });
                    })
        .def("copy", [](const BoardHandle& handle) { return handle; })
        .def_property_readonly("file",
                               [](const BoardHandle& handle) { return text(handle.board.file.string()); })
        .def_property_readonly("name", [](const BoardHandle& handle) { return text(handle.board.name); })
        .def_property_readonly("serial", [](const BoardHandle& handle) { return text(handle.board.serial); })
        .def_property_readonly("description",
                               [](const BoardHandle& handle) { return text(handle.board.description); })
        .def_property_readonly(
            "has_hardware",
            [](const BoardHandle& handle) { return !handle.board.hardware.description.isEmpty(); })
        .def("check",
             [](const BoardHandle& handle) {
                 return toPython(unlocked([board = handle.copy()] { return checkBoard(*board); }));
             })
        .def("channels", &channels)
        .def("limits", &limits)
        .def("rasters", &rasters)
        .def("drivers", [](const BoardHandle& handle) { return namesOf(handle.board.drivers); })
        .def("variables", [](const BoardHandle& handle) { return namesOf(handle.board.variables); })
        .def("tables", &tableNames)
        .def("table", &table)
        .def("set_table", &setTable);
}

} // namespace Radio::Python
