// One thread drives the radio; everybody else hands it what is to be done. The platform needs no locks, and what is
// slow, a calibration for instance, lets nobody in between.
#include "Radio.h"

#include <condition_variable>
#include <cstdio>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

class RadioThread {
public:
    RadioThread() : m_thread([this] { run(); }) {}
    RadioThread(const RadioThread&) = delete;
    RadioThread& operator=(const RadioThread&) = delete;
    /** What was handed over is done first. */
    ~RadioThread() {
        post({});
        m_thread.join();
    }

    /** Has it done, and waits for it. On the radio's own thread, where observers are told, it is done at once: to
     * wait there would be to wait for oneself. */
    template <typename Work>
    auto call(Work work) {
        std::packaged_task<decltype(work())()> task(std::move(work));
        auto result = task.get_future();
        if (std::this_thread::get_id() == m_thread.get_id()) {
            task();
        } else {
            post([&task] { task(); });
        }
        return result.get();
    }

    /** Has it done, and goes on: for notifications. */
    void post(std::function<void()> work) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_work.push_back(std::move(work));
        m_isThere.notify_one();
    }

private:
    void run() {
        while (const std::function<void()> work = next()) {
            work();
        }
    }
    std::function<void()> next() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_isThere.wait(lock, [this] { return !m_work.empty(); });
        std::function<void()> work = std::move(m_work.front());
        m_work.pop_front();
        return work;
    }

    std::mutex m_mutex;
    std::condition_variable m_isThere;
    std::deque<std::function<void()>> m_work;
    std::thread m_thread; // last: it uses the others
};

} // namespace

int main() {
    RadioThread thread;
    auto radio = thread.call([] { return std::make_unique<Radio>(); });
    const bool isGood = radio->isUp();

    // Two clients that know nothing of each other, each of which tunes both channels.
    std::array<int, 2> taken{};
    std::vector<std::thread> clients;
    for (int& count : taken) {
        clients.emplace_back([&] {
            for (std::uint32_t step = 0; step < 100; ++step) {
                const std::int32_t channel = step % 2 == 0 ? 1 : 2;
                const std::uint32_t carrier = 7442000 + 28000 * (step % 4);
                count += thread.call([&] { return radio->tune(channel, FrequencyHandlerTx, carrier); }) ? 1 : 0;
            }
        });
    }
    clients.emplace_back([&] { // the temperature service: it does not wait for the radio
        for (int degrees = 0; degrees < 100; ++degrees) {
            thread.post([&radio, degrees] { radio->notifyTemperature(degrees); });
        }
    });
    for (std::thread& client : clients) {
        client.join();
    }

    const unsigned long first = thread.call([&] { return radio->carrier(1); });
    const unsigned long second = thread.call([&] { return radio->carrier(2); });
    thread.call([&] { radio.reset(); });
    std::printf("%d carriers taken; channel 1 is at %lu kHz, channel 2 at %lu kHz\n", taken[0] + taken[1], first,
                second);
    return isGood && taken[0] + taken[1] == 200 && first == 7498000 && second == 7526000 ? 0 : 1;
}
