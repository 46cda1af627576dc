#include "python/binding/Binding.h"
#include "python/binding/BoardHandle.h"
#include "python/binding/Reading.h"
#include "python/binding/Stage.h"
#include "radio/board/BoardCheck.h"
#include "radio/board/BoardFile.h"
#include "radio/tables/Corrections.h"
#include "radio/tables/Diff.h"
#include "radio/tables/Lint.h"
#include "radio/tables/Why.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <limits>

namespace Radio::Python {

namespace {

using namespace Tables;

/** A board, or the name of a file. */
struct Origin {
    std::shared_ptr<const Board> board;
    std::string file;

    Source source() const { return board ? sourceOf(*board) : readSource(file); }
    std::vector<Finding> lint() const { return board ? lintBoard(*board) : lintFile(file); }
};

Origin originOf(const py::object& given) {
    if (py::isinstance<BoardHandle>(given)) {
        return {given.cast<const BoardHandle&>().copy(), {}};
    }
    return {nullptr, given.cast<std::string>()};
}

py::list lint(const py::object& given) {
    return toPython(patiently(
        [origin = originOf(given)](const std::function<void()>& /*tick*/) { return origin.lint(); }));
}

double orNan(const std::optional<double>& level) {
    return level.value_or(std::numeric_limits<double>::quiet_NaN());
}

/** (channel, whether the axes differ, nodes): each node a tuple as in frequencyhandler/tables.py. */
py::tuple differenceTuple(const ChannelDifference& difference) {
    py::list nodes;
    for (const NodeDifference& node : difference.nodes) {
        nodes.append(py::make_tuple(node.carrier, node.temperature, node.before.i, node.before.q,
                                    node.after.i, node.after.q, orNan(node.levelBefore),
                                    orNan(node.levelAfter)));
    }
    return py::make_tuple(orNone(difference.channel), difference.axesDiffer, nodes);
}

/** (channels, only before, only after). */
py::tuple diff(const py::object& before, const py::object& after, const py::object& model,
               const std::optional<int>& channel) {
    const Origin first = originOf(before);
    const Origin second = originOf(after);
    const Origin third = model.is_none() ? Origin() : originOf(model);
    const Difference difference = patiently([&](const std::function<void()>& /*tick*/) {
        const Source one = first.source();
        const Source other = second.source();
        std::optional<Board> named;
        if (third.board || !third.file.empty()) {
            named = third.board ? *third.board : loadBoard(third.file);
        }
        return compare(one, other, modelOf(named, one, other), channel);
    });
    py::list channels;
    for (const ChannelDifference& one : difference.channels) {
        channels.append(differenceTuple(one));
    }
    return py::make_tuple(channels, numbers(difference.onlyBefore), numbers(difference.onlyAfter));
}

py::dict branchDict(const BranchReason& branch, bool isOfFile) {
    py::dict dict;
    dict["branch"] = text(branch.branch);
    dict["table"] = text(branch.table);
    dict["file"] = orNone(std::string_view(isOfFile ? branch.file : ""));
    dict["column"] = orNone(std::string_view(isOfFile ? branch.column : ""));
    dict["why_no_value"] = text(branch.whyNoValue);
    dict["computed"] = branch.computed;
    dict["driver"] = text(branch.driver);
    dict["written"] = orNone(branch.written);
    dict["code"] = branch.code;
    py::list nodes;
    if (branch.lookup) {
        const double widths = double(branch.lookup->axis1.width) * double(branch.lookup->axis2.width);
        for (const WeighedNode& node : branch.lookup->nodes) {
            nodes.append(py::make_tuple(node.x1, node.x2, node.value,
                                        double(node.weight1) * double(node.weight2) / widths));
        }
        dict["exact"] = text(Tables::toString(branch.lookup->value));
        dict["is_clamped"] = branch.lookup->axis1.isClamped || branch.lookup->axis2.isClamped;
    } else {
        dict["exact"] = py::none();
        dict["is_clamped"] = false;
    }
    dict["nodes"] = nodes;
    return dict;
}

py::dict why(const BoardHandle& handle, int channel, std::uint32_t carrier, std::int32_t temperature) {
    const auto board = handle.copy();
    const std::set<std::string> replaced = handle.replaced; // it may change meanwhile
    const ChannelDescription& described = Python::channelOf(*board, channel);
    const Stage stage(named("an explanation of tables", *board));
    const Reason reason = unlocked([&] {
        requireUsable(*board);
        BootedRadio booted(*board);
        booted.requireUp();
        return explainCorrections(booted, *board, described, carrier, temperature);
    });
    py::dict dict;
    dict["channel"] = reason.channel.number;
    dict["carrier_khz"] = reason.carrier;
    dict["temperature"] = reason.temperature;
    dict["why_none"] = text(reason.whyNone);
    py::list branches;
    for (const BranchReason& branch : reason.branches) {
        branches.append(branchDict(branch, replaced.count(branch.table) == 0));
    }
    dict["branches"] = branches;
    dict["level_dbc"] = orNone(reason.level);
    dict["level_without_dbc"] = orNone(reason.levelWithout);
    dict["complaints"] = texts(reason.complaints);
    dict["disagreements"] = texts(reason.disagreements);
    return dict;
}

} // namespace

void bindTables(py::module_& module) {
    module.def("lint", &lint);
    module.def("diff", &diff);
    module.def("why", &why);
}

} // namespace Radio::Python
