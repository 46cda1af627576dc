#include "Operations.h"

#include "BenchmarkRadio.h"
#include "BootFloor.h"
#include "CCalibrationHandler.h"
#include "Floor.h"
#include "ILoCancellation.h"
#include "InterfaceBroker.h"

#include <array>
#include <cstdint>
#include <memory>
#include <utility>

namespace Benchmarks {

namespace {

using Type = FrequencyHandler::FrequencyHandlerType;

/** A handler type, and what sets its frequencies without the library. */
template <Checks checks>
struct TypeEntry {
    using Write = void (Floor<checks>::*)(std::uint32_t);

    const char* name;
    Type type;
    Write setTx;
    Write setRx;
    bool hasLoCancellation;
};

template <Checks checks>
constexpr std::array<TypeEntry<checks>, 6> types{{
    {"microwave-if", Type::MicrowaveBoardIf, &Floor<checks>::setMicrowaveIf, &Floor<checks>::setMicrowaveIf,
     true},
    {"rf-module", Type::RfModule, &Floor<checks>::setRfModule, &Floor<checks>::setRfModule, false},
    {"microwave-dsp-offset", Type::MicrowaveBoardDspOffset, &Floor<checks>::setMicrowaveDspOffset,
     &Floor<checks>::setMicrowaveDspOffsetRx, true},
    {"microwave-hz-cs-offset", Type::MicrowaveBoardHzCsOffset, &Floor<checks>::setMicrowaveHz,
     &Floor<checks>::setMicrowaveHzCsOffsetRx, true},
    {"rau", Type::Rau, &Floor<checks>::setRauTx, &Floor<checks>::setRauRx, false},
    {"microwave-hz", Type::MicrowaveBoardHz, &Floor<checks>::setMicrowaveHz, &Floor<checks>::setMicrowaveHz,
     true},
}};

/** Another carrier, in kHz, and another temperature, in degrees Celsius, each time. */
std::uint32_t carrierAt(int time) {
    return 18'000'000U + 250U * static_cast<unsigned>(time);
}
int temperatureAt(int time) {
    return time % 64 - 20;
}

std::shared_ptr<BenchmarkRadio> makeRadio(const RadioOptions& options) {
    return std::make_shared<BenchmarkRadio>(options);
}

template <Checks checks>
std::shared_ptr<Floor<checks>> makeFloor(BenchmarkRadio& radio, Type type, const char* direction) {
    return std::make_shared<Floor<checks>>(radio, direction, type == Type::MicrowaveBoardIf ? 140'000 : 0);
}

/** A transmit frequency change on the last channel of a radio. */
std::function<Run()> setTx(const RadioOptions& options) {
    return [options]() -> Run {
        auto radio = makeRadio(options);
        FrequencyHandler& module = radio->module(options.channels);
        return [radio, &module](int time) { module.setTxFrequency(carrierAt(time)); };
    };
}

std::function<Run()> setRx(Type type) {
    return [type]() -> Run {
        auto radio = makeRadio({type});
        return [radio](int time) { radio->module().setRxFrequency(carrierAt(time)); };
    };
}

template <Checks checks>
std::function<Run()> setTxOnFloor(const TypeEntry<checks>& entry) {
    return [entry]() -> Run {
        auto radio = makeRadio({entry.type});
        auto floor = makeFloor<checks>(*radio, entry.type, "Tx");
        const auto set = entry.setTx;
        if (!entry.hasLoCancellation) {
            return [radio, floor, set](int time) { (*floor.*set)(carrierAt(time)); };
        }
        return [radio, floor, set](int time) {
            (*floor.*set)(carrierAt(time));
            floor->correct();
        };
    };
}

template <Checks checks>
std::function<Run()> setRxOnFloor(const TypeEntry<checks>& entry) {
    return [entry]() -> Run {
        auto radio = makeRadio({entry.type});
        auto floor = makeFloor<checks>(*radio, entry.type, "Rx");
        const auto set = entry.setRx;
        return [radio, floor, set](int time) { (*floor.*set)(carrierAt(time)); };
    };
}

/** `work` on a radio with microwave boards. */
template <typename Work>
std::function<Run()> onLibrary(Work work) {
    return [work]() -> Run {
        auto radio = makeRadio({});
        return [radio, work](int time) { work(*radio, time); };
    };
}

template <Checks checks, typename Work>
std::function<Run()> onFloor(Work work) {
    return [work]() -> Run {
        auto radio = makeRadio({});
        auto floor = makeFloor<checks>(*radio, Type::MicrowaveBoardHz, "Tx");
        return [radio, floor, work](int time) { work(*floor, time); };
    };
}

Run calibration() {
    auto radio = makeRadio({});
    auto* const canceller = InterfaceBroker::getInstance().getInterface<ILoCancellation>("ILoCancellation_1");
    return [radio, canceller](int /*time*/) {
        int i = 0;
        int q = 0;
        int maxDelta = 0;
        unsigned iterations = 0;
        canceller->calibrateLoCancellation(0, 4000, 0, 4000, 0.75, 0, 1, 0, &i, &q, &maxDelta, &iterations,
                                           false);
    };
}

/** The start of a radio of which everything is described, and whose modules are gone each time. */
std::function<Run()> boot(int channels) {
    return [channels]() -> Run {
        auto radio = makeRadio({Type::MicrowaveBoardHz, channels, 0, Standalone::TraceLevel::off});
        radio->shutDown();
        return [radio](int /*time*/) { radio->boot(); };
    };
}

std::function<Run()> bootOnFloor(int channels) {
    return [channels]() -> Run {
        auto radio = makeRadio({Type::MicrowaveBoardHz, channels, 0, Standalone::TraceLevel::off});
        radio->shutDown();
        auto names = std::make_shared<std::vector<BootNames>>();
        for (int channel = 1; channel <= channels; ++channel) {
            names->emplace_back(channel);
        }
        auto modules = std::make_shared<std::vector<std::unique_ptr<BootFloor>>>();
        return [radio, names, modules](int /*time*/) {
            for (const BootNames& channel : *names) {
                modules->push_back(std::make_unique<BootFloor>(channel));
            }
            radio->runPhases();
        };
    };
}

std::vector<std::int32_t> axis(int nodes) {
    std::vector<std::int32_t> result(static_cast<std::size_t>(nodes));
    for (int node = 0; node < nodes; ++node) {
        result[static_cast<std::size_t>(node)] = 17'500'000 + node * (1'000'000 / nodes);
    }
    return result;
}

Run lookUpLinear(int nodes) {
    auto platform = std::make_shared<Standalone::Platform>();
    platform->calls().setRecording(false);
    CalibrationTable& table =
        platform->tables().add({"line", axis(nodes), {}, std::vector<std::int32_t>(axis(nodes).size(), 7)});
    return [platform, &table](int time) {
        int value = 0;
        CCalibrationTable_LinearInterpolate(&table, static_cast<std::int32_t>(carrierAt(time)), &value);
    };
}

Run lookUpBilinear(int nodes) {
    auto platform = std::make_shared<Standalone::Platform>();
    platform->calls().setRecording(false);
    const std::vector<std::int32_t> temperatures{-33, -10, 12, 33, 55};
    CalibrationTable& table =
        platform->tables().add({"plane", axis(nodes / 5), temperatures,
                                std::vector<std::int32_t>(axis(nodes / 5).size() * temperatures.size(), 7)});
    return [platform, &table](int time) {
        int value = 0;
        CCalibrationTable_BiLinearInterpolate(&table, static_cast<std::int32_t>(carrierAt(time)),
                                              temperatureAt(time), &value);
    };
}

void addFrequencyChanges(std::vector<Operation>& all) {
    constexpr auto& straight = types<Checks::none>;
    constexpr auto& checked = types<Checks::demanded>;
    for (std::size_t i = 0; i < straight.size(); ++i) {
        all.push_back({std::string("tx.") + straight[i].name, setTx({straight[i].type}),
                       setTxOnFloor(straight[i]), setTxOnFloor(checked[i])});
    }
    for (std::size_t i = 0; i < straight.size(); ++i) {
        all.push_back({std::string("rx.") + straight[i].name, setRx(straight[i].type),
                       setRxOnFloor(straight[i]), setRxOnFloor(checked[i])});
    }
}

/** `library` and `floor`, which takes a floor of either kind, are called with what they work on and the time.
 */
template <typename Library, typename OnFloor>
Operation operation(const char* name, Library library, OnFloor floor) {
    return {name, onLibrary(library), onFloor<Checks::none>(floor), onFloor<Checks::demanded>(floor)};
}

/** What a transmit frequency change depends on beside the board. */
void addVariations(std::vector<Operation>& all) {
    const std::string name = "tx.microwave-hz.";
    for (const int observers : {0, 2, 5, 10, 20, 50, 100}) {
        all.push_back(
            {name + "observers-" + std::to_string(observers), setTx({Type::MicrowaveBoardHz, 1, observers})});
    }
    for (const int channels : {8, 64}) {
        all.push_back(
            {name + "channel-" + std::to_string(channels), setTx({Type::MicrowaveBoardHz, channels})});
    }
    all.push_back(
        {name + "trace-filtered", setTx({Type::MicrowaveBoardHz, 1, 1, Standalone::TraceLevel::notice})});
    all.push_back(
        {name + "trace-on", setTx({Type::MicrowaveBoardHz, 1, 1, Standalone::TraceLevel::information})});
}

void addBootsAndLookups(std::vector<Operation>& all) {
    for (const int channels : {1, 2, 4, 8, 16, 32, 64}) {
        all.push_back({"boot." + std::to_string(channels), boot(channels), bootOnFloor(channels), {}, 1});
    }
    for (const int nodes : {10, 30, 100, 300, 1000, 3000, 10'000}) {
        all.push_back({"lookup.linear." + std::to_string(nodes), [nodes] { return lookUpLinear(nodes); }});
        all.push_back(
            {"lookup.bilinear." + std::to_string(nodes), [nodes] { return lookUpBilinear(nodes); }});
    }
}

} // namespace

std::vector<Operation> operations() {
    std::vector<Operation> all;
    addFrequencyChanges(all);
    all.push_back(operation(
        "temperature.microwave-hz",
        [](BenchmarkRadio& radio, int time) { radio.module().notifyTemperature(temperatureAt(time)); },
        [](auto& floor, int time) { floor.setTemperature(temperatureAt(time)); }));
    all.push_back(operation(
        "iq-compensation",
        [](BenchmarkRadio& radio, int time) {
            CTxIQImbalanceHandler::notifyTemperature(&radio.iqCompensation(), temperatureAt(time));
        },
        [](auto& floor, int time) { floor.compensate(temperatureAt(time)); }));
    const auto calibrate = [](auto& floor, int /*time*/) { floor.calibrate(); };
    all.push_back({"calibration-iteration", calibration, onFloor<Checks::none>(calibrate),
                   onFloor<Checks::demanded>(calibrate)});
    addVariations(all);
    addBootsAndLookups(all);
    return all;
}

} // namespace Benchmarks
