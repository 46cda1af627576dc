#ifndef FREQUENCYHANDLER_INTERFACE_ILOCANCELLATION_H
#define FREQUENCYHANDLER_INTERFACE_ILOCANCELLATION_H

#include "Handshake.h"
#include "IInterface.h"
#include "ResultCode.h"

/**
 * The canceller of the transmit LO leakage of one radio channel, registered in the broker as
 * "ILoCancellation_" + channel. Owned by the frequency module of the channel. The operations of one object
 * must not overlap.
 */
class RADIO_CLASS ILoCancellation : public virtual IInterface {
public:
    ~ILoCancellation() override = default;

    /** Finds drivers and tables; called by the frequency module. Returns 0; 0x8000 when a driver is missing.
     */
    virtual EAFResult onModuleInit() = 0;

    /**
     * Writes the calibrated correction for a transmit carrier in kHz and a temperature in degrees Celsius.
     * Returns 0, also when the tables gave nothing; 0x8000 when a write failed.
     */
    virtual EAFResult setLoCancellation(unsigned int frequency, int temperature) = 0;

    /**
     * Searches, on the live transmitter, for the pair of I and Q corrections with the least detector reading,
     * and leaves it set. Blocks the calling thread for at least 4 x `settleTimeMs` per iteration.
     *
     * `iLow` to `iHigh` and `qLow` to `qHigh` are the ranges searched, in units of the drivers.
     * `shrinkFactor`, between 0 and 1, is the fraction of each range that an iteration keeps. The search ends
     * when the wider range is at most `minDelta`, or when `*iterations` reaches `maxIterations`; at least one
     * iteration is run. `settleTimeMs` is the wait, in milliseconds, between a write and its reading.
     * `useHighDetector` selects the detector of the high range.
     *
     * On success `*calibratedI` and `*calibratedQ` hold the result. `*maxDelta` is the wider range after the
     * last complete iteration. `*iterations` is counted up from what the caller put there.
     *
     * Returns 0; 0x8000 when a write or a reading failed, which leaves the hardware at the values last tried,
     * and `*calibratedI` and `*calibratedQ` as they were, unless it was the result that could not be written:
     * then they hold it. 0x8000 also when one of the four pointers is null; then nothing is tried.
     */
    virtual EAFResult calibrateLoCancellation(int iLow, int iHigh, int qLow, int qHigh, double shrinkFactor,
                                              int minDelta, unsigned int maxIterations,
                                              unsigned int settleTimeMs, int* calibratedI, int* calibratedQ,
                                              int* maxDelta, unsigned int* iterations,
                                              bool useHighDetector) = 0;
};

#endif
