#include "FrequencyHandler_c.h"

#include "FrequencyHandler.h"
#include "FrequencyHandler_Common.h"
#include "Guard.h"
#include "Refusal.h"

#include <array>
#include <cstddef>
#include <memory>

namespace Common = RL::FrequencyHandler::Common;
using RL::FrequencyHandler::RefusalHeard;

struct FrequencyHandlerModule {
    FrequencyHandlerModule(std::int32_t channel, FrequencyHandler::FrequencyHandlerType type)
        : handler(static_cast<std::uint32_t>(channel), type) {}

    /** Null: it has no handlers, or cannot be made. */
    static FrequencyHandlerModule* make(std::int32_t channel, FrequencyHandler::FrequencyHandlerType type) {
        std::unique_ptr<FrequencyHandlerModule> module;
        static_cast<void>(
            RL::FrequencyHandler::guarded<FrequencyHandler::m_trace>("FrequencyHandler_Create", [&] {
                module = std::make_unique<FrequencyHandlerModule>(channel, type);
                return ResultOk;
            }));
        return module != nullptr && module->direction(FrequencyHandlerTx) != nullptr ? module.release()
                                                                                     : nullptr;
    }

    /** What hears of refusals; null: the module has no handlers. */
    const Common::FrequencyHandler* direction(std::size_t index) const {
        return (index == FrequencyHandlerTx ? handler.m_pTxHandler : handler.m_pRxHandler).get();
    }

    FrequencyHandler handler;
    std::array<FrequencyHandlerTuning, 2> tunings{};
    /** How many changes of each direction were begun. */
    std::array<std::uint32_t, 2> changes{};
};

namespace {

bool isDirection(std::int32_t direction) {
    return direction == FrequencyHandlerTx || direction == FrequencyHandlerRx;
}

} // namespace

const char FREQUENCYHANDLER_HANDSHAKE = 0;

uint32_t FrequencyHandler_GetVersion(void) {
    return FREQUENCYHANDLER_VERSION;
}

EAFResult FrequencyHandler_Create(int32_t channel, int32_t type, FrequencyHandlerModule** module) {
    if (module == nullptr) {
        return ResultFailed;
    }
    *module =
        FrequencyHandlerModule::make(channel, static_cast<FrequencyHandler::FrequencyHandlerType>(type));
    return *module != nullptr ? ResultOk : ResultFailed;
}

void FrequencyHandler_Destroy(FrequencyHandlerModule* module) {
    delete module; // NOLINT(cppcoreguidelines-owning-memory): C owns it
}

EAFResult FrequencyHandler_Tune(FrequencyHandlerModule* module, int32_t direction, uint32_t frequency) {
    if (module == nullptr || !isDirection(direction)) {
        return ResultFailed;
    }
    const auto index = static_cast<std::size_t>(direction);
    const std::uint32_t change = ++module->changes.at(index);
    const RefusalHeard refusal(module->direction(index));
    const EAFResult result = direction == FrequencyHandlerTx ? module->handler.setTxFrequency(frequency)
                                                             : module->handler.setRxFrequency(frequency);
    // What an observer changed meanwhile came after this one, and is what the hardware has.
    if (module->changes.at(index) == change) {
        module->tunings.at(index) = {frequency, refusal.code() == 0 ? ResultOk : ResultFailed, refusal.code(),
                                     refusal.isWritten() ? 1 : 0};
    }
    return result;
}

EAFResult FrequencyHandler_GetTuning(const FrequencyHandlerModule* module, int32_t direction,
                                     FrequencyHandlerTuning* tuning) {
    if (module == nullptr || tuning == nullptr || !isDirection(direction)) {
        return ResultFailed;
    }
    *tuning = module->tunings.at(static_cast<std::size_t>(direction));
    return ResultOk;
}
