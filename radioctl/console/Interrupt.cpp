#include "radioctl/console/Interrupt.h"

#include <poll.h>

#include <array>
#include <cerrno>

namespace Radio {

namespace {

constexpr std::array<int, 3> leavingSignals = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t signalThatCame = 0;
volatile std::sig_atomic_t goesOn = 0;

extern "C" void noteSignal(int number) {
    signalThatCame = number;
}

extern "C" void noteContinuation(int /*number*/) {
    goesOn = 1;
}

void handle(int number, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigaction(number, &action, nullptr);
}

bool isIgnored(int number) {
    struct sigaction action {};
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

Interrupt::Interrupt() {
    sigemptyset(&m_held);
    for (const int number : leavingSignals) {
        if (!isIgnored(number)) {
            handle(number, noteSignal);
            sigaddset(&m_held, number);
        }
    }
    handle(SIGCONT, noteContinuation);
    sigaddset(&m_held, SIGCONT);
    sigprocmask(SIG_BLOCK, &m_held, &m_maskBefore);
}

Interrupt::~Interrupt() {
    sigprocmask(SIG_SETMASK, &m_maskBefore, nullptr);
}

int Interrupt::signal() const {
    if (signalThatCame != 0) {
        return signalThatCame;
    }
    sigset_t pending{};
    sigpending(&pending);
    for (const int number : leavingSignals) {
        if (sigismember(&m_held, number) == 1 && sigismember(&pending, number) == 1) {
            return number;
        }
    }
    return 0;
}

void Interrupt::forget() {
    sigset_t interrupt{};
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    const timespec atOnce{};
    // It may have come while it was held back, and then still waits to be delivered.
    sigtimedwait(&interrupt, nullptr, &atOnce);
    signalThatCame = 0;
}

bool Interrupt::waitForInput(int descriptor) const {
    pollfd wanted{descriptor, POLLIN, 0};
    goesOn = 0;
    while (signal() == 0 && goesOn == 0) {
        if (ppoll(&wanted, 1, nullptr, &m_maskBefore) > 0) {
            return signal() == 0;
        }
        if (errno != EINTR) {
            return signal() == 0;
        }
    }
    return false;
}

} // namespace Radio
