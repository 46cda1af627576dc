#ifndef SERVICE_RADIO_WORKQUEUE_H
#define SERVICE_RADIO_WORKQUEUE_H

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

namespace Radio::Service {

/** What other threads want done by the one that drives the radio. */
class WorkQueue {
public:
    /** Holds so many at most. Throws std::system_error when the system has no descriptor for it. */
    explicit WorkQueue(std::size_t most);
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;
    ~WorkQueue();

    /** On any thread: false, and nothing will be done, when there is too much to do already or all is over.
     */
    bool add(std::function<void()> work);
    /** Can be read while there is something to do. */
    int descriptor() const { return m_descriptor; }
    /** Does all that there is; on the thread of the radio. */
    void work();
    /** Takes nothing more. */
    void close();
    /** Does not do what waits, and lets go of what that holds. */
    void forget();

private:
    const std::size_t m_most;
    int m_descriptor;
    std::mutex m_mutex;
    std::deque<std::function<void()>> m_waiting;
    bool m_isClosed = false;
};

} // namespace Radio::Service

#endif
