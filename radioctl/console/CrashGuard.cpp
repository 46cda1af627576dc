#include "radioctl/console/CrashGuard.h"

#include <termios.h>
#include <unistd.h>

#include <csignal>

namespace Radio {

namespace {

termios terminalBefore{};

extern "C" void restoreAndCrash(int number) {
    static_cast<void>(tcsetattr(STDIN_FILENO, TCSANOW, &terminalBefore));
    static_cast<void>(raise(number)); // nobody handles it any more
}

} // namespace

void keepTerminalThroughCrashes() {
    static bool isKept = false;
    if (isKept || tcgetattr(STDIN_FILENO, &terminalBefore) != 0) {
        return;
    }
    isKept = true;
    struct sigaction action {};
    action.sa_handler = restoreAndCrash;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
        struct sigaction before {};
        if (sigaction(number, nullptr, &before) == 0 && before.sa_handler == SIG_DFL) {
            sigaction(number, &action, nullptr);
        }
    }
}

} // namespace Radio
