#include "python/binding/AuditRecords.h"
#include "python/binding/Binding.h"
#include "python/binding/BoardHandle.h"
#include "python/binding/HardwareInUse.h"
#include "python/binding/Patience.h"
#include "python/binding/Stage.h"
#include "radio/board/BoardCheck.h"
#include "radio/plan/Audit.h"
#include "radio/plan/Explanation.h"
#include "radio/text/WordError.h"

#include <pybind11/numpy.h>

#include <utility>

namespace Radio::Python {

namespace {

using namespace Plan;

py::list stepList(const std::vector<ExplainedStep>& steps) {
    py::list list;
    for (const ExplainedStep& step : steps) {
        list.append(py::make_tuple(text(step.name), text(step.formula), step.value, text(step.unit),
                                   text(step.note)));
    }
    return list;
}

py::dict explanationDict(const Explanation& explanation) {
    py::list variables;
    for (const ReadVariable& variable : explanation.variables) {
        variables.append(
            py::make_tuple(text(variable.name), numbers(variable.values), text(variable.meaning)));
    }
    py::list writes;
    for (const ExplainedWrite& write : explanation.writes) {
        writes.append(py::make_tuple(text(write.driver), write.value, write.code));
    }
    py::dict dict;
    dict["channel"] = explanation.channel.number;
    dict["direction"] = text(Radio::toString(explanation.direction));
    dict["carrier_khz"] = explanation.carrier;
    dict["variables"] = variables;
    dict["steps"] = stepList(explanation.steps);
    dict["writes"] = writes;
    dict["complaints"] = texts(explanation.complaints);
    dict["production"] = stepList(explanation.production);
    dict["produced_hz"] = orNone(explanation.produced);
    dict["error_hz"] = orNone(explanation.error());
    dict["why_off"] = text(explanation.whyOff);
    dict["assumed_degrees"] = orNone(explanation.assumedDegrees);
    dict["disagreements"] = texts(explanation.disagreements);
    dict["forbidden"] = text(explanation.forbidden);
    dict["is_good"] = explanation.isGood();
    return dict;
}

py::dict explainCarrier(const BoardHandle& handle, const std::string& direction, int channel,
                        std::uint32_t carrier) {
    const auto board = handle.copy();
    const Direction way = directionOf(direction);
    const ChannelDescription& described = Python::channelOf(*board, channel);
    const Stage stage(named("an explanation", *board));
    return explanationDict(unlocked([&] {
        requireUsable(*board);
        BootedRadio booted(*board);
        booted.requireUp();
        return explain(booted, *board, described, way, carrier);
    }));
}

py::dict rowDict(const RowResult& result) {
    py::list groups;
    for (const FindingGroup& group : result.groups) {
        groups.append(py::make_tuple(text(Plan::toString(group.worst.kind)), group.count, group.worst.carrier,
                                     group.worst.excess, text(describe(group.worst))));
    }
    py::dict dict;
    dict["channel"] = result.row.channel.number;
    dict["direction"] = text(Radio::toString(result.row.direction));
    dict["raster"] = text(result.row.raster);
    dict["channel_spacing"] = orNone(result.row.channelSpacing);
    dict["carriers"] = result.carriers;
    dict["outside"] = result.outside;
    dict["worst_error_hz"] = orNone(result.worstError);
    dict["worst_carrier_khz"] = result.worstError ? py::object(py::int_(result.worstCarrier)) : py::none();
    dict["findings"] = groups;
    return dict;
}

/** An audit, and what became of the hardware. */
struct AuditOnHardware {
    AuditResult result;
    std::string lostDevice;
    bool hasLeft = true;
};

AuditOnHardware auditOn(const Board& board, bool isHardware, AuditRecords& records, Patience& patience,
                        std::uint64_t total) {
    HardwareInUse use(board, isHardware, false);
    BootedRadio booted(board, use.hardware());
    booted.requireUp();
    const auto goOn = [&](std::uint64_t done) {
        return use.isThere() && patience.goOn([=] { return py::make_tuple(done, total); });
    };
    AuditOnHardware audited;
    // Hardware takes so long for each carrier that it is worth asking at each.
    audited.result = isHardware ? auditBoard(booted, board, {&records}, goOn, 1)
                                : auditBoard(booted, board, {&records}, goOn);
    if (audited.result.end == AuditEnd::phaseFailed) {
        booted.fail("the radio did not take a channel spacing");
    }
    audited.lostDevice = use.lostDevice();
    audited.hasLeft = use.leave();
    return audited;
}

/** (end, rows, carriers, outside, seconds, array or None, lost device or None, whether left properly,
 * raised). */
py::tuple audit(const BoardHandle& handle, const py::object& dtype, bool isHardware,
                const py::object& progress, const py::object& cancel) {
    const auto board = handle.copy();
    const std::uint64_t total = carriersToAudit(*board);
    AuditRecords records(dtype, total);
    Patience patience(progress, cancel);
    const Stage stage(named("an audit", *board));
    const AuditOnHardware audited = waiting(patience, [&] {
        requireUsable(*board);
        return auditOn(*board, isHardware, records, patience, total);
    });
    const AuditResult& result = audited.result;
    patience.finish(py::make_tuple(result.carriers, total));
    py::list rows;
    for (const RowResult& row : result.rows) {
        rows.append(rowDict(row));
    }
    return patience.sealed(py::make_tuple(
        result.end == AuditEnd::complete, rows, result.carriers, result.outside, result.seconds,
        records.array(), orNone(std::string_view(audited.lostDevice)), audited.hasLeft, py::none()));
}

} // namespace

void bindPlan(py::module_& module) {
    module.def("explain", &explainCarrier);
    module.def("audit", &audit);
    module.def("finding_kinds", &findingKinds);
    module.def("words", &wordNames);
}

} // namespace Radio::Python
