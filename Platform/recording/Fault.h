/** What becomes of memory that has no file behind it any more. */
#ifndef PLATFORM_RECORDING_FAULT_H
#define PLATFORM_RECORDING_FAULT_H

#include <cstddef>

namespace Recording::Fault {

/** Memory that is a file's cannot be reached any more when somebody cuts the file short, or when a disk has
 * no room for it after all: then there is memory of nobody in its place, and `stop` is called, in the handler
 * of a signal. Faults elsewhere are left to whoever was there before. */
void watch(char* memory, std::size_t bytes, void (*stop)());
/** The same, at once: whatever is still written goes nowhere. */
void letGo();

} // namespace Recording::Fault

#endif
