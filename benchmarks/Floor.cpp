#include "Floor.h"

#include "CCalibrationHandler.h"
#include "InterfaceBroker.h"
#include "LoCancellationSearch.h"

#include <unistd.h>

#include <cstdlib>

namespace Benchmarks {

namespace FrequencyPlan = RL::FrequencyHandler::FrequencyPlan;
using RL::FrequencyHandler::LoCancellationSearch;

namespace {

constexpr int notice = 0x100;
constexpr int information = 0x800;

/** What is not looked into any further: a message that is wanted, or what did not succeed. */
[[gnu::noinline, gnu::cold]] void unexpected() {
    std::abort();
}

std::string lowerCase(const std::string& direction) {
    return direction == "Tx" ? "tx." : "rx.";
}

} // namespace

template <Checks checks>
Floor<checks>::Floor(BenchmarkRadio& radio, const std::string& direction, std::int32_t ifFrequency)
    : m_plan{1, -1, ifFrequency, 2, 0},
      m_channelSpacingOffsets(
          radio.platform().variables().find("channel.1.rx.rf.frequency.cs.offset.array")->values().data()),
      m_observer(&radio.observer()),
      m_rfFrequency(radio.driver(lowerCase(direction) + "rf.frequency")),
      m_rfLo(radio.driver(lowerCase(direction) + "rf.lo.frequency")),
      m_rfLoInHz(radio.driver(lowerCase(direction) + "rf.lo.frequency.in.hz")),
      m_if(radio.driver(lowerCase(direction) + "if.frequency")),
      m_pllConfiguration(radio.driver(lowerCase(direction) + "rf.pll.config")),
      m_dspOffset(radio.driver("dsp.rx.freq.offset")),
      m_mixerI(radio.driver("tx.rf.mixer.i")),
      m_mixerQ(radio.driver("tx.rf.mixer.q")),
      m_detector(radio.driver("tx.rf.detector.v")),
      m_compensations{radio.driver("dsp.tx.dc.compensation.i"), radio.driver("dsp.tx.dc.compensation.q"),
                      radio.driver("dsp.tx.quadrature.gain.offset.compensation"),
                      radio.driver("dsp.tx.quadrature.phase.offset.compensation")},
      m_chargePump(radio.table(direction + ".Rf.Pll.Frequency.To.Chargepump.Setting")),
      m_tableI(radio.table("Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I")),
      m_tableQ(radio.table("Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q")),
      m_compensationTables{radio.table("Tx.Dsp.Temperature.To.Dc.I.Compensation"),
                           radio.table("Tx.Dsp.Temperature.To.Dc.Q.Compensation"),
                           radio.table("Tx.Dsp.Temperature.To.Gain.Offset.Compensation"),
                           radio.table("Tx.Dsp.Temperature.To.Phase.Offset.Compensation")},
      m_rau(InterfaceBroker::getInstance().getInterface<IRauHandler>("IRauHandler_1")) {}

template <Checks checks>
inline void Floor<checks>::look(bool isGood) {
    if (checks == Checks::demanded && !isGood) {
        unexpected();
    }
}

template <Checks checks>
inline void Floor<checks>::message(int level) const {
    const OrbiTraceLevel mapped = CZulTraceHandler_DmLevel2GtLevel(level);
    look(m_trace.getLevel() < mapped);
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
    message(information); // setTxFrequency or setRxFrequency
    m_carrier = carrier;
}

template <Checks checks>
inline void Floor<checks>::plan(std::uint32_t carrier, std::uint64_t rfPll) {
    m_ifPll = FrequencyPlan::ifPllFrequency(carrier, m_plan);
    message(information); // if.pll
    m_rfPll = rfPll;
    message(information); // rf.pll
    message(information); // ifSideband
    message(information); // rfSideband
    message(information); // IfBb
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
inline void Floor<checks>::tellObserver() {
    look(m_observer != nullptr);
    m_observer->onChange(nullptr);
}

template <Checks checks>
void Floor<checks>::setMicrowaveIf(std::uint32_t carrier) {
    accept(carrier);
    plan(carrier, FrequencyPlan::rfPllFrequency(carrier, m_plan));
    write(m_if, m_ifPll);
    write(m_rfLo, static_cast<std::uint32_t>(m_rfPll));
    setChargePump(carrier);
    tellObserver();
}

template <Checks checks>
void Floor<checks>::setRfModule(std::uint32_t carrier) {
    accept(carrier);
    message(information); // Write frequency to HW
    write(m_rfFrequency, carrier);
    tellObserver();
}

template <Checks checks>
void Floor<checks>::setMicrowaveDspOffset(std::uint32_t carrier) {
    accept(carrier);
    plan(carrier, FrequencyPlan::rfPllFrequency(carrier, m_plan));
    write(m_rfLo, static_cast<std::uint32_t>(m_rfPll));
    setChargePump(carrier);
    tellObserver();
}

template <Checks checks>
void Floor<checks>::setMicrowaveDspOffsetRx(std::uint32_t carrier) {
    constexpr std::uint32_t halfSpacing = 125'000;
    accept(carrier);
    message(information); // ChannelSpacing used
    message(information); // dsp.rx.freq.offset
    write(m_dspOffset, halfSpacing);
    plan(carrier, FrequencyPlan::rfPllFrequency(carrier - halfSpacing, m_plan));
    write(m_rfLo, static_cast<std::uint32_t>(m_rfPll));
    setChargePump(carrier);
    tellObserver();
}

template <Checks checks>
void Floor<checks>::setMicrowaveHz(std::uint32_t carrier) {
    accept(carrier);
    plan(carrier, FrequencyPlan::exactRfPllFrequency(carrier, m_plan));
    writeLoInHz();
    setChargePump(carrier);
    tellObserver();
}

template <Checks checks>
void Floor<checks>::setMicrowaveHzCsOffsetRx(std::uint32_t carrier) {
    accept(carrier);
    message(information); // Array(CS)
    message(information); // channelSpacingOffsetkHz
    const auto stored = static_cast<std::uint32_t>(m_channelSpacingOffsets[3]);
    const std::uint32_t magnitude = m_channelSpacingOffsets[3] < 0 ? 0U - stored : stored;
    const std::uint32_t offset = static_cast<std::uint32_t>(m_plan.rfSideband) * magnitude;
    write(m_dspOffset, 0U - offset);
    plan(carrier + offset, FrequencyPlan::exactRfPllFrequency(carrier + offset, m_plan));
    writeLoInHz();
    setChargePump(carrier + offset);
    tellObserver();
}

template <Checks checks>
void Floor<checks>::setRauTx(std::uint32_t carrier) {
    accept(carrier);
    look(m_rau != nullptr);
    look(isSuccess(m_rau->setTxRadioFrequency(carrier)));
    tellObserver();
}

template <Checks checks>
void Floor<checks>::setRauRx(std::uint32_t carrier) {
    accept(carrier);
    look(m_rau != nullptr);
    look(isSuccess(m_rau->setRxRadioFrequency(carrier)));
    tellObserver();
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
    message(information); // notifyTemperature
}

template <Checks checks>
void Floor<checks>::compensate(int temperature) {
    m_temperature = temperature;
    message(information); // notifyTemperature
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
void Floor<checks>::calibrate() {
    LoCancellationSearch search(0, 4000, 0, 4000, 0.75);
    for (std::size_t probe = 0; probe < LoCancellationSearch::probeCount; ++probe) {
        setIQ(search.probe(probe));
        usleep(0);
        look(m_detector != nullptr && m_detector->read != nullptr);
        look(isSuccess(m_detector->read(m_detector->context, &search.reading(probe))));
    }
    m_maxDelta = search.narrow();
    setIQ(search.midpoint());
    message(notice); // Calibrated LO cancellation
}

template <Checks checks>
inline void Floor<checks>::setIQ(const LoCancellationSearch::Point& point) {
    write(m_mixerI, static_cast<std::uint32_t>(point.i));
    write(m_mixerQ, static_cast<std::uint32_t>(point.q));
}

template class Floor<Checks::none>;
template class Floor<Checks::demanded>;

} // namespace Benchmarks
