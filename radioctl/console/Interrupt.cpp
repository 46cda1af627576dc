#include "radioctl/console/Interrupt.h"

#include <poll.h>

#include <array>
#include <atomic>
#include <cerrno>

namespace Radio {

namespace {

constexpr std::array<int, 4> leavingSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
constexpr std::chrono::milliseconds idleInterval(250);

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

const Interrupt* Interrupt::s_current = nullptr;

namespace {

/** Whether there is an object, and which signals it holds back. */
std::atomic<bool> isHolding{false};
sigset_t heldBack{};

int signalAmong(const sigset_t& held) {
    if (signalThatCame != 0) {
        return signalThatCame;
    }
    sigset_t pending{};
    sigpending(&pending);
    for (const int number : leavingSignals) {
        if (sigismember(&held, number) == 1 && sigismember(&pending, number) == 1) {
            return number;
        }
    }
    return 0;
}

} // namespace

Interrupt::Interrupt() {
    s_current = this;
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
    heldBack = m_held;
    isHolding = true;
}

Interrupt::~Interrupt() {
    s_current = nullptr;
    isHolding = false;
    sigprocmask(SIG_SETMASK, &m_maskBefore, nullptr);
}

int Interrupt::signal() const {
    return signalAmong(m_held);
}

bool Interrupt::isWaitedOn() {
    return signalThatCame == 0 && (!isHolding || signalAmong(heldBack) == 0);
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

Interrupt::Waiting Interrupt::wait(int descriptor, short events,
                                   std::optional<std::chrono::milliseconds> time) const {
    pollfd wanted{descriptor, events, 0};
    timespec limit{};
    if (time) {
        limit.tv_sec = static_cast<time_t>(time->count() / 1000);
        limit.tv_nsec = static_cast<long>(time->count() % 1000) * 1000000;
    }
    while (signal() == 0 && goesOn == 0) {
        const int ready = ppoll(&wanted, 1, time ? &limit : nullptr, &m_maskBefore);
        if (ready == 0 && signal() == 0) {
            return Waiting::late;
        }
        // What poll cannot wait for is for the reader to find out.
        if (ready > 0 || (ready < 0 && errno != EINTR)) {
            return signal() == 0 ? Waiting::ready : Waiting::disturbed;
        }
    }
    return Waiting::disturbed;
}

bool Interrupt::waitForInput(int descriptor, const std::function<void()>& idle) const {
    goesOn = 0;
    if (!idle) {
        return wait(descriptor, POLLIN, std::nullopt) == Waiting::ready;
    }
    for (;;) {
        const Waiting waiting = wait(descriptor, POLLIN, idleInterval);
        if (waiting != Waiting::late) {
            return waiting == Waiting::ready;
        }
        idle();
    }
}

bool Interrupt::waitForInput(int descriptor, std::chrono::milliseconds time) const {
    goesOn = 0;
    return wait(descriptor, POLLIN, time) == Waiting::ready;
}

int waitForFileOrSignal(FileUse use, int descriptor, std::chrono::milliseconds most) {
    const auto events = static_cast<short>(use == FileUse::reading ? POLLIN : POLLOUT);
    const Interrupt* const interrupt = Interrupt::current();
    if (interrupt == nullptr) {
        pollfd wanted{descriptor, events, 0};
        static_cast<void>(poll(&wanted, 1, static_cast<int>(most.count())));
        return 0;
    }
    Interrupt::Waiting waiting = Interrupt::Waiting::disturbed;
    while (waiting == Interrupt::Waiting::disturbed && interrupt->signal() == 0) {
        goesOn = 0;
        waiting = interrupt->wait(descriptor, events, most);
    }
    return interrupt->signal();
}

} // namespace Radio
