#ifndef TESTS_SUPPORT_FAILINGMEMORY_H
#define TESTS_SUPPORT_FAILINGMEMORY_H

#include <cstddef>

/** Memory that runs out when a test says so: it replaces operator new of the whole test program. */
namespace FailingMemory {

/** Has the allocation of this number, counted from 1, fail; with `forGood` all behind it too. 0: none. */
void failAt(unsigned number, bool forGood = false);
/** True when an allocation has failed since failAt(). */
bool hasFailed();
/** How many allocations are in use. */
std::size_t inUse();

} // namespace FailingMemory

#endif
