#include "BenchmarkRadio.h"

#include "InterfaceBroker.h"

#include <cstdint>
#include <stdexcept>

namespace Benchmarks {

BenchmarkRadio::BenchmarkRadio(const RadioOptions& options) : m_options(options) {
    m_platform.calls().setRecording(false);
    m_platform.trace().setRecording(false);
    m_platform.trace().setThreshold(options.trace);
    for (const char* const name : {"TxIfBb", "RxIfBb", "HwCodeDsp"}) {
        m_platform.variables().add(name, {0});
    }
    m_platform.variables().add("ChannelSpacing", {250});
    for (int channel = 1; channel <= options.channels; ++channel) {
        describeChannel(channel);
    }
    describeIqCompensation();
    boot();
    observe();
    m_canceller = InterfaceBroker::getInstance().getInterface<ILoCancellation>(
        "ILoCancellation_" + std::to_string(options.channels));
    if (isFailure(CTxIQImbalanceHandler::onPhaseActivation(&m_iqCompensation, 11, ECallbackPriority{0}))) {
        throw std::runtime_error("the IQ compensation did not start");
    }
}

BenchmarkRadio::~BenchmarkRadio() {
    shutDown();
}

void BenchmarkRadio::boot() {
    for (int channel = 1; channel <= m_options.channels; ++channel) {
        m_modules.push_back(
            std::make_unique<FrequencyHandler>(static_cast<unsigned long>(channel), m_options.type));
    }
    runPhases();
}

void BenchmarkRadio::runPhases() {
    for (const Standalone::Phase phase :
         {Standalone::phaseModuleInit, Standalone::phaseStorageObjectsRetrieved,
          Standalone::phasePostFrameformatLoad}) {
        if (!m_platform.modules().run(phase).succeeded()) {
            throw std::runtime_error("the radio did not boot");
        }
    }
}

void BenchmarkRadio::shutDown() {
    m_platform.temperature().forgetObservers();
    m_modules.clear();
}

DriverInterface* BenchmarkRadio::driver(int channel, const std::string& name) {
    return m_platform.drivers().find("channel." + std::to_string(channel) + "." + name)->record();
}

CalibrationTable* BenchmarkRadio::table(int channel, const std::string& name) {
    return m_platform.tables().find("Channel." + std::to_string(channel) + "." + name);
}

void BenchmarkRadio::observe() {
    for (int channel = 1; channel <= m_options.channels; ++channel) {
        for (const char* const direction : {"Tx_", "Rx_"}) {
            auto* const handler = InterfaceBroker::getInstance().getInterface<IFrequencyHandler>(
                "IFrequencyHandler_" + (direction + std::to_string(channel)));
            for (int observer = 0; observer < m_options.observers; ++observer) {
                handler->registerObserver(m_observer.get());
            }
        }
    }
}

void BenchmarkRadio::describeChannel(int channel) {
    const std::string number = std::to_string(channel);
    describeDirection(channel, "tx", "Tx");
    describeDirection(channel, "rx", "Rx");
    m_platform.addRau(channel);
    for (const char* const name :
         {".tx.rf.mixer.i", ".tx.rf.mixer.q", ".tx.rf.detector.v", ".dsp.rx.freq.offset"}) {
        m_platform.drivers().add("channel." + number + name);
    }
    const std::string offsets = "channel." + number + ".rx.rf.frequency.cs.offset.";
    m_platform.variables().add(offsets + "arraysize", {4});
    m_platform.variables().add(offsets + "array", {50, 2000, 250, -4000});

    const std::vector<std::int32_t> carriers{17'700'000, 17'900'000, 18'100'000,
                                             18'300'000, 18'500'000, 18'700'000};
    const std::vector<std::int32_t> temperatures{-33, -10, 12, 33, 55};
    std::vector<std::int32_t> values;
    for (std::size_t node = 0; node < carriers.size() * temperatures.size(); ++node) {
        values.push_back(1100 - 3 * static_cast<std::int32_t>(node));
    }
    for (const char* const branch : {"I", "Q"}) {
        m_platform.tables().add(
            {"Channel." + number + ".Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer." + branch, carriers,
             temperatures, values});
    }
}

void BenchmarkRadio::describeDirection(int channel, const std::string& direction,
                                       const std::string& tableDirection) {
    const std::string number = std::to_string(channel);
    const std::string prefix = "channel." + number + "." + direction + ".";
    for (const char* const name :
         {"rf.frequency", "rf.lo.frequency", "rf.lo.frequency.in.hz", "if.frequency", "rf.pll.config"}) {
        m_platform.drivers().add(prefix + name);
    }
    m_platform.variables().add(prefix + "mixer.multiplicationfactor", {2});
    m_platform.variables().add(prefix + "rf.spectruminverted", {0});
    m_platform.variables().add(prefix + "baseband.spectruminverted", {1});
    m_platform.variables().add(prefix + "if.frequency", {140'000});
    m_platform.tables().add(
        {"Channel." + number + "." + tableDirection + ".Rf.Pll.Frequency.To.Chargepump.Setting",
         {17'000'000, 18'000'000, 19'000'000},
         {},
         {5, 9, 12}});
}

void BenchmarkRadio::describeIqCompensation() {
    for (const char* const name :
         {"dc.compensation.i", "dc.compensation.q", "quadrature.gain.offset.compensation",
          "quadrature.phase.offset.compensation"}) {
        m_platform.drivers().add(std::string("channel.1.dsp.tx.") + name);
    }
    for (const char* const name : {"Dc.I", "Dc.Q", "Gain.Offset", "Phase.Offset"}) {
        m_platform.tables().add({std::string("Channel.1.Tx.Dsp.Temperature.To.") + name + ".Compensation",
                                 {-33, 10, 55},
                                 {},
                                 {120, -7, 310}});
    }
}

} // namespace Benchmarks
