#include "FrequencyHandler_Rau.h"

#include "Guard.h"
#include "InterfaceBroker.h"
#include "Refusal.h"
#include "Trace.h"

#include <string_view>

namespace RL::FrequencyHandler::Rau {

namespace {

std::string rauInterfaceName(std::int32_t channel) {
    return channel == 0 ? "IRauHandler" : "IRauHandler_" + std::to_string(channel);
}

} // namespace

FrequencyHandler::FrequencyHandler(const std::string& name, int channel)
    : Common::FrequencyHandler(name, static_cast<std::uint32_t>(channel)),
      m_direction(name),
      m_channel(channel) {}

FrequencyHandler::~FrequencyHandler() = default;

EAFResult FrequencyHandler::onModuleInit() {
    return guarded<m_trace>("onModuleInit", [this] {
        const std::string name = rauInterfaceName(m_channel);
        m_pRauHandler = InterfaceBroker::getInstance().getInterface<IRauHandler>(name);
        if (m_pRauHandler == nullptr) {
            tellUnknown(name);
            return ResultFailed;
        }
        return ResultOk;
    });
}

/** Deliberately written unlike every other message: at level 1 as it stands, whatever the threshold, and
 * never closed with endLogMsg. */
void FrequencyHandler::tellUnknown(const std::string& rau) {
    constexpr OrbiTraceLevel unmappedLevel{1};
    try {
        m_trace.beginLogMsg(unmappedLevel, __FILE__, __LINE__)
            << "onModuleInit"
            << "(): Error getting interface to " << rau << std::endl;
    } catch (...) {
        Trace::lose();
    }
}

EAFResult FrequencyHandler::getVariablesFromDatabase() {
    return ResultOk;
}

EAFResult FrequencyHandler::writeFrequencyToHW(unsigned long frequency) {
    if (m_pRauHandler == nullptr) {
        return tellMissingRau();
    }
    return guardedWrite<m_trace>(this, [this, frequency] {
        const auto carrier = static_cast<std::uint32_t>(frequency);
        const EAFResult code = std::string_view(m_direction) == "Rx"
                                   ? m_pRauHandler->setRxRadioFrequency(carrier)
                                   : m_pRauHandler->setTxRadioFrequency(carrier);
        return isSuccess(code) ? ResultOk : refused(this, code);
    });
}

EAFResult FrequencyHandler::tellMissingRau() const {
    FH_TRACE(m_trace, TraceCode::error, "writeFrequencyToHW called without IRauHandler for direction %s",
             m_direction.c_str());
    return refused(this);
}

} // namespace RL::FrequencyHandler::Rau
