#include "radio/session/ModelClock.h"

#include "Visibility.h"

#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

namespace Radio {

ModelClock* ModelClock::s_current = nullptr;

ModelClock::ModelClock() {
    s_current = this;
}

ModelClock::~ModelClock() {
    s_current = nullptr;
}

void ModelClock::sleep(std::uint32_t microseconds) {
    if (m_realTime) {
        wait(std::chrono::microseconds(microseconds));
    }
    advance(microseconds);
}

void ModelClock::advance(std::uint32_t microseconds) {
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::microseconds(microseconds);
    for (const auto& listener : m_listeners) {
        listener(elapsed.count());
    }
}

void ModelClock::wait(std::chrono::microseconds time) const {
    // In pieces, so that whoever wants to leave need not wait to the end.
    constexpr std::chrono::microseconds piece{20000};
    while (time.count() > 0 && (!m_goOn || m_goOn())) {
        std::this_thread::sleep_for(std::min(time, piece));
        time -= piece;
    }
}

} // namespace Radio

/** What every library finds in place of the C library's usleep(), where this is a part of the executable. */
extern "C" RADIO_API int usleep(useconds_t microseconds) {
    if (Radio::ModelClock* const clock = Radio::ModelClock::current()) {
        clock->sleep(microseconds);
        return 0;
    }
    constexpr useconds_t perSecond = 1000000;
    const timespec duration{static_cast<time_t>(microseconds / perSecond),
                            static_cast<long>(microseconds % perSecond) * 1000};
    return nanosleep(&duration, nullptr);
}
