#ifndef PLATFORM_DEVICES_SENSORREADER_H
#define PLATFORM_DEVICES_SENSORREADER_H

#include "devices/SensorSource.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>

namespace Devices {

/** What a sensor gave: a number, or why there is none. */
struct SensorReading {
    double number = 0;
    std::string problem{};
    /** Counts the readings; 0: there was none yet. */
    std::uint64_t count = 0;
};

/**
 * Reads a sensor on a thread of its own, which is left to itself when a read is still waiting for the kernel
 * at the end and for longer than the time limit.
 */
class SensorReader {
public:
    SensorReader(std::unique_ptr<SensorSource> source, std::chrono::milliseconds interval,
                 std::chrono::milliseconds timeLimit);
    SensorReader(const SensorReader&) = delete;
    SensorReader& operator=(const SensorReader&) = delete;
    ~SensorReader();

    /** Has the sensor read at its interval from now on. */
    void start();
    /** Has it read now, and waits for that until the time limit is over. */
    SensorReading readNow();
    /** Has the thread come to an end, which the destructor waits for, until the time limit from now on. */
    void stop();
    /** What was read last. Where a read takes longer than the time limit, that is the problem. */
    SensorReading last() const;

private:
    struct Shared;
    static void work(const std::shared_ptr<Shared>& shared);
    void startThread();

    std::shared_ptr<Shared> m_shared;
    std::chrono::milliseconds m_timeLimit;
    std::chrono::steady_clock::time_point m_end{};
    std::thread m_thread;
};

} // namespace Devices

#endif
