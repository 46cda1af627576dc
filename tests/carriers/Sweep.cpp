#include "Sweep.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace Carriers {

namespace {

/** Carriers in one part: milliseconds of work. */
constexpr std::uint64_t partSize = std::uint64_t{1} << 20U;

/** Gives parts away in ascending order, and gathers what came of them. */
class Work {
public:
    Work(const CarrierRange& carriers, unsigned workers) : m_rest(carriers), m_workers(workers) {}

    /** The next part; nothing when there is none, or none below a difference that was found. */
    std::optional<CarrierRange> take() {
        const std::lock_guard lock(m_mutex);
        if (m_difference || m_rest.first >= m_rest.end) {
            return std::nullopt;
        }
        CarrierRange part = m_rest;
        m_rest.first += partSize * m_rest.stride;
        part.end = std::min(part.end, m_rest.first);
        return part;
    }

    /** Parts that are taken are finished, so that of several differences the lowest becomes known. */
    void give(const CarrierRange& part, const std::optional<Difference>& difference) {
        const std::lock_guard lock(m_mutex);
        m_done += part.count();
        if (difference && (!m_difference || difference->carrier < m_difference->carrier)) {
            m_difference = difference;
        }
    }

    void leave() {
        const std::lock_guard lock(m_mutex);
        --m_workers;
        m_left.notify_one();
    }

    /** Waits until all workers have left. */
    void wait(const Progress& progress) {
        std::unique_lock lock(m_mutex);
        while (!m_left.wait_for(lock, std::chrono::milliseconds(500), [this] { return m_workers == 0; })) {
            const std::uint64_t done = m_done;
            lock.unlock();
            progress(done);
            lock.lock();
        }
    }

    const std::optional<Difference>& difference() const { return m_difference; }

private:
    std::mutex m_mutex;
    std::condition_variable m_left;
    CarrierRange m_rest;
    std::uint64_t m_done = 0;
    /** Those that have not left. */
    unsigned m_workers;
    std::optional<Difference> m_difference;
};

} // namespace

std::optional<Difference> sweep(const CarrierRange& carriers, const Check& check, unsigned threads,
                                const Progress& progress) {
    Work work(carriers, threads);
    std::vector<std::thread> workers;
    for (unsigned i = 0; i < threads; ++i) {
        workers.emplace_back([&] {
            while (const std::optional<CarrierRange> part = work.take()) {
                work.give(*part, check(*part));
            }
            work.leave();
        });
    }
    work.wait(progress);
    for (std::thread& worker : workers) {
        worker.join();
    }
    return work.difference();
}

} // namespace Carriers
