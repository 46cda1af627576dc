// A plug-in with a radio: the library and its platform are loaded with it and belong to it alone.

#include "FrequencyHandler.h"

extern "C" RADIO_API int tuneOnce();
int tuneOnce() {
    auto* const module = new ::FrequencyHandler(1, ::FrequencyHandler::RfModule);
    for (const unsigned long phase : {11UL, 5UL, 20UL}) {
        static_cast<void>(module->onPhaseActivation(phase, ECallbackPriority{3}));
    }
    const int code = module->setTxFrequency(7442000);
    delete module; // NOLINT(cppcoreguidelines-owning-memory): as a platform does
    return code;
}
