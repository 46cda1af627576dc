#ifndef PYTHON_BINDING_PATIENCE_H
#define PYTHON_BINDING_PATIENCE_H

#include "python/binding/Values.h"
#include "radio/files/FileWait.h"

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>

namespace Radio::Python {

/**
 * What long work asks whether to go on: it looks for signals, tells progress and hears of cancellation, not
 * more often than anybody would notice. What Python raises meanwhile ends the work as a cancellation does,
 * and is kept for who asked for the work, who has its result then, too.
 *
 * Made and destroyed with the interpreter's lock; asked without it, on the thread that works.
 */
class Patience {
public:
    /** `progress` is called with what `tell` gives, `cancel` without anything, where they are not None. */
    explicit Patience(py::object progress = py::none(), py::object cancel = py::none());

    /** Asked again and again. `tell` makes the arguments of `progress`, and is called with the interpreter's
     * lock. */
    bool goOn(const std::function<py::tuple()>& tell);
    bool goOn() {
        return goOn([] { return py::tuple(); });
    }
    /** Calls into Python from work that goes on: what is raised is kept, and ends the work. */
    void call(const std::function<void()>& what);

    /** Tells progress a last time, however short ago it was told. With the interpreter's lock. */
    void finish(const py::tuple& arguments);
    /** What Python raised meanwhile, or None; looks for signals a last time, so that one that came at the end
     * of the work has its result, too. With the interpreter's lock. */
    py::object raised();
    /** `made` with that in place of its last item. To be called when everything else is made. */
    py::tuple sealed(py::tuple made);
    /** Throws what Python raised, or Closed: for work that has nothing to show before it is done. */
    [[noreturn]] void rethrow();
    bool isOver() const { return m_isCancelled || m_error.has_value(); }

private:
    using Clock = std::chrono::steady_clock;

    void look(const std::function<py::tuple()>& tell);
    void keep(const std::function<void()>& what);

    py::object m_progress;
    py::object m_cancel;
    Clock::time_point m_next;
    /** A child that was forked from within the work does not go on with it. */
    const pid_t m_process;
    bool m_isCancelled = false;
    std::optional<py::error_already_set> m_error;
};

/** For setFileWait(): Ctrl-C, and what else a handler of signals raises, ends a wait, as the end of the
 * interpreter does on other threads. Gives a signal then, and keeps what was raised. May be called with the
 * lock or without. */
int waitForFileOrPython(FileUse use, int descriptor, std::chrono::milliseconds most);
/** What was raised while a file was waited for, and nobody took yet. With the interpreter's lock. */
std::optional<py::error_already_set> takeRaisedInWait();

} // namespace Radio::Python

#endif
