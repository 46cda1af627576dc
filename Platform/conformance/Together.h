#ifndef PLATFORM_CONFORMANCE_TOGETHER_H
#define PLATFORM_CONFORMANCE_TOGETHER_H

#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <thread>

namespace Conformance {

/** True when `get` gives eight threads that ask at the same time the same address. */
inline bool isOneForAll(const std::function<const void*()>& get) {
    constexpr std::size_t count = 8;
    std::array<const void*, count> addresses{};
    std::atomic<std::size_t> waiting{0};
    std::array<std::thread, count> threads;
    for (std::size_t n = 0; n < count; ++n) {
        threads.at(n) = std::thread([&, n] {
            ++waiting;
            while (waiting < count) {
                std::this_thread::yield();
            }
            addresses.at(n) = get();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const void* const address : addresses) {
        if (address == nullptr || address != addresses.front()) {
            return false;
        }
    }
    return true;
}

} // namespace Conformance

#endif
