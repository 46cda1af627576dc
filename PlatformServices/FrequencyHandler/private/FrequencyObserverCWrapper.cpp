#include "FrequencyObserverCWrapper.h"

#include "Trace.h"

#include <memory>
#include <new>

using namespace RL::FrequencyHandler;

namespace {

OrbiTrace s_trace(Trace::objectName, Trace::initialLevel);

/** Whether the list can take one more without asking for memory, which it does here. */
bool makeRoom(std::vector<Observer<IFrequencyHandler>*>& list) {
    try {
        if (list.size() == list.capacity()) {
            list.reserve(2 * list.size() + 1);
        }
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace

void FrequencyObserverCWrapper::onChange(IFrequencyHandler* subject) {
    m_onFrequencyChanged(m_context, m_channel, subject->getFrequency());
}

EAFResult IFrequencyHandler::registerObserver(void* handler, IFrequencyObserver* observer) {
    if (handler == nullptr || observer == nullptr || observer->onFrequencyChanged == nullptr) {
        FH_TRACE(s_trace, TraceCode::error, "registerObserver called without handler, observer or function");
        return ResultFailed;
    }
    auto* const subject = static_cast<IFrequencyHandler*>(handler);
    auto wrapper = std::unique_ptr<FrequencyObserverCWrapper>(
        new (std::nothrow) FrequencyObserverCWrapper(subject->m_cStruct.m_channel, *observer));
    if (wrapper == nullptr || !makeRoom(subject->m_observers)) {
        FH_TRACE(s_trace, TraceCode::error, "registerObserver: out of memory");
        return ResultFailed;
    }
    // The handler keeps the pointer and nobody ever deletes it: the wrapper lives as long as the process.
    // What a handler answers makes no difference; those of the library have the room that they need.
    static_cast<void>(subject->registerObserver(wrapper.release()));
    return ResultOk;
}
