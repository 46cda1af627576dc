#include "Fault.h"

#include "File.h"

#include <sys/mman.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>

namespace Recording::Fault {

namespace {

char* s_memory;
std::size_t s_bytes;
void (*s_stop)();
/** Whoever was asked before. */
struct sigaction s_before;
/** A handler does not write lines; the end of the process does. */
std::atomic<bool> s_isLost;

/** The signal comes again as soon as the handler is left, and does what it would without it. */
void leaveToTheSystem() {
    struct sigaction usual {};
    usual.sa_handler = SIG_DFL;
    static_cast<void>(sigaction(SIGBUS, &usual, nullptr));
}

void handOn(int signal, siginfo_t* info, void* context) {
    if ((s_before.sa_flags & SA_SIGINFO) != 0) {
        s_before.sa_sigaction(signal, info, context);
    } else if (s_before.sa_handler == SIG_DFL || s_before.sa_handler == SIG_IGN) {
        leaveToTheSystem(); // a fault cannot be ignored
    } else {
        s_before.sa_handler(signal);
    }
}

bool isOurs(const siginfo_t& info) {
    const auto address = reinterpret_cast<std::uintptr_t>(info.si_addr);
    return info.si_code > 0 && address - reinterpret_cast<std::uintptr_t>(s_memory) < s_bytes;
}

void handle(int signal, siginfo_t* info, void* context) {
    if (!isOurs(*info)) {
        handOn(signal, info, context);
        return;
    }
    const int error = errno;
    s_isLost = true;
    s_stop();
    letGo();
    errno = error;
}

[[gnu::destructor]] void tellAtTheEnd() {
    if (s_isLost) {
        File::tell("cut short by somebody, or its disk is full", "the radio went on unrecorded");
    }
}

} // namespace

void watch(char* memory, std::size_t bytes, void (*stop)()) {
    s_memory = memory;
    s_bytes = bytes;
    s_stop = stop;
    struct sigaction ours {};
    if (sigaction(SIGBUS, nullptr, &s_before) != 0) {
        return;
    }
    // What another handler wants to be true while it is at work is true here.
    ours.sa_mask = s_before.sa_mask;
    ours.sa_flags = SA_SIGINFO | SA_ONSTACK | (s_before.sa_flags & (SA_NODEFER | SA_RESTART));
    ours.sa_sigaction = &handle;
    static_cast<void>(sigaction(SIGBUS, &ours, nullptr));
}

void letGo() {
    static_cast<void>(
        mmap(s_memory, s_bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0));
}

} // namespace Recording::Fault
