#ifndef FREQUENCYHANDLER_PRIVATE_LOCANCELLATION_H
#define FREQUENCYHANDLER_PRIVATE_LOCANCELLATION_H

#include "CCalibrationHandler.h"
#include "DriverLookup.h"
#include "ILoCancellation.h"
#include "OrbiTrace.h"

#include <string>

/**
 * Cancels the LO leakage of one radio channel's transmitter with two correction values, one for the I and one
 * for the Q branch of the mixer (or of the coarse DC adjustment in baseband), taken from tables over
 * frequency and temperature or found by a search against the power detector.
 *
 * Owned by the frequency module. Drivers and tables belong to the platform. The operations of one object must
 * not overlap; a calibration blocks its thread.
 */
class RADIO_CLASS LoCancellation : public virtual ILoCancellation {
public:
    /** Makes no call to the platform. */
    explicit LoCancellation(unsigned int channel);
    /** Withdraws the object from the broker. */
    ~LoCancellation() override;

    /** Publishes the object as "ILoCancellation_" + channel. Returns 0; 0x8000 when the broker refused it. */
    EAFResult initialize();

    EAFResult onModuleInit() override;
    EAFResult setLoCancellation(unsigned int frequency, int temperature) override;
    EAFResult calibrateLoCancellation(int iLow, int iHigh, int qLow, int qHigh, double shrinkFactor,
                                      int minDelta, unsigned int maxIterations, unsigned int settleTimeMs,
                                      int* calibratedI, int* calibratedQ, int* maxDelta,
                                      unsigned int* iterations, bool useHighDetector) override;

    /**
     * Writes both corrections, I first, in units of the drivers. A missing driver is passed over.
     * Returns 0; 0x8000 at the first write that fails.
     */
    EAFResult setIQ(int i, int q);

private:
    enum class Bound { preferred, alternative, none };

    const std::string& nameInterface();
    EAFResult bind();
    Bound bindDriver(const RL::FrequencyHandler::DriverLookup& lookup, const char* preferred,
                     const char* alternative, DriverInterface*& driver) const;
    EAFResult bindDetectors(const RL::FrequencyHandler::DriverLookup& lookup);
    void fetchTable(const char* branch, CalibrationTableHandle& table);
    int correction(const char* branch, CalibrationTableHandle table, unsigned int frequency,
                   int temperature) const;
    [[gnu::cold]] void tellFailedLookup(const char* branch, ECHResult code) const;
    EAFResult write(int i, int q) const;
    [[gnu::cold]] EAFResult tellFailedWriteOfI(EDriverResult code) const;
    [[gnu::cold]] EAFResult tellFailedWriteOfQ(EDriverResult code) const;
    EAFResult readDetector(bool useHighDetector, int& reading) const;

    static OrbiTrace m_trace;

    DriverInterface* m_mixerIDriver = nullptr;
    DriverInterface* m_mixerQDriver = nullptr;
    DriverInterface* m_detectorDriver = nullptr;
    DriverInterface* m_highDetectorDriver = nullptr;
    CalibrationTableHandle m_tableI = nullptr;
    CalibrationTableHandle m_tableQ = nullptr;
    bool m_useLoCancellationTables = true;
    unsigned int m_channel;
};

#endif
