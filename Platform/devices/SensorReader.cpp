#include "devices/SensorReader.h"

#include "devices/DeviceCodes.h"
#include "devices/Patience.h"
#include "devices/Threads.h"

#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>

namespace Devices {

namespace {

using Clock = std::chrono::steady_clock;

} // namespace

struct SensorReader::Shared {
    Shared(std::unique_ptr<SensorSource> itsSource, std::chrono::milliseconds itsInterval)
        : source(std::move(itsSource)),
          interval(itsInterval) {}

    const std::unique_ptr<SensorSource> source;
    const std::chrono::milliseconds interval;

    std::mutex mutex;
    std::condition_variable changed;
    bool isPeriodic = false;
    bool isEnding = false;
    bool hasEnded = false;
    std::uint64_t asked = 0;
    std::uint64_t answered = 0;
    /** When the read that is going on began. */
    std::optional<Clock::time_point> begun;
    SensorReading last;
};

SensorReader::SensorReader(std::unique_ptr<SensorSource> source, std::chrono::milliseconds interval,
                           std::chrono::milliseconds timeLimit)
    : m_shared(std::make_shared<Shared>(std::move(source), interval)),
      m_timeLimit(timeLimit) {}

SensorReader::~SensorReader() {
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

void SensorReader::stop() {
    const std::lock_guard lock(m_shared->mutex);
    if (!m_shared->isEnding) {
        m_shared->isEnding = true;
        m_end = Clock::now() + m_timeLimit;
        m_shared->changed.notify_all();
    }
}

void SensorReader::startThread() {
    if (!m_thread.joinable()) {
        m_thread = Devices::startThread([shared = m_shared] { work(shared); });
    }
}

void SensorReader::start() {
    {
        const std::lock_guard lock(m_shared->mutex);
        m_shared->isPeriodic = true;
        m_shared->changed.notify_all();
    }
    startThread();
}

SensorReading SensorReader::readNow() {
    startThread();
    Shared& shared = *m_shared;
    std::unique_lock lock(shared.mutex);
    const std::uint64_t question = ++shared.asked;
    shared.changed.notify_all();
    const Patience patience(Clock::now() + m_timeLimit);
    while (shared.answered < question && !patience.isOver()) {
        shared.changed.wait_until(lock, patience.nextLook());
    }
    if (shared.answered < question) {
        return {0, meaningOf(codeOf(ETIMEDOUT)), shared.last.count};
    }
    return shared.last;
}

SensorReading SensorReader::last() const {
    const std::lock_guard lock(m_shared->mutex);
    const std::optional<Clock::time_point> begun = m_shared->begun;
    if (begun && Clock::now() - *begun > m_timeLimit) {
        return {0, meaningOf(codeOf(ETIMEDOUT)), m_shared->last.count};
    }
    return m_shared->last;
}

void SensorReader::work(const std::shared_ptr<Shared>& shared) {
    std::unique_lock lock(shared->mutex);
    Clock::time_point next = Clock::now();
    while (true) {
        const auto isWanted = [&] { return shared->isEnding || shared->asked > shared->answered; };
        if (shared->isPeriodic) {
            shared->changed.wait_until(lock, next, isWanted);
        } else {
            shared->changed.wait(lock, [&] { return isWanted() || shared->isPeriodic; });
        }
        if (shared->isEnding) {
            break;
        }
        const std::uint64_t question = shared->asked;
        shared->begun = Clock::now();
        lock.unlock();
        SensorReading reading;
        reading.problem = shared->source->read(reading.number);
        lock.lock();
        shared->begun.reset();
        reading.count = shared->last.count + 1;
        shared->last = std::move(reading);
        shared->answered = question;
        shared->changed.notify_all();
        next = Clock::now() + shared->interval;
    }
    shared->hasEnded = true;
    shared->changed.notify_all();
}

} // namespace Devices
