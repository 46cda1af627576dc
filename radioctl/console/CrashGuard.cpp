#include "radioctl/console/CrashGuard.h"

#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace Radio {

namespace {

termios terminalBefore{};

/** What ends a program that does not look after it: by a fault of its own, a limit, or somebody's wish. */
constexpr std::array endings{SIGSEGV, SIGBUS,  SIGFPE,  SIGILL,  SIGABRT,   SIGSYS,  SIGTRAP,
                             SIGXCPU, SIGPIPE, SIGALRM, SIGUSR1, SIGVTALRM, SIGPROF, SIGUSR2};

/** Where the handler works: the usual crash is that of a stack without room. */
constexpr std::size_t stackSize = std::size_t{64} * 1024;
std::array<char, stackSize> ownStack{};

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
    stack_t stack{};
    stack.ss_sp = ownStack.data();
    stack.ss_size = ownStack.size();
    stack_t stackBefore{};
    if (sigaltstack(nullptr, &stackBefore) == 0 && (stackBefore.ss_flags & SS_DISABLE) != 0) {
        static_cast<void>(sigaltstack(&stack, nullptr));
    }
    action.sa_flags |= SA_ONSTACK;
    for (const int number : endings) {
        struct sigaction before {};
        if (sigaction(number, nullptr, &before) == 0 && before.sa_handler == SIG_DFL) {
            sigaction(number, &action, nullptr);
        }
    }
}

} // namespace Radio
