/**
 * What keeps exceptions inside the library. Platform, drivers and observers are others' code and may throw
 * whatever they like; whoever calls the library is not to unwind for that.
 */
#ifndef FREQUENCYHANDLER_PRIVATE_GUARD_H
#define FREQUENCYHANDLER_PRIVATE_GUARD_H

#include "Refusal.h"
#include "ResultCode.h"
#include "Trace.h"

namespace RL::FrequencyHandler {

/**
 * In a handler for whatever was thrown: writes the error trace "`operation` failed: " and what the
 * exception says. The unwinding of a cancelled thread passes.
 */
[[gnu::cold]] void tellThrown(OrbiTrace& trace, const char* operation);

/** The same, out of the way of what goes well. */
template <OrbiTrace& trace>
[[gnu::cold, gnu::noinline]] void tellThrown(const char* operation) {
    tellThrown(trace, operation);
}

/** The same of a write to the hardware of `handler`. */
template <OrbiTrace& trace>
[[gnu::cold, gnu::noinline]] void tellThrownByWrite(const Common::FrequencyHandler* handler) {
    tellThrown(trace, "writeFrequencyToHW");
    static_cast<void>(refused(handler));
}

/** Carries out `work` and gives its result; when it throws, 0x8000, and one error trace says what failed. */
template <OrbiTrace& trace, typename Work>
[[gnu::always_inline]] inline EAFResult guarded(const char* operation, Work work) {
    try {
        return work();
    } catch (...) {
        tellThrown<trace>(operation);
    }
    return ResultFailed;
}

/** The same for writeFrequencyToHW() of `handler`. */
template <OrbiTrace& trace, typename Work>
[[gnu::always_inline]] inline EAFResult guardedWrite(const Common::FrequencyHandler* handler, Work work) {
    try {
        return work();
    } catch (...) {
        tellThrownByWrite<trace>(handler);
    }
    return ResultFailed;
}

/**
 * As long as it lives, its thread is not cancelled; a cancellation waits. For where not even the unwinding of
 * a cancelled thread may pass: destructors, the handler of an exception, and what only a destructor takes
 * back.
 */
class CancellationHeld {
public:
    CancellationHeld();
    CancellationHeld(const CancellationHeld&) = delete;
    CancellationHeld& operator=(const CancellationHeld&) = delete;
    ~CancellationHeld();

private:
    int m_stateBefore = 0;
};

} // namespace RL::FrequencyHandler

#endif
