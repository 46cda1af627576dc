/**
 * The file of a recording. It is made beside the place where it is wanted and put there when nothing can fail
 * any more: until then what is there stays as it is.
 */
#ifndef PLATFORM_RECORDING_FILE_H
#define PLATFORM_RECORDING_FILE_H

#include <cstddef>

namespace Recording::File {

/** The value of a variable of the environment; an empty one is none, and so is any of a process that was
 * given rights which its caller does not have. */
const char* environment(const char* name);

/** A new file in memory, of the size that the environment wants; null when it wants none, or when there is
 * none, which a line says. */
char* make(std::size_t& bytes);
/** Puts it where it is wanted; false, with a line, when that is not possible. */
bool keep();

/** One line on standard error about the place where the file is wanted. */
void tell(const char* what, const char* then = "the radio goes on unrecorded");

} // namespace Recording::File

#endif
