#ifndef RADIO_SESSION_MODELCLOCK_H
#define RADIO_SESSION_MODELCLOCK_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace Radio {

/** Times of detectors are in ms, those of the clock in microseconds. */
constexpr std::uint32_t microsecondsPerMs = 1000;

/**
 * The time in which modelled hardware lives. It goes on when the library sleeps, by as much as the library
 * asked for; nobody waits, unless real time is asked for. There is one at a time: the usleep() that comes
 * with it, in place of the C library's, finds it, and sleeps as usual when there is none.
 *
 * The library finds this usleep() only when the room is linked into the executable. From a module that is
 * loaded into another program the C library's is found first, and modelled detectors do not settle.
 */
class ModelClock {
public:
    ModelClock();
    ModelClock(const ModelClock&) = delete;
    ModelClock& operator=(const ModelClock&) = delete;
    ~ModelClock();

    static ModelClock* current() { return s_current; }

    /** Whether sleeping takes as long as it says, as long as `goOn` does not say otherwise. */
    void setRealTime(bool realTime, std::function<bool()> goOn = {}) {
        m_realTime = realTime;
        m_goOn = std::move(goOn);
    }
    bool isRealTime() const { return m_realTime; }
    /** `elapsed` is called for each sleep, with its length in ms. */
    void addListener(std::function<void(double)> elapsed) { m_listeners.push_back(std::move(elapsed)); }
    /** Lets this time pass. */
    void sleep(std::uint32_t microseconds);
    /** The same when whoever calls has waited, or will not: returns at once. */
    void advance(std::uint32_t microseconds);

private:
    void wait(std::chrono::microseconds time) const;

    static ModelClock* s_current;

    std::vector<std::function<void(double)>> m_listeners;
    bool m_realTime = false;
    std::function<bool()> m_goOn;
};

} // namespace Radio

#endif
