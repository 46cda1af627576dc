#ifndef BENCHMARKS_BENCHMARKRADIO_H
#define BENCHMARKS_BENCHMARKRADIO_H

#include "CTxIQImbalanceHandler.h"
#include "FrequencyHandler.h"
#include "IFrequencyHandler.h"
#include "standalone/Platform.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/** What of the library is measured, and against what. */
namespace Benchmarks {

/** How a radio is furnished. */
struct RadioOptions {
    FrequencyHandler::FrequencyHandlerType type = FrequencyHandler::MicrowaveBoardHz;
    int channels = 1;
    /** On each handler. */
    int observers = 1;
    OrbiTraceLevel trace = Standalone::TraceLevel::off;
};

/** An observer that does next to nothing: what is measured is how it is reached. */
class CountingObserver final : public Observer<IFrequencyHandler> {
public:
    void onChange(IFrequencyHandler* /*subject*/) override { ++m_changes; }

private:
    unsigned long m_changes = 0;
};

/**
 * A booted radio on the stand-alone platform, whose drivers only keep what is written. Nothing is journaled
 * and nobody listens, so that what is measured is the library and as little platform as there can be.
 *
 * All channels have what any handler type asks for. The tables of the LO cancellation have 6 frequencies and
 * 5 temperatures, those of charge pump and IQ compensation 3 nodes.
 */
class BenchmarkRadio {
public:
    explicit BenchmarkRadio(const RadioOptions& options);
    BenchmarkRadio(const BenchmarkRadio&) = delete;
    BenchmarkRadio& operator=(const BenchmarkRadio&) = delete;
    ~BenchmarkRadio();

    /** Builds the modules and runs the phases of a start-up. The constructor has done so once. */
    void boot();
    /** Runs the phases of a start-up on the modules that there are. */
    void runPhases();
    /** Destroys the modules. */
    void shutDown();

    FrequencyHandler& module(int channel = 1) { return *m_modules[static_cast<std::size_t>(channel - 1)]; }
    CTxIQImbalanceHandler& iqCompensation() { return m_iqCompensation; }
    CountingObserver& observer() { return m_observer; }
    Standalone::Platform& platform() { return m_platform; }
    /** The record of the driver "channel.1." + `name`. */
    DriverInterface* driver(const std::string& name);
    /** The table "Channel.1." + `name`. */
    CalibrationTable* table(const std::string& name);

private:
    void describeChannel(int channel);
    void describeDirection(int channel, const std::string& direction, const std::string& tableDirection);
    void describeIqCompensation();
    void observe();

    RadioOptions m_options;
    Standalone::Platform m_platform;
    std::vector<std::unique_ptr<FrequencyHandler>> m_modules;
    CTxIQImbalanceHandler m_iqCompensation{1};
    CountingObserver m_observer;
};

} // namespace Benchmarks

#endif
