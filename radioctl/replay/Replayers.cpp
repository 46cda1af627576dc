#include "radioctl/replay/Replayers.h"

#include "radio/files/InputError.h"

#include <poll.h>

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
      m_jobs(jobs),
      m_timeout(timeout) {}

Replayers::~Replayers() {
    for (const Running& one : m_running) {
        static_cast<void>(kill(one.process.pid, SIGKILL));
        static_cast<void>(endOf(one.process));
    }
}

void Replayers::replay(const std::vector<std::string>& files,
                       const std::function<void(const Verdict&)>& show) {
    for (std::size_t shown = 0; shown < files.size();) {
        startSome(files);
        await();
        endOverdue();
        readAll(files);
        for (auto next = m_done.find(shown); next != m_done.end(); next = m_done.find(++shown)) {
            show(next->second);
            m_done.erase(next);
        }
    }
}

void Replayers::startSome(const std::vector<std::string>& files) {
    while (m_started < files.size() && m_running.size() < m_jobs) {
        try {
            const Process process = start(m_replayer, files[m_started]);
            m_running.push_back({m_started, process, {}, Clock::now() + m_timeout});
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

/** Until one of them has more to say, or its time is over. */
void Replayers::await() {
    std::vector<pollfd> waiting;
    auto first = Clock::time_point::max();
    for (const Running& one : m_running) {
        waiting.push_back({one.process.output, POLLIN, 0});
        first = std::min(first, one.deadline);
    }
    if (!waiting.empty()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(first - Clock::now());
        static_cast<void>(poll(waiting.data(), static_cast<nfds_t>(waiting.size()),
                               static_cast<int>(std::max<std::int64_t>(0, left.count()))));
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
