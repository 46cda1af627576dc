// Stands for the platform process: the stand-alone platform, one radio channel, and the component.

#include "CarrierLog.h"
#include "FrequencyHandler.h"
#include "standalone/Platform.h"

#include <cstdlib>
#include <iostream>

int main() {
    Standalone::Platform platform;
    platform.drivers().add("channel.1.tx.rf.frequency");
    platform.drivers().add("channel.1.rx.rf.frequency");

    FrequencyHandler module(1, FrequencyHandler::RfModule);
    CarrierLog log;
    for (const unsigned long phase : {11UL, 5UL, 20UL}) {
        if (!platform.modules().run(phase).succeeded()) {
            std::cerr << "phase " << phase << " failed\n";
            return EXIT_FAILURE;
        }
    }
    if (!log.subscribe("IFrequencyHandler_Tx_1")) {
        std::cerr << "there is no IFrequencyHandler_Tx_1\n";
        return EXIT_FAILURE;
    }
    module.setTxFrequency(7442000);
    module.setTxFrequency(7470000);
    return EXIT_SUCCESS;
}
