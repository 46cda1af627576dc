#include "Floor.h"

#include "CCalibrationHandler.h"
#include "InterfaceBroker.h"
#include "LoCancellationSearch.h"

#include <unistd.h>

#include <array>

namespace Benchmarks {

namespace FrequencyPlan = RL::FrequencyHandler::FrequencyPlan;
using RL::FrequencyHandler::LoCancellationSearch;

namespace {

constexpr int notice = 0x100;
constexpr int information = 0x800;

/** What an unwanted message costs. */
void message(int level) {
    static_cast<void>(CZulTraceHandler_DmLevel2GtLevel(level));
}

void write(const DriverInterface* driver, std::uint32_t value) {
    driver->write(driver->context, static_cast<std::int32_t>(value));
}

std::string lowerCase(const std::string& direction) {
    return direction == "Tx" ? "tx." : "rx.";
}

} // namespace

Floor::Floor(BenchmarkRadio& radio, const std::string& direction, std::int32_t ifFrequency)
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

inline void Floor::accept(std::uint32_t carrier) {
    message(information); // setTxFrequency or setRxFrequency
    m_carrier = carrier;
}

inline void Floor::plan(std::uint32_t carrier, std::uint64_t rfPll) {
    m_ifPll = FrequencyPlan::ifPllFrequency(carrier, m_plan);
    message(information); // if.pll
    m_rfPll = rfPll;
    message(information); // rf.pll
    message(information); // ifSideband
    message(information); // rfSideband
    message(information); // IfBb
}

inline void Floor::setChargePump(std::uint32_t carrier) {
    int setting = 0;
    CCalibrationTable_LinearInterpolate(m_chargePump, static_cast<std::int32_t>(carrier), &setting);
    m_pllConfiguration->write(m_pllConfiguration->context, setting);
}

inline void Floor::writeLoInHz() {
    const auto byte = [this](unsigned index) { return static_cast<std::uint8_t>(m_rfPll >> (8U * index)); };
    const std::array<std::uint8_t, 8> bytes{byte(0), byte(1), byte(2), byte(3),
                                            byte(4), byte(5), byte(6), byte(7)};
    m_rfLoInHz->writeBuffer(m_rfLoInHz->context, bytes.data(), bytes.size());
}

inline void Floor::tellObserver() {
    m_observer->onChange(nullptr);
}

void Floor::setMicrowaveIf(std::uint32_t carrier) {
    accept(carrier);
    plan(carrier, FrequencyPlan::rfPllFrequency(carrier, m_plan));
    write(m_if, m_ifPll);
    write(m_rfLo, static_cast<std::uint32_t>(m_rfPll));
    setChargePump(carrier);
    tellObserver();
}

void Floor::setRfModule(std::uint32_t carrier) {
    accept(carrier);
    message(information); // Write frequency to HW
    write(m_rfFrequency, carrier);
    tellObserver();
}

void Floor::setMicrowaveDspOffset(std::uint32_t carrier) {
    accept(carrier);
    plan(carrier, FrequencyPlan::rfPllFrequency(carrier, m_plan));
    write(m_rfLo, static_cast<std::uint32_t>(m_rfPll));
    setChargePump(carrier);
    tellObserver();
}

void Floor::setMicrowaveDspOffsetRx(std::uint32_t carrier) {
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

void Floor::setMicrowaveHz(std::uint32_t carrier) {
    accept(carrier);
    plan(carrier, FrequencyPlan::exactRfPllFrequency(carrier, m_plan));
    writeLoInHz();
    setChargePump(carrier);
    tellObserver();
}

void Floor::setMicrowaveHzCsOffsetRx(std::uint32_t carrier) {
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

void Floor::setRauTx(std::uint32_t carrier) {
    accept(carrier);
    m_rau->setTxRadioFrequency(carrier);
    tellObserver();
}

void Floor::setRauRx(std::uint32_t carrier) {
    accept(carrier);
    m_rau->setRxRadioFrequency(carrier);
    tellObserver();
}

void Floor::correct() {
    int i = 0;
    int q = 0;
    CCalibrationTable_BiLinearInterpolate(m_tableI, static_cast<std::int32_t>(m_carrier), m_temperature, &i);
    CCalibrationTable_BiLinearInterpolate(m_tableQ, static_cast<std::int32_t>(m_carrier), m_temperature, &q);
    m_mixerI->write(m_mixerI->context, i);
    m_mixerQ->write(m_mixerQ->context, q);
}

void Floor::setTemperature(int temperature) {
    m_temperature = temperature;
    correct();
    message(information); // notifyTemperature
}

void Floor::compensate(int temperature) {
    m_temperature = temperature;
    message(information); // notifyTemperature
    int value = 0;
    // DC I and DC Q are written with the record in place of its context, gain and phase with the context.
    CCalibrationTable_LinearInterpolate(m_compensationTables[0], m_temperature, &value);
    m_compensations[0]->write(m_compensations[0], value);
    CCalibrationTable_LinearInterpolate(m_compensationTables[1], m_temperature, &value);
    m_compensations[1]->write(m_compensations[1], value);
    CCalibrationTable_LinearInterpolate(m_compensationTables[2], m_temperature, &value);
    m_compensations[2]->write(m_compensations[2]->context, value);
    CCalibrationTable_LinearInterpolate(m_compensationTables[3], m_temperature, &value);
    m_compensations[3]->write(m_compensations[3]->context, value);
}

void Floor::calibrate() {
    LoCancellationSearch search(0, 4000, 0, 4000, 0.75);
    for (std::size_t probe = 0; probe < LoCancellationSearch::probeCount; ++probe) {
        const auto [i, q] = search.probe(probe);
        m_mixerI->write(m_mixerI->context, i);
        m_mixerQ->write(m_mixerQ->context, q);
        usleep(0);
        m_detector->read(m_detector->context, &search.reading(probe));
    }
    m_reading = search.narrow();
    const auto [i, q] = search.midpoint();
    m_mixerI->write(m_mixerI->context, i);
    m_mixerQ->write(m_mixerQ->context, q);
    message(notice); // Calibrated LO cancellation
}

} // namespace Benchmarks
