#include "devices/HeldListener.h"

#include <algorithm>
#include <utility>

namespace Devices {

void HeldListener::lost(const std::string& device, const std::string& why) {
    tell({}, [this, device, why] { m_listener.lost(device, why); });
}

void HeldListener::back(const std::string& device) {
    tell({}, [this, device] { m_listener.back(device); });
}

void HeldListener::failed(const std::string& driver, const std::string& attribute, std::int32_t code) {
    tell(driver, [this, driver, attribute, code] { m_listener.failed(driver, attribute, code); });
}

void HeldListener::sensorFailed(const std::string& why) {
    tell({}, [this, why] { m_listener.sensorFailed(why); });
}

void HeldListener::forget(const std::string& driver) {
    m_kept.erase(std::remove_if(m_kept.begin(), m_kept.end(),
                                [&driver](const News& news) { return news.driver == driver; }),
                 m_kept.end());
}

void HeldListener::release() {
    m_isHeld = false;
    for (const News& news : std::exchange(m_kept, {})) {
        news.tell();
    }
}

void HeldListener::tell(std::string driver, std::function<void()> tell) {
    if (m_isHeld) {
        m_kept.push_back({std::move(driver), std::move(tell)});
    } else {
        tell();
    }
}

} // namespace Devices
