#ifndef FREQUENCYHANDLER_PRIVATE_FREQUENCYHANDLER_H
#define FREQUENCYHANDLER_PRIVATE_FREQUENCYHANDLER_H

#include "CModuleManager.h"
#include "FrequencyHandler_Common.h"
#include "ITemperatureHandler_c.h"
#include "LoCancellation.h"
#include "OrbiTrace.h"

#include <array>
#include <cstdint>
#include <memory>

struct FrequencyHandlerModule;

/**
 * The frequency module of one radio channel. The platform creates one for each channel; the module creates
 * the transmit and the receive handler of the board fitted, is driven by the module manager through the
 * start-up phases, passes frequency changes on and keeps the LO-leakage correction in step with carrier and
 * temperature.
 *
 * Phase callbacks, frequency changes and temperature notifications must not overlap: nothing is locked. The
 * platform must have stopped notifying temperatures before it destroys the module.
 */
class RADIO_CLASS FrequencyHandler : public ModuleInterface {
public:
    /** The board fitted. A number outside this list builds no handlers, and the module then answers 0x8000.
     */
    enum FrequencyHandlerType : std::int32_t {
        MicrowaveBoardIf = 0,         ///< microwave board with an IF synthesiser
        RfModule = 1,                 ///< RF module
        MicrowaveBoardDspOffset = 2,  ///< microwave board, receiver offset in the DSP
        MicrowaveBoardHzCsOffset = 3, ///< microwave board, LO in Hz, receiver with offset array
        Rau = 4,                      ///< remote radio unit
        MicrowaveBoardHz = 5,         ///< microwave board, LO in Hz
    };

    /** Builds the handlers of `type` for `channel` and registers the module with the module manager. */
    FrequencyHandler(unsigned long channel, FrequencyHandlerType type);
    /** Unregisters the module, then deletes the transmit handler, the receive handler and the canceller. */
    ~FrequencyHandler() override;

    /**
     * Has the transmit handler, the receive handler and the canceller find their hardware, then subscribes to
     * the temperature service. Returns 0; 0x8000 as soon as one of them fails.
     */
    EAFResult onModuleInit() override;
    /** Has both handlers read their database variables. Returns 0; 0x8000 as soon as one fails. */
    EAFResult onPhaseModuleStorageObjectsRetreived() override;
    /** Has both handlers read again what depends on the frame format. Returns 0; 0x8000 as soon as one fails.
     */
    EAFResult onPhasePostFrameformatLoad() override;

    /**
     * Sets the transmit carrier, in kHz, and re-applies the LO-leakage correction at the temperature last
     * heard of (0 before the first). Returns 0 whether or not the hardware took it; 0x8000 when there is no
     * handler.
     */
    virtual EAFResult setTxFrequency(unsigned long frequency);
    /** Sets the receive carrier, in kHz. Returns as setTxFrequency does. */
    virtual EAFResult setRxFrequency(unsigned long frequency);

    /** Re-applies the LO-leakage correction at `temperature`, in degrees Celsius. */
    void notifyTemperature(int temperature);
    /** The temperature service's way in: `context` is the module; a null one is left alone. */
    static void staticNotifyTemperature(void* context, int temperature);

private:
    friend struct ::FrequencyHandlerModule;
    using DirectionHandler = RL::FrequencyHandler::Common::FrequencyHandler;

    void build(std::int32_t channel, FrequencyHandlerType type);
    bool hasHandlers(const char* operation) const;

    static OrbiTrace m_trace;
    static const std::array<unsigned long, 3> m_pPhaseFilter;

    std::unique_ptr<DirectionHandler> m_pTxHandler;
    std::unique_ptr<DirectionHandler> m_pRxHandler;
    std::unique_ptr<LoCancellation> m_pLoCancellation;
    int m_temperature = 0;
    ITemperatureObserver m_temperatureObserver;
};

#endif
