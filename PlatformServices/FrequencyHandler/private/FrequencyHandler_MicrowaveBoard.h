#ifndef FREQUENCYHANDLER_PRIVATE_FREQUENCYHANDLER_MICROWAVEBOARD_H
#define FREQUENCYHANDLER_PRIVATE_FREQUENCYHANDLER_MICROWAVEBOARD_H

#include "CCalibrationHandler.h"
#include "DriverLookup.h"
#include "FrequencyHandler_Common.h"
#include "FrequencyPlan.h"

#include <string_view>

namespace RL::FrequencyHandler::MicrowaveBoard {

/** Where the live content of an int variable lies, as the storage manager said last; null before that. */
class LiveContent {
public:
    /**
     * Asks the storage manager for the content of the variable `name`, and gives its answer. One that
     * succeeds without storing an address leaves the one from before; one that fails leaves none.
     */
    EAFResult find(const std::string& name);
    const std::int32_t* ints() const { return static_cast<const std::int32_t*>(m_address); }

private:
    void* m_address = nullptr;
};

/**
 * The microwave board makes the carrier with two synthesisers, an IF PLL and an RF PLL behind a multiplying
 * mixer. The handler computes their frequencies from a plan whose parameters come from the database, corrects
 * the receive side for the channel spacing, and sets the charge pump of the RF PLL from a calibration table.
 *
 * Drivers, tables and live variable contents belong to the platform.
 */
class RADIO_CLASS FrequencyHandler : public Common::FrequencyHandler {
public:
    /**
     * The four flags tell how the board is built:
     * `useIfFrequency`: it has an IF synthesiser, driven through "if.frequency";
     * `useDspRxFreqOffset`: the DSP shifts the receive side, for most spacings by half of it;
     * `useCsOffsetArray`: the receive side is corrected from an array of offsets per channel spacing;
     * `loFrequencyInHz`: the RF LO is written in Hz, as 64 bits, through "rf.lo.frequency.in.hz".
     */
    FrequencyHandler(const std::string& name, int channel, bool useIfFrequency, bool useDspRxFreqOffset,
                     bool useCsOffsetArray, bool loFrequencyInHz);
    ~FrequencyHandler() override;

    /**
     * Binds the drivers and the charge-pump table and puts the IF synthesiser to its start value. Without a
     * driver layer no driver is bound and that is no failure; nor is a missing table. Returns 0; 0x8000 when
     * a required driver is missing or the start value could not be written.
     */
    EAFResult onModuleInit() override;
    /** Reads the plan's parameters. Returns 0; 0x8000 at the first one that is missing and cannot be done
     * without. */
    EAFResult getVariablesFromDatabase() override;
    /** Reads the baseband offset and, on the receive side, the channel spacing again. Returns 0 or 0x8000. */
    EAFResult getFFVariablesFromDatabase() override;
    /**
     * Programs the board for a carrier in kHz. A driver that is missing is passed over. Returns 0; 0x8000 at
     * the first write that fails, for an unknown channel spacing, and in states that leave nothing sensible
     * to write (no channel-spacing offset array, a multiplication factor of 0). What was written before stays
     * written.
     */
    EAFResult writeFrequencyToHW(unsigned long frequency) override;

    /** The RF LO, in kHz, for a carrier in kHz. */
    std::uint32_t calculaterRfLoFrequency(unsigned long frequency) const;
    /** A frequency in kHz, rounded to whole MHz. */
    std::uint32_t calculateFrequencyStep(unsigned long frequency) const;
    /** The IF PLL, in kHz, for a carrier in kHz. */
    std::uint32_t calculateIfPllFrequency(unsigned long frequency) const;
    /**
     * The RF PLL: in kHz for a carrier in kHz, or, when `exact`, in Hz for the wanted LO in kHz. 0, after an
     * error message, when the multiplication factor is 0.
     */
    std::uint64_t calculateRfPllFrequency(unsigned long frequency, bool exact) const;
    /** The baseband frequency, in kHz. */
    std::uint32_t getBbFrequency() const;

    /**
     * Copies the content of the database variable `name` into `*value`. Returns 0; 0x8000, leaving `*value`
     * as it was, when the variable is missing or has no content.
     */
    EAFResult getStorageVariableByName(const std::string& name, int* value) const;

private:
    FrequencyPlan::Parameters plan() const;
    void traceIfPll(std::uint32_t carrier) const;
    std::uint64_t rfPllFrequency(std::uint32_t frequency, bool exact) const;
    [[gnu::cold]] EAFResult tellZeroFactor() const;
    bool isRx() const { return std::string_view(m_name) == "Rx"; }

    EAFResult bindDrivers(const DriverLookup& lookup);
    static EAFResult bindRequiredDriver(const DriverLookup& lookup, const std::string& driverName,
                                        NeededOperation needed, DriverInterface*& driver);
    EAFResult bindPllConfigurationDriver(const DriverLookup& lookup);
    void fetchChargePumpTable();

    EAFResult readOffsetArrayAddresses();
    EAFResult readChannelSpacing();

    EAFResult applyChannelSpacingOffset(std::int32_t& offset);
    EAFResult findChannelSpacingOffset(std::int32_t& offset) const;
    EAFResult applyHalfSpacingOffset(std::int32_t& offset);
    EAFResult writeDspOffset(std::int32_t offset);
    EAFResult writePlan(std::uint32_t carrier, std::uint32_t dspOffset);
    EAFResult writeIfFrequency(std::uint32_t carrier);
    EAFResult writeRfLoInKHz(std::uint32_t rfPll);
    EAFResult writeRfLoInHz(std::uint64_t rfPll);
    EAFResult writeChargePump(std::uint32_t carrier);
    [[gnu::cold]] void tellFailedLookup(ECHResult code) const;

    std::int32_t m_ifSideband = -1;
    std::int32_t m_rfSideband = -1;
    std::int32_t m_ifFrequency = 0;
    std::int32_t m_mixerMultiplicationFactor = 1;
    std::int32_t m_ifBb = 0;
    LiveContent m_csOffsetArraySize;
    LiveContent m_csOffsetArray;
    LiveContent m_hwCodeDsp;
    DriverInterface* m_rfLoDriver = nullptr;
    DriverInterface* m_rfLoInHzDriver = nullptr;
    DriverInterface* m_ifDriver = nullptr;
    DriverInterface* m_pllConfigurationDriver = nullptr;
    DriverInterface* m_dspOffsetDriver = nullptr;
    CalibrationTableHandle m_chargePumpTable = nullptr;
    bool m_useIfFrequency;
    bool m_chargePumpTableValid = true;
    bool m_useDspRxFreqOffset;
    bool m_useCsOffsetArray;
    bool m_loFrequencyInHz;
    std::int32_t m_channelSpacing = 3000;
};

} // namespace RL::FrequencyHandler::MicrowaveBoard

#endif
