#ifndef PLATFORM_CONFORMANCE_ENDING_H
#define PLATFORM_CONFORMANCE_ENDING_H

#include <sys/types.h>

#include <string>

namespace Conformance {

/** Waits for the end of a process, and gives its status. */
int waitFor(pid_t child);
/** How a process ended, for example "it ends the process by signal 11 (Segmentation fault)". */
std::string endOf(int status);

} // namespace Conformance

#endif
