// A process that has its leaks looked for, in which a C client hears of a carrier.
#include "CInterfaceBroker.h"
#include "FrequencyHandler_c.h"
#include "IFrequencyHandler_c.h"
#include "MinimalPlatform.h"

#include <cstdio>

namespace {

void hear(void* context, unsigned long channel, unsigned long frequency) {
    *static_cast<unsigned long*>(context) = frequency;
    std::printf("channel %lu: %lu kHz\n", channel, frequency);
    std::fflush(stdout); // a leak that is found ends the process at once
}

} // namespace

int main() {
    Minimal::publishServices();
    for (const char* const direction : {"tx", "rx"}) {
        Minimal::addDriver(std::string("channel.1.") + direction + ".rf.frequency");
    }
    FrequencyHandlerModule* module = nullptr;
    void* broker = nullptr;
    void* record = nullptr;
    static unsigned long heard = 0;
    IFrequencyObserver observer{&heard, &hear};
    if (isFailure(FrequencyHandler_Create(1, FrequencyHandlerRfModule, &module)) || !Minimal::runPhase(11) ||
        isFailure(CInterfaceBroker_GetInstance(&broker)) ||
        isFailure(CInterfaceBroker_GetInterface(broker, "IFrequencyHandler_Tx_1", &record))) {
        return 2;
    }
    const auto* const handler = static_cast<const FrequencyHandlerCStruct*>(record);
    static_cast<void>(handler->registerObserver(handler->handler, &observer));
    static_cast<void>(FrequencyHandler_Tune(module, FrequencyHandlerTx, 7442000));
    FrequencyHandler_Destroy(module);
    return heard == 7442000 ? 0 : 3;
}
