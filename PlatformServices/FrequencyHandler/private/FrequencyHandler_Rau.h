#ifndef FREQUENCYHANDLER_PRIVATE_FREQUENCYHANDLER_RAU_H
#define FREQUENCYHANDLER_PRIVATE_FREQUENCYHANDLER_RAU_H

#include "FrequencyHandler_Common.h"
#include "IRauHandler.h"

namespace RL::FrequencyHandler::Rau {

/** The synthesisers of a remote radio unit belong to another service: each carrier is passed on to it. */
class RADIO_CLASS FrequencyHandler : public Common::FrequencyHandler {
public:
    /** Looks nothing up yet. */
    FrequencyHandler(const std::string& name, int channel);
    ~FrequencyHandler() override;

    /**
     * Finds "IRauHandler", followed by "_" and the channel when that is not 0. May be called again.
     * Returns 0; 0x8000 when there is no such interface.
     */
    EAFResult onModuleInit() override;
    /** The RAU handler reads no variables: returns 0. */
    EAFResult getVariablesFromDatabase() override;
    /**
     * Passes the carrier, in kHz, to the RAU: as the receive carrier when the direction is exactly "Rx",
     * otherwise as the transmit carrier. Returns 0; 0x8000 when the RAU failed or was never found.
     */
    EAFResult writeFrequencyToHW(unsigned long frequency) override;

private:
    static void tellUnknown(const std::string& rau);
    [[gnu::cold]] EAFResult tellMissingRau() const;

    std::string m_direction;
    std::int32_t m_channel;
    IRauHandler* m_pRauHandler = nullptr;
};

} // namespace RL::FrequencyHandler::Rau

#endif
