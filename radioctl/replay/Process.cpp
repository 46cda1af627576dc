#include "radioctl/replay/Process.h"

#include "radio/files/InputError.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>
#include <utility>

namespace Radio::Replaying {

namespace {

constexpr const char* programName = "radioctl-replay";

[[noreturn]] void refuse(const std::string& why) {
    throw InputError(Place{programName, 0}, why);
}

/** In the new process. It ends when `parent` does, however that comes about. */
[[noreturn]] void become(char* const* arguments, int output, pid_t parent) {
    constexpr int couldNotBegin = 127;
    static_cast<void>(prctl(PR_SET_PDEATHSIG, SIGKILL));
    if (getppid() == parent && dup2(output, STDOUT_FILENO) != -1) {
        static_cast<void>(execv(arguments[0], arguments));
    }
    _exit(couldNotBegin);
}

} // namespace

std::string findReplayer() {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for (const auto& place : {folder / programName, folder / REPLAYER_FOLDER / programName}) {
        if (access(place.c_str(), X_OK) == 0) {
            return place.string();
        }
    }
    refuse("is not there, neither in " + folder.string() + " nor in " +
           (folder / REPLAYER_FOLDER).lexically_normal().string());
}

Process::Process(const std::string& replayer, const std::string& file, int seconds) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        refuse("cannot be started: " + std::generic_category().message(errno));
    }
    m_output = ends[0];
    std::array<std::string, 5> words{replayer, "--seconds", std::to_string(seconds), "--", file};
    const std::array<char*, 6> arguments{words[0].data(), words[1].data(), words[2].data(),
                                         words[3].data(), words[4].data(), nullptr};
    const pid_t parent = getpid();
    // Signals that are held back here stay so there: what ends this program ends those that it started, too.
    m_pid = fork();
    if (m_pid == 0) {
        become(arguments.data(), ends[1], parent);
    }
    const int reason = errno;
    static_cast<void>(close(ends[1]));
    if (m_pid < 0) {
        static_cast<void>(close(m_output));
        refuse("cannot be started: " + std::generic_category().message(reason));
    }
}

Process::Process(Process&& other) noexcept
    : m_pid(std::exchange(other.m_pid, -1)),
      m_output(std::exchange(other.m_output, -1)) {}

Process& Process::operator=(Process&& other) noexcept {
    std::swap(m_pid, other.m_pid);
    std::swap(m_output, other.m_output);
    return *this;
}

Process::~Process() {
    if (m_pid != -1) {
        static_cast<void>(kill(m_pid, SIGKILL));
        static_cast<void>(end());
    }
}

bool Process::readMore(std::string& text) const {
    std::array<char, 4096> bytes{};
    const ssize_t count = read(m_output, bytes.data(), bytes.size());
    if (count > 0) {
        text.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return count > 0 || (count < 0 && errno == EINTR);
}

void Process::remind() const {
    static_cast<void>(kill(m_pid, SIGXCPU));
}

int Process::end() {
    static_cast<void>(close(std::exchange(m_output, -1)));
    const pid_t pid = std::exchange(m_pid, -1);
    int status = 0;
    while (waitpid(pid, &status, 0) == -1 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace Radio::Replaying
