#include "radioctl/replay/Replays.h"

#include "radio/files/InputError.h"

#include <sys/epoll.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <utility>

namespace Radio::Replaying {

namespace {

/** So long a replayer whose time is over has to say where it was. */
constexpr std::chrono::seconds lastWords{5};

/** Each process takes a file of those that may be open at a time. */
std::size_t placesForJobs() {
    constexpr rlim_t others = 32;
    rlimit files{};
    return getrlimit(RLIMIT_NOFILE, &files) == 0 && files.rlim_cur > others
               ? static_cast<std::size_t>(files.rlim_cur - others)
               : 1;
}

Verdict unusable(const std::string& file, const std::string& why) {
    Verdict verdict;
    verdict.file = file;
    verdict.reason = file + ": " + why;
    return verdict;
}

} // namespace

Outputs::Outputs() : m_all(epoll_create1(EPOLL_CLOEXEC)) {}

Outputs::~Outputs() {
    static_cast<void>(close(m_all));
}

void Outputs::add(int output) const {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = output;
    static_cast<void>(epoll_ctl(m_all, EPOLL_CTL_ADD, output, &event));
}

void Outputs::remove(int output) const {
    static_cast<void>(epoll_ctl(m_all, EPOLL_CTL_DEL, output, nullptr));
}

std::vector<int> Outputs::await(const Interrupt& interrupt, std::chrono::milliseconds time) const {
    std::array<epoll_event, 64> events{};
    if (!interrupt.waitForInput(m_all, time)) {
        return {};
    }
    const int count = epoll_wait(m_all, events.data(), static_cast<int>(events.size()), 0);
    std::vector<int> outputs;
    for (int index = 0; index < count; ++index) {
        outputs.push_back(events.at(static_cast<std::size_t>(index)).data.fd);
    }
    return outputs;
}

Replays::Replays(const Options& options, std::size_t jobs, Show show)
    : m_options(options),
      m_replayer(findReplayer()),
      m_jobs(std::min(jobs, placesForJobs())),
      m_show(std::move(show)) {}

void Replays::run(const Interrupt& interrupt) {
    while (m_shown < m_options.files.size() && interrupt.signal() == 0) {
        startMore();
        if (!m_running.empty()) {
            for (const int output : m_outputs.await(interrupt, timeLeft())) {
                read(output);
            }
        }
        endOverdue();
        for (auto next = m_done.find(m_shown); next != m_done.end(); next = m_done.find(m_shown)) {
            show(next);
        }
    }
    m_running.clear();
    while (!m_done.empty()) {
        show(m_done.begin());
    }
}

void Replays::startMore() {
    while (m_started < m_options.files.size() && m_running.size() < m_jobs) {
        const std::string& file = m_options.files[m_started];
        try {
            Process process(m_replayer, file, m_options.seconds);
            m_outputs.add(process.output());
            m_running.push_back({m_started,
                                 std::move(process),
                                 {},
                                 Clock::now() + std::chrono::seconds(m_options.seconds) + lastWords,
                                 false});
        } catch (const InputError& error) {
            if (!m_running.empty()) {
                // There is no room for so many; one less leaves some for reading a file.
                m_jobs = std::max<std::size_t>(1, m_running.size() - 1);
                return;
            }
            m_done[m_started] = unusable(file, error.what());
        }
        ++m_started;
    }
}

/** Until the first of them has to be over. */
std::chrono::milliseconds Replays::timeLeft() const {
    const auto first =
        std::min_element(m_running.begin(), m_running.end(), [](const Running& one, const Running& other) {
            return one.deadline < other.deadline;
        });
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(first->deadline - Clock::now());
    return std::max(left, std::chrono::milliseconds(0));
}

void Replays::read(int output) {
    const auto one = std::find_if(m_running.begin(), m_running.end(), [output](const Running& running) {
        return running.process.output() == output;
    });
    if (one == m_running.end() || one->process.readMore(one->said)) {
        return;
    }
    m_outputs.remove(output);
    const int ending = one->process.end();
    m_done[one->index] = readVerdict(m_options.files[one->index], one->said, ending);
    m_running.erase(one);
}

/** What has not ended by itself, for want of a processor for example, is reminded once, and killed then. It
 * may have left somebody behind who keeps its output open. */
void Replays::endOverdue() {
    for (std::size_t place = m_running.size(); place-- > 0;) {
        Running& one = m_running[place];
        if (Clock::now() >= one.deadline && !one.isReminded) {
            one.process.remind();
            one.isReminded = true;
            one.deadline = Clock::now() + lastWords;
        } else if (Clock::now() >= one.deadline) {
            m_outputs.remove(one.process.output());
            m_done[one.index] = readVerdict(m_options.files[one.index], "", -SIGXCPU);
            m_running.erase(m_running.begin() + static_cast<std::ptrdiff_t>(place));
        }
    }
}

void Replays::show(Done::iterator verdict) {
    m_show(verdict->second);
    m_done.erase(verdict);
    ++m_shown;
}

} // namespace Radio::Replaying
