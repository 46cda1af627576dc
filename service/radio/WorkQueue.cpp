#include "service/radio/WorkQueue.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace Radio::Service {

WorkQueue::WorkQueue(std::size_t most) : m_most(most), m_descriptor(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    if (m_descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
}

WorkQueue::~WorkQueue() {
    ::close(m_descriptor);
}

bool WorkQueue::add(std::function<void()> work) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_isClosed || m_waiting.size() >= m_most) {
        return false;
    }
    m_waiting.push_back(std::move(work));
    static_cast<void>(eventfd_write(m_descriptor, 1)); // full means that it can be read
    return true;
}

void WorkQueue::work() {
    eventfd_t count = 0;
    static_cast<void>(eventfd_read(m_descriptor, &count)); // there may be none yet
    for (;;) {
        std::function<void()> next;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_waiting.empty()) {
                return;
            }
            next = std::move(m_waiting.front());
            m_waiting.pop_front();
        }
        next();
    }
}

void WorkQueue::close() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isClosed = true;
}

void WorkQueue::forget() {
    std::deque<std::function<void()>> forgotten;
    const std::lock_guard<std::mutex> lock(m_mutex);
    forgotten.swap(m_waiting);
}

} // namespace Radio::Service
