#include "radio/calibration/Climate.h"

#include "ResultCode.h"
#include "radio/calibration/HardwareUnderTest.h"

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
        if (!awaitNear(wanted, goOn)) {
            return "interrupted";
        }
        m_reached = wanted;
    }
    platform.temperature().set(m_sensed.value_or(wanted));
    return {};
}

bool Climate::awaitNear(std::int32_t wanted, const std::function<bool()>& goOn) {
    bool goesOn = true;
    for (; goesOn && !isNear(wanted); poll()) {
        m_awaited = AwaitedTemperature{wanted, m_sensed};
        goesOn = goOn();
        std::this_thread::sleep_for(pause);
    }
    m_awaited.reset();
    return goesOn;
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
