#include "BenchmarkRadio.h"

#include "InterfaceBroker.h"

#include <stdexcept>

namespace Benchmarks {

BenchmarkRadio::BenchmarkRadio(const RadioOptions& options) : m_options(options) {
    m_platform.calls().setRecording(false);
    m_platform.trace().setRecording(false);
    m_platform.trace().setThreshold(options.trace);
    for (const char* const name : {"TxIfBb", "RxIfBb"}) {
        m_platform.variables().add(name, {0});
    }
    m_platform.variables().add("HwCodeDsp", {0});
    m_platform.variables().add("ChannelSpacing", {250});
    for (int channel = 1; channel <= options.channels; ++channel) {
        describeChannel(channel);
    }
    boot();
}

BenchmarkRadio::~BenchmarkRadio() {
    shutDown();
}

void BenchmarkRadio::boot() {
    for (int channel = 1; channel <= m_options.channels; ++channel) {
        m_modules.push_back(std::make_unique<FrequencyHandler>(
            static_cast<unsigned long>(channel),
            static_cast<FrequencyHandler::FrequencyHandlerType>(m_options.type)));
    }
    for (const Standalone::Phase phase :
         {Standalone::phaseModuleInit, Standalone::phaseStorageObjectsRetrieved,
          Standalone::phasePostFrameformatLoad}) {
        if (!m_platform.modules().run(phase).succeeded()) {
            throw std::runtime_error("the radio did not boot");
        }
    }
    for (int channel = 1; channel <= m_options.channels; ++channel) {
        for (const char* const direction : {"Tx_", "Rx_"}) {
            auto* const handler = InterfaceBroker::getInstance().getInterface<IFrequencyHandler>(
                "IFrequencyHandler_" + (direction + std::to_string(channel)));
            for (int observer = 0; observer < m_options.observers; ++observer) {
                handler->registerObserver(&m_observer);
            }
        }
    }
}

void BenchmarkRadio::shutDown() {
    m_platform.temperature().forgetObservers();
    m_modules.clear();
}

void BenchmarkRadio::describeChannel(int channel) {
    const std::string prefix = "channel." + std::to_string(channel) + ".";
    describeDirection(channel, "tx", "Tx");
    describeDirection(channel, "rx", "Rx");
    m_platform.addRau(channel);
    for (const char* const name :
         {"tx.rf.mixer.i", "tx.rf.mixer.q", "tx.rf.detector.v", "dsp.rx.freq.offset"}) {
        m_platform.drivers().add(prefix + name);
    }
    m_platform.variables().add(prefix + "rx.rf.frequency.cs.offset.arraysize", {4});
    m_platform.variables().add(prefix + "rx.rf.frequency.cs.offset.array", {50, 2000, 250, -4000});
    std::vector<std::int32_t> carriers;
    std::vector<std::int32_t> values;
    for (int node = 0; node < m_options.tableNodes; ++node) {
        carriers.push_back(17'700'000 + node * (1'000'000 / m_options.tableNodes));
        for (int temperature = 0; temperature < 5; ++temperature) {
            values.push_back(500 - 7 * node + 3 * temperature);
        }
    }
    for (const char* const branch : {"I", "Q"}) {
        m_platform.tables().add({"Channel." + std::to_string(channel) +
                                     ".Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer." + branch,
                                 carriers,
                                 {-33, -10, 12, 33, 55},
                                 values});
    }
}

void BenchmarkRadio::describeDirection(int channel, const char* direction, const char* tableDirection) {
    const std::string prefix = "channel." + std::to_string(channel) + "." + direction + ".";
    for (const char* const name :
         {"rf.frequency", "rf.lo.frequency", "rf.lo.frequency.in.hz", "if.frequency", "rf.pll.config"}) {
        m_platform.drivers().add(prefix + name);
    }
    m_platform.variables().add(prefix + "mixer.multiplicationfactor", {2});
    m_platform.variables().add(prefix + "rf.spectruminverted", {0});
    m_platform.variables().add(prefix + "baseband.spectruminverted", {1});
    m_platform.variables().add(prefix + "if.frequency", {140'000});
    m_platform.tables().add({"Channel." + std::to_string(channel) + "." + tableDirection +
                                 ".Rf.Pll.Frequency.To.Chargepump.Setting",
                             {17'000'000, 18'000'000, 19'000'000},
                             {},
                             {5, 9, 12}});
}

} // namespace Benchmarks
