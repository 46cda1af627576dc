#ifndef PLATFORM_DEVICES_THREADS_H
#define PLATFORM_DEVICES_THREADS_H

#include <csignal>
#include <functional>
#include <thread>

namespace Devices {

/** Starts a thread on which no signal is delivered: they are the program's, on threads that it knows. */
std::thread startThread(std::function<void()> body);

/**
 * Keeps a write to a pipe or a socket at whose other end nobody is from ending the program: as long as the
 * object lives, the signal for it is held back on this thread, and what came of it is discarded at the end. A
 * signal that was waiting before, or that the program blocks itself, stays as it was.
 */
class BrokenPipeGuard {
public:
    BrokenPipeGuard();
    BrokenPipeGuard(const BrokenPipeGuard&) = delete;
    BrokenPipeGuard& operator=(const BrokenPipeGuard&) = delete;
    ~BrokenPipeGuard();

    /** Says that a write failed; only then is there a signal to be discarded. */
    void failed() { m_isFailed = true; }

private:
    sigset_t m_before{};
    bool m_wasBlocked = false;
    bool m_isFailed = false;
};

} // namespace Devices

#endif
