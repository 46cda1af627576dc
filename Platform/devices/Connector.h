#ifndef PLATFORM_DEVICES_CONNECTOR_H
#define PLATFORM_DEVICES_CONNECTOR_H

#include "devices/Link.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>

namespace Devices {

/**
 * Makes a connection on a thread of its own, trying again until there is one.
 *
 * The owner may go at any time: an attempt that does not come to an end within `patience` then is left to
 * itself, with all that it needs.
 */
class Connector {
public:
    using Open = std::function<Opened()>;
    using Clock = std::chrono::steady_clock;

    /** After a failed attempt it waits this long. */
    static constexpr std::chrono::milliseconds interval{500};

    Connector(Open open, std::chrono::milliseconds patience);
    Connector(const Connector&) = delete;
    Connector& operator=(const Connector&) = delete;
    ~Connector();

    /** Has a connection made from now on, at once; a `broken` one is dropped first. The number of the next
     * attempt, which is what await() wants. */
    std::uint64_t start(std::unique_ptr<Link> broken);
    /** There is a new connection to be taken. */
    bool isReady() const;
    /** The new connection, once. */
    std::unique_ptr<Link> take();
    /** Waits until an attempt has come to an end, or until `deadline`: what became of it, without the
     * connection, which is to be taken. `insists`: until one succeeds. */
    Opened await(std::uint64_t attempt, Clock::time_point deadline, bool insists);
    /** Has it come to an end, without waiting for that: the destructor does, for as long as the owner has
     * patience from now on. */
    void stop();

private:
    struct Shared;
    static void work(const std::shared_ptr<Shared>& shared);

    std::shared_ptr<Shared> m_shared;
    std::chrono::milliseconds m_patience;
    Clock::time_point m_end{};
    std::thread m_thread;
};

} // namespace Devices

#endif
