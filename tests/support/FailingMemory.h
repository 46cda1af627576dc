#ifndef TESTS_SUPPORT_FAILINGMEMORY_H
#define TESTS_SUPPORT_FAILINGMEMORY_H

#include <cstddef>

/**
 * Memory that runs out when a test says so, and that is counted.
 *
 * It replaces operator new of the whole process, and with it those for arrays. malloc, calloc and realloc are
 * counted where they are called by what is linked into the test program, which the library is; they never
 * fail. What the C library takes for itself is not seen.
 */
namespace FailingMemory {

/** Has the allocation of this number, counted from 1, fail; with `forGood` all behind it too. 0: none. */
void failAt(unsigned number, bool forGood = false);
/** How many allocations have failed since failAt(). */
unsigned failures();
/** How many allocations of operator new are in use. */
std::size_t inUse();
/** How many allocations there were so far, failed ones and those of malloc, calloc and realloc included. */
std::size_t taken();

} // namespace FailingMemory

#endif
