#ifndef FREQUENCYHANDLER_INTERFACE_ITXIQIMBALANCEHANDLER_H
#define FREQUENCYHANDLER_INTERFACE_ITXIQIMBALANCEHANDLER_H

#include "Handshake.h"
#include "IInterface.h"
#include "ResultCode.h"

/** How the IQ compensation of a transmitter is run; what each number means is the test equipment's own. */
enum EIQMode : int32_t {};
/** How a transmitter simulates an impairment; what each number means is the test equipment's own. */
enum ESimulatorMode : int32_t {};

/**
 * The compensation of the transmit IQ imbalance of one radio channel, registered in the broker as
 * "ITxIQImbalanceHandler", followed by "_" and the channel number when that is not 0.
 *
 * The operations of one object must not overlap: nothing is locked. Each returns 0 or a failing code.
 */
class RADIO_CLASS ITxIQImbalanceHandler : public IInterface {
public:
    ~ITxIQImbalanceHandler() override = default;

    /** Writes the four corrections for the temperature last heard of. */
    virtual EAFResult doImbalanceCompensation() = 0;
    /** The same; the corrections do not depend on the carrier, in kHz. */
    virtual EAFResult onTxFrequencyChanged(unsigned long txFrequency) = 0;

    virtual EAFResult testSetIQCompensationBar(unsigned int bar) = 0;
    virtual EAFResult testGetIQCompensationBar(unsigned int* bar) = 0;
    virtual EAFResult testSetIQMode(EIQMode mode) = 0;
    virtual EAFResult testGetIQMode(EIQMode* mode) = 0;
    virtual EAFResult testSetSimulatorMode(ESimulatorMode mode) = 0;
    virtual EAFResult testGetSimulatorMode(ESimulatorMode* mode) = 0;
    virtual EAFResult testGetAdaptiveIQCompEnabled(unsigned int* enabled) = 0;
};

#endif
