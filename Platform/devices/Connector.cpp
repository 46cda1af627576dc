#include "devices/Connector.h"

#include "devices/Patience.h"
#include "devices/Threads.h"

#include <cerrno>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <utility>

namespace Devices {

struct Connector::Shared {
    explicit Shared(Open openLink) : open(std::move(openLink)) {}

    const Open open;
    std::atomic<bool> isReady{false};

    std::mutex mutex;
    std::condition_variable changed;
    bool isWanted = false;
    bool isEnding = false;
    bool hasEnded = false;
    /** The next attempt is not to wait for its time. */
    bool isHurried = false;
    std::uint64_t begun = 0;
    std::uint64_t done = 0;
    std::unique_ptr<Link> broken;
    Opened opened;
};

Connector::Connector(Open open, std::chrono::milliseconds patience)
    : m_shared(std::make_shared<Shared>(std::move(open))),
      m_patience(patience) {}

Connector::~Connector() {
    if (!m_thread.joinable()) {
        return;
    }
    stop();
    std::unique_lock lock(m_shared->mutex);
    const Patience patience(m_end);
    while (!m_shared->hasEnded && !patience.isOver()) {
        m_shared->changed.wait_until(lock, patience.nextLook());
    }
    const bool hasEnded = m_shared->hasEnded;
    lock.unlock();
    if (hasEnded) {
        m_thread.join();
    } else {
        m_thread.detach();
    }
}

void Connector::stop() {
    const std::lock_guard lock(m_shared->mutex);
    if (!m_shared->isEnding) {
        m_shared->isEnding = true;
        m_end = Clock::now() + m_patience;
        m_shared->changed.notify_all();
    }
}

std::uint64_t Connector::start(std::unique_ptr<Link> broken) {
    std::uint64_t attempt = 0;
    {
        const std::lock_guard lock(m_shared->mutex);
        attempt = m_shared->begun + 1;
        if (broken != nullptr) {
            m_shared->broken = std::move(broken);
        }
        m_shared->isWanted = !m_shared->isReady;
        m_shared->isHurried = true;
        m_shared->changed.notify_all();
    }
    if (!m_thread.joinable()) {
        m_thread = startThread([shared = m_shared] { work(shared); });
    }
    return attempt;
}

bool Connector::isReady() const {
    return m_shared->isReady.load(std::memory_order_acquire);
}

std::unique_ptr<Link> Connector::take() {
    const std::lock_guard lock(m_shared->mutex);
    m_shared->isReady = false;
    return std::move(m_shared->opened.link);
}

Opened Connector::await(std::uint64_t attempt, Clock::time_point deadline, bool insists) {
    Shared& shared = *m_shared;
    std::unique_lock lock(shared.mutex);
    const auto isOfUse = [&] { return shared.isReady || (!insists && shared.done >= attempt); };
    const Patience patience(deadline);
    while (!isOfUse() && !patience.isOver()) {
        shared.changed.wait_until(lock, patience.nextLook());
    }
    const bool isTold = isOfUse();
    if (shared.isReady || shared.done >= attempt || (isTold && !insists)) {
        return {nullptr, shared.opened.error, shared.opened.why};
    }
    return {nullptr, ETIMEDOUT, {}};
}

void Connector::work(const std::shared_ptr<Shared>& shared) {
    std::unique_lock lock(shared->mutex);
    while (true) {
        shared->changed.wait(lock, [&] { return shared->isEnding || shared->isWanted; });
        if (shared->isEnding) {
            break;
        }
        std::unique_ptr<Link> broken = std::move(shared->broken);
        shared->isHurried = false;
        const std::uint64_t attempt = ++shared->begun;
        lock.unlock();
        broken.reset(); // which may take its time
        Opened opened = shared->open();
        lock.lock();
        shared->opened = std::move(opened);
        shared->done = attempt;
        if (shared->opened.link != nullptr) {
            shared->isWanted = false;
            shared->isReady.store(true, std::memory_order_release);
        }
        shared->changed.notify_all();
        if (shared->isWanted) {
            shared->changed.wait_for(lock, interval, [&] { return shared->isEnding || shared->isHurried; });
        }
    }
    shared->hasEnded = true;
    shared->changed.notify_all();
}

} // namespace Devices
