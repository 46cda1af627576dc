#ifndef RADIO_CALIBRATION_CALIBRATIONBENCH_H
#define RADIO_CALIBRATION_CALIBRATIONBENCH_H

#include "devices/Hardware.h"
#include "radio/session/RadioUnit.h"

#include <chrono>
#include <functional>
#include <optional>

namespace Radio::Calibration {

/** What a person at the bench has said since the last question. */
struct PersonsWord {
    /** The temperature that is waited for is there. */
    bool isThere = false;
    /** It is this one, in degrees Celsius; nothing: the one that was asked for. */
    std::optional<int> degrees{};
    /** Nobody will say anything any more. */
    bool isGone = false;
};

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
    /** By which it is told how long a temperature takes. */
    std::function<std::chrono::steady_clock::time_point()> now{&std::chrono::steady_clock::now};
    /** What a person says, where nobody else knows the temperature; empty: there is none. */
    std::function<PersonsWord()> listen{};
};

/** That of real hardware, which must outlive it and has its sensor read from now on. */
inline CalibrationBench benchOf(Devices::Hardware& hardware) {
    hardware.startSensor();
    return {backingsOf(&hardware),
            [&hardware] { return hardware.readSensor(); },
            [&hardware] { return hardware.poll(); },
            &std::chrono::steady_clock::now,
            {}};
}

} // namespace Radio::Calibration

#endif
