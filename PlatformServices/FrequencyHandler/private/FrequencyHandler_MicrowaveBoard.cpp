#include "FrequencyHandler_MicrowaveBoard.h"

#include "Guard.h"
#include "Refusal.h"
#include "Trace.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace RL::FrequencyHandler::MicrowaveBoard {

using FrequencyPlan::magnitude;
using FrequencyPlan::word;

namespace {

constexpr const char* chargePumpTableName = "Rf.Pll.Frequency.To.Chargepump.Setting";

/** What stands for the channel-spacing offset when none is found. Not 0: the carrier is raised by it. */
constexpr std::int32_t defaultChannelSpacingOffset = 3000;

/** The DSP hardware whose receiver wants half the channel spacing when the offset array has no entry. */
constexpr std::int32_t hwCodeDspWithHalfSpacing = 3;

/** The DSP receive offset for a channel spacing code. Codes from 300 on deliberately repeat the first five.
 */
struct HalfSpacing {
    std::int32_t channelSpacing;
    std::int32_t dspOffset;
};
constexpr std::array<HalfSpacing, 10> halfSpacings{{
    {50, 25000},
    {100, 50000},
    {150, 75000},
    {200, 100000},
    {250, 125000},
    {300, 25000},
    {350, 50000},
    {400, 75000},
    {450, 100000},
    {600, 125000},
}};

constexpr std::int32_t signedProduct(std::int32_t sign, std::uint32_t value) {
    return static_cast<std::int32_t>(word(sign) * value);
}

/** The bytes of a number, in the same order on any host. */
constexpr std::array<std::uint8_t, 8> leastSignificantFirst(std::uint64_t number) {
    const auto byte = [number](unsigned index) { return static_cast<std::uint8_t>(number >> (8U * index)); };
    return {byte(0), byte(1), byte(2), byte(3), byte(4), byte(5), byte(6), byte(7)};
}

} // namespace

FrequencyHandler::FrequencyHandler(const std::string& name, int channel, bool useIfFrequency,
                                   bool useDspRxFreqOffset, bool useCsOffsetArray, bool loFrequencyInHz)
    : Common::FrequencyHandler(name, word(channel)),
      m_useIfFrequency(useIfFrequency),
      m_useDspRxFreqOffset(useDspRxFreqOffset),
      m_useCsOffsetArray(useCsOffsetArray),
      m_loFrequencyInHz(loFrequencyInHz) {}

FrequencyHandler::~FrequencyHandler() = default;

// Initialisation

EAFResult FrequencyHandler::onModuleInit() {
    return guarded<m_trace>("onModuleInit", [this] {
        const DriverLookup lookup;
        if (lookup.hasDriverLayer() && isFailure(bindDrivers(lookup))) {
            return ResultFailed;
        }
        if (m_chargePumpTableValid) {
            fetchChargePumpTable();
        }
        // With the carrier 0 the LO is the IF itself: the synthesiser starts there, with baseband offset and
        // residue.
        traceIfPll(0);
        return writeIfFrequency(0);
    });
}

EAFResult FrequencyHandler::bindDrivers(const DriverLookup& lookup) {
    const std::string prefix = driverPrefix();

    if (isFailure(
            bindRequiredDriver(lookup, prefix + "rf.lo.frequency", NeededOperation::write, m_rfLoDriver))) {
        return ResultFailed;
    }
    if (m_loFrequencyInHz && isFailure(bindRequiredDriver(lookup, prefix + "rf.lo.frequency.in.hz",
                                                          NeededOperation::writeBuffer, m_rfLoInHzDriver))) {
        return ResultFailed;
    }
    if (!m_useIfFrequency) {
        static_cast<void>(lookup.find(prefix + "if.frequency", NeededOperation::write, m_ifDriver));
    } else if (isFailure(
                   bindRequiredDriver(lookup, prefix + "if.frequency", NeededOperation::write, m_ifDriver))) {
        return ResultFailed;
    }
    if (isFailure(bindPllConfigurationDriver(lookup))) {
        return ResultFailed;
    }
    if (m_useDspRxFreqOffset || m_useCsOffsetArray) {
        return bindRequiredDriver(lookup,
                                  "channel." + std::to_string(channelNumber()) + ".dsp.rx.freq.offset",
                                  NeededOperation::write, m_dspOffsetDriver);
    }
    return ResultOk;
}

EAFResult FrequencyHandler::bindRequiredDriver(const DriverLookup& lookup, const std::string& driverName,
                                               NeededOperation needed, DriverInterface*& driver) {
    const DriverLookupResult result = lookup.find(driverName, needed, driver);
    if (!result.complete) {
        // The driver layer's code is the level, also when it is a success that came with an incomplete
        // record.
        FH_TRACE(m_trace, result.code, "%s failed to get driver interface [%s] (EDriverResult = 0x%x)",
                 "onModuleInit", driverName.c_str(), static_cast<unsigned>(result.code));
        return ResultFailed;
    }
    return ResultOk;
}

EAFResult FrequencyHandler::bindPllConfigurationDriver(const DriverLookup& lookup) {
    const std::string prefix = driverPrefix();
    if (lookup.find(prefix + "rf.lo.config", NeededOperation::write, m_pllConfigurationDriver).complete) {
        // A board with an LO configuration driver has no charge-pump table. It is switched on here and now;
        // what the driver answers is deliberately not looked at.
        static_cast<void>(m_pllConfigurationDriver->write(m_pllConfigurationDriver->context, 1));
        m_chargePumpTableValid = false;
        return ResultOk;
    }
    return bindRequiredDriver(lookup, prefix + "rf.pll.config", NeededOperation::write,
                              m_pllConfigurationDriver);
}

void FrequencyHandler::fetchChargePumpTable() {
    const std::string name = tablePrefix() + chargePumpTableName;
    if (isSuccess(CCalibrationHandler_GetTable(name.c_str(), &m_chargePumpTable))) {
        return;
    }
    if (channelNumber() > 1) {
        FH_TRACE(m_trace, TraceCode::notice, "TODO: %s uses Channel.1 data for now", (name + ".pdb").c_str());
    }
    // Channel 1's table stands in for any channel's own: a deliberate interim choice.
    const std::string fallback = "Channel.1." + m_name + "." + chargePumpTableName + ".Pdb";
    const ECHResult code = CCalibrationHandler_GetTable(fallback.c_str(), &m_chargePumpTable);
    if (isFailure(code)) {
        // The table stays in use all the same, so that every later write reports its failed lookup.
        FH_TRACE(m_trace, TraceCode::error,
                 "Unable to fetch table Channel.%d.%s.Rf.Pll.Frequency.To.Chargepump.Setting.Pdb "
                 "(EDriverResult = 0x%x)",
                 channelNumber(), m_name.c_str(), static_cast<unsigned>(code));
    }
}

// Frequency plan

FrequencyPlan::Parameters FrequencyHandler::plan() const {
    return {m_ifSideband, m_rfSideband, m_ifFrequency, m_mixerMultiplicationFactor, m_ifBb};
}

std::uint32_t FrequencyHandler::calculaterRfLoFrequency(unsigned long frequency) const {
    return FrequencyPlan::rfLoFrequency(static_cast<std::uint32_t>(frequency), plan());
}

std::uint32_t FrequencyHandler::calculateFrequencyStep(unsigned long frequency) const {
    return FrequencyPlan::frequencyStep(static_cast<std::uint32_t>(frequency));
}

std::uint32_t FrequencyHandler::calculateIfPllFrequency(unsigned long frequency) const {
    const auto carrier = static_cast<std::uint32_t>(frequency);
    traceIfPll(carrier);
    return FrequencyPlan::ifPllFrequency(carrier, plan());
}

[[gnu::always_inline]] inline void FrequencyHandler::traceIfPll(std::uint32_t carrier) const {
    FH_TRACE(m_trace, TraceCode::information, "channel.%d.%s.if.pll %lu", channelNumber(), m_name.c_str(),
             static_cast<unsigned long>(FrequencyPlan::ifPllFrequency(carrier, plan())));
}

std::uint64_t FrequencyHandler::calculateRfPllFrequency(unsigned long frequency, bool exact) const {
    if (m_mixerMultiplicationFactor == 0) {
        static_cast<void>(tellZeroFactor());
        return 0;
    }
    return rfPllFrequency(static_cast<std::uint32_t>(frequency), exact);
}

/** Only with a multiplication factor other than 0. */
[[gnu::always_inline]] inline std::uint64_t FrequencyHandler::rfPllFrequency(std::uint32_t frequency,
                                                                             bool exact) const {
    const std::uint64_t rfPll = exact ? FrequencyPlan::exactRfPllFrequency(frequency, plan())
                                      : FrequencyPlan::rfPllFrequency(frequency, plan());
    FH_TRACE(m_trace, TraceCode::information, "channel.%d.%s.rf.pll %llu", channelNumber(), m_name.c_str(),
             static_cast<unsigned long long>(rfPll));
    return rfPll;
}

EAFResult FrequencyHandler::tellZeroFactor() const {
    FH_TRACE(m_trace, TraceCode::error,
             "channel.%d.%s.rf.pll needs a mixer multiplication factor other than 0", channelNumber(),
             m_name.c_str());
    return refused(this);
}

std::uint32_t FrequencyHandler::getBbFrequency() const {
    return FrequencyPlan::bbFrequency(plan());
}

// Hardware write. Its steps are inlined, which takes the instructions of a call off each.

EAFResult FrequencyHandler::writeFrequencyToHW(unsigned long frequency) {
    return guardedWrite<m_trace>(this, [this, frequency] {
        auto carrier = static_cast<std::uint32_t>(frequency);
        std::uint32_t dspOffset = 0;
        if (m_useCsOffsetArray && isRx()) {
            std::int32_t offset = 0;
            if (isFailure(applyChannelSpacingOffset(offset))) {
                return ResultFailed;
            }
            // The default is added like any other offset; only the DSP is told 0 for it. Both are
            // deliberate.
            carrier += word(offset);
        }
        if (m_useDspRxFreqOffset && canWrite(m_dspOffsetDriver) && isRx()) {
            std::int32_t offset = 0;
            if (isFailure(applyHalfSpacingOffset(offset))) {
                return ResultFailed;
            }
            dspOffset = word(offset);
        }
        return writePlan(carrier, dspOffset);
    });
}

/** Programs the synthesisers for the corrected `carrier`; the RF LO is lower by what the DSP shifts. */
[[gnu::always_inline]] inline EAFResult FrequencyHandler::writePlan(std::uint32_t carrier,
                                                                    std::uint32_t dspOffset) {
    traceIfPll(carrier);
    if (m_mixerMultiplicationFactor == 0) {
        return tellZeroFactor();
    }
    const std::uint64_t rfPll = rfPllFrequency(carrier - dspOffset, m_loFrequencyInHz);
    FH_TRACE(m_trace, TraceCode::information, "channel.%d.%s.ifSideband %d", channelNumber(), m_name.c_str(),
             m_ifSideband);
    FH_TRACE(m_trace, TraceCode::information, "channel.%d.%s.rfSideband %d", channelNumber(), m_name.c_str(),
             m_rfSideband);
    FH_TRACE(m_trace, TraceCode::information, "%sIfBb %d", m_name.c_str(), m_ifBb);

    if (isFailure(writeIfFrequency(carrier)) ||
        isFailure(m_loFrequencyInHz ? writeRfLoInHz(rfPll)
                                    : writeRfLoInKHz(static_cast<std::uint32_t>(rfPll)))) {
        return ResultFailed;
    }
    return m_chargePumpTableValid ? writeChargePump(carrier) : ResultOk;
}

EAFResult FrequencyHandler::applyChannelSpacingOffset(std::int32_t& offset) {
    if (isFailure(findChannelSpacingOffset(offset))) {
        return ResultFailed;
    }
    if (offset == 0) {
        offset = defaultChannelSpacingOffset;
    }
    FH_TRACE(m_trace, TraceCode::information, "%s: channelSpacingOffsetkHz=%i, m_rfSideband=%i",
             "writeFrequencyToHW", offset, m_rfSideband);
    if (!canWrite(m_dspOffsetDriver)) {
        return ResultOk;
    }
    return writeDspOffset(
        offset == defaultChannelSpacingOffset ? 0 : static_cast<std::int32_t>(0U - word(offset)));
}

EAFResult FrequencyHandler::findChannelSpacingOffset(std::int32_t& offset) const {
    // The content is live: the size is read once, so that what is checked is what is scanned.
    const std::int32_t* const arraySize = m_csOffsetArraySize.ints();
    const std::int32_t* const array = m_csOffsetArray.ints();
    const std::int32_t entries = arraySize != nullptr ? *arraySize : 0;
    if (arraySize == nullptr || (entries > 0 && array == nullptr)) {
        FH_TRACE(m_trace, TraceCode::error, "channel.%d.rx.rf.frequency.cs.offset.array was not found",
                 channelNumber());
        return refused(this);
    }
    const auto size = static_cast<std::size_t>(std::max(entries, 0));
    for (std::size_t i = 0; i < size; i += 2) {
        if (array[i] != m_channelSpacing) {
            continue;
        }
        if (i + 1 == size) {
            FH_TRACE(m_trace, TraceCode::error,
                     "channel.%d.rx.rf.frequency.cs.offset.array ends inside a pair", channelNumber());
            return refused(this);
        }
        FH_TRACE(m_trace, TraceCode::information, "%s: Array(CS)=%i, Array(Foffset)=%i", "writeFrequencyToHW",
                 array[i], array[i + 1]);
        // The sideband supplies the sign, whatever sign is stored.
        offset = signedProduct(m_rfSideband, magnitude(word(array[i + 1])));
        break;
    }

    const bool mayUseHalfSpacing =
        m_channelSpacing == 125 || m_channelSpacing == 250 || m_channelSpacing == 500;
    const std::int32_t* const hwCode = m_hwCodeDsp.ints();
    if (offset == 0 && hwCode != nullptr && *hwCode == hwCodeDspWithHalfSpacing && mayUseHalfSpacing) {
        offset = signedProduct(m_rfSideband, word(m_channelSpacing) * 1000U >> 1U);
    }
    return ResultOk;
}

EAFResult FrequencyHandler::applyHalfSpacingOffset(std::int32_t& offset) {
    FH_TRACE(m_trace, TraceCode::information, "%s: ChannelSpacing used: = %d", "writeFrequencyToHW",
             m_channelSpacing);
    const auto* const entry =
        std::find_if(halfSpacings.begin(), halfSpacings.end(), [this](const HalfSpacing& candidate) {
            return candidate.channelSpacing == m_channelSpacing;
        });
    if (entry == halfSpacings.end()) {
        FH_TRACE(m_trace, TraceCode::error, "Unhandled channelspacetype %d", m_channelSpacing);
        return refused(this);
    }
    FH_TRACE(m_trace, TraceCode::information, "channel.%d.dsp.rx.freq.offset = %d", channelNumber(),
             entry->dspOffset);
    offset = entry->dspOffset;
    return writeDspOffset(offset);
}

EAFResult FrequencyHandler::writeDspOffset(std::int32_t offset) {
    const EDriverResult code = m_dspOffsetDriver->write(m_dspOffsetDriver->context, offset);
    if (isFailure(code)) {
        FH_TRACE(m_trace, code,
                 "Write to driver failed for channel.%d.dsp.rx.freq.offset (EDriverResult = 0x%x)",
                 channelNumber(), static_cast<unsigned>(code));
        return refused(this, code);
    }
    return ResultOk;
}

[[gnu::always_inline]] inline EAFResult FrequencyHandler::writeIfFrequency(std::uint32_t carrier) {
    if (!m_useIfFrequency || !canWrite(m_ifDriver)) {
        return ResultOk;
    }
    const std::uint32_t ifPll = FrequencyPlan::ifPllFrequency(carrier, plan());
    const EDriverResult code = m_ifDriver->write(m_ifDriver->context, static_cast<std::int32_t>(ifPll));
    if (isFailure(code)) {
        FH_TRACE(m_trace, code,
                 "Write to driver failed for channel.%d.%s.if.frequency (EDriverResult = 0x%x)",
                 channelNumber(), m_name.c_str(), static_cast<unsigned>(code));
        return refused(this, code);
    }
    return ResultOk;
}

inline EAFResult FrequencyHandler::writeRfLoInKHz(std::uint32_t rfPll) {
    if (!canWrite(m_rfLoDriver)) {
        notWritten(this);
        return ResultOk;
    }
    const EDriverResult code = m_rfLoDriver->write(m_rfLoDriver->context, static_cast<std::int32_t>(rfPll));
    if (isFailure(code)) {
        FH_TRACE(m_trace, code,
                 "Write to driver failed for channel.%d.%s.rf.lo.frequency (EDriverResult = 0x%x)",
                 channelNumber(), m_name.c_str(), static_cast<unsigned>(code));
        return refused(this, code);
    }
    return ResultOk;
}

inline EAFResult FrequencyHandler::writeRfLoInHz(std::uint64_t rfPll) {
    if (!canWriteBuffer(m_rfLoInHzDriver)) {
        notWritten(this);
        return ResultOk;
    }
    const std::array<std::uint8_t, 8> bytes = leastSignificantFirst(rfPll);
    const EDriverResult code =
        m_rfLoInHzDriver->writeBuffer(m_rfLoInHzDriver->context, bytes.data(), bytes.size());
    if (isFailure(code)) {
        FH_TRACE(m_trace, code,
                 "Write to driver failed for channel.%d.%s.rf.lo.frequency.in.hz (EDriverResult = 0x%x)",
                 channelNumber(), m_name.c_str(), static_cast<unsigned>(code));
        return refused(this, code);
    }
    return ResultOk;
}

inline EAFResult FrequencyHandler::writeChargePump(std::uint32_t carrier) {
    int setting = 0;
    const ECHResult lookup =
        CCalibrationTable_LinearInterpolate(m_chargePumpTable, static_cast<std::int32_t>(carrier), &setting);
    if (isFailure(lookup)) {
        tellFailedLookup(lookup); // but what the lookup left is written
    }
    if (!canWrite(m_pllConfigurationDriver)) {
        return ResultOk;
    }
    const EDriverResult code = m_pllConfigurationDriver->write(m_pllConfigurationDriver->context, setting);
    if (isFailure(code)) {
        FH_TRACE(m_trace, code,
                 "Unable to write to driver channel.%d.%s.rf.pll.config (EDriverResult = 0x%x)",
                 channelNumber(), m_name.c_str(), static_cast<unsigned>(code));
        return refusedBesides(this, code);
    }
    return ResultOk;
}

void FrequencyHandler::tellFailedLookup(ECHResult code) const {
    FH_TRACE(m_trace, TraceCode::error,
             "Unable to fetch value from table Channel.%d.%s.Rf.Pll.Frequency.To.Chargepump.Setting "
             "(ECHResult = 0x%x)",
             channelNumber(), m_name.c_str(), static_cast<unsigned>(code));
}

} // namespace RL::FrequencyHandler::MicrowaveBoard
