#ifndef RADIOCTL_CONSOLE_INTERRUPT_H
#define RADIOCTL_CONSOLE_INTERRUPT_H

#include "radio/files/FileWait.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <functional>
#include <optional>

namespace Radio {

/**
 * Holds SIGINT, SIGTERM, SIGHUP and SIGQUIT back while a command is carried out, so that the program leaves
 * between two commands and cleanly. They get through only while the program waits for input. A signal that
 * the program was started to ignore stays ignored.
 *
 * One object at a time, for as long as signals are to be held back.
 */
class Interrupt {
public:
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    /** The object that there is at the moment; null when there is none. */
    static const Interrupt* current() { return s_current; }

    /** The signal that asked the program to leave; 0 for none. */
    int signal() const;
    /** Whether none has, as far as signals are or were held back; on any thread, also when there is no
     * object.
     */
    static bool isWaitedOn();
    /** Forgets a SIGINT that took back a line or ended a command only. */
    void forget();
    /** Waits until `descriptor` can be read; false when a signal came first, or the program was stopped and
     * goes on. `idle`, unless it is empty, is called every 250 ms meanwhile. */
    bool waitForInput(int descriptor, const std::function<void()>& idle = {}) const;
    /** The same, for so long at most. */
    bool waitForInput(int descriptor, std::chrono::milliseconds time) const;

private:
    enum class Waiting : std::uint8_t { ready, late, disturbed };
    friend int waitForFileOrSignal(FileUse use, int descriptor, std::chrono::milliseconds most);
    /** Without a time, for ever; for what poll() calls `events`. */
    Waiting wait(int descriptor, short events, std::optional<std::chrono::milliseconds> time) const;

    static const Interrupt* s_current;

    sigset_t m_held{};
    sigset_t m_maskBefore{};
};

/** For setFileWait(): waits as long as no signal asks the program to leave. */
int waitForFileOrSignal(FileUse use, int descriptor, std::chrono::milliseconds most);

} // namespace Radio

#endif
