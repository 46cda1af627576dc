#include "FrequencyObserverCWrapper.h"

#include "Trace.h"

#include <new>

using namespace RL::FrequencyHandler;

static OrbiTrace s_trace(Trace::objectName, Trace::initialLevel);

void FrequencyObserverCWrapper::onChange(IFrequencyHandler* subject) {
    m_onFrequencyChanged(m_context, m_channel, subject->getFrequency());
}

EAFResult IFrequencyHandler::registerObserver(void* handler, IFrequencyObserver* observer) {
    if (handler == nullptr || observer == nullptr || observer->onFrequencyChanged == nullptr) {
        FH_TRACE(s_trace, TraceCode::error, "registerObserver called without handler, observer or function");
        return ResultFailed;
    }
    auto* const subject = static_cast<IFrequencyHandler*>(handler);
    auto* const wrapper =
        new (std::nothrow) FrequencyObserverCWrapper(subject->m_cStruct.m_channel, *observer);
    if (wrapper == nullptr) {
        FH_TRACE(s_trace, TraceCode::error, "registerObserver: out of memory");
        return ResultFailed;
    }
    if (isFailure(subject->registerObserver(wrapper))) {
        delete wrapper; // a handler that fails has not kept it, and has said why
        return ResultFailed;
    }
    // The handler keeps the pointer and nobody ever deletes it: the wrapper lives as long as the process.
    return ResultOk;
}
