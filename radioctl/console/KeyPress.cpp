#include "radioctl/console/KeyPress.h"

#include "radioctl/console/CrashGuard.h"

#include <unistd.h>

namespace Radio {

KeyPress::KeyPress(Interrupt& interrupt)
    : m_interrupt(interrupt),
      m_isTerminal(tcgetattr(STDIN_FILENO, &m_before) == 0) {
    prepare();
}

void KeyPress::prepare() const {
    if (m_isTerminal) {
        keepTerminalThroughCrashes();
        termios mode = m_before;
        mode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        mode.c_cc[VMIN] = 1;
        mode.c_cc[VTIME] = 0;
        tcsetattr(STDIN_FILENO, TCSANOW, &mode);
    }
}

KeyPress::~KeyPress() {
    if (m_isTerminal) {
        tcsetattr(STDIN_FILENO, TCSANOW, &m_before);
    }
}

bool KeyPress::wait(std::chrono::milliseconds time) {
    if (m_interrupt.waitForInput(STDIN_FILENO, time)) {
        // All that the key sends, and what was pressed with it.
        tcflush(STDIN_FILENO, TCIFLUSH);
        return true;
    }
    if (m_interrupt.signal() == SIGINT) {
        m_interrupt.forget();
        return true;
    }
    // After Ctrl-Z and fg the terminal is as the shell left it.
    prepare();
    return m_interrupt.signal() != 0;
}

} // namespace Radio
