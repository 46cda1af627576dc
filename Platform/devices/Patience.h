#ifndef PLATFORM_DEVICES_PATIENCE_H
#define PLATFORM_DEVICES_PATIENCE_H

#include <chrono>

namespace Devices {

/**
 * One wait for a device. It is over at its deadline, or soon after nobody wants to wait any longer: a device
 * that answers at all has a moment left to do so, since what breaks off an answer breaks the connection.
 */
class Patience {
public:
    using Clock = std::chrono::steady_clock;

    /** Until nobody wants to wait any longer. */
    Patience() : Patience(Clock::time_point::max()) {}
    explicit Patience(Clock::time_point deadline) : m_begin(Clock::now()), m_deadline(deadline) {}

    bool isOver() const;
    /** How long can be waited before isOver() is to be asked again. */
    Clock::time_point nextLook() const;
    /** Whether anybody can say that nobody wants to wait. */
    static bool isLimited();

private:
    Clock::time_point m_begin;
    Clock::time_point m_deadline;
};

/** As long as it lives, devices are waited for whatever is wanted: what is written in the end has to be. */
class Insistence {
public:
    Insistence();
    Insistence(const Insistence&) = delete;
    Insistence& operator=(const Insistence&) = delete;
    ~Insistence();
};

} // namespace Devices

#endif
