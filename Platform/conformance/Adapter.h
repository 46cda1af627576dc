#ifndef PLATFORM_CONFORMANCE_ADAPTER_H
#define PLATFORM_CONFORMANCE_ADAPTER_H

#include "OrbiTrace.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** Whether a platform keeps the rules of the contracts that the library is built against. */
namespace Conformance {

/**
 * What the rules need of a platform beside the operations of the contracts: its own side of them. Whoever has
 * a platform derives from it, and says with `false` or nothing, as the operations here do unless they are
 * overridden, what it cannot do; the rules that need that are then said to have not been looked at.
 *
 * Each rule is looked at in a process of its own, which is forked before begin() is called and is ended after
 * its deadline: whatever is done here is forgotten with it. All of it happens on one thread; the trace alone
 * is called by others, too.
 */
class Adapter {
public:
    Adapter() = default;
    Adapter(const Adapter&) = delete;
    Adapter& operator=(const Adapter&) = delete;
    virtual ~Adapter() = default;

    /** Brings the platform to where modules may be made: "IDriverLayer" and "ITemperatureHandler" are
     * published. False ends the look at the rule as one that does not hold. */
    virtual bool begin() { return true; }

    // The driver layer

    /** Adds a driver that can be written, as a number and as bytes, and read; it has not been written yet. */
    virtual bool putDriver(const std::string& /*name*/) { return false; }
    /** The number that the hardware behind the driver was given last by `write`; nothing: none. */
    virtual std::optional<int> written(const std::string& /*driver*/) { return std::nullopt; }
    /** The bytes that it was given last by `writeBuffer`, and nothing else of it; nothing: none. */
    virtual std::optional<std::vector<std::uint8_t>> writtenBytes(const std::string& /*driver*/) {
        return std::nullopt;
    }
    /** From now on reading the driver gives `value`. */
    virtual bool putReading(const std::string& /*driver*/, int /*value*/) { return false; }
    /** From now on the hardware behind the driver refuses everything, and the driver answers `code`, which is
     * a failure. */
    virtual bool refuse(const std::string& /*driver*/, std::int32_t /*code*/) { return false; }

    // Storage and calibration

    /** Adds the variable with this content, or gives the one that is there, whose content is as long, this
     * content. */
    virtual bool putVariable(const std::string& /*name*/, const std::vector<int>& /*content*/) {
        return false;
    }
    /** Adds a table with one axis; `x` ascends, and has as many nodes as there are values. */
    virtual bool putTable(const std::string& /*name*/, const std::vector<int>& /*x*/,
                          const std::vector<int>& /*values*/) {
        return false;
    }
    /** Adds a table with two axes, which ascend; values stand for each node of the first axis one after the
     * other for all of the second. */
    virtual bool putTable(const std::string& /*name*/, const std::vector<int>& /*x1*/,
                          const std::vector<int>& /*x2*/, const std::vector<int>& /*values*/) {
        return false;
    }

    // Time goes on

    /** Has the temperature service notice this temperature, in degrees Celsius, and tell its observers. */
    virtual bool setTemperature(int /*degrees*/) { return false; }
    /** Runs one phase over all modules and callbacks that want it. */
    virtual bool runPhase(unsigned long /*phase*/) { return false; }

    // Remote radio units

    /** Publishes a remote radio unit for the channel. */
    virtual bool putRemoteUnit(int /*channel*/) { return false; }
    /** The carrier in kHz that this unit was given last; nothing: none. */
    virtual std::optional<unsigned long> remoteCarrier(int /*channel*/, bool /*isTransmit*/) {
        return std::nullopt;
    }

    // The trace

    /** All that was written to the trace since begin(), as a person would read it; nothing: nobody can
     * tell. */
    virtual std::optional<std::string> traced() { return std::nullopt; }
    /** Whether channels may be driven on threads of their own, which write messages at the same time. False:
     * one thread at a time calls the library. */
    virtual bool isTracedByThreads() { return false; }
};

/**
 * Looks at the rules and writes to standard output what holds, what does not and what could not be looked at.
 * Ends the process with 0 when all that could be looked at holds, with 1 when a rule does not hold, and with
 * 2 for arguments that are not understood; `--help` says what they are. No static object is destroyed then: a
 * platform that hangs in that would take the result with it, and a rule looks at it. To be called on the only
 * thread of the process, since each rule is looked at in a fork of it.
 */
[[noreturn]] void run(Adapter& adapter, int argc, const char* const* argv);

} // namespace Conformance

#endif
