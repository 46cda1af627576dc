#ifndef TESTS_MODEL_RUNNEROBSERVERS_H
#define TESTS_MODEL_RUNNEROBSERVERS_H

#include "Observer.h"
#include "Runner.h"
#include "Thrower.h"

#include <cstdint>
#include <string>

namespace Told {

/** Reaches a handler's observers. */
class ObserversOf : Subject<IFrequencyHandler> {
public:
    static Observer<IFrequencyHandler>* last(Subject<IFrequencyHandler>& handler) {
        return (handler.*&ObserversOf::m_observers).back();
    }
};

class Runner::ListeningObserver final : public Observer<IFrequencyHandler> {
public:
    ListeningObserver(Transcript& transcript, std::int64_t number, Throws throws,
                      const IFrequencyHandler& subject)
        : m_transcript(transcript),
          m_number(number),
          m_throws(throws),
          m_subject(subject) {}

    void onChange(IFrequencyHandler* subject) override {
        m_transcript.note(subject == &m_subject ? "observer" : "observer of another",
                          std::to_string(m_number), static_cast<std::int64_t>(subject->getFrequency()));
        throwIt(m_throws);
    }

private:
    Transcript& m_transcript;
    std::int64_t m_number;
    Throws m_throws;
    const IFrequencyHandler& m_subject;
};

struct Runner::ObserverInC {
    Transcript& transcript;
    std::int64_t number;
    Throws throws;

    static void hear(void* context, unsigned long channel, unsigned long frequency) {
        const auto& observer = *static_cast<ObserverInC*>(context);
        observer.transcript.note("observer in C", std::to_string(observer.number),
                                 static_cast<std::int64_t>(frequency));
        observer.transcript.note("of channel", static_cast<std::int32_t>(channel));
        throwIt(observer.throws);
    }
};

} // namespace Told

#endif
