#include "tests/radioctl/program/Process.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace {

constexpr int silenceLimit = 60'000;

struct Pipe {
    Pipe() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
        readEnd = ends[0];
        writeEnd = ends[1];
    }
    int readEnd = -1;
    int writeEnd = -1;
};

/** The set of signals for which a process has a handler. */
std::uint64_t caughtSignals(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string word; status >> word;) {
        if (word == "SigCgt:") {
            std::uint64_t set = 0;
            status >> std::hex >> set;
            return set;
        }
    }
    return 0;
}

void closeIfOpen(int& descriptor) {
    if (descriptor != -1) {
        close(std::exchange(descriptor, -1));
    }
}

} // namespace

Process::Process(const Invocation& invocation) {
    // A program that has ended takes no input; that is for the test to judge, not a reason to die.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    if (invocation.atTerminal) {
        startAtTerminal(invocation);
    } else {
        startOnPipes(invocation);
    }
}

Process::~Process() {
    closeIfOpen(m_input);
    closeIfOpen(m_output);
    closeIfOpen(m_errors);
    if (m_pid != -1) {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
}

void Process::startOnPipes(const Invocation& invocation) {
    const Pipe input;
    const Pipe output;
    const Pipe errors;
    m_pid = fork();
    if (m_pid == 0) {
        dup2(input.readEnd, STDIN_FILENO);
        dup2(output.writeEnd, STDOUT_FILENO);
        dup2(errors.writeEnd, STDERR_FILENO);
        for (const Pipe& pipe : {input, output, errors}) {
            close(pipe.readEnd);
            close(pipe.writeEnd);
        }
        execute(invocation);
    }
    close(input.readEnd);
    close(output.writeEnd);
    close(errors.writeEnd);
    m_input = input.writeEnd;
    m_output = output.readEnd;
    m_errors = errors.readEnd;
}

void Process::startAtTerminal(const Invocation& invocation) {
    winsize size{24, 200, 0, 0};
    m_pid = forkpty(&m_output, nullptr, nullptr, &size);
    if (m_pid == 0) {
        execute(invocation);
    }
    m_input = dup(m_output);
}

void Process::execute(const Invocation& invocation) {
    if (!invocation.outputFile.empty()) {
        dup2(open(invocation.outputFile.c_str(), O_WRONLY), STDOUT_FILENO);
    }
    if (!invocation.inputFile.empty()) {
        dup2(open(invocation.inputFile.c_str(), O_RDONLY), STDIN_FILENO);
    }
    if (invocation.hasNoErrors) {
        close(STDERR_FILENO);
    }
    // Observers that subscribe through C live as long as the process: nobody may delete them.
    setenv("LSAN_OPTIONS", "suppressions=" RADIOCTL_LEAKS ":print_suppressions=0", 1);
    for (const auto& [name, value] : invocation.environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    unsetenv(invocation.environmentWithout.c_str());
    std::string program = RADIOCTL_PROGRAM;
    std::vector<std::string> words = invocation.arguments;
    std::vector<char*> arguments{program.data()};
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    execv(program.c_str(), arguments.data());
    _exit(126);
}

void Process::type(const std::string& text) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = write(m_input, text.data() + written, text.size() - written);
        if (count < 0) {
            return;
        }
        written += static_cast<std::size_t>(count);
    }
}

void Process::closeInput() {
    closeIfOpen(m_input);
}

void Process::closeOutput() {
    closeIfOpen(m_output);
}

void Process::signal(int number) {
    kill(m_pid, number);
}

bool Process::showsWhatIsTyped() const {
    termios mode{};
    constexpr tcflag_t wanted = ICANON | ECHO;
    return tcgetattr(m_input, &mode) == 0 && (mode.c_lflag & wanted) == wanted;
}

void Process::leaveTerminalToAShell() const {
    termios mode{};
    tcgetattr(m_output, &mode);
    mode.c_lflag |= ICANON | ECHO;
    tcsetattr(m_output, TCSANOW, &mode);
}

bool Process::waitUntilItCatches(int number) const {
    const std::uint64_t wanted = std::uint64_t{1} << static_cast<unsigned>(number - 1);
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::milliseconds(silenceLimit);
    while (std::chrono::steady_clock::now() < giveUp) {
        if ((caughtSignals(m_pid) & wanted) != 0) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

bool Process::waitUntilItIsWritten(const std::string& file) {
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::milliseconds(silenceLimit);
    while (std::chrono::steady_clock::now() < giveUp) {
        for (const auto& entry : std::filesystem::directory_iterator(".")) {
            if (entry.path().filename().string().rfind(file + '.', 0) == 0) {
                return true;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

bool Process::readMore() {
    std::array<pollfd, 2> ready{{{m_output, POLLIN, 0}, {m_errors, POLLIN, 0}}};
    if ((m_output == -1 && m_errors == -1) || poll(ready.data(), ready.size(), silenceLimit) <= 0) {
        return false;
    }
    const auto take = [](const pollfd& entry, int& descriptor, std::string& text) {
        std::array<char, 4096> bytes{};
        if (entry.revents != 0) {
            const ssize_t count = read(descriptor, bytes.data(), bytes.size());
            // A terminal whose program has ended gives an error instead of an end.
            if (count <= 0) {
                closeIfOpen(descriptor);
            } else {
                text.append(bytes.data(), static_cast<std::size_t>(count));
            }
        }
    };
    take(ready[0], m_output, m_ending.output);
    take(ready[1], m_errors, m_ending.errors);
    return true;
}

bool Process::waitUntilItEnded() const {
    for (int turn = 0; turn < 1000; ++turn) {
        siginfo_t info{};
        if (waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
            info.si_pid == m_pid) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

bool Process::waitFor(const std::string& text) {
    std::size_t found = m_ending.output.find(text, m_seen);
    while (found == std::string::npos) {
        if (!readMore()) {
            return false;
        }
        found = m_ending.output.find(text, m_seen);
    }
    m_seen = found + text.size();
    return true;
}

Ending Process::finish() {
    while (readMore()) {
    }
    if (m_output != -1 || m_errors != -1) {
        throw std::runtime_error("the program does not end; its output so far: " + m_ending.output);
    }
    int status = 0;
    waitpid(std::exchange(m_pid, -1), &status, 0);
    m_ending.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return m_ending;
}

Ending runProgram(const Invocation& invocation, const std::string& input) {
    Process process(invocation);
    process.type(input);
    process.closeInput();
    return process.finish();
}
