// The process of a radio with two channels of RF modules: what is needed is put there, the modules are made and
// driven through their phases, and both carriers are set.
#include "FrequencyHandler_c.h"
#include "MinimalPlatform.h"

#include <cstdio>

namespace {

bool bringUp(std::int32_t channel, FrequencyHandlerModule*& module) {
    for (const char* const direction : {"tx", "rx"}) {
        Minimal::addDriver("channel." + std::to_string(channel) + "." + direction + ".rf.frequency");
    }
    return isSuccess(FrequencyHandler_Create(channel, FrequencyHandlerRfModule, &module));
}

/** Prints what became of a carrier. */
bool tune(FrequencyHandlerModule* module, std::int32_t direction, std::uint32_t kHz) {
    FrequencyHandlerTuning tuning{};
    const bool isTuned = isSuccess(FrequencyHandler_Tune(module, direction, kHz)) &&
                         isSuccess(FrequencyHandler_GetTuning(module, direction, &tuning)) &&
                         isSuccess(tuning.result) && tuning.written != 0;
    const char* const otherwise = isFailure(tuning.result) ? "refused" : "there is nothing to write to";
    std::printf("%u kHz: %s (0x%x)\n", kHz, isTuned ? "taken" : otherwise, static_cast<unsigned>(tuning.code));
    return isTuned;
}

} // namespace

int main() {
    Minimal::publishServices();
    FrequencyHandlerModule* first = nullptr;
    FrequencyHandlerModule* second = nullptr;
    bool isGood = bringUp(1, first) && bringUp(2, second);
    for (const unsigned long phase : {11UL, 5UL, 20UL}) {
        isGood = isGood && Minimal::runPhase(phase);
    }
    isGood = isGood && tune(first, FrequencyHandlerTx, 7442000) && tune(first, FrequencyHandlerRx, 7603000) &&
             tune(second, FrequencyHandlerTx, 7484000) && tune(second, FrequencyHandlerRx, 7645000);
    for (const auto& [name, driver] : Minimal::drivers()) {
        std::printf("%s = %d\n", name.c_str(), driver.value);
    }
    FrequencyHandler_Destroy(second);
    FrequencyHandler_Destroy(first);
    return isGood ? 0 : 1;
}
