#include "client.h"

#include "CInterfaceBroker.h"
#include "IFrequencyHandler_c.h"

#include <stddef.h>

static void on_frequency_changed(void* context, unsigned long channel, unsigned long frequency) {
    Heard* heard = (Heard*)context;
    ++heard->calls;
    heard->channel = channel;
    heard->frequency = frequency;
}

static const FrequencyHandlerCStruct* find(const char* name) {
    void* broker = NULL;
    void* record = NULL;
    if (CInterfaceBroker_GetInstance(&broker) >= ResultFailed) {
        return NULL;
    }
    if (CInterfaceBroker_GetInterface(broker, name, &record) >= ResultFailed) {
        record = NULL;
    }
    CInterfaceBroker_DestroyInstance(broker);
    return (const FrequencyHandlerCStruct*)record;
}

int client_subscribe(const char* name, Heard* heard) {
    const FrequencyHandlerCStruct* handler = find(name);
    IFrequencyObserver observer; /* need not outlive the registration */
    if (handler == NULL) {
        return ResultFailed;
    }
    observer.context = heard;
    observer.onFrequencyChanged = on_frequency_changed;
    return handler->registerObserver(handler->handler, &observer);
}

unsigned long client_channel_of(const char* name) {
    const FrequencyHandlerCStruct* handler = find(name);
    return handler == NULL ? 0 : handler->m_channel;
}
