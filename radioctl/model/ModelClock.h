#ifndef RADIOCTL_MODEL_MODELCLOCK_H
#define RADIOCTL_MODEL_MODELCLOCK_H

#include <cstdint>
#include <functional>
#include <vector>

namespace Radioctl {

/**
 * The time in which modelled hardware lives. It goes on when the library sleeps, by as much as the library
 * asked for; nobody waits, unless real time is asked for. There is one at a time: usleep() of this program
 * finds it, and sleeps as usual when there is none.
 */
class ModelClock {
public:
    ModelClock();
    ModelClock(const ModelClock&) = delete;
    ModelClock& operator=(const ModelClock&) = delete;
    ~ModelClock();

    static ModelClock* current() { return s_current; }

    /** Whether sleeping takes as long as it says. */
    void setRealTime(bool realTime) { m_realTime = realTime; }
    /** `elapsed` is called for each sleep, with its length in ms. */
    void addListener(std::function<void(double)> elapsed) { m_listeners.push_back(std::move(elapsed)); }
    /** Lets this time pass. */
    void sleep(std::uint32_t microseconds);

private:
    static ModelClock* s_current;

    std::vector<std::function<void(double)>> m_listeners;
    bool m_realTime = false;
};

} // namespace Radioctl

#endif
