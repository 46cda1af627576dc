#include "python/binding/Binding.h"
#include "python/binding/BoardHandle.h"
#include "python/binding/MomentRecords.h"
#include "python/binding/Reading.h"
#include "python/binding/Stage.h"
#include "radio/board/BoardCheck.h"
#include "radio/thermal/Replay.h"
#include "radio/thermal/ThermalLog.h"
#include "radio/thermal/ThermalVerdict.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

namespace Radio::Python {

namespace {

using Seconds = py::array_t<std::int64_t, py::array::c_style>;
using Degrees = py::array_t<std::int32_t, py::array::c_style>;

py::tuple readLog(const std::string& file) {
    const Thermal::ThermalLog log =
        patiently([&file](const std::function<void()>& /*tick*/) { return Thermal::readThermalLog(file); });
    Seconds seconds(static_cast<py::ssize_t>(log.size()));
    Degrees degrees(static_cast<py::ssize_t>(log.size()));
    for (std::size_t i = 0; i < log.size(); ++i) {
        seconds.mutable_data()[i] = log[i].seconds;
        degrees.mutable_data()[i] = log[i].degrees;
    }
    return py::make_tuple(seconds, degrees);
}

Thermal::ThermalLog logOf(const Seconds& seconds, const Degrees& degrees) {
    Thermal::ThermalLog log;
    log.reserve(static_cast<std::size_t>(seconds.size()));
    for (py::ssize_t i = 0; i < seconds.size(); ++i) {
        log.push_back({seconds.data()[i], degrees.data()[i]});
    }
    return log;
}

/** (level in dBc, second, degrees). */
py::tuple figureTuple(const Thermal::WorstFigure& worst) {
    return py::make_tuple(worst.dBc, worst.seconds, worst.degrees);
}

py::list driverList(const std::vector<Thermal::DriverTotals>& drivers) {
    py::list list;
    for (const Thermal::DriverTotals& driver : drivers) {
        const auto& step = driver.largestStep;
        list.append(py::make_tuple(text(driver.driver), text(Thermal::toString(driver.correction)),
                                   driver.writes, driver.unchanged, orNone(driver.value),
                                   step ? py::object(py::make_tuple(step->size, step->seconds, step->degrees))
                                        : py::object(py::none())));
    }
    return list;
}

py::dict totalsDict(const Thermal::ChannelTotals& channel) {
    py::dict dict;
    dict["channel"] = channel.channel;
    dict["carrier_khz"] = orNone(channel.carrier);
    dict["drivers"] = driverList(channel.drivers);
    dict["worst"] = py::none();
    if (channel.worst) {
        py::dict worst;
        worst["image_without"] = figureTuple(channel.worst->imageWithout);
        worst["image"] = figureTuple(channel.worst->image);
        worst["leakage_without"] = figureTuple(channel.worst->leakageWithout);
        worst["leakage"] = figureTuple(channel.worst->leakage);
        dict["worst"] = worst;
    }
    return dict;
}

/** (complete, samples, notifications, channels, complaints, first complaint, verdict, seconds, moments,
 * raised). */
py::tuple replay(const BoardHandle& handle, const Seconds& seconds, const Degrees& degrees,
                 const std::map<int, std::uint32_t>& carriers, const py::object& dtype,
                 const py::object& progress, const py::object& cancel) {
    const auto board = handle.copy();
    const Thermal::ThermalLog log = logOf(seconds, degrees);
    for (const auto& [channel, carrier] : carriers) {
        static_cast<void>(channelOf(*board, channel));
    }
    MomentRecords records(dtype);
    Patience patience(progress, cancel);
    const Stage stage(named("a replay", *board));
    const Thermal::ReplayResult result = unlocked([&] {
        requireUsable(*board);
        static_cast<void>(Thermal::compensatedChannels(*board));
        BootedRadio booted(*board);
        booted.requireUp();
        return Thermal::replay(booted, *board, log, carriers, {&records}, [&](std::uint64_t done) {
            return patience.goOn([&, done] { return py::make_tuple(done, log.size()); });
        });
    });
    const Thermal::ReplayTotals& totals = result.totals;
    patience.finish(py::make_tuple(totals.samples, log.size()));
    py::list channels;
    for (const Thermal::ChannelTotals& channel : totals.channels) {
        channels.append(totalsDict(channel));
    }
    return patience.sealed(py::make_tuple(result.isComplete, totals.samples, totals.notifications, channels,
                                          totals.complaints, orNone(std::string_view(totals.firstComplaint)),
                                          toPython(Thermal::verdictOn(result, board->limits)), result.seconds,
                                          records.array(), py::none()));
}

} // namespace

void bindThermal(py::module_& module) {
    module.def("read_log", &readLog);
    module.def("replay", &replay);
}

} // namespace Radio::Python
