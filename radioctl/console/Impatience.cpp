#include "radioctl/console/Impatience.h"

#include "radioctl/console/KeyPress.h"

#include <chrono>
#include <iostream>
#include <memory>

namespace Radio {

Impatience::Impatience(Session& session, Interrupt& interrupt, bool atTerminal)
    : m_interrupt(interrupt),
      m_atTerminal(atTerminal) {
    session.setGoOn([this] { return goesOn(); });
    if (atTerminal) {
        session.setWatching([&interrupt]() -> Watching {
            return [key = std::make_shared<KeyPress>(interrupt)](std::chrono::milliseconds time) {
                return !key->wait(time);
            };
        });
    }
}

bool Impatience::goesOn() {
    m_isOver = m_isOver || m_interrupt.signal() != 0 || !std::cout;
    return !m_isOver;
}

void Impatience::settle() {
    if (m_isOver && m_atTerminal && m_interrupt.signal() == SIGINT) {
        m_interrupt.forget();
    }
    m_isOver = false;
}

} // namespace Radio
