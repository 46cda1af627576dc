// The stand-alone platform before the rules of the contracts.
#include "conformance/Adapter.h"
#include "standalone/Platform.h"

#include <optional>

namespace {

class StandaloneAdapter final : public Conformance::Adapter {
public:
    bool begin() override {
        m_platform.emplace();
        m_platform->trace().setSink(
            [this](const Standalone::TraceMessage& message) { m_traced += message.text + '\n'; });
        return true;
    }
    bool putDriver(const std::string& name) override {
        m_platform->drivers().add(name);
        return true;
    }
    std::optional<int> written(const std::string& driver) override {
        return static_cast<int>(m_platform->drivers().find(driver)->value());
    }
    /** The last call that has some. */
    std::optional<std::vector<std::uint8_t>> writtenBytes(const std::string& driver) override {
        const auto& calls = m_platform->calls().journal();
        for (auto call = calls.rbegin(); call != calls.rend(); ++call) {
            if (call->operation == Standalone::Operation::driverWriteBuffer && call->object == driver) {
                return std::vector<std::uint8_t>(call->bytes.begin(), call->bytes.end());
            }
        }
        return std::nullopt;
    }
    bool putReading(const std::string& driver, int value) override {
        m_platform->drivers().find(driver)->setValue(value);
        return true;
    }
    bool refuse(const std::string& driver, std::int32_t code) override {
        m_platform->calls().clearAll();
        for (const auto operation :
             {Standalone::Operation::driverWrite, Standalone::Operation::driverWriteBuffer,
              Standalone::Operation::driverRead}) {
            m_platform->calls().inject({operation, driver, code, std::nullopt, std::nullopt});
        }
        return true;
    }
    bool putVariable(const std::string& name, const std::vector<int>& content) override {
        return m_platform->variables().add(name, content).set(content);
    }
    bool putTable(const std::string& name, const std::vector<int>& x,
                  const std::vector<int>& values) override {
        return putTable(name, x, {}, values);
    }
    bool putTable(const std::string& name, const std::vector<int>& x1, const std::vector<int>& x2,
                  const std::vector<int>& values) override {
        m_platform->tables().add({name, x1, x2, values});
        return true;
    }
    bool setTemperature(int degrees) override {
        m_platform->temperature().set(degrees);
        return true;
    }
    bool runPhase(unsigned long phase) override {
        m_platform->modules().run(phase);
        return true;
    }
    bool putRemoteUnit(int channel) override {
        m_units[channel] = &m_platform->addRau(channel);
        return true;
    }
    std::optional<unsigned long> remoteCarrier(int channel, bool isTransmit) override {
        return isTransmit ? m_units.at(channel)->txFrequency() : m_units.at(channel)->rxFrequency();
    }
    std::optional<std::string> traced() override { return m_traced; }

private:
    std::optional<Standalone::Platform> m_platform;
    std::map<int, Standalone::RauService*> m_units;
    std::string m_traced;
};

} // namespace

int main(int argc, char** argv) {
    StandaloneAdapter adapter;
    Conformance::run(adapter, argc, argv);
}
