#ifndef BENCHMARKS_OPERATIONS_H
#define BENCHMARKS_OPERATIONS_H

#include <functional>
#include <string>
#include <vector>

namespace Benchmarks {

/** Carries an operation out on a radio of its own, which lives as long as this; given is how often it was. */
using Run = std::function<void(int)>;

/** One thing that is measured. Only one Run may exist at a time: there is one platform in a process. */
struct Operation {
    /** For example "tx.microwave-hz". */
    std::string name;
    /** By the library, on a radio that has booted. */
    std::function<Run()> library;
    /** By the least code that makes the same calls with the same arithmetic; empty where there is none. */
    std::function<Run()> floor{};
    /** The same, and looks at what has to be looked at; empty where there is none. */
    std::function<Run()> checkedFloor{};
    /** How often it is carried out in one count; 1 for one that cannot be repeated on the same radio. */
    int repetitions = 100;
    /** The name of what undoes it, which is Run(1) and is counted, not timed; empty where nothing does. */
    std::string undoing{};
    /** Whether it is carried out beforehand, so that whatever is done once only is done. */
    bool isWarmedUp = true;
};

/** All of them. */
std::vector<Operation> operations();

} // namespace Benchmarks

#endif
