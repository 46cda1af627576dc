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
    const std::optional<int> degrees = hasSensor() ? m_bench.poll() : std::nullopt;
    m_sensed = degrees ? degrees : m_sensed;
    if (m_awaited && m_awaited->isByWord && m_bench.listen) {
        hear(m_bench.listen());
    }
    if (m_awaited) {
        m_awaited->now = m_sensed;
    }
}

void Climate::hear(const PersonsWord& word) {
    if (word.isGone) {
        m_whyGivenUp = "nobody is there any more who says that " + std::to_string(m_awaited->wanted) +
                       " degrees have come about";
    } else if (word.isThere) {
        m_sensed = word.degrees.value_or(m_awaited->wanted);
    }
}

std::string Climate::reach(std::int32_t wanted, Standalone::Platform& platform,
                           const std::function<bool()>& goOn) {
    if (!hasSensor() && !m_terms.isAttended) {
        platform.temperature().set(wanted);
        return {};
    }
    if (m_reached != wanted) {
        m_reached.reset();
        if (!tellChamber(wanted, platform)) {
            return chamberOf(m_board, m_channel) + " did not take " + std::to_string(wanted) + " degrees";
        }
        // What was read before may be old, if the sensor fails now.
        m_sensed = hasSensor() ? m_bench.sense() : std::nullopt;
        std::string why = awaitIt(wanted, goOn);
        if (!why.empty()) {
            return why;
        }
        m_reached = wanted;
    }
    platform.temperature().set(m_sensed.value_or(wanted));
    return {};
}

std::string Climate::awaitIt(std::int32_t wanted, const std::function<bool()>& goOn) {
    const auto end = m_bench.now() + awaitLimitOf(m_board, m_channel);
    const bool isByHand = m_terms.isAttended && chamberOf(m_board, m_channel).empty();
    m_nearSince.reset();
    std::string why;
    for (; why.empty() && !isThere(wanted); poll()) {
        m_awaited = AwaitedTemperature{wanted, m_sensed, isByHand, !hasSensor()};
        if (!goOn()) {
            why = "interrupted";
        } else if (!m_whyGivenUp.empty()) {
            why = m_whyGivenUp;
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

bool Climate::isThere(std::int32_t wanted) {
    if (!isNear(wanted)) {
        m_nearSince.reset();
        return false;
    }
    // Who says so has waited already.
    if (m_terms.dwell.count() == 0 || !hasSensor()) {
        return true;
    }
    const Time now = m_bench.now();
    m_nearSince = m_nearSince.value_or(now);
    if (now - *m_nearSince < m_terms.dwell) {
        return false;
    }
    // A sensor that failed meanwhile has not said that it went away.
    m_sensed = m_bench.sense();
    return isNear(wanted);
}

std::string Climate::overdue(std::int32_t wanted) const {
    const std::string what = hasSensor() ? "the sensor " : "who is there ";
    return std::to_string(wanted) + " degrees did not come about within await_limit, " +
           counted(static_cast<std::uint64_t>(awaitLimitOf(m_board, m_channel).count()), "minute") + ": " +
           what + (m_sensed ? "says " + std::to_string(*m_sensed) + " degrees" : "says nothing");
}

std::string Climate::remark(std::int32_t wanted) const {
    return hasSensor() && !isNear(wanted) && m_sensed
               ? "the sensor said " + std::to_string(*m_sensed) + " degrees"
               : "";
}

bool Climate::isNear(std::int32_t wanted) const {
    return m_sensed && std::abs(*m_sensed - wanted) <= m_terms.tolerance;
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
