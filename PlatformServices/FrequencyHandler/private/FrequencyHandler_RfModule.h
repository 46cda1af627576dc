#ifndef FREQUENCYHANDLER_PRIVATE_FREQUENCYHANDLER_RFMODULE_H
#define FREQUENCYHANDLER_PRIVATE_FREQUENCYHANDLER_RFMODULE_H

#include "DriverLayer.h"
#include "FrequencyHandler_Common.h"

namespace RL::FrequencyHandler::RfModule {

/**
 * The RF module takes the wanted carrier as it is: each direction has one driver, to which the carrier is
 * written unchanged, in kHz.
 */
class RADIO_CLASS FrequencyHandler : public Common::FrequencyHandler {
public:
    /** Looks nothing up yet. */
    FrequencyHandler(const std::string& name, int channel);
    ~FrequencyHandler() override;

    /**
     * Finds the driver "channel.N.tx.rf.frequency" (or rx). May be called again.
     * Returns 0; 0x8000 without a driver layer or without a driver that has context and write.
     */
    EAFResult onModuleInit() override;
    /** The RF module reads no variables: returns 0. */
    EAFResult getVariablesFromDatabase() override;
    /**
     * Writes the carrier, in kHz, to the driver. Returns 0, also when there is no driver to write to; 0x8000
     * when the driver failed.
     */
    EAFResult writeFrequencyToHW(unsigned long frequency) override;

private:
    [[gnu::cold]] EAFResult tellMissingDriver() const;
    [[gnu::cold]] EAFResult tellFailedWrite(EDriverResult code) const;

    DriverInterface* rfFrequencyDriver = nullptr;
    std::string m_direction;
};

} // namespace RL::FrequencyHandler::RfModule

#endif
