#ifndef RADIOCTL_CONSOLE_INTERRUPT_H
#define RADIOCTL_CONSOLE_INTERRUPT_H

#include <csignal>

namespace Radio {

/**
 * Holds SIGINT, SIGTERM and SIGHUP back while a command is carried out, so that the program leaves between
 * two commands and cleanly. They get through only while the program waits for input. A signal that the
 * program was started to ignore stays ignored.
 *
 * One object at a time, for as long as signals are to be held back.
 */
class Interrupt {
public:
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    /** The signal that asked the program to leave; 0 for none. */
    int signal() const;
    /** Forgets a SIGINT that took back a line only. */
    void forget();
    /** Waits until `descriptor` can be read; false when a signal came first, or the program was stopped and
     * goes on. */
    bool waitForInput(int descriptor) const;

private:
    sigset_t m_held{};
    sigset_t m_maskBefore{};
};

} // namespace Radio

#endif
