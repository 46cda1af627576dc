#include "FrequencyObserverCWrapper.h"

#include "Guard.h"
#include "Trace.h"

#include <memory>
#include <vector>

using namespace RL::FrequencyHandler;

namespace {

OrbiTrace s_trace(Trace::objectName, Trace::initialLevel);

/** Afterwards the list can take one more without asking for memory. */
void makeRoom(std::vector<Observer<IFrequencyHandler>*>& list) {
    if (list.size() == list.capacity()) {
        list.reserve(2 * list.size() + 1);
    }
}

} // namespace

void FrequencyObserverCWrapper::onChange(IFrequencyHandler* subject) {
    static_cast<void>(guarded<s_trace>("onFrequencyChanged", [this, subject] {
        m_onFrequencyChanged(m_context, m_channel, subject->getFrequency());
        return ResultOk;
    }));
}

EAFResult IFrequencyHandler::registerObserver(void* handler, IFrequencyObserver* observer) {
    if (handler == nullptr || observer == nullptr || observer->onFrequencyChanged == nullptr) {
        FH_TRACE(s_trace, TraceCode::error, "registerObserver called without handler, observer or function");
        return ResultFailed;
    }
    return guarded<s_trace>("registerObserver", [handler, observer] {
        auto* const subject = static_cast<IFrequencyHandler*>(handler);
        auto wrapper = std::make_unique<FrequencyObserverCWrapper>(subject->m_cStruct.m_channel, *observer);
        makeRoom(subject->m_observers);
        // The handler keeps the pointer and nobody ever deletes it: the wrapper lives as long as the process.
        // What a handler answers makes no difference; those of the library have the room that they need.
        static_cast<void>(subject->registerObserver(wrapper.release()));
        return ResultOk;
    });
}
