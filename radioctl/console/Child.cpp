#include "radioctl/console/Child.h"

#include "radioctl/console/Interrupt.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <system_error>

namespace Radio {

namespace {

constexpr std::chrono::milliseconds lookInterval(50);
constexpr int cannotBeRun = 127;

[[noreturn]] void fail(int reason, const char* what) {
    throw std::system_error(reason, std::generic_category(), what);
}

/** Between fork and the program: nothing here may take memory or a lock. */
[[noreturn]] void become(char* const* words, const Child::Streams& streams, pid_t parent, int failure) {
    sigset_t none{};
    sigemptyset(&none);
    // What the program starts itself is in its group, and goes with it.
    const bool isReady =
        setpgid(0, 0) == 0 && prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && getppid() == parent &&
        dup2(streams.input, STDIN_FILENO) != -1 && dup2(streams.output, STDOUT_FILENO) != -1 &&
        dup2(streams.errors, STDERR_FILENO) != -1 && sigprocmask(SIG_SETMASK, &none, nullptr) == 0;
    if (isReady) {
        execvp(words[0], words);
    }
    const int reason = errno;
    static_cast<void>(write(failure, &reason, sizeof reason) == sizeof reason);
    _exit(cannotBeRun);
}

} // namespace

Child::Child(std::vector<std::string> words, const Streams& streams) {
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    std::array<int, 2> failure{};
    if (pipe2(failure.data(), O_CLOEXEC) != 0) {
        fail(errno, "pipe");
    }
    const pid_t self = getpid();
    m_pid = fork();
    const int forkReason = errno;
    if (m_pid == 0) {
        become(arguments.data(), streams, self, failure[1]);
    }
    close(failure[1]);
    int reason = 0;
    // The other end is closed when the program runs.
    const bool hasFailed = m_pid == -1 || read(failure[0], &reason, sizeof reason) == sizeof reason;
    close(failure[0]);
    if (m_pid == -1) {
        fail(forkReason, "fork");
    }
    if (hasFailed) {
        static_cast<void>(waitpid(m_pid, nullptr, 0));
        fail(reason, "exec");
    }
    m_end = static_cast<int>(syscall(SYS_pidfd_open, m_pid, 0));
}

Child::~Child() {
    if (m_pid != -1) {
        kill(-m_pid, SIGKILL);
        while (waitpid(m_pid, nullptr, 0) == -1 && errno == EINTR) {
        }
    }
    if (m_end != -1) {
        close(m_end);
    }
}

std::optional<int> Child::wait() {
    for (;;) {
        int status = 0;
        const pid_t ended = waitpid(m_pid, &status, WNOHANG);
        if (ended == -1 && errno != EINTR) {
            m_pid = -1;
            fail(errno, "waitpid");
        }
        if (ended == m_pid) {
            m_pid = -1;
            return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
        }
        const Interrupt* const interrupt = Interrupt::current();
        if (interrupt != nullptr && interrupt->signal() != 0) {
            return std::nullopt;
        }
        // A kernel that has no descriptor for it is asked again after a while.
        if (interrupt != nullptr) {
            static_cast<void>(interrupt->waitForInput(m_end, lookInterval));
        } else {
            pollfd wanted{m_end, POLLIN, 0};
            static_cast<void>(poll(&wanted, 1, static_cast<int>(lookInterval.count())));
        }
    }
}

} // namespace Radio
