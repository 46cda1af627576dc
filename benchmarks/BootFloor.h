#ifndef BENCHMARKS_BOOTFLOOR_H
#define BENCHMARKS_BOOTFLOOR_H

#include "CCalibrationHandler.h"
#include "CModuleManager.h"
#include "DriverLayer.h"
#include "IInterface.h"
#include "ITemperatureHandler_c.h"

#include <array>
#include <cstdint>
#include <string>

namespace Benchmarks {

/** What one channel asks the platform for, as it stands before the boot. */
struct BootNames {
    explicit BootNames(int channel);

    /** One direction. */
    struct Direction {
        Direction(int channel, const std::string& name, const std::string& lowerName);

        std::string interface;
        std::string rfLo;
        std::string rfLoInHz;
        std::string intermediate;
        std::string loConfiguration;
        std::string pllConfiguration;
        std::string chargePump;
        std::string factor;
        std::string isRfInverted;
        std::string isBasebandInverted;
        std::string ifBb;
    };

    int channel;
    Direction tx;
    Direction rx;
    std::string canceller;
    std::string mixerI;
    std::string mixerQ;
    std::string detector;
    std::string tableI;
    std::string tableQ;
    std::string driverLayer = "IDriverLayer";
    std::string temperatureHandler = "ITemperatureHandler";
};

/**
 * The floor of a boot: a module of a microwave board with LO in Hz and LO cancellation that makes the calls
 * of the library's, one after the other, with names that are there already, and keeps what it gets.
 */
class BootFloor final : public ModuleInterface {
public:
    explicit BootFloor(const BootNames& names);
    ~BootFloor() override;

    EAFResult onModuleInit() override;
    EAFResult onPhaseModuleStorageObjectsRetreived() override;
    EAFResult onPhasePostFrameformatLoad() override;

private:
    /** What a direction keeps. */
    struct Direction {
        IInterface published;
        std::array<DriverInterface*, 5> drivers{};
        CalibrationTableHandle chargePump = nullptr;
        std::array<std::int32_t, 4> variables{};
    };

    void bind(const BootNames::Direction& names, Direction& direction);
    static void read(const BootNames::Direction& names, Direction& direction);

    const BootNames& m_names;
    Direction m_tx;
    Direction m_rx;
    IInterface m_canceller;
    std::array<DriverInterface*, 3> m_drivers{};
    std::array<CalibrationTableHandle, 2> m_tables{};
    ITemperatureObserver m_observer;
};

} // namespace Benchmarks

#endif
