#include "python/binding/Unlocked.h"

#include "python/binding/Errors.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace Radio::Python {

namespace {

namespace py = pybind11;

std::atomic<bool> leaving{false};
/** How many are at work without the lock; changed and read with it. */
int atWork = 0;
/** So many of them are the thread's own: work may call back into Python, and that work again. */
thread_local int mine = 0;

constexpr std::chrono::milliseconds pause(2);
/** For longer than the slowest device takes nobody is waited for: a file may be read that never ends. */
constexpr std::chrono::seconds patienceAtTheEnd(60);

bool isFirstThread() {
    return syscall(SYS_gettid) == getpid();
}

bool isFinalizing() {
#if PY_VERSION_HEX >= 0x030D0000
    return Py_IsFinalizing() != 0;
#else
    return _Py_IsFinalizing() != 0;
#endif
}

} // namespace

Unlocked::Unlocked() {
    if (isLeaving() && !isFirstThread()) {
        throw Closed("the interpreter is about to end, expected nothing to be begun any more");
    }
    ++atWork;
    ++mine;
    m_state = PyEval_SaveThread();
}

Unlocked::~Unlocked() {
    requireInterpreter();
    PyEval_RestoreThread(m_state);
    --mine;
    --atWork;
}

bool isLeaving() {
    return leaving;
}

void leave() {
    leaving = true;
    const auto end = std::chrono::steady_clock::now() + patienceAtTheEnd;
    while (atWork > mine && std::chrono::steady_clock::now() < end) {
        PyThreadState* const state = PyEval_SaveThread();
        std::this_thread::sleep_for(pause);
        PyEval_RestoreThread(state);
        if (PyErr_CheckSignals() != 0) {
            throw py::error_already_set();
        }
    }
}

void requireInterpreter() {
    // Only when leave() was interrupted, or waited in vain. Threads that wait end with the process.
    while (isFinalizing() && !isFirstThread()) {
        std::this_thread::sleep_for(std::chrono::hours(1));
    }
}

void forgetOtherThreads() {
    atWork = mine;
}

} // namespace Radio::Python
