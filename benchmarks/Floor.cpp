#include "Floor.h"

#include "CCalibrationHandler.h"
#include "InterfaceBroker.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <ostream>

namespace Benchmarks {

namespace FrequencyPlan = RL::FrequencyHandler::FrequencyPlan;

namespace {

constexpr int notice = 0x100;
constexpr int information = 0x800;

/** What is not looked into any further: a message that is wanted where none is, or what did not succeed. */
[[gnu::noinline, gnu::cold]] void unexpected() {
    std::abort();
}

__attribute__((format(printf, 3, 4), noinline, cold)) void write(OrbiTrace& trace, OrbiTraceLevel level,
                                                                 const char* format, ...) {
    std::array<char, 200> text; // NOLINT: filled in a moment
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    trace.beginLogMsg(level, __FILE__, __LINE__) << text.data() << std::endl;
    trace.endLogMsg();
}

std::string lowerCase(const std::string& direction) {
    return direction == "Tx" ? "tx." : "rx.";
}

} // namespace

template <Checks checks>
Floor<checks>::Floor(BenchmarkRadio& radio, const std::string& direction, std::int32_t ifFrequency)
    : m_plan{1, -1, ifFrequency, 2, 0},
      m_channel(radio.options().channels),
      m_direction(direction == "Tx" ? "Tx" : "Rx"),
      m_trace("floor", radio.options().trace),
      m_channelSpacingOffsets(
          radio.platform().variables().find("channel.1.rx.rf.frequency.cs.offset.array")->values().data()),
      m_observer(&radio.observer()),
      m_observers(static_cast<std::size_t>(radio.options().observers), m_observer),
      m_rfFrequency(radio.driver(m_channel, lowerCase(direction) + "rf.frequency")),
      m_rfLo(radio.driver(m_channel, lowerCase(direction) + "rf.lo.frequency")),
      m_rfLoInHz(radio.driver(m_channel, lowerCase(direction) + "rf.lo.frequency.in.hz")),
      m_if(radio.driver(m_channel, lowerCase(direction) + "if.frequency")),
      m_pllConfiguration(radio.driver(m_channel, lowerCase(direction) + "rf.pll.config")),
      m_dspOffset(radio.driver(m_channel, "dsp.rx.freq.offset")),
      m_mixerI(radio.driver(m_channel, "tx.rf.mixer.i")),
      m_mixerQ(radio.driver(m_channel, "tx.rf.mixer.q")),
      m_detector(radio.driver(m_channel, "tx.rf.detector.v")),
      m_compensations{radio.driver(1, "dsp.tx.dc.compensation.i"),
                      radio.driver(1, "dsp.tx.dc.compensation.q"),
                      radio.driver(1, "dsp.tx.quadrature.gain.offset.compensation"),
                      radio.driver(1, "dsp.tx.quadrature.phase.offset.compensation")},
      m_chargePump(radio.table(m_channel, direction + ".Rf.Pll.Frequency.To.Chargepump.Setting")),
      m_tableI(radio.table(m_channel, "Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I")),
      m_tableQ(radio.table(m_channel, "Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q")),
      m_compensationTables{radio.table(1, "Tx.Dsp.Temperature.To.Dc.I.Compensation"),
                           radio.table(1, "Tx.Dsp.Temperature.To.Dc.Q.Compensation"),
                           radio.table(1, "Tx.Dsp.Temperature.To.Gain.Offset.Compensation"),
                           radio.table(1, "Tx.Dsp.Temperature.To.Phase.Offset.Compensation")},
      m_rau(InterfaceBroker::getInstance().getInterface<IRauHandler>("IRauHandler_1")) {}

template <Checks checks>
inline void Floor<checks>::look(bool isGood) {
    if (checks != Checks::none && !isGood) {
        unexpected();
    }
}

template <Checks checks>
template <typename... Arguments>
inline void Floor<checks>::message(int level, const char* format, const Arguments&... arguments) {
    const OrbiTraceLevel mapped = CZulTraceHandler_DmLevel2GtLevel(level);
    const bool isWanted = m_trace.getLevel() >= mapped;
    if constexpr (checks == Checks::demandedAndMessages) {
        if (isWanted) {
            Benchmarks::write(m_trace, mapped, format, arguments...);
        }
    } else {
        look(!isWanted);
        static_cast<void>(format);
        (static_cast<void>(arguments), ...);
    }
}

template <Checks checks>
inline void Floor<checks>::write(const DriverInterface* driver, void* context, std::int32_t value) {
    look(driver != nullptr && driver->write != nullptr);
    look(isSuccess(driver->write(context, value)));
}

template <Checks checks>
inline void Floor<checks>::write(const DriverInterface* driver, std::uint32_t value) {
    look(driver != nullptr);
    write(driver, driver->context, static_cast<std::int32_t>(value));
}

template <Checks checks>
inline void Floor<checks>::accept(std::uint32_t carrier) {
    message(information, "set%sFrequency %u", m_direction, carrier);
    m_carrier = carrier;
}

template <Checks checks>
inline void Floor<checks>::plan(std::uint32_t carrier, std::uint64_t rfPll) {
    message(information, "channel.%d.%s.if.pll %u", m_channel, m_direction,
            FrequencyPlan::ifPllFrequency(carrier, m_plan));
    m_rfPll = rfPll;
    message(information, "channel.%d.%s.rf.pll %llu", m_channel, m_direction,
            static_cast<unsigned long long>(m_rfPll));
    message(information, "channel.%d.%s.ifSideband %d", m_channel, m_direction, m_plan.ifSideband);
    message(information, "channel.%d.%s.rfSideband %d", m_channel, m_direction, m_plan.rfSideband);
    message(information, "%sIfBb %d", m_direction, m_plan.ifBb);
}

template <Checks checks>
inline void Floor<checks>::setChargePump(std::uint32_t carrier) {
    int setting = 0;
    look(isSuccess(
        CCalibrationTable_LinearInterpolate(m_chargePump, static_cast<std::int32_t>(carrier), &setting)));
    write(m_pllConfiguration, static_cast<std::uint32_t>(setting));
}

template <Checks checks>
inline void Floor<checks>::writeLoInHz() {
    const auto byte = [this](unsigned index) { return static_cast<std::uint8_t>(m_rfPll >> (8U * index)); };
    const std::array<std::uint8_t, 8> bytes{byte(0), byte(1), byte(2), byte(3),
                                            byte(4), byte(5), byte(6), byte(7)};
    look(m_rfLoInHz != nullptr && m_rfLoInHz->writeBuffer != nullptr);
    look(isSuccess(m_rfLoInHz->writeBuffer(m_rfLoInHz->context, bytes.data(), bytes.size())));
}

template <Checks checks>
inline void Floor<checks>::tell(Observer<IFrequencyHandler>* observer) {
    look(observer != nullptr);
    observer->onChange(nullptr);
}

template <Checks checks>
void Floor<checks>::setMicrowaveIf(std::uint32_t carrier) {
    accept(carrier);
    plan(carrier, FrequencyPlan::rfPllFrequency(carrier, m_plan));
    write(m_if, FrequencyPlan::ifPllFrequency(carrier, m_plan));
    write(m_rfLo, static_cast<std::uint32_t>(m_rfPll));
    setChargePump(carrier);
    tell(m_observer);
}

template <Checks checks>
void Floor<checks>::setRfModule(std::uint32_t carrier) {
    accept(carrier);
    message(information, "Write frequency to HW %u for direction %s", carrier, m_direction);
    write(m_rfFrequency, carrier);
    tell(m_observer);
}

template <Checks checks>
void Floor<checks>::setMicrowaveDspOffset(std::uint32_t carrier) {
    accept(carrier);
    plan(carrier, FrequencyPlan::rfPllFrequency(carrier, m_plan));
    write(m_rfLo, static_cast<std::uint32_t>(m_rfPll));
    setChargePump(carrier);
    tell(m_observer);
}

template <Checks checks>
void Floor<checks>::setMicrowaveDspOffsetRx(std::uint32_t carrier) {
    constexpr std::uint32_t halfSpacing = 125'000;
    accept(carrier);
    message(information, "writeFrequencyToHW: ChannelSpacing used: = %d", 250);
    message(information, "channel.%d.dsp.rx.freq.offset = %u", m_channel, halfSpacing);
    write(m_dspOffset, halfSpacing);
    plan(carrier, FrequencyPlan::rfPllFrequency(carrier - halfSpacing, m_plan));
    write(m_rfLo, static_cast<std::uint32_t>(m_rfPll));
    setChargePump(carrier);
    tell(m_observer);
}

template <Checks checks>
inline void Floor<checks>::programMicrowaveHz(std::uint32_t carrier) {
    accept(carrier);
    plan(carrier, FrequencyPlan::exactRfPllFrequency(carrier, m_plan));
    writeLoInHz();
    setChargePump(carrier);
}

template <Checks checks>
void Floor<checks>::setMicrowaveHz(std::uint32_t carrier) {
    programMicrowaveHz(carrier);
    tell(m_observer);
}

template <Checks checks>
void Floor<checks>::setMicrowaveHzForMany(std::uint32_t carrier) {
    programMicrowaveHz(carrier);
    for (Observer<IFrequencyHandler>* const observer : m_observers) {
        tell(observer);
    }
}

template <Checks checks>
void Floor<checks>::setMicrowaveHzCsOffsetRx(std::uint32_t carrier) {
    accept(carrier);
    message(information, "writeFrequencyToHW: Array(CS)=%d, Array(Foffset)=%d", m_channelSpacingOffsets[2],
            m_channelSpacingOffsets[3]);
    const auto stored = static_cast<std::uint32_t>(m_channelSpacingOffsets[3]);
    const std::uint32_t magnitude = m_channelSpacingOffsets[3] < 0 ? 0U - stored : stored;
    const std::uint32_t offset = static_cast<std::uint32_t>(m_plan.rfSideband) * magnitude;
    message(information, "writeFrequencyToHW: channelSpacingOffsetkHz=%d, m_rfSideband=%d",
            static_cast<std::int32_t>(offset), m_plan.rfSideband);
    write(m_dspOffset, 0U - offset);
    plan(carrier + offset, FrequencyPlan::exactRfPllFrequency(carrier + offset, m_plan));
    writeLoInHz();
    setChargePump(carrier + offset);
    tell(m_observer);
}

template <Checks checks>
void Floor<checks>::setRauTx(std::uint32_t carrier) {
    accept(carrier);
    look(m_rau != nullptr);
    look(isSuccess(m_rau->setTxRadioFrequency(carrier)));
    tell(m_observer);
}

template <Checks checks>
void Floor<checks>::setRauRx(std::uint32_t carrier) {
    accept(carrier);
    look(m_rau != nullptr);
    look(isSuccess(m_rau->setRxRadioFrequency(carrier)));
    tell(m_observer);
}

template <Checks checks>
void Floor<checks>::correct() {
    const auto carrier = static_cast<std::int32_t>(m_carrier);
    int i = 0;
    int q = 0;
    look(isSuccess(CCalibrationTable_BiLinearInterpolate(m_tableI, carrier, m_temperature, &i)));
    look(isSuccess(CCalibrationTable_BiLinearInterpolate(m_tableQ, carrier, m_temperature, &q)));
    write(m_mixerI, static_cast<std::uint32_t>(i));
    write(m_mixerQ, static_cast<std::uint32_t>(q));
}

template <Checks checks>
void Floor<checks>::setTemperature(int temperature) {
    m_temperature = temperature;
    correct();
    message(information, "notifyTemperature called with temp = %d", m_temperature);
}

template <Checks checks>
void Floor<checks>::compensate(int temperature) {
    m_temperature = temperature;
    message(information, "notifyTemperature called with temp = %d for channel %d", m_temperature, 1);
    // DC I and DC Q are written with the record in place of its context, gain and phase with the context.
    compensateOne(0, m_compensations[0]);
    compensateOne(1, m_compensations[1]);
    compensateOne(2, m_compensations[2]->context);
    compensateOne(3, m_compensations[3]->context);
}

template <Checks checks>
inline void Floor<checks>::compensateOne(std::size_t which, void* context) {
    int value = 0;
    look(isSuccess(CCalibrationTable_LinearInterpolate(m_compensationTables[which], m_temperature, &value)));
    write(m_compensations[which], context, value);
}

template <Checks checks>
void Floor<checks>::calibrate(std::int32_t iLow, std::int32_t iHigh, std::int32_t qLow, std::int32_t qHigh,
                              double shrinkFactor) {
    const std::array<std::int32_t, 4> readings{readingAt(iLow, qLow), readingAt(iHigh, qLow),
                                               readingAt(iLow, qHigh), readingAt(iHigh, qHigh)};
    std::size_t best = readings[1] <= readings[0] ? 1 : 0;
    best = readings[2] <= readings[best] ? 2 : best;
    best = readings[3] <= readings[best] ? 3 : best;

    const std::int32_t iWidth = narrow(iLow, iHigh, best % 2 == 0, shrinkFactor, m_probesI);
    const std::int32_t qWidth = narrow(qLow, qHigh, best / 2 == 0, shrinkFactor, m_probesQ);
    m_maxDelta = qWidth >= iWidth ? qWidth : iWidth;
    m_calibratedI = (iLow + iHigh) / 2;
    m_calibratedQ = (qLow + qHigh) / 2;
    setIQ(m_calibratedI, m_calibratedQ);
    message(notice, "Calibrated LO cancellation, TxRF LO (I) = %d, TxRf LO (Q) = %d, maxDelta = %d",
            m_calibratedI, m_calibratedQ, m_maxDelta);
}

template <Checks checks>
inline std::int32_t Floor<checks>::readingAt(std::int32_t i, std::int32_t q) {
    setIQ(i, q);
    usleep(0);
    int reading = 0;
    look(m_detector != nullptr && m_detector->read != nullptr);
    look(isSuccess(m_detector->read(m_detector->context, &reading)));
    return reading;
}

template <Checks checks>
inline void Floor<checks>::setIQ(std::int32_t i, std::int32_t q) {
    write(m_mixerI, static_cast<std::uint32_t>(i));
    write(m_mixerQ, static_cast<std::uint32_t>(q));
}

template <Checks checks>
inline std::int32_t Floor<checks>::truncated(double value) {
    look(value > std::numeric_limits<std::int32_t>::min() &&
         value < std::numeric_limits<std::int32_t>::max());
    return static_cast<std::int32_t>(value);
}

/** Keeps one side of a range and places its next probes; returns its new width. */
template <Checks checks>
inline std::int32_t Floor<checks>::narrow(std::int32_t& low, std::int32_t& high, bool isLowSideKept,
                                          double shrinkFactor, Probes& next) {
    const double kept = (high - low) * shrinkFactor;
    if (isLowSideKept) {
        high = truncated(low + kept);
    } else {
        low = truncated(high - kept);
    }
    const std::int32_t width = high - low;
    next = {truncated(low + (1.0 - shrinkFactor) * width), truncated(low + shrinkFactor * width)};
    return width;
}

template class Floor<Checks::none>;
template class Floor<Checks::demanded>;
template class Floor<Checks::demandedAndMessages>;

} // namespace Benchmarks
