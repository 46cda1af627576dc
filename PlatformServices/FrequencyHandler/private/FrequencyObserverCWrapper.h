#ifndef FREQUENCYHANDLER_PRIVATE_FREQUENCYOBSERVERCWRAPPER_H
#define FREQUENCYHANDLER_PRIVATE_FREQUENCYOBSERVERCWRAPPER_H

#include "IFrequencyHandler.h"

/**
 * A C observer seen as a class observer. It keeps a copy of what the client's record held at registration, so
 * the client may free that record. It lives as long as the process: handlers do not own their observers, and
 * there is no way to unsubscribe.
 */
class FrequencyObserverCWrapper final : public Observer<IFrequencyHandler> {
public:
    FrequencyObserverCWrapper(unsigned long channel, const IFrequencyObserver& observer)
        : m_channel(channel),
          m_context(observer.context),
          m_onFrequencyChanged(observer.onFrequencyChanged) {}

    /** Calls the client's function with the channel from registration and the subject's present carrier in
     * kHz. */
    void onChange(IFrequencyHandler* subject) override;

private:
    unsigned long m_channel;
    void* m_context;
    void (*m_onFrequencyChanged)(void* context, unsigned long channel, unsigned long frequency);
};

#endif
