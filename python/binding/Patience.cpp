#include "python/binding/Patience.h"

#include "devices/Hardware.h"
#include "python/binding/Errors.h"

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
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
      m_nextLook(Clock::now() + interval),
      m_nextTold(m_nextLook),
      m_process(getpid()) {}

bool Patience::isDue(Clock::time_point& next) {
    if (isOver() || Clock::now() < next) {
        return false;
    }
    m_isCancelled = isLeaving();
    return !m_isCancelled;
}

bool Patience::goOn(const std::function<py::tuple()>& tell) {
    if (isDue(m_nextTold)) {
        call([&] {
            look();
            if (!m_progress.is_none()) {
                m_progress(*tell());
            }
        });
        m_nextTold = m_nextLook = Clock::now() + interval;
    }
    return !isOver();
}

bool Patience::goOn() {
    if (isDue(m_nextLook)) {
        call([this] { look(); });
        m_nextLook = Clock::now() + interval;
    }
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

void Patience::look() {
    if (PyErr_CheckSignals() != 0) {
        throw py::error_already_set();
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

void Patience::throwRaised() {
    if (!raised().is_none()) {
        rethrow();
    }
}

namespace {

thread_local Waiting* innermost = nullptr;
/** Devices are waited for on threads of their own as well, which only the one that drives can answer for. */
std::atomic<bool> isDeviceWanted{true};

} // namespace

Waiting::Waiting(std::function<bool()> goesOn) : m_goesOn(std::move(goesOn)), m_outer(innermost) {
    innermost = this;
}

Waiting::~Waiting() {
    innermost = m_outer;
    if (m_saidNo) {
        isDeviceWanted = true;
    }
}

bool Waiting::isForDevices() {
    if (innermost != nullptr) {
        const bool goesOn = innermost->m_goesOn();
        innermost->m_saidNo = innermost->m_saidNo || !goesOn;
        isDeviceWanted = goesOn;
    }
    return isDeviceWanted && !isLeaving();
}

bool Waiting::isForFiles() {
    if (innermost != nullptr) {
        return innermost->m_goesOn();
    }
    return !(isLeaving() && syscall(SYS_gettid) != getpid()) && !hasRaised();
}

int Waiting::forFile(FileUse use, int descriptor, std::chrono::milliseconds most) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + most;
    pollfd wanted{descriptor, static_cast<short>(use == FileUse::reading ? POLLIN : POLLOUT), 0};
    for (;;) {
        const int ready = poll(&wanted, 1, static_cast<int>(std::min(most, interval).count()));
        if (ready > 0 || (ready < 0 && errno != EINTR)) {
            return 0; // reading and writing say what is wrong
        }
        if (!isForFiles()) {
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

void Waiting::begin() {
    Devices::setPatience(&Waiting::isForDevices);
    setFileWait(&Waiting::forFile);
}

} // namespace Radio::Python
