#include "python/binding/Patience.h"

#include <utility>

namespace Radio::Python {

namespace {

/** Often enough that nobody waits for Ctrl-C, and seldom enough that the lock costs nothing. */
constexpr std::chrono::milliseconds interval(50);

} // namespace

Patience::Patience(py::object progress, py::object cancel)
    : m_progress(std::move(progress)),
      m_cancel(std::move(cancel)),
      m_next(Clock::now() + interval) {}

bool Patience::goOn(const std::function<py::tuple()>& tell) {
    if (isOver()) {
        return false;
    }
    const Clock::time_point now = Clock::now();
    if (now < m_next) {
        return true;
    }
    call([&] { look(tell); });
    m_next = Clock::now() + interval;
    return !isOver();
}

void Patience::call(const std::function<void()>& what) {
    if (m_error) {
        return;
    }
    const py::gil_scoped_acquire lock;
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
    m_isCancelled = !m_cancel.is_none() && py::bool_(m_cancel());
}

void Patience::finish(const py::tuple& arguments) {
    if (m_progress.is_none() || m_error) {
        return;
    }
    try {
        m_progress(*arguments);
    } catch (py::error_already_set& error) {
        m_error.emplace(std::move(error));
    }
}

py::object Patience::raised() const {
    return m_error ? py::object(m_error->value()) : py::object(py::none());
}

} // namespace Radio::Python
