#include "radioctl/replay/Replayers.h"

#include "radio/files/InputError.h"

#include <poll.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

namespace Radio::Replaying {

namespace {

/** So long a replayer has to say where it was, when its time is over. */
constexpr std::chrono::seconds lastWords{5};

Verdict unusable(const std::string& file, const std::string& why) {
    Verdict verdict;
    verdict.file = file;
    verdict.reason = file + ": " + why;
    return verdict;
}

} // namespace

Replayers::Replayers(std::size_t jobs, std::chrono::seconds timeout)
    : m_replayer(findReplayer()),
      m_any(epoll_create1(EPOLL_CLOEXEC)),
      m_jobs(jobs),
      m_timeout(timeout) {}

Replayers::~Replayers() {
    endAll();
    static_cast<void>(close(m_any));
}

void Replayers::endAll() {
    for (const Running& one : m_running) {
        static_cast<void>(kill(one.process.pid, SIGKILL));
        static_cast<void>(endOf(one.process));
    }
    m_running.clear();
}

std::size_t Replayers::replay(const std::vector<std::string>& files, const Interrupt& interrupt,
                              const std::function<void(const Verdict&)>& show) {
    std::size_t shown = 0;
    while (shown < files.size() && interrupt.signal() == 0) {
        startSome(files);
        await(interrupt);
        endOverdue();
        readAll(files);
        for (auto next = m_done.find(shown); next != m_done.end(); next = m_done.find(++shown)) {
            show(next->second);
            m_done.erase(next);
        }
    }
    endAll();
    for (const auto& [place, verdict] : m_done) {
        show(verdict);
        ++shown;
    }
    return shown;
}

void Replayers::startSome(const std::vector<std::string>& files) {
    while (m_started < files.size() && m_running.size() < m_jobs) {
        try {
            const Process process = start(m_replayer, files[m_started]);
            m_running.push_back({m_started, process, {}, Clock::now() + m_timeout});
            epoll_event event{};
            event.events = EPOLLIN;
            static_cast<void>(epoll_ctl(m_any, EPOLL_CTL_ADD, process.output, &event));
        } catch (const InputError& error) {
            if (!m_running.empty()) {
                // There is no room for so many; one less leaves some for reading a file.
                m_jobs = std::max<std::size_t>(1, m_running.size() - 1);
                return;
            }
            m_done[m_started] = unusable(files[m_started], error.what());
        }
        ++m_started;
    }
}

/** Until one of them has more to say, or its time is over, or somebody wants to leave. */
void Replayers::await(const Interrupt& interrupt) {
    std::vector<pollfd> waiting;
    auto first = Clock::time_point::max();
    for (const Running& one : m_running) {
        waiting.push_back({one.process.output, POLLIN, 0});
        first = std::min(first, one.deadline);
    }
    if (!waiting.empty()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(first - Clock::now());
        static_cast<void>(interrupt.waitForInput(m_any, std::max(std::chrono::milliseconds(0), left)));
        static_cast<void>(poll(waiting.data(), static_cast<nfds_t>(waiting.size()), 0));
    }
    m_isReady.clear();
    for (const pollfd& one : waiting) {
        m_isReady.push_back(one.revents != 0);
    }
}

/** At first it may say where it was, as when it has used up its processor time. */
void Replayers::endOverdue() {
    for (Running& one : m_running) {
        if (Clock::now() >= one.deadline) {
            one.isKilled = one.isOverdue;
            one.isOverdue = true;
            static_cast<void>(kill(one.process.pid, one.isKilled ? SIGKILL : SIGXCPU));
            one.deadline = Clock::now() + lastWords;
        }
    }
}

void Replayers::readAll(const std::vector<std::string>& files) {
    for (std::size_t place = m_running.size(); place-- > 0;) {
        Running& one = m_running[place];
        // What was killed may have left somebody behind who keeps the pipe open.
        if (!one.isKilled && (!m_isReady[place] || readMore(one.process, one.said))) {
            continue;
        }
        const int ending = endOf(one.process);
        m_done[one.index] = readVerdict(files[one.index], one.said, one.isOverdue ? -SIGXCPU : ending);
        m_running.erase(m_running.begin() + static_cast<std::ptrdiff_t>(place));
    }
}

} // namespace Radio::Replaying
