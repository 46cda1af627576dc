#ifndef PYTHON_BINDING_UNLOCKED_H
#define PYTHON_BINDING_UNLOCKED_H

#include <pybind11/pybind11.h>

namespace Radio::Python {

/**
 * Lets other threads of the interpreter go on, as long as the object lives. Nothing that works so is still at
 * it when the interpreter ends: leave() awaits it, since a thread that then asked for the lock would be taken
 * out of the process, through destructors that let nothing pass.
 */
class Unlocked {
public:
    /** With the interpreter's lock. Throws Closed on other threads than the first while the interpreter is
     * leaving. */
    Unlocked();
    Unlocked(const Unlocked&) = delete;
    Unlocked& operator=(const Unlocked&) = delete;
    ~Unlocked();

private:
    PyThreadState* m_state;
};

/** Lets other threads of the interpreter go on while `work` is done; gives what it gives. */
template <typename Work>
auto unlocked(const Work& work) {
    const Unlocked release;
    return work();
}

/** The interpreter is about to end: what works is to end, too. May be called without the lock. */
bool isLeaving();
/** Ends what other threads work at, and waits until they have. Called by the interpreter before it ends, with
 * its lock. Throws what a signal raises meanwhile. */
void leave();
/** Waits for the interpreter's lock where that will not be had any more, so that nothing is unwound. */
void requireInterpreter();
/** In a child: what other threads of the parent worked at is nobody's any more. */
void forgetOtherThreads();

} // namespace Radio::Python

#endif
