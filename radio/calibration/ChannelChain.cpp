#include "radio/calibration/ChannelChain.h"

#include "ResultCode.h"
#include "radio/text/Words.h"

#include <chrono>
#include <cmath>
#include <memory>
#include <utility>

namespace Radio::Calibration {

namespace {

/** What the functions of a chain share. */
class Access {
public:
    explicit Access(ChannelChain channel) : m_channel(std::move(channel)) {}

    void set(const LoCorrections& corrections) const {
        write(m_channel.drivers.i, corrections.i);
        write(m_channel.drivers.q, corrections.q);
    }

    void wait(double time) {
        m_channel.clock.setRealTime(m_channel.isRealTime, m_channel.goOn);
        m_channel.clock.sleep(static_cast<std::uint32_t>(std::llround(time * microsecondsPerMs)));
        m_waited += time;
        if (!m_channel.goOn()) {
            throw ChainFailure("interrupted", true);
        }
    }

    double now() const {
        const std::chrono::duration<double, std::milli> real =
            std::chrono::steady_clock::now().time_since_epoch();
        return m_channel.isRealTime ? real.count() : m_waited;
    }

    std::int32_t read(const std::string& driver) const {
        Standalone::Driver* const found = m_channel.platform.drivers().find(driver);
        const DriverInterface* const record = found == nullptr ? nullptr : found->record();
        if (record == nullptr || record->read == nullptr) {
            throw ChainFailure("there is no detector for this range that could be read");
        }
        int reading = 0;
        const auto code = record->read(record->context, &reading);
        if (!isSuccess(code)) {
            throw ChainFailure("unable to read from " + driver + " (" + codeText(code) + ")");
        }
        return reading;
    }

private:
    void write(const std::string& driver, std::int32_t value) const {
        Standalone::Driver* const found = m_channel.platform.drivers().find(driver);
        const DriverInterface* const record = found == nullptr ? nullptr : found->record();
        if (record == nullptr || record->write == nullptr) {
            throw ChainFailure("there is no driver that takes the corrections");
        }
        const auto code = record->write(record->context, value);
        if (!isSuccess(code)) {
            throw ChainFailure(driver + " did not take " + std::to_string(value) + " (" + codeText(code) +
                               ")");
        }
    }

    const ChannelChain m_channel;
    double m_waited = 0.0;
};

} // namespace

MeasuringChain chainOf(const ChannelChain& channel) {
    const auto access = std::make_shared<Access>(channel);
    const std::string& read = channel.drivers.read(channel.useHighDetector);
    const std::string& other = channel.drivers.read(!channel.useHighDetector);
    MeasuringChain chain{[access](const LoCorrections& corrections) { access->set(corrections); },
                         [access](double time) { access->wait(time); }, [access] { return access->now(); },
                         [access, read] { return access->read(read); }};
    if (!other.empty()) {
        chain.readOther = [access, other] { return access->read(other); };
    }
    return chain;
}

ChainDescription describeChain(const Settings& settings, const LeakageDescription* leakage,
                               std::optional<std::uint32_t> settleTime, std::optional<double> slope) {
    ChainDescription chain{settings.i, settings.q, settings.useHighDetector, settleTime, slope};
    if (leakage != nullptr) {
        const bool isHigh = settings.useHighDetector && leakage->highDetector;
        const DetectorDescription& detector = isHigh ? *leakage->highDetector : leakage->detector;
        chain.slope = detector.slope;
        chain.lowest = detector.low;
        chain.highest = detector.high;
    }
    return chain;
}

} // namespace Radio::Calibration
