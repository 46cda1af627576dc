#include "radio/calibration/Climate.h"

#include "ResultCode.h"
#include "radio/calibration/HardwareUnderTest.h"
#include "radio/text/Words.h"

#include <chrono>
#include <cstdlib>
#include <thread>

namespace Radio::Calibration {

namespace {

/** How often is looked whether a temperature is there. */
constexpr std::chrono::milliseconds pause{20};

} // namespace

void Climate::poll() {
    if (const std::optional<int> degrees = m_bench.poll()) {
        m_sensed = degrees;
    }
    if (m_awaited) {
        m_awaited->now = m_sensed;
    }
}

std::string Climate::reach(std::int32_t wanted, Standalone::Platform& platform,
                           const std::function<bool()>& goOn) {
    if (!hasSensor()) {
        platform.temperature().set(wanted);
        return {};
    }
    if (m_reached != wanted) {
        m_reached.reset();
        if (!tellChamber(wanted, platform)) {
            return chamberOf(m_board, m_channel) + " did not take " + std::to_string(wanted) + " degrees";
        }
        // What was read before may be old, if the sensor fails now.
        m_sensed = m_bench.sense();
        const std::string why = awaitNear(wanted, goOn);
        if (!why.empty()) {
            return why;
        }
        m_reached = wanted;
    }
    platform.temperature().set(m_sensed.value_or(wanted));
    return {};
}

std::string Climate::awaitNear(std::int32_t wanted, const std::function<bool()>& goOn) {
    const auto end = m_bench.now() + awaitLimitOf(m_board, m_channel);
    std::string why;
    for (; why.empty() && !isNear(wanted); poll()) {
        m_awaited = AwaitedTemperature{wanted, m_sensed};
        if (!goOn()) {
            why = "interrupted";
        } else if (m_bench.now() >= end) {
            // A chamber that is off, or a sensor that is dead: the transmitter is not to stay on for ever.
            why = m_whyGivenUp = overdue(wanted);
        } else {
            std::this_thread::sleep_for(pause);
        }
    }
    m_awaited.reset();
    return why;
}

std::string Climate::overdue(std::int32_t wanted) const {
    return std::to_string(wanted) + " degrees did not come about within await_limit, " +
           counted(static_cast<std::uint64_t>(awaitLimitOf(m_board, m_channel).count()), "minute") +
           ": the sensor " + (m_sensed ? "says " + std::to_string(*m_sensed) + " degrees" : "says nothing");
}

std::string Climate::remark(std::int32_t wanted) const {
    return hasSensor() && !isNear(wanted) && m_sensed
               ? "the sensor said " + std::to_string(*m_sensed) + " degrees"
               : "";
}

bool Climate::isNear(std::int32_t wanted) const {
    return m_sensed && std::abs(*m_sensed - wanted) <= tolerance;
}

bool Climate::tellChamber(std::int32_t wanted, Standalone::Platform& platform) const {
    const std::string chamber = chamberOf(m_board, m_channel);
    if (chamber.empty()) {
        return true;
    }
    DriverInterface* const driver = platform.drivers().find(chamber)->record();
    return driver->write != nullptr && isSuccess(driver->write(driver->context, wanted));
}

} // namespace Radio::Calibration
