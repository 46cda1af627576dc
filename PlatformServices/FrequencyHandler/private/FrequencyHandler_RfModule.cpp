#include "FrequencyHandler_RfModule.h"

#include "DriverLookup.h"
#include "Guard.h"
#include "Refusal.h"
#include "Trace.h"

namespace RL::FrequencyHandler::RfModule {

FrequencyHandler::FrequencyHandler(const std::string& name, int channel)
    : Common::FrequencyHandler(name, static_cast<std::uint32_t>(channel)),
      m_direction(name) {}

FrequencyHandler::~FrequencyHandler() = default;

EAFResult FrequencyHandler::onModuleInit() {
    return guarded<m_trace>("onModuleInit", [this] {
        const DriverLookup lookup;
        if (!lookup.hasDriverLayer()) {
            FH_TRACE(m_trace, TraceCode::error, "Unable to get DriverLayer Interface");
            return ResultFailed;
        }
        const std::string driverName = driverPrefix() + "rf.frequency";
        const DriverLookupResult result = lookup.find(driverName, NeededOperation::write, rfFrequencyDriver);
        if (!result.complete) {
            // The driver layer's code is the level, also when it is a success that came with an incomplete
            // record.
            FH_TRACE(m_trace, result.code, "%s failed to get driver interface [%s] (EDriverResult = 0x%x)",
                     "onModuleInit", driverName.c_str(), static_cast<unsigned>(result.code));
            return ResultFailed;
        }
        return ResultOk;
    });
}

EAFResult FrequencyHandler::getVariablesFromDatabase() {
    return ResultOk;
}

EAFResult FrequencyHandler::writeFrequencyToHW(unsigned long frequency) {
    const auto carrier = static_cast<std::int32_t>(frequency);
    FH_TRACE(m_trace, TraceCode::information, "Write frequency to HW %ld for direction %s",
             static_cast<long>(carrier), m_direction.c_str());

    if (!canWrite(rfFrequencyDriver)) {
        return tellMissingDriver();
    }
    return guardedWrite<m_trace>(this, [this, carrier] {
        const EDriverResult code = rfFrequencyDriver->write(rfFrequencyDriver->context, carrier);
        return isSuccess(code) ? ResultOk : tellFailedWrite(code);
    });
}

/** Deliberately a success, and told at the information level: a radio without this driver goes on to keep the
 * carrier and to tell its observers. */
EAFResult FrequencyHandler::tellMissingDriver() const {
    FH_TRACE(m_trace, TraceCode::information, "Unable to write to rfFrequencyDriver for direction %s",
             m_direction.c_str());
    notWritten(this);
    return ResultOk;
}

EAFResult FrequencyHandler::tellFailedWrite(EDriverResult code) const {
    FH_TRACE(m_trace, code, "Write to driver failed for channel.%d.%s.rf.frequency (EDriverResult = 0x%x)",
             channelNumber(), m_direction.c_str(), static_cast<unsigned>(code));
    return refused(this, code);
}

} // namespace RL::FrequencyHandler::RfModule
