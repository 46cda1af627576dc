#ifndef RADIO_LABORATORY_WORKERS_H
#define RADIO_LABORATORY_WORKERS_H

#include "radio/laboratory/Trial.h"

#include <functional>
#include <vector>

namespace Radio::Laboratory {

/** Who is told of trials, on the thread that called. */
struct Told {
    /** In any order; what it throws ends the work. */
    std::function<void(const Trial&)> done;
    /** Asked about every 50 ms whether to go on. */
    std::function<bool()> goOn;
};

/**
 * Carries out `tasks` in `jobs` processes, since a radio finds its platform through singletons: there is one
 * in a process. They are forked from this one, which has no other threads then, and end with it, however that
 * is. A process that is killed is replaced, and its task begun anew.
 *
 * Returns false when it did not go on. Throws InputError when a transmitter cannot be calibrated, when
 * processes cannot be started, and when the same task ends its process twice.
 */
bool carryOutAll(const Description& laboratory, const std::vector<Task>& tasks, unsigned jobs,
                 const Told& told);

} // namespace Radio::Laboratory

#endif
