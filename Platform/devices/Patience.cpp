#include "devices/Patience.h"

#include "devices/Hardware.h"

#include <algorithm>
#include <atomic>

namespace Devices {

namespace {

using Clock = Patience::Clock;

constexpr std::chrono::milliseconds lookInterval{50};
/** What an answer may still take once nobody wants to wait, all waits together; and what each has at least.
 */
constexpr std::chrono::milliseconds grace{400};
constexpr std::chrono::milliseconds least{100};

std::atomic<GoesOn> goesOn{nullptr};
std::atomic<int> insistences{0};
/** Since when nobody wants to wait; 0: somebody does. */
std::atomic<Clock::rep> hurriedSince{0};

bool isHurried() {
    const GoesOn ask = goesOn.load();
    if (ask == nullptr || insistences.load() != 0 || ask()) {
        hurriedSince.store(0);
        return false;
    }
    Clock::rep nobody = 0;
    hurriedSince.compare_exchange_strong(nobody, Clock::now().time_since_epoch().count());
    return true;
}

} // namespace

bool Patience::isOver() const {
    const Clock::time_point now = Clock::now();
    if (now >= m_deadline) {
        return true;
    }
    if (!isHurried()) {
        return false;
    }
    const Clock::time_point since{Clock::duration(hurriedSince.load())};
    return now >= std::max(since + grace, m_begin + least);
}

Clock::time_point Patience::nextLook() const {
    return isLimited() ? std::min(m_deadline, Clock::now() + lookInterval) : m_deadline;
}

bool Patience::isLimited() {
    return goesOn.load() != nullptr;
}

Insistence::Insistence() {
    ++insistences;
}

Insistence::~Insistence() {
    --insistences;
}

void setPatience(GoesOn ask) {
    goesOn.store(ask);
}

} // namespace Devices
