// What both recipes drive: a radio with two channels of RF modules on the minimal platform, which has no locks of its
// own but that of its trace.
#ifndef THREADS_RADIO_H
#define THREADS_RADIO_H

#include "FrequencyHandler_c.h"
#include "IFrequencyHandler.h"
#include "InterfaceBroker.h"
#include "MinimalPlatform.h"

#include <array>
#include <string>

class Radio {
public:
    Radio() {
        Minimal::publishServices();
        for (std::int32_t channel = 1; channel <= 2; ++channel) {
            for (const char* const direction : {"tx", "rx"}) {
                Minimal::addDriver("channel." + std::to_string(channel) + "." + direction + ".rf.frequency");
            }
            m_isUp =
                isSuccess(FrequencyHandler_Create(channel, FrequencyHandlerRfModule, &module(channel))) && m_isUp;
        }
        for (const unsigned long phase : {11UL, 5UL, 20UL}) {
            m_isUp = m_isUp && Minimal::runPhase(phase);
        }
    }
    Radio(const Radio&) = delete;
    Radio& operator=(const Radio&) = delete;
    ~Radio() {
        for (std::int32_t channel = 2; channel >= 1; --channel) {
            FrequencyHandler_Destroy(module(channel));
        }
    }

    bool isUp() const { return m_isUp; }

    /** True: the hardware has the carrier, in kHz. */
    bool tune(std::int32_t channel, std::int32_t direction, std::uint32_t frequency) {
        FrequencyHandlerTuning tuning{};
        return isSuccess(FrequencyHandler_Tune(module(channel), direction, frequency)) &&
               isSuccess(FrequencyHandler_GetTuning(module(channel), direction, &tuning)) && tuning.written != 0;
    }

    /** The transmit carrier of a channel, in kHz, as any component asks for it. */
    unsigned long carrier(std::int32_t channel) const {
        const std::string name = "IFrequencyHandler_Tx_" + std::to_string(channel);
        return InterfaceBroker::getInstance().getInterface<IFrequencyHandler>(name)->getFrequency();
    }

    /** To all channels, in degrees Celsius. */
    void notifyTemperature(int degrees) { Minimal::setTemperature(degrees); }

private:
    FrequencyHandlerModule*& module(std::int32_t channel) {
        return m_modules.at(static_cast<std::size_t>(channel) - 1);
    }

    std::array<FrequencyHandlerModule*, 2> m_modules{};
    bool m_isUp = true;
};

#endif
