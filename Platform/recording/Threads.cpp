#include "Threads.h"

#include <pthread.h>

#include <array>
#include <atomic>

namespace Recording {

__thread Thread t_thread __attribute__((tls_model("initial-exec")));

namespace Threads {

namespace {

/** The number of all threads that find none free. */
constexpr std::uint8_t shared = 255;

/** Which numbers are taken; 0 and the shared one always are. */
std::array<std::atomic<bool>, 256> s_isTaken;
pthread_key_t s_key;
bool s_hasKey;
void (*s_atEnd)();

void end(void* /*any*/) {
    s_atEnd();
    Thread& thread = t_thread;
    if (thread.number != shared) {
        s_isTaken[thread.number].store(false, std::memory_order_release);
    }
    thread.number = 0;
}

} // namespace

void begin(void (*atEnd)()) {
    s_atEnd = atEnd;
    s_hasKey = pthread_key_create(&s_key, &end) == 0;
}

std::uint8_t takeNumber() {
    std::uint8_t number = 1;
    while (number < shared && s_isTaken[number].exchange(true, std::memory_order_acquire)) {
        ++number;
    }
    t_thread.number = number;
    if (s_hasKey) {
        static_cast<void>(pthread_setspecific(s_key, &t_thread));
    }
    return number;
}

} // namespace Threads

} // namespace Recording
