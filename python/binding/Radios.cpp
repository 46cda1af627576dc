#include "ResultCode.h"
#include "python/binding/Binding.h"
#include "python/binding/BoardHandle.h"
#include "python/binding/RadioHandle.h"
#include "python/binding/Unlocked.h"
#include "radio/board/BoardCheck.h"
#include "radio/board/PlatformWords.h"
#include "radio/text/Frequency.h"
#include "radio/text/NearestName.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"

#include <pybind11/stl.h>

#include <algorithm>

namespace Radio::Python {

namespace {

/** None when nothing happened. */
py::object listOf(std::vector<Event>& events) {
    return events.empty() ? py::object(py::none()) : py::cast(EventList(std::move(events)));
}

/** (code, note, events, reading, judgement, listing, raised); what there is none of, is None. */
py::tuple reportTuple(Report report) {
    return py::make_tuple(
        report.code, text(report.note), listOf(report.events),
        report.reading ? py::object(py::int_(report.reading->value)) : py::object(py::none()),
        report.judgement ? py::object(toPython(*report.judgement)) : py::object(py::none()),
        report.listing ? py::object(toPython(*report.listing)) : py::object(py::none()), report.raised);
}

Standalone::Driver& driverOf(RadioUnit& radio, const std::string& name) {
    Standalone::Driver* const driver = radio.platform().drivers().find(name);
    if (driver == nullptr) {
        throw WordError("unknown driver " + inQuotes(name));
    }
    return *driver;
}

/** (value, writes, whether it is real). */
py::tuple driver(RadioHandle& handle, const std::string& name) {
    return handle.look([&name](RadioUnit& radio) {
        const Standalone::Driver& found = driverOf(radio, name);
        return py::make_tuple(found.value(), found.writes(), found.backing() != nullptr);
    });
}

py::list variable(RadioHandle& handle, const std::string& name) {
    return handle.look([&name](RadioUnit& radio) {
        const Standalone::Variable* const found = radio.platform().variables().find(name);
        if (found == nullptr) {
            throw WordError("unknown variable " + inQuotes(name));
        }
        return numbers(found->values());
    });
}

/** (operation, object, code, times); times is None for a fault that stays. */
py::list faults(RadioHandle& handle) {
    return handle.look([](RadioUnit& radio) {
        py::list list;
        for (const Standalone::Fault& fault : radio.platform().calls().faults()) {
            list.append(py::make_tuple(text(Standalone::toString(fault.operation)), text(fault.object),
                                       fault.code, orNone(fault.times)));
        }
        return list;
    });
}

/** The modelled level of a channel's LO leakage, in dBc; None without a carrier. */
py::object leakage(RadioHandle& handle, int channel) {
    static_cast<void>(channelOf(handle.board(), channel));
    return handle.look([channel](RadioUnit& radio) {
        const LeakingTransmitter* const transmitter = radio.transmitter(channel);
        if (transmitter == nullptr) {
            throw WordError("no LO leakage is modelled for channel " + std::to_string(channel) +
                            ", expected a [[leakage]]");
        }
        return transmitter->surroundings().carrier == 0 ? py::object(py::none())
                                                        : py::object(py::float_(transmitter->level()));
    });
}

std::unique_ptr<RadioHandle> open(const BoardHandle& board, bool isHardware, const std::string& trace,
                                  bool calls, bool mustBoot) {
    const std::optional<OrbiTraceLevel> level = traceLevelFromString(trace);
    if (!level) {
        throw WordError(inQuotes(trace) + " is no trace level, expected one of " +
                        joined(traceLevelWords(), ", "));
    }
    const auto copy = board.copy();
    if (mustBoot) {
        unlocked([&copy] { requireUsable(*copy); });
    }
    return std::make_unique<RadioHandle>(copy, isHardware, *level, calls);
}

/** ((driver, value, code)..., events or None). */
py::tuple close(RadioHandle& handle) {
    Farewell farewell = handle.close();
    py::list writes;
    for (const Devices::ExitWrite& write : farewell.writes) {
        writes.append(py::make_tuple(text(write.driver), write.value, write.code));
    }
    return py::make_tuple(writes, listOf(farewell.events));
}

/** In kHz, of a text such as "7.442 GHz". */
std::uint32_t kHzOf(const std::string& written) {
    const char* const blanks = " \t";
    const std::size_t begin = written.find_first_not_of(blanks);
    if (begin == std::string::npos) {
        return parseFrequency(written, "");
    }
    const std::string trimmed = written.substr(begin, written.find_last_not_of(blanks) + 1 - begin);
    const std::size_t end = trimmed.find_first_of(blanks);
    const std::size_t unit = trimmed.find_first_not_of(blanks, end);
    return unit == std::string::npos ? parseFrequency(trimmed, "")
                                     : parseFrequency(trimmed.substr(0, end), trimmed.substr(unit));
}

void bindLooks(py::class_<RadioHandle>& type) {
    type.def_property_readonly("is_closed", &RadioHandle::isClosed)
        .def_property_readonly("is_on_hardware", &RadioHandle::isOnHardware)
        .def_property_readonly("is_up", &RadioHandle::isUp)
        .def_property_readonly("temperature",
                               [](RadioHandle& handle) {
                                   return handle.look([](RadioUnit& radio) {
                                       return orNone(radio.platform().temperature().temperature());
                                   });
                               })
        .def("frequency",
             [](RadioHandle& handle, const std::string& direction, int channel) {
                 static_cast<void>(channelOf(handle.board(), channel));
                 return handle.look([way = directionOf(direction), channel](RadioUnit& radio) {
                     return radio.frequency(way, channel);
                 });
             })
        .def("driver", &driver)
        .def("variable", &variable)
        .def("faults", &faults)
        .def("leakage", &leakage);
}

} // namespace

void bindRadios(py::module_& module) {
    py::class_<EventList> events(module, "Events", "What happened during one command.");
    events.def("__len__", &EventList::size)
        .def_property_readonly("has_phases", &EventList::hasPhases)
        .def("tuples", &EventList::tuples);
    py::class_<RadioHandle> type(module, "Radio", "A radio that is up.");
    type.def_static("open", &open)
        .def("boot", [](RadioHandle& handle) { return reportTuple(handle.takeBoot()); })
        .def("execute",
             [](RadioHandle& handle, const std::vector<std::string>& words) {
                 return reportTuple(handle.execute(words));
             })
        .def("tune",
             [](RadioHandle& handle, const std::string& direction, int channel, std::uint32_t carrier,
                bool isForced) {
                 return reportTuple(handle.tune(directionOf(direction), channel, carrier, isForced));
             })
        .def("poll",
             [](RadioHandle& handle) {
                 std::vector<Event> happened = handle.poll();
                 return listOf(happened);
             })
        .def("close", &close);
    bindLooks(type);
    madeByTheModuleAlone(events);
    madeByTheModuleAlone(type);
    module.def("khz", &kHzOf);
    module.def("leave", &leave);
    module.def("forked", [] {
        forgetOtherThreads();
        RadioHandle::forgetInChild();
    });
    module.def("nearest", &nearestName);
}

} // namespace Radio::Python
