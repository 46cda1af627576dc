#include "Guard.h"

#include <cxxabi.h>
#include <pthread.h>

#include <exception>

namespace RL::FrequencyHandler {

// Of the unwinding there is no object to refer to on 32-bit ARM, and none is looked at.
__attribute__((no_sanitize("undefined"))) void tellThrown(OrbiTrace& trace, const char* operation) {
    try {
        throw;
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (const std::exception& error) {
        const CancellationHeld held; // the trace may be where a thread is cancelled
        FH_TRACE(trace, TraceCode::error, "%s failed: %s", operation, error.what());
    } catch (...) {
        const CancellationHeld held;
        FH_TRACE(trace, TraceCode::error, "%s failed: unknown exception", operation);
    }
}

CancellationHeld::CancellationHeld() {
    static_cast<void>(pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_stateBefore));
}

CancellationHeld::~CancellationHeld() {
    static_cast<void>(pthread_setcancelstate(m_stateBefore, nullptr));
}

} // namespace RL::FrequencyHandler
