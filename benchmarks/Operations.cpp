#include "Operations.h"

#include "BenchmarkRadio.h"
#include "BootFloor.h"
#include "CCalibrationHandler.h"
#include "Floor.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace Benchmarks {

namespace {

using Type = FrequencyHandler::FrequencyHandlerType;

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

template <typename Library>
std::function<Run()> onLibrary(const RadioOptions& options, Library library) {
    return [options, library]() -> Run {
        auto radio = makeRadio(options);
        return [radio, library](int time) { library(*radio, time); };
    };
}

template <Checks checks, typename OnFloor>
std::function<Run()> onFloor(const RadioOptions& options, const char* direction, OnFloor work) {
    return [options, direction, work]() -> Run {
        auto radio = makeRadio(options);
        auto floor = std::make_shared<Floor<checks>>(*radio, direction,
                                                     options.type == Type::MicrowaveBoardIf ? 140'000 : 0);
        return [radio, floor, work](int time) { work(*floor, time); };
    };
}

/**
 * `library` is called with the radio and the time, `work` with a floor of either kind, for `direction` of
 * such a radio, and the time.
 */
template <typename Library, typename OnFloor>
Operation operation(const std::string& name, const RadioOptions& options, Library library,
                    const char* direction, OnFloor work) {
    if (options.trace == Standalone::TraceLevel::information) { // without a check nobody writes a message
        return {name,
                onLibrary(options, library),
                {},
                onFloor<Checks::demandedAndMessages>(options, direction, work)};
    }
    return {name, onLibrary(options, library), onFloor<Checks::none>(options, direction, work),
            onFloor<Checks::demanded>(options, direction, work)};
}

/** A transmit frequency change. */
template <typename OnFloor>
Operation setTx(const std::string& name, const RadioOptions& options, OnFloor work) {
    return operation(
        "tx." + name, options,
        [](BenchmarkRadio& radio, int time) { radio.module().setTxFrequency(carrierAt(time)); }, "Tx",
        [work](auto& floor, int time) { work(floor, carrierAt(time)); });
}

template <typename OnFloor>
Operation setRx(const std::string& name, const RadioOptions& options, OnFloor work) {
    return operation(
        "rx." + name, options,
        [](BenchmarkRadio& radio, int time) { radio.module().setRxFrequency(carrierAt(time)); }, "Rx",
        [work](auto& floor, int time) { work(floor, carrierAt(time)); });
}

/** With the LO cancellation that follows a new transmit carrier. */
const auto setTxMicrowaveHz = [](auto& floor, std::uint32_t carrier) {
    floor.setMicrowaveHz(carrier);
    floor.correct();
};
const auto setRxMicrowaveHz = [](auto& floor, std::uint32_t carrier) { floor.setMicrowaveHz(carrier); };

Operation temperature(const std::string& name, const RadioOptions& options) {
    return operation(
        name, options,
        [](BenchmarkRadio& radio, int time) { radio.module().notifyTemperature(temperatureAt(time)); }, "Tx",
        [](auto& floor, int time) { floor.setTemperature(temperatureAt(time)); });
}

Operation iqCompensation(const std::string& name, const RadioOptions& options) {
    return operation(
        name, options,
        [](BenchmarkRadio& radio, int time) {
            CTxIQImbalanceHandler::notifyTemperature(&radio.iqCompensation(), temperatureAt(time));
        },
        "Tx", [](auto& floor, int time) { floor.compensate(temperatureAt(time)); });
}

Operation calibration(const std::string& name, const RadioOptions& options) {
    return operation(
        name, options,
        [](BenchmarkRadio& radio, int /*time*/) {
            int i = 0;
            int q = 0;
            int maxDelta = 0;
            unsigned iterations = 0;
            radio.canceller().calibrateLoCancellation(0, 4000, 0, 4000, 0.75, 0, 1, 0, &i, &q, &maxDelta,
                                                      &iterations, false);
        },
        "Tx", [](auto& floor, int /*time*/) { floor.calibrate(0, 4000, 0, 4000, 0.75); });
}

/** The start of a radio of which everything is described, and whose modules are gone; then its end. */
std::function<Run()> boot(int channels) {
    return [channels]() -> Run {
        auto radio = makeRadio({Type::MicrowaveBoardHz, channels, 0, Standalone::TraceLevel::off});
        radio->shutDown();
        return [radio](int time) { time == 0 ? radio->boot() : radio->shutDown(); };
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
        return [radio, names, modules](int time) {
            if (time != 0) {
                radio->platform().temperature().forgetObservers();
                modules->clear();
                return;
            }
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
    all.push_back(setTx("microwave-if", {Type::MicrowaveBoardIf}, [](auto& floor, std::uint32_t carrier) {
        floor.setMicrowaveIf(carrier);
        floor.correct();
    }));
    all.push_back(setTx("rf-module", {Type::RfModule},
                        [](auto& floor, std::uint32_t carrier) { floor.setRfModule(carrier); }));
    all.push_back(setTx("microwave-dsp-offset", {Type::MicrowaveBoardDspOffset},
                        [](auto& floor, std::uint32_t carrier) {
                            floor.setMicrowaveDspOffset(carrier);
                            floor.correct();
                        }));
    all.push_back(setTx("microwave-hz-cs-offset", {Type::MicrowaveBoardHzCsOffset}, setTxMicrowaveHz));
    all.push_back(
        setTx("rau", {Type::Rau}, [](auto& floor, std::uint32_t carrier) { floor.setRauTx(carrier); }));
    all.push_back(setTx("microwave-hz", {Type::MicrowaveBoardHz}, setTxMicrowaveHz));

    all.push_back(setRx("microwave-if", {Type::MicrowaveBoardIf},
                        [](auto& floor, std::uint32_t carrier) { floor.setMicrowaveIf(carrier); }));
    all.push_back(setRx("rf-module", {Type::RfModule},
                        [](auto& floor, std::uint32_t carrier) { floor.setRfModule(carrier); }));
    all.push_back(setRx("microwave-dsp-offset", {Type::MicrowaveBoardDspOffset},
                        [](auto& floor, std::uint32_t carrier) { floor.setMicrowaveDspOffsetRx(carrier); }));
    all.push_back(setRx("microwave-hz-cs-offset", {Type::MicrowaveBoardHzCsOffset},
                        [](auto& floor, std::uint32_t carrier) { floor.setMicrowaveHzCsOffsetRx(carrier); }));
    all.push_back(
        setRx("rau", {Type::Rau}, [](auto& floor, std::uint32_t carrier) { floor.setRauRx(carrier); }));
    all.push_back(setRx("microwave-hz", {Type::MicrowaveBoardHz}, setRxMicrowaveHz));
}

/** Each kind of operation at one threshold of the trace. */
std::vector<Operation> tracedOperations(const std::string& suffix, OrbiTraceLevel threshold) {
    const RadioOptions options{Type::MicrowaveBoardHz, 1, 1, threshold};
    return {setTx("microwave-hz" + suffix, options, setTxMicrowaveHz),
            setRx("microwave-hz" + suffix, options, setRxMicrowaveHz),
            temperature("temperature.microwave-hz" + suffix, options),
            iqCompensation("iq-compensation" + suffix, options),
            calibration("calibration-iteration" + suffix, options)};
}

/** What operations depend on beside the board. */
void addVariations(std::vector<Operation>& all) {
    for (const auto& [suffix, threshold] : {std::pair(".trace-filtered", Standalone::TraceLevel::error),
                                            std::pair(".trace-on", Standalone::TraceLevel::information)}) {
        for (Operation& traced : tracedOperations(suffix, threshold)) {
            all.push_back(std::move(traced));
        }
    }
    for (const int observers : {0, 2, 5, 10, 20, 50, 100}) {
        all.push_back(setTx("microwave-hz.observers-" + std::to_string(observers),
                            {Type::MicrowaveBoardHz, 1, observers}, [](auto& floor, std::uint32_t carrier) {
                                floor.setMicrowaveHzForMany(carrier);
                                floor.correct();
                            }));
    }
    for (const int channels : {8, 64}) {
        all.push_back(setTx("microwave-hz.channel-" + std::to_string(channels),
                            {Type::MicrowaveBoardHz, channels}, setTxMicrowaveHz));
    }
}

void addBootsAndLookups(std::vector<Operation>& all) {
    for (const int channels : {1, 2, 4, 8, 16, 32, 64}) {
        const std::string number = std::to_string(channels);
        all.push_back({"boot." + number, boot(channels), bootOnFloor(channels), {}, 1, "shutdown." + number});
    }
    // So many that counting takes seconds, and that what is done once only weighs nothing.
    for (const int channels : {512, 4096}) {
        const std::string number = std::to_string(channels);
        all.push_back({"boot." + number, boot(channels), {}, {}, 1, "shutdown." + number, false});
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
    all.push_back(temperature("temperature.microwave-hz", {}));
    all.push_back(iqCompensation("iq-compensation", {}));
    all.push_back(calibration("calibration-iteration", {}));
    addVariations(all);
    addBootsAndLookups(all);
    return all;
}

} // namespace Benchmarks
