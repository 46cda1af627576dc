#ifndef TESTS_LIBRARY_FLATCALLS_H
#define TESTS_LIBRARY_FLATCALLS_H

#include "CModuleManager_c.h"

#include <string>
#include <vector>

/**
 * The calls of the platform's flat functions in this test program, in which some of them are called through
 * functions of the tests: what the stand-alone platform does not keep of their arguments is kept here.
 */
namespace FlatCalls {

/** A module as it was registered. */
struct Module {
    unsigned id;
    std::string name;
};

/** A phase callback as it was registered. */
struct Callback {
    unsigned moduleId;
    std::string name;
    unsigned order;
    ModuleCallbackRecord* record;
    ECallbackPriority priority;
    unsigned reserved;
    std::vector<unsigned long> phases;
};

/** Forgets the calls so far and gives the broker's handles out as they are. */
void reset();
/** Has the handles of the broker that are given out from now on be null, until a reset. */
void giveNullHandles();

/** The registrations since the last reset, also those that were refused. */
const std::vector<Module>& modules();
const std::vector<Callback>& callbacks();

} // namespace FlatCalls

#endif
