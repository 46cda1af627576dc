#ifndef RADIOCTL_CONSOLE_KEYPRESS_H
#define RADIOCTL_CONSOLE_KEYPRESS_H

#include "radioctl/console/Interrupt.h"

#include <termios.h>

#include <chrono>

namespace Radio {

/**
 * Waits for a key at the terminal, which gives keys at once and does not show them as long as the object
 * lives. Not while a line is edited.
 */
class KeyPress {
public:
    /** `interrupt` must outlive the object. */
    explicit KeyPress(Interrupt& interrupt);
    KeyPress(const KeyPress&) = delete;
    KeyPress& operator=(const KeyPress&) = delete;
    /** Gives the terminal back as it was. */
    ~KeyPress();

    /** Waits so long at most; true when a key came, which nobody else is given then, or a signal. A SIGINT,
     * the key Ctrl-C, is forgotten. */
    bool wait(std::chrono::milliseconds time);

private:
    void prepare() const;

    Interrupt& m_interrupt;
    termios m_before{};
    bool m_isTerminal;
};

} // namespace Radio

#endif
