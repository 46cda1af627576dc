#ifndef PLATFORM_DEVICES_HELDLISTENER_H
#define PLATFORM_DEVICES_HELDLISTENER_H

#include "devices/Hardware.h"

#include <functional>
#include <string>
#include <vector>

namespace Devices {

/** Passes on what it is told, or keeps it for later: a listener may print, and what it prints to may block.
 */
class HeldListener : public HardwareListener {
public:
    explicit HeldListener(HardwareListener& listener) : m_listener(listener) {}

    void lost(const std::string& device, const std::string& why) override;
    void back(const std::string& device) override;
    void failed(const std::string& driver, const std::string& attribute, std::int32_t code) override;
    void sensorFailed(const std::string& why) override;

    /** Keeps everything from now on. */
    void hold() { m_isHeld = true; }
    /** Drops what is kept of a driver's failures: it is tried again. */
    void forget(const std::string& driver);
    /** Passes on what was kept, in its order, and keeps nothing any more. */
    void release();

private:
    struct News {
        /** Whose failure it is; empty: of a device or the sensor. */
        std::string driver;
        std::function<void()> tell;
    };
    void tell(std::string driver, std::function<void()> tell);

    HardwareListener& m_listener;
    bool m_isHeld = false;
    std::vector<News> m_kept;
};

} // namespace Devices

#endif
