#ifndef RADIO_CALIBRATION_CALIBRATIONBENCH_H
#define RADIO_CALIBRATION_CALIBRATIONBENCH_H

#include "devices/Hardware.h"
#include "radio/session/RadioUnit.h"

#include <functional>
#include <optional>

namespace Radio::Calibration {

/** A real radio, as far as a calibration needs it. */
struct CalibrationBench {
    /** What stands behind its drivers. */
    Backings backings;
    /** The temperature in whole degrees Celsius, read now; nothing when the sensor does not give it. */
    std::function<std::optional<int>()> sense;
    /**
     * The temperature, if the sensor has read it since the last call. Asked every now and then on the thread
     * of the calibration, between two accesses to hardware.
     */
    std::function<std::optional<int>()> poll;
};

/** That of real hardware, which must outlive it and has its sensor read from now on. */
inline CalibrationBench benchOf(Devices::Hardware& hardware) {
    hardware.startSensor();
    return {backingsOf(&hardware), [&hardware] { return hardware.readSensor(); },
            [&hardware] { return hardware.poll(); }};
}

} // namespace Radio::Calibration

#endif
