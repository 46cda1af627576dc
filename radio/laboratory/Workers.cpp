#include "radio/laboratory/Workers.h"

#include "radio/laboratory/Results.h"
#include "radio/text/Words.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <deque>
#include <map>
#include <memory>
#include <system_error>

namespace Radio::Laboratory {

namespace {

constexpr int msBetweenQuestions = 50;
/** In front of what went wrong, where a line of results would be. */
constexpr char trouble = '!';

[[noreturn]] void failToStart(const Description& laboratory) {
    throw InputError({laboratory.file.string(), 0},
                     "a process cannot be started: " + std::generic_category().message(errno));
}

bool writeWhole(int descriptor, const char* from, std::size_t left) {
    while (left > 0) {
        const ssize_t written = send(descriptor, from, left, MSG_NOSIGNAL);
        if (written < 0 && errno != EINTR) {
            return false;
        }
        if (written > 0) {
            from += written;
            left -= static_cast<std::size_t>(written);
        }
    }
    return true;
}

/** A lock that the parent holds, and its ends of the sockets, are not for its children. */
void closeAllBut(int descriptor) {
    static_cast<void>(close_range(STDERR_FILENO + 1, static_cast<unsigned>(descriptor) - 1, 0));
    static_cast<void>(close_range(static_cast<unsigned>(descriptor) + 1, ~0U, 0));
}

/** In the child: carries out one task after the other until nobody asks any more. */
void work(const Description& laboratory, int socket) {
    Task task;
    while (recv(socket, &task, sizeof task, MSG_WAITALL) == static_cast<ssize_t>(sizeof task)) {
        std::string answer;
        try {
            answer = lineOf(*carryOut(laboratory, task, [] { return true; }));
        } catch (const std::exception& error) {
            answer = trouble + std::string(error.what());
        }
        answer += '\n';
        if (!writeWhole(socket, answer.data(), answer.size())) {
            return;
        }
    }
}

/** A process that carries out one task at a time. */
class Worker {
public:
    explicit Worker(const Description& laboratory);
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker();

    int descriptor() const { return m_socket; }
    const std::optional<Task>& task() const { return m_task; }
    /** False when the process is no more. */
    bool give(const Task& task) {
        m_task = task;
        return writeWhole(m_socket, reinterpret_cast<const char*>(&task), sizeof task);
    }
    /** What it says next, without waiting; an empty line: nothing yet. Nothing: the process is no more. */
    std::optional<std::string> listen();
    void rest() { m_task.reset(); }
    /** Takes leave of a process that is no more; says how it ended. */
    std::string farewell();

private:
    pid_t m_pid = -1;
    int m_socket = -1;
    std::optional<Task> m_task;
    std::string m_heard;
};

Worker::Worker(const Description& laboratory) {
    std::array<int, 2> sockets{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0) {
        failToStart(laboratory);
    }
    const pid_t parent = getpid();
    m_pid = fork();
    if (m_pid == -1) {
        const int reason = errno;
        close(sockets[0]);
        close(sockets[1]);
        errno = reason;
        failToStart(laboratory);
    }
    if (m_pid == 0) {
        static_cast<void>(prctl(PR_SET_PDEATHSIG, SIGKILL));
        closeAllBut(sockets[1]);
        if (getppid() == parent) {
            work(laboratory, sockets[1]);
        }
        // What the parent has open and not yet written is the parent's.
        _exit(0);
    }
    close(sockets[1]);
    m_socket = sockets[0];
}

Worker::~Worker() {
    if (m_socket != -1) {
        close(m_socket);
    }
    if (m_pid != -1) {
        static_cast<void>(kill(m_pid, SIGKILL));
        static_cast<void>(waitpid(m_pid, nullptr, 0));
    }
}

std::optional<std::string> Worker::listen() {
    std::array<char, 4096> piece{};
    const ssize_t got = recv(m_socket, piece.data(), piece.size(), MSG_DONTWAIT);
    if (got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR)) {
        return std::nullopt;
    }
    m_heard.append(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    const std::size_t end = m_heard.find('\n');
    if (end == std::string::npos) {
        return "";
    }
    std::string line = m_heard.substr(0, end);
    m_heard.erase(0, end + 1);
    return line;
}

std::string Worker::farewell() {
    int status = 0;
    const bool isKnown = waitpid(m_pid, &status, 0) == m_pid;
    m_pid = -1;
    return isKnown && WIFSIGNALED(status) ? "was killed by signal " + std::to_string(WTERMSIG(status))
                                          : "ended";
}

/** Gives tasks to workers, and takes what they say. */
class Foreman {
public:
    Foreman(const Description& laboratory, const std::vector<Task>& tasks, const Told& told)
        : m_laboratory(laboratory),
          m_waiting(tasks.begin(), tasks.end()),
          m_left(tasks.size()),
          m_told(told) {}

    bool run(unsigned jobs);

private:
    void hire(std::size_t place) {
        m_workers[place].reset();
        m_workers[place] = std::make_unique<Worker>(m_laboratory);
    }
    void employ(std::size_t place);
    void hear(std::size_t place);
    void take(Worker& worker, const std::string& line);
    void replace(std::size_t place);
    std::string nameOf(const Task& task) const {
        return "transmitter " + std::to_string(task.transmitter) + " with the settings " +
               inQuotes(m_laboratory.settings[task.settings].name);
    }

    const Description& m_laboratory;
    std::deque<Task> m_waiting;
    std::size_t m_left;
    const Told& m_told;
    std::vector<std::unique_ptr<Worker>> m_workers;
    std::map<Task, unsigned> m_deaths;
};

bool Foreman::run(unsigned jobs) {
    m_workers.resize(std::min<std::size_t>(jobs, m_left));
    for (std::size_t place = 0; place < m_workers.size(); ++place) {
        hire(place);
    }
    while (m_left > 0) {
        std::vector<pollfd> asked;
        for (std::size_t place = 0; place < m_workers.size(); ++place) {
            employ(place);
            asked.push_back({m_workers[place]->descriptor(), POLLIN, 0});
        }
        static_cast<void>(poll(asked.data(), asked.size(), msBetweenQuestions));
        if (!m_told.goOn()) {
            return false;
        }
        for (std::size_t place = 0; place < m_workers.size(); ++place) {
            if (asked[place].revents != 0) {
                hear(place);
            }
        }
    }
    return true;
}

void Foreman::employ(std::size_t place) {
    if (m_workers[place]->task() || m_waiting.empty()) {
        return;
    }
    const Task task = m_waiting.front();
    m_waiting.pop_front();
    if (!m_workers[place]->give(task)) {
        replace(place);
    }
}

void Foreman::hear(std::size_t place) {
    const std::optional<std::string> line = m_workers[place]->listen();
    if (!line) {
        replace(place);
    } else if (!line->empty()) {
        take(*m_workers[place], *line);
    }
}

void Foreman::take(Worker& worker, const std::string& line) {
    if (line.front() == trouble) {
        throw InputError({m_laboratory.file.string(), 0}, nameOf(*worker.task()) + ": " + line.substr(1));
    }
    worker.rest();
    --m_left;
    m_told.done(trialFrom(line, {m_laboratory.file.string(), 0}));
}

void Foreman::replace(std::size_t place) {
    const std::optional<Task> task = m_workers[place]->task();
    const std::string how = m_workers[place]->farewell();
    if (task) {
        if (++m_deaths[*task] > 1) {
            throw InputError({m_laboratory.file.string(), 0},
                             nameOf(*task) + ": the process that calibrated it " + how + ", twice");
        }
        m_waiting.push_front(*task);
    }
    hire(place);
}

} // namespace

bool carryOutAll(const Description& laboratory, const std::vector<Task>& tasks, unsigned jobs,
                 const Told& told) {
    return tasks.empty() || Foreman(laboratory, tasks, told).run(std::max(jobs, 1U));
}

} // namespace Radio::Laboratory
