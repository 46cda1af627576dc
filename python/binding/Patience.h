#ifndef PYTHON_BINDING_PATIENCE_H
#define PYTHON_BINDING_PATIENCE_H

#include "python/binding/Unlocked.h"
#include "python/binding/Values.h"
#include "radio/files/FileWait.h"

#include <sys/types.h>

#include <chrono>
#include <exception>
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
    /** The same where there is nothing to tell. */
    bool goOn();
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
    /** Throws what Python raised, if it did. With the interpreter's lock. */
    void throwRaised();
    bool isOver() const { return m_isCancelled || m_error.has_value(); }

private:
    using Clock = std::chrono::steady_clock;

    bool isDue(Clock::time_point& next);
    void look();
    void keep(const std::function<void()>& what);

    py::object m_progress;
    py::object m_cancel;
    /** When signals are looked for, and when progress is told again. */
    Clock::time_point m_nextLook;
    Clock::time_point m_nextTold;
    /** A child that was forked from within the work does not go on with it. */
    const pid_t m_process;
    bool m_isCancelled = false;
    std::optional<py::error_already_set> m_error;
};

/**
 * As long as it lives, what its thread waits for, a device or whoever writes into a pipe, is given up once
 * `goesOn` says no. Without it devices have their time until the interpreter ends, and files until a handler
 * of signals raises something, too.
 */
class Waiting {
public:
    explicit Waiting(std::function<bool()> goesOn);
    explicit Waiting(Patience& patience) : Waiting([&patience] { return patience.goOn(); }) {}
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;
    ~Waiting();

    /** Has devices and files ask. For the beginning, before anything waits. */
    static void begin();

private:
    static bool isForDevices();
    static bool isForFiles();
    static int forFile(FileUse use, int descriptor, std::chrono::milliseconds most);

    std::function<bool()> m_goesOn;
    Waiting* m_outer;
    bool m_saidNo = false;
};

/** What was raised while a file was waited for outside of that, and nobody took yet. With the interpreter's
 * lock. */
std::optional<py::error_already_set> takeRaisedInWait();

/**
 * Lets other threads go on while `work` is done, which ends soon after Ctrl-C also where it waits for a
 * device or a file; what it then complains of is no fault of these. Gives what it gives.
 */
template <typename Work>
auto waiting(Patience& patience, const Work& work) {
    try {
        const Waiting asked(patience);
        return unlocked(work);
    } catch (const std::exception&) {
        patience.throwRaised();
        throw;
    }
}

} // namespace Radio::Python

#endif
