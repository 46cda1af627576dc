/**
 * The texts of trace messages. The library writes on a stream of the recorder's, which hands everything to
 * the platform's and keeps the beginning.
 */
#ifndef PLATFORM_RECORDING_MESSAGES_H
#define PLATFORM_RECORDING_MESSAGES_H

#include "Recorder.h"

#include <iosfwd>

namespace Recording::Messages {

/** The stream through which the library is to write, on `target`, the message of which `entry` tells. */
std::ostream& streamFor(std::ostream& target, const Entry& entry);
/** This thread writes no message any more. */
void atThreadsEnd();

} // namespace Recording::Messages

#endif
