#ifndef BENCHMARKS_BENCHMARKRADIO_H
#define BENCHMARKS_BENCHMARKRADIO_H

#include "FrequencyHandler.h"
#include "IFrequencyHandler.h"
#include "standalone/Platform.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/** What of the library is measured, and against what. */
namespace Benchmarks {

/** How a radio is furnished. */
struct RadioOptions {
    int type = 5;
    int channels = 1;
    int observers = 1;
    /** Nodes on the first axis of each table of the LO cancellation; the second has 5. */
    int tableNodes = 6;
    OrbiTraceLevel trace{0};
    bool hasIqCompensation = false;
};

/** An observer that does next to nothing. */
class CountingObserver final : public Observer<IFrequencyHandler> {
public:
    void onChange(IFrequencyHandler* subject) override { m_sum += subject->getFrequency(); }

private:
    std::uint64_t m_sum = 0;
};

/**
 * A booted radio on the stand-alone platform, whose drivers only keep what is written. Nothing is journaled
 * and nobody listens, so that what is measured is the library and as little platform as there can be.
 */
class BenchmarkRadio {
public:
    explicit BenchmarkRadio(const RadioOptions& options);
    BenchmarkRadio(const BenchmarkRadio&) = delete;
    BenchmarkRadio& operator=(const BenchmarkRadio&) = delete;
    ~BenchmarkRadio();

    /** Builds the modules and runs the phases of a start-up. The constructor has done so once. */
    void boot();
    void shutDown();

    FrequencyHandler& module(int channel = 1) { return *m_modules[static_cast<std::size_t>(channel - 1)]; }
    Standalone::Platform& platform() { return m_platform; }
    Standalone::Driver& driver(const std::string& name) { return *m_platform.drivers().find(name); }

private:
    void describeChannel(int channel);
    void describeDirection(int channel, const char* direction, const char* tableDirection);

    RadioOptions m_options;
    Standalone::Platform m_platform;
    std::vector<std::unique_ptr<FrequencyHandler>> m_modules;
    CountingObserver m_observer;
};

} // namespace Benchmarks

#endif
