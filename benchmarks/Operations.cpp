#include "Operations.h"

#include "BenchmarkRadio.h"
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
using WriteOfFloor = void (Floor::*)(std::uint32_t);

/** A handler type, and what sets its frequencies without the library. */
struct TypeEntry {
    const char* name;
    Type type;
    WriteOfFloor setTx;
    WriteOfFloor setRx;
    bool hasLoCancellation;
};

constexpr std::array<TypeEntry, 6> types{{
    {"microwave-if", Type::MicrowaveBoardIf, &Floor::setMicrowaveIf, &Floor::setMicrowaveIf, true},
    {"rf-module", Type::RfModule, &Floor::setRfModule, &Floor::setRfModule, false},
    {"microwave-dsp-offset", Type::MicrowaveBoardDspOffset, &Floor::setMicrowaveDspOffset,
     &Floor::setMicrowaveDspOffsetRx, true},
    {"microwave-hz-cs-offset", Type::MicrowaveBoardHzCsOffset, &Floor::setMicrowaveHz,
     &Floor::setMicrowaveHzCsOffsetRx, true},
    {"rau", Type::Rau, &Floor::setRauTx, &Floor::setRauRx, false},
    {"microwave-hz", Type::MicrowaveBoardHz, &Floor::setMicrowaveHz, &Floor::setMicrowaveHz, true},
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

std::shared_ptr<Floor> makeFloor(BenchmarkRadio& radio, Type type, const char* direction) {
    return std::make_shared<Floor>(radio, direction, type == Type::MicrowaveBoardIf ? 140'000 : 0);
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

std::function<Run()> setTxOnFloor(const TypeEntry& entry) {
    return [entry]() -> Run {
        auto radio = makeRadio({entry.type});
        auto floor = makeFloor(*radio, entry.type, "Tx");
        const WriteOfFloor set = entry.setTx;
        if (!entry.hasLoCancellation) {
            return [radio, floor, set](int time) { (*floor.*set)(carrierAt(time)); };
        }
        return [radio, floor, set](int time) {
            (*floor.*set)(carrierAt(time));
            floor->correct();
        };
    };
}

std::function<Run()> setRxOnFloor(const TypeEntry& entry) {
    return [entry]() -> Run {
        auto radio = makeRadio({entry.type});
        auto floor = makeFloor(*radio, entry.type, "Rx");
        const WriteOfFloor set = entry.setRx;
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

template <typename Work>
std::function<Run()> onFloor(Work work) {
    return [work]() -> Run {
        auto radio = makeRadio({});
        auto floor = makeFloor(*radio, Type::MicrowaveBoardHz, "Tx");
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
    for (const TypeEntry& entry : types) {
        all.push_back({std::string("tx.") + entry.name, setTx({entry.type}), setTxOnFloor(entry)});
    }
    for (const TypeEntry& entry : types) {
        all.push_back({std::string("rx.") + entry.name, setRx(entry.type), setRxOnFloor(entry)});
    }
}

/** What a transmit frequency change depends on beside the board. */
void addVariations(std::vector<Operation>& all) {
    const std::string name = "tx.microwave-hz.";
    for (const int observers : {0, 2, 5, 10, 20, 50, 100}) {
        all.push_back({name + "observers-" + std::to_string(observers),
                       setTx({Type::MicrowaveBoardHz, 1, observers}),
                       {}});
    }
    for (const int channels : {8, 64}) {
        all.push_back(
            {name + "channel-" + std::to_string(channels), setTx({Type::MicrowaveBoardHz, channels}), {}});
    }
    all.push_back(
        {name + "trace-filtered", setTx({Type::MicrowaveBoardHz, 1, 1, Standalone::TraceLevel::notice}), {}});
    all.push_back(
        {name + "trace-on", setTx({Type::MicrowaveBoardHz, 1, 1, Standalone::TraceLevel::information}), {}});
}

void addBootsAndLookups(std::vector<Operation>& all) {
    for (const int channels : {1, 2, 4, 8, 16, 32, 64}) {
        all.push_back({"boot." + std::to_string(channels), boot(channels), {}, 1});
    }
    for (const int nodes : {10, 30, 100, 300, 1000, 3000, 10'000}) {
        all.push_back(
            {"lookup.linear." + std::to_string(nodes), [nodes] { return lookUpLinear(nodes); }, {}});
        all.push_back(
            {"lookup.bilinear." + std::to_string(nodes), [nodes] { return lookUpBilinear(nodes); }, {}});
    }
}

} // namespace

std::vector<Operation> operations() {
    std::vector<Operation> all;
    addFrequencyChanges(all);
    all.push_back({"temperature.microwave-hz", onLibrary([](BenchmarkRadio& radio, int time) {
                       radio.module().notifyTemperature(temperatureAt(time));
                   }),
                   onFloor([](Floor& floor, int time) { floor.setTemperature(temperatureAt(time)); })});
    all.push_back({"iq-compensation", onLibrary([](BenchmarkRadio& radio, int time) {
                       CTxIQImbalanceHandler::notifyTemperature(&radio.iqCompensation(), temperatureAt(time));
                   }),
                   onFloor([](Floor& floor, int time) { floor.compensate(temperatureAt(time)); })});
    all.push_back({"calibration-iteration", calibration,
                   onFloor([](Floor& floor, int /*time*/) { floor.calibrate(); })});
    addVariations(all);
    addBootsAndLookups(all);
    return all;
}

} // namespace Benchmarks
