#ifndef RADIOCTL_CONSOLE_IMPATIENCE_H
#define RADIOCTL_CONSOLE_IMPATIENCE_H

#include "radio/session/Session.h"
#include "radioctl/console/Interrupt.h"

namespace Radio {

/** Has whoever is at the console end what takes time: Ctrl-C a command, and any key what they watch. */
class Impatience {
public:
    /** The others must outlive the object, and `session` must not carry out anything after its end. */
    Impatience(Session& session, Interrupt& interrupt, bool atTerminal);
    Impatience(const Impatience&) = delete;
    Impatience& operator=(const Impatience&) = delete;

    /** False once a signal came while a line was carried out, or what it shows reaches nobody. */
    bool goesOn();
    /** The line is over: at a terminal Ctrl-C has done its work then, and the next one is waited for. */
    void settle();

private:
    Interrupt& m_interrupt;
    bool m_atTerminal;
    bool m_isOver = false;
};

} // namespace Radio

#endif
