#ifndef RADIO_FILES_TEXTFILE_H
#define RADIO_FILES_TEXTFILE_H

#include <cstddef>
#include <filesystem>
#include <string>

namespace Radio {

/**
 * The content of a file; of one that is larger than `most` bytes, one byte more than these, so that the
 * caller sees it. `what` says what it should be. Throws InputError; GivenUp, when setReadingWait() has been
 * given something that does not wait for ever.
 */
std::string readTextFile(const std::filesystem::path& file, std::size_t most, const std::string& what);

/** Waits until a descriptor can be read; gives 0, or the number of a signal that asks the process to end. */
using ReadingWait = int (*)(int descriptor);

/**
 * How this process waits for files that keep it waiting, pipes for example. Whoever holds signals back while
 * it reads has to say so; until then it waits for ever. For the beginning of a program, before any thread
 * reads.
 */
void setReadingWait(ReadingWait wait);

} // namespace Radio

#endif
