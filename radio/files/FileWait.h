#ifndef RADIO_FILES_FILEWAIT_H
#define RADIO_FILES_FILEWAIT_H

#include <chrono>
#include <cstdint>

namespace Radio {

enum class FileUse : std::uint8_t { reading, writing };

/** Waits until a descriptor can be used so, but not for longer than `most`; of -1, for so long. Gives 0, or
 * the number of a signal that asks the process to end. */
using FileWait = int (*)(FileUse use, int descriptor, std::chrono::milliseconds most);

/**
 * How this process waits for files that keep it waiting, pipes for example. Whoever holds signals back while
 * it reads or writes has to say so; until then, and with null, it waits for ever. For the beginning of a
 * program, before any thread reads.
 */
void setFileWait(FileWait wait);

/** Waits as it was said there. */
int waitForFile(FileUse use, int descriptor, std::chrono::milliseconds most);
/** The same, for as long as it takes or for some while at least. */
int waitForFile(FileUse use, int descriptor);

} // namespace Radio

#endif
