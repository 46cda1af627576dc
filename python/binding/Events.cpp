#include "python/binding/Events.h"

#include "radio/board/PlatformWords.h"
#include "radio/session/Command.h"
#include "radio/session/HardwareWrite.h"

#include <algorithm>

namespace Radio::Python {

namespace {

py::tuple callTuple(const Standalone::Call& call) {
    if (isWrite(call)) {
        return py::make_tuple("write", text(destination(call)), call.value, call.code);
    }
    return py::make_tuple("call", text(Standalone::toString(call.operation)), text(call.object), call.value,
                          call.code);
}

py::tuple phaseTuple(const Standalone::PhaseReport& report) {
    py::list steps;
    for (const Standalone::PhaseStep& step : report.steps) {
        steps.append(py::make_tuple(text(step.moduleName), step.channel, step.code));
    }
    return py::make_tuple("phase", report.phase, text(meaningOf(report.phase)), report.succeeded(), steps);
}

py::object cellObject(const Listing::Cell& cell) {
    return std::visit(
        Visitor{[](const std::string& word) { return py::object(text(word)); },
                [](const std::vector<std::int32_t>& items) { return py::object(numbers(items)); },
                [](std::monostate /*unknown*/) { return py::object(py::none()); },
                [](std::int64_t number) { return py::object(py::int_(number)); },
                [](double number) { return py::object(py::float_(number)); }},
        cell);
}

} // namespace

py::tuple toPython(const Event& event) {
    return std::visit(
        Visitor{[](const Standalone::Call& call) { return callTuple(call); },
                [](const Standalone::TraceMessage& message) {
                    return py::make_tuple("trace", text(toString(message.level)), text(message.text),
                                          text(message.source));
                },
                [](const Notification& told) {
                    return py::make_tuple("notified", text(toString(told.direction)), told.channel,
                                          told.frequency, told.throughC);
                },
                [](const Standalone::PhaseReport& report) { return phaseTuple(report); },
                [](const Warning& warning) { return py::make_tuple("warning", text(warning.text)); },
                [](const HardwareNews& news) {
                    return py::make_tuple("hardware", news.kind, text(news.what), text(news.why), news.code);
                },
                [](const Sensed& sensed) { return py::make_tuple("sensed", sensed.degrees, sensed.told); }},
        event);
}

bool EventList::hasPhases() const {
    return std::any_of(m_events.begin(), m_events.end(), [](const Event& event) {
        return std::holds_alternative<Standalone::PhaseReport>(event);
    });
}

py::list EventList::tuples(std::size_t first, std::size_t count) const {
    const std::size_t begin = std::min(first, size());
    py::list list(std::min(count, size() - begin));
    for (std::size_t i = 0; i < list.size(); ++i) {
        list[i] = toPython(m_events[begin + i]);
    }
    return list;
}

py::tuple toPython(const Judgement& judgement) {
    py::list writes;
    for (const AlignedWrite& write : judgement.writes) {
        writes.append(py::make_tuple(text(write.driver), orNone(write.expected), orNone(write.found)));
    }
    return py::make_tuple(judgement.held, text(judgement.expected), text(judgement.found), writes);
}

py::tuple toPython(const Listing& listing) {
    py::list rows;
    for (const std::vector<Listing::Cell>& row : listing.rows) {
        py::list cells;
        for (const Listing::Cell& cell : row) {
            cells.append(cellObject(cell));
        }
        rows.append(cells);
    }
    return py::make_tuple(text(listing.title), texts(listing.columns), rows);
}

} // namespace Radio::Python
