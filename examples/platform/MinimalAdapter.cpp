// What the rules of the contracts need of this platform beside its operations. Yours will look much the same.
#include "IRauHandler.h"
#include "InterfaceBroker.h"
#include "MinimalPlatform.h"
#include "conformance/Adapter.h"

#include <iostream>
#include <memory>
#include <sstream>

namespace {

struct RemoteUnit final : IRauHandler {
    EAFResult setTxRadioFrequency(unsigned long frequency) override { return keep(tx, frequency); }
    EAFResult setRxRadioFrequency(unsigned long frequency) override { return keep(rx, frequency); }
    static EAFResult keep(unsigned long& carrier, unsigned long frequency) {
        carrier = frequency;
        return ResultOk;
    }

    unsigned long tx = 0;
    unsigned long rx = 0;
};

class MinimalAdapter final : public Conformance::Adapter {
public:
    MinimalAdapter() = default;
    MinimalAdapter(const MinimalAdapter&) = delete;
    MinimalAdapter& operator=(const MinimalAdapter&) = delete;
    ~MinimalAdapter() override { std::clog.rdbuf(m_log); }

    bool begin() override {
        std::clog.rdbuf(m_traced.rdbuf());
        Minimal::publishServices();
        return true;
    }
    bool putDriver(const std::string& name) override {
        Minimal::addDriver(name);
        return true;
    }
    std::optional<int> written(const std::string& driver) override { return Minimal::drivers().at(driver).value; }
    std::optional<std::vector<std::uint8_t>> writtenBytes(const std::string& driver) override {
        return Minimal::drivers().at(driver).bytes;
    }
    bool putReading(const std::string& driver, int value) override {
        Minimal::drivers().at(driver).value = value;
        return true;
    }
    bool refuse(const std::string& driver, std::int32_t code) override {
        Minimal::drivers().at(driver).failure = code;
        return true;
    }
    bool putVariable(const std::string& name, const std::vector<int>& content) override {
        Minimal::variables()[name] = content;
        return true;
    }
    bool putTable(const std::string& name, const std::vector<int>& x, const std::vector<int>& values) override {
        return putTable(name, x, {0}, values);
    }
    bool putTable(const std::string& name, const std::vector<int>& x1, const std::vector<int>& x2,
                  const std::vector<int>& values) override {
        Minimal::tables()[name] = {x1, x2, values};
        return true;
    }
    bool setTemperature(int degrees) override {
        Minimal::setTemperature(degrees);
        return true;
    }
    bool runPhase(unsigned long phase) override {
        static_cast<void>(Minimal::runPhase(phase));
        return true;
    }
    bool putRemoteUnit(int channel) override {
        m_units[channel] = std::make_unique<RemoteUnit>();
        const std::string name = channel == 0 ? "IRauHandler" : "IRauHandler_" + std::to_string(channel);
        return isSuccess(InterfaceBroker::getInstance().registerInterface(name, m_units[channel].get()));
    }
    std::optional<unsigned long> remoteCarrier(int channel, bool isTransmit) override {
        return isTransmit ? m_units.at(channel)->tx : m_units.at(channel)->rx;
    }
    std::optional<std::string> traced() override { return m_traced.str(); }
    bool isTracedByThreads() override { return true; }

private:
    std::ostringstream m_traced;
    std::streambuf* const m_log = std::clog.rdbuf();
    std::map<int, std::unique_ptr<RemoteUnit>> m_units;
};

} // namespace

int main(int argc, char** argv) {
    MinimalAdapter adapter;
    Conformance::run(adapter, argc, argv);
}
