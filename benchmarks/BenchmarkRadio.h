#ifndef BENCHMARKS_BENCHMARKRADIO_H
#define BENCHMARKS_BENCHMARKRADIO_H

#include "CTxIQImbalanceHandler.h"
#include "FrequencyHandler.h"
#include "IFrequencyHandler.h"
#include "ILoCancellation.h"
#include "standalone/Platform.h"

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

/**
 * An observer that counts, which is next to nothing: what is measured is how it is reached. Made where
 * neither library nor floor sees its class, so that both reach it as they would reach anybody's.
 */
std::unique_ptr<Observer<IFrequencyHandler>> makeObserver();

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

    const RadioOptions& options() const { return m_options; }
    /** The module of the last channel. */
    FrequencyHandler& module() { return *m_modules.back(); }
    /** The LO cancellation of the last channel. */
    ILoCancellation& canceller() { return *m_canceller; }
    /** Of channel 1. */
    CTxIQImbalanceHandler& iqCompensation() { return m_iqCompensation; }
    Observer<IFrequencyHandler>& observer() { return *m_observer; }
    Standalone::Platform& platform() { return m_platform; }
    /** The record of the driver "channel.`channel`." + `name`. */
    DriverInterface* driver(int channel, const std::string& name);
    /** The table "Channel.`channel`." + `name`. */
    CalibrationTable* table(int channel, const std::string& name);

private:
    void describeChannel(int channel);
    void describeDirection(int channel, const std::string& direction, const std::string& tableDirection);
    void describeIqCompensation();
    void observe();

    RadioOptions m_options;
    Standalone::Platform m_platform;
    std::vector<std::unique_ptr<FrequencyHandler>> m_modules;
    CTxIQImbalanceHandler m_iqCompensation{1};
    std::unique_ptr<Observer<IFrequencyHandler>> m_observer = makeObserver();
    ILoCancellation* m_canceller = nullptr;
};

} // namespace Benchmarks

#endif
