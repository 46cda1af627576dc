#include "python/binding/Patience.h"

#include "python/binding/Errors.h"
#include "python/binding/Unlocked.h"

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <utility>

namespace Radio::Python {

namespace {

/** Often enough that nobody waits for Ctrl-C, and seldom enough that the lock costs nothing. */
constexpr std::chrono::milliseconds interval(50);

/** Of the first thread, which alone hears of signals; not destroyed, since the interpreter may be gone then.
 */
std::optional<py::error_already_set>& raisedInWait() {
    static auto* const raised = new std::optional<py::error_already_set>();
    return *raised;
}

/** Whether a handler of signals raised something. */
bool hasRaised() {
    requireInterpreter();
    const py::gil_scoped_acquire lock;
    if (PyErr_CheckSignals() == 0) {
        return false;
    }
    raisedInWait().emplace();
    return true;
}

} // namespace

Patience::Patience(py::object progress, py::object cancel)
    : m_progress(std::move(progress)),
      m_cancel(std::move(cancel)),
      m_next(Clock::now() + interval),
      m_process(getpid()) {}

bool Patience::goOn(const std::function<py::tuple()>& tell) {
    if (isOver()) {
        return false;
    }
    const Clock::time_point now = Clock::now();
    if (now < m_next) {
        return true;
    }
    if (isLeaving()) {
        m_isCancelled = true;
        return false;
    }
    call([&] { look(tell); });
    m_next = Clock::now() + interval;
    return !isOver();
}

void Patience::call(const std::function<void()>& what) {
    if (m_error) {
        return;
    }
    requireInterpreter();
    const py::gil_scoped_acquire lock;
    keep(what);
}

void Patience::keep(const std::function<void()>& what) {
    try {
        what();
    } catch (py::error_already_set& error) {
        m_error.emplace(std::move(error));
    }
}

void Patience::look(const std::function<py::tuple()>& tell) {
    if (PyErr_CheckSignals() != 0) {
        throw py::error_already_set();
    }
    if (!m_progress.is_none()) {
        m_progress(*tell());
    }
    m_isCancelled = m_process != getpid() || (!m_cancel.is_none() && py::bool_(m_cancel()));
}

void Patience::finish(const py::tuple& arguments) {
    if (!m_progress.is_none() && !m_error) {
        keep([&] { m_progress(*arguments); });
    }
}

py::object Patience::raised() {
    if (!m_error) {
        if (std::optional<py::error_already_set> raised = takeRaisedInWait()) {
            m_error.emplace(std::move(*raised));
        }
    }
    if (!m_error) {
        keep([] {
            if (PyErr_CheckSignals() != 0) {
                throw py::error_already_set();
            }
        });
    }
    if (!m_error) {
        return py::none();
    }
    const py::object error = m_error->value();
    if (m_error->trace()) { // people look for where in their own function it was
        PyException_SetTraceback(error.ptr(), m_error->trace().ptr());
    }
    return error;
}

py::tuple Patience::sealed(py::tuple made) {
    made[made.size() - 1] = raised();
    return made;
}

void Patience::rethrow() {
    if (m_error) {
        throw py::error_already_set(std::move(*m_error));
    }
    throw Closed("the interpreter is about to end, expected nothing to be begun any more");
}

int waitForFileOrPython(FileUse use, int descriptor, std::chrono::milliseconds most) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + most;
    pollfd wanted{descriptor, static_cast<short>(use == FileUse::reading ? POLLIN : POLLOUT), 0};
    for (;;) {
        const int ready = poll(&wanted, 1, static_cast<int>(std::min(most, interval).count()));
        if (ready > 0) {
            return 0;
        }
        if (isLeaving() && syscall(SYS_gettid) != getpid()) {
            return SIGTERM;
        }
        if (hasRaised()) {
            return SIGINT;
        }
        if (Clock::now() >= end) {
            return 0;
        }
    }
}

std::optional<py::error_already_set> takeRaisedInWait() {
    return std::exchange(raisedInWait(), std::nullopt);
}

} // namespace Radio::Python
