/**
 * What keeps exceptions inside the library. Names of drivers, tables and interfaces are built when they are
 * needed, and memory for them may run out; the platform that calls is not to unwind for that.
 */
#ifndef FREQUENCYHANDLER_PRIVATE_GUARD_H
#define FREQUENCYHANDLER_PRIVATE_GUARD_H

#include "ResultCode.h"
#include "Trace.h"

#include <array>
#include <exception>

namespace RL::FrequencyHandler {

/** Carries out `work` and gives its result; when it throws, 0x8000, and one error trace says what failed. */
template <typename Work>
EAFResult guarded(OrbiTrace& trace, const char* operation, Work work) noexcept {
    try {
        return work();
    } catch (const std::exception& error) {
        FH_TRACE(trace, TraceCode::error, "%s failed: %s", operation, error.what());
        return ResultFailed;
    }
}

/** Room for the name of an interface, with its closing zero; made without memory. */
using InterfaceName = std::array<char, 64>;

/**
 * Withdraws what is published under `name` from the broker, also when memory has run out: nobody may find an
 * object that is gone. Gives the broker's answer; 0x8000 when it threw. Any thread.
 */
EAFResult withdraw(const InterfaceName& name) noexcept;

} // namespace RL::FrequencyHandler

#endif
