/** What is known of each thread, and its number. */
#ifndef PLATFORM_RECORDING_THREADS_H
#define PLATFORM_RECORDING_THREADS_H

#include <cstdint>

namespace Recording {

struct Thread {
    /** The library is at work on it, and not the platform that it called. */
    bool isInLibrary;
    /** 0: none yet. */
    std::uint8_t number;
    std::uint8_t depth;
    /** What the operation belongs to that is going on. */
    std::uint16_t object;
    /** The place that it has for its messages. */
    void* message;
    /** The interface broker's handle that it was given last. */
    void* broker;
};
extern __thread Thread t_thread __attribute__((tls_model("initial-exec")));

namespace Threads {

/** From now on threads give back what they have when they end; `atEnd` is called then. */
void begin(void (*atEnd)());
/** Gives this thread a number that no other one has now; 255 when all are taken. */
[[gnu::cold, gnu::noinline]] std::uint8_t takeNumber();

} // namespace Threads

} // namespace Recording

#endif
