// One lock for the radio: whoever calls the library, or lets the platform call it, holds it meanwhile. Observers are
// told with the lock held, on the thread of whoever tuned.
#include "Radio.h"

#include <cstdio>
#include <mutex>
#include <thread>
#include <vector>

namespace {

class LockedRadio {
public:
    bool isUp() const { return m_radio.isUp(); }
    bool tune(std::int32_t channel, std::int32_t direction, std::uint32_t frequency) {
        const std::lock_guard<std::recursive_mutex> lock(m_mutex);
        return m_radio.tune(channel, direction, frequency);
    }
    unsigned long carrier(std::int32_t channel) {
        const std::lock_guard<std::recursive_mutex> lock(m_mutex);
        return m_radio.carrier(channel);
    }
    /** The service holds it for all channels: it does not know whose observer is whose. */
    void notifyTemperature(int degrees) {
        const std::lock_guard<std::recursive_mutex> lock(m_mutex);
        m_radio.notifyTemperature(degrees);
    }

private:
    std::recursive_mutex m_mutex; // recursive: an observer may ask for the carrier that it was told of
    Radio m_radio;
};

} // namespace

int main() {
    LockedRadio radio;
    const bool isGood = radio.isUp();

    // Two clients that know nothing of each other, each of which tunes both channels.
    std::array<int, 2> taken{};
    std::vector<std::thread> clients;
    for (int& count : taken) {
        clients.emplace_back([&] {
            for (std::uint32_t step = 0; step < 100; ++step) {
                const std::int32_t channel = step % 2 == 0 ? 1 : 2;
                const std::uint32_t carrier = 7442000 + 28000 * (step % 4);
                count += radio.tune(channel, FrequencyHandlerTx, carrier) ? 1 : 0;
            }
        });
    }
    clients.emplace_back([&] {
        for (int degrees = 0; degrees < 100; ++degrees) {
            radio.notifyTemperature(degrees);
        }
    });
    for (std::thread& client : clients) {
        client.join();
    }

    const unsigned long first = radio.carrier(1);
    const unsigned long second = radio.carrier(2);
    std::printf("%d carriers taken; channel 1 is at %lu kHz, channel 2 at %lu kHz\n", taken[0] + taken[1], first,
                second);
    return isGood && taken[0] + taken[1] == 200 && first == 7498000 && second == 7526000 ? 0 : 1;
}
