#include "ResultCode.h"
#include "python/binding/Binding.h"
#include "python/binding/BoardHandle.h"
#include "python/binding/RadioHandle.h"
#include "radio/board/PlatformWords.h"
#include "radio/text/Frequency.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"

#include <pybind11/stl.h>

#include <algorithm>

namespace Radio::Python {

namespace {

/** (code, note, events, reading, judgement, listing, raised); what there is none of, is None. */
py::tuple reportTuple(const Report& report) {
    return py::make_tuple(
        report.code, text(report.note), toPython(report.events),
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

/** (direction, channel, through C, notifications, carrier in kHz). */
py::list observers(RadioHandle& handle) {
    return handle.look([](RadioUnit& radio) {
        py::list list;
        for (const RadioUnit::ObserverState& state : radio.observers()) {
            list.append(py::make_tuple(text(toString(state.direction)), state.channel, state.throughC,
                                       state.notifications, state.frequency));
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
            throw WordError("no LO leakage is modelled for channel " + std::to_string(channel));
        }
        return transmitter->surroundings().carrier == 0 ? py::object(py::none())
                                                        : py::object(py::float_(transmitter->level()));
    });
}

std::unique_ptr<RadioHandle> open(const BoardHandle& board, bool isHardware, const std::string& trace,
                                  bool calls) {
    const std::optional<OrbiTraceLevel> level = traceLevelFromString(trace);
    if (!level) {
        throw WordError(inQuotes(trace) + " is no trace level, expected one of " +
                        joined(traceLevelWords(), ", "));
    }
    return std::make_unique<RadioHandle>(board.copy(), isHardware, *level, calls);
}

py::list exitWrites(const std::vector<Devices::ExitWrite>& writes) {
    py::list list;
    for (const Devices::ExitWrite& write : writes) {
        list.append(py::make_tuple(text(write.driver), write.value, write.code));
    }
    return list;
}

/** In kHz, of a text such as "7.442 GHz". */
std::uint32_t kHzOf(const std::string& written) {
    const std::size_t blank = written.find(' ');
    return blank == std::string::npos ? parseFrequency(written, "")
                                      : parseFrequency(written.substr(0, blank), written.substr(blank + 1));
}

void bindLooks(py::class_<RadioHandle>& type) {
    type.def_property_readonly("is_closed", &RadioHandle::isClosed)
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
        .def("observers", &observers)
        .def("leakage", &leakage);
}

} // namespace

void bindRadios(py::module_& module) {
    py::class_<RadioHandle> type(module, "Radio", "A radio that is up.");
    type.def(py::init(&open))
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
        .def("close", [](RadioHandle& handle) { return exitWrites(handle.close()); });
    bindLooks(type);
    module.def("khz", &kHzOf);
}

} // namespace Radio::Python
