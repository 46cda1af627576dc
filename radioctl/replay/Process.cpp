#include "radioctl/replay/Process.h"

#include "radio/files/InputError.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace Radio::Replaying {

namespace {

constexpr const char* programName = "radioctl-replay";

[[noreturn]] void refuse(const std::string& why) {
    throw InputError(Place{programName, 0}, why);
}

/** In the new process. It ends when `parent` does, however that comes about. */
[[noreturn]] void become(char* const* arguments, int output, pid_t parent) {
    constexpr int cannotBeStarted = 127;
    static_cast<void>(prctl(PR_SET_PDEATHSIG, SIGKILL));
    if (getppid() == parent && dup2(output, STDOUT_FILENO) != -1) {
        static_cast<void>(execv(arguments[0], arguments));
    }
    _exit(cannotBeStarted);
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

Process start(const std::string& replayer, const std::string& file) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        refuse("cannot be started: " + std::generic_category().message(errno));
    }
    std::array<std::string, 3> words{replayer, "--", file};
    const std::array<char*, 4> arguments{words[0].data(), words[1].data(), words[2].data(), nullptr};
    const pid_t parent = getpid();
    const Process process{fork(), ends[0]};
    if (process.pid == 0) {
        become(arguments.data(), ends[1], parent);
    }
    const int reason = errno;
    static_cast<void>(close(ends[1]));
    if (process.pid < 0) {
        static_cast<void>(close(ends[0]));
        refuse("cannot be started: " + std::generic_category().message(reason));
    }
    return process;
}

bool readMore(const Process& process, std::string& text) {
    std::array<char, 4096> bytes{};
    const ssize_t count = read(process.output, bytes.data(), bytes.size());
    if (count > 0) {
        text.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return count > 0 || (count < 0 && errno == EINTR);
}

int endOf(const Process& process) {
    static_cast<void>(close(process.output));
    int status = 0;
    while (waitpid(process.pid, &status, 0) == -1 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace Radio::Replaying
