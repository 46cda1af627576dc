#include "devices/Threads.h"

#include <cerrno>
#include <ctime>
#include <utility>

namespace Devices {

namespace {

sigset_t brokenPipe() {
    sigset_t set{};
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    return set;
}

} // namespace

std::thread startThread(std::function<void()> body) {
    sigset_t all{};
    sigset_t before{};
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before); // a new thread inherits the mask
    std::thread thread(std::move(body));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
}

BrokenPipeGuard::BrokenPipeGuard() {
    const sigset_t set = brokenPipe();
    pthread_sigmask(SIG_BLOCK, &set, &m_before);
    m_wasBlocked = sigismember(&m_before, SIGPIPE) != 0;
}

BrokenPipeGuard::~BrokenPipeGuard() {
    if (m_wasBlocked) {
        return;
    }
    const int error = errno;
    const sigset_t set = brokenPipe();
    const timespec atOnce{};
    if (m_isFailed) {
        while (sigtimedwait(&set, nullptr, &atOnce) == -1 && errno == EINTR) {
        }
    }
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    errno = error;
}

} // namespace Devices
