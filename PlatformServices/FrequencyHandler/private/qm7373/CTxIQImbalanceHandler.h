#ifndef FREQUENCYHANDLER_PRIVATE_QM7373_CTXIQIMBALANCEHANDLER_H
#define FREQUENCYHANDLER_PRIVATE_QM7373_CTXIQIMBALANCEHANDLER_H

#include "CCalibrationHandler.h"
#include "CModuleManager_c.h"
#include "DriverLayer.h"
#include "ITemperatureHandler_c.h"
#include "ITxIQImbalanceHandler.h"

#include <array>
#include <cstddef>
#include <cstdint>

/**
 * Keeps the transmitter of one radio channel free of IQ imbalance: whenever the temperature changes it writes
 * DC offset (I and Q), quadrature gain and quadrature phase corrections, interpolated from temperature
 * tables, to the transmit DSP.
 *
 * It reaches the platform through its flat functions only. Once initialised, an object must live as long as
 * the platform may call it: there is no way to shut it down, and its destructor unregisters nothing.
 */
class RADIO_CLASS CTxIQImbalanceHandler : public ITxIQImbalanceHandler {
public:
    /** Registers nothing yet. */
    explicit CTxIQImbalanceHandler(unsigned long channel);
    ~CTxIQImbalanceHandler() override;

    /**
     * Registers module 83000 + channel, its callback for phase 11, and the interface. What was registered
     * before a failure stays. Returns 0; 0x8005 when the module was refused, 0x8000 when callback or
     * interface was.
     */
    EAFResult initialize();

    /**
     * Writes the four corrections for the temperature last notified (0 before that), in a fixed order. A
     * correction whose table gives nothing is passed over. Returns 0; 0x8000, and writes nothing more, when a
     * driver is missing or a write failed.
     */
    EAFResult doImbalanceCompensation() override;
    EAFResult onTxFrequencyChanged(unsigned long txFrequency) override;

    // The test operations do nothing and return 0: they neither keep their argument nor write through it.
    EAFResult testSetIQCompensationBar(unsigned int bar) override;
    EAFResult testGetIQCompensationBar(unsigned int* bar) override;
    EAFResult testSetIQMode(EIQMode mode) override;
    EAFResult testGetIQMode(EIQMode* mode) override;
    EAFResult testSetSimulatorMode(ESimulatorMode mode) override;
    EAFResult testGetSimulatorMode(ESimulatorMode* mode) override;
    EAFResult testGetAdaptiveIQCompEnabled(unsigned int* enabled) override;

    /**
     * The module manager's callback: in phase 11 it finds drivers and tables and subscribes to the
     * temperature service. Returns 0; 0x8000 at the first thing that fails; 0x801C when `pThis` is null.
     */
    static EAFResult onPhaseActivation(void* pThis, unsigned long phase, ECallbackPriority priority);
    /** The temperature service's callback, with a temperature in degrees Celsius. */
    static void notifyTemperature(void* pThis, int temperature);

private:
    /** One of the four compensations: its names, and the members that hold what was found. */
    struct Compensation {
        /** What follows "channel.N." */
        const char* driverName;
        /** What follows "Channel.N." */
        const char* tableName;
        /** The driver as messages call it. */
        const char* shownName;
        DriverInterface* CTxIQImbalanceHandler::*driver;
        CalibrationTableHandle CTxIQImbalanceHandler::*table;
        /** True: the driver is called with the address of its record in place of its context. */
        bool passesRecord;
    };
    static constexpr std::size_t compensationCount = 4;
    static const std::array<Compensation, compensationCount> s_compensations;

    EAFResult registerModule();
    EAFResult registerInterface();
    EAFResult bind();
    EAFResult bindDrivers();
    EAFResult fetchTables();
    EAFResult subscribe();
    EAFResult compensate();

    std::uint32_t m_channel;
    ITemperatureObserver m_temperatureObserver{};
    std::int32_t m_temperature = 0;
    CalibrationTableHandle m_dcITable = nullptr;
    CalibrationTableHandle m_dcQTable = nullptr;
    CalibrationTableHandle m_gainOffsetTable = nullptr;
    CalibrationTableHandle m_phaseOffsetTable = nullptr;
    DriverInterface* pTxDcICompensationDriver = nullptr;
    DriverInterface* pTxDcQCompensationDriver = nullptr;
    DriverInterface* pTxGainOffsetCompensationDriver = nullptr;
    DriverInterface* pTxPhaseOffsetCompensationDriver = nullptr;
    ModuleCallbackRecord m_moduleCallbackRecord{};
};

#endif
