#include "radioctl/replay/ReplayProgram.h"

#include "radio/files/Json.h"
#include "radio/text/Words.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/replay/Process.h"
#include "radioctl/replay/ReplayText.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/Output.h"

#include <sys/epoll.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <functional>
#include <iostream>
#include <map>
#include <thread>
#include <utility>

namespace Radio::Replaying {

namespace {

/** What is at work, and what it has said. */
struct Running {
    std::size_t index;
    Process process;
    std::string said;
};

/** Something to wait on for several processes at once. */
class Outputs {
public:
    Outputs() : m_all(epoll_create1(EPOLL_CLOEXEC)) {}
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;
    ~Outputs() { static_cast<void>(close(m_all)); }

    void add(int output) const {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.fd = output;
        static_cast<void>(epoll_ctl(m_all, EPOLL_CTL_ADD, output, &event));
    }
    /** Those that have more to say; none when somebody has asked the program to leave. */
    std::vector<int> await(const Interrupt& interrupt) const {
        std::array<epoll_event, 64> events{};
        if (!interrupt.waitForInput(m_all)) {
            return {};
        }
        const int count = epoll_wait(m_all, events.data(), static_cast<int>(events.size()), 0);
        std::vector<int> outputs;
        outputs.reserve(events.size());
        for (int index = 0; index < count; ++index) {
            outputs.push_back(events.at(static_cast<std::size_t>(index)).data.fd);
        }
        return outputs;
    }

private:
    int m_all;
};

/** Each process takes a file of those that may be open at a time. */
std::size_t placesForJobs() {
    constexpr rlim_t others = 32;
    rlimit files{};
    return getrlimit(RLIMIT_NOFILE, &files) == 0 && files.rlim_cur > others
               ? static_cast<std::size_t>(files.rlim_cur - others)
               : 1;
}

/** Replays files, some at a time, until all are done or somebody asks the program to leave. */
class Replays {
public:
    using Show = std::function<void(const Verdict&)>;

    /** `show` is called in the order of the files. */
    Replays(const Options& options, std::size_t jobs, Show show)
        : m_options(options),
          m_jobs(std::min(jobs, placesForJobs())),
          m_show(std::move(show)) {}

    void run(const Interrupt& interrupt) {
        while (m_shown < m_options.files.size() && interrupt.signal() == 0) {
            startMore();
            for (const int output : m_outputs.await(interrupt)) {
                read(output);
            }
            for (auto next = m_done.find(m_shown); next != m_done.end(); next = m_done.find(m_shown)) {
                show(next);
            }
        }
        m_running.clear();
        while (!m_done.empty()) {
            show(m_done.begin());
        }
    }

    std::size_t shown() const { return m_shown; }

private:
    using Done = std::map<std::size_t, Verdict>;

    void startMore() {
        while (m_started < m_options.files.size() && m_running.size() < m_jobs) {
            m_running.push_back(
                {m_started, Process(m_replayer, m_options.files[m_started], m_options.seconds), {}});
            m_outputs.add(m_running.back().process.output());
            ++m_started;
        }
    }

    void read(int output) {
        const auto one = std::find_if(m_running.begin(), m_running.end(), [output](const Running& running) {
            return running.process.output() == output;
        });
        if (one == m_running.end() || one->process.readMore(one->said)) {
            return;
        }
        const int ending = one->process.end();
        m_done[one->index] = readVerdict(m_options.files[one->index], one->said, ending);
        m_running.erase(one);
    }

    void show(Done::iterator verdict) {
        m_show(verdict->second);
        m_done.erase(verdict);
        ++m_shown;
    }

    const Options& m_options;
    std::string m_replayer = findReplayer();
    std::size_t m_jobs;
    Show m_show;
    Outputs m_outputs;
    std::vector<Running> m_running;
    Done m_done;
    std::size_t m_started = 0;
    std::size_t m_shown = 0;
};

struct Counts {
    std::uint64_t identical = 0;
    std::uint64_t incomplete = 0;
    std::uint64_t different = 0;
    std::uint64_t unusable = 0;
    std::uint64_t calls = 0;

    void add(const Verdict& verdict) {
        calls += verdict.calls;
        switch (verdict.outcome) {
        case Outcome::identical:
            ++identical;
            break;
        case Outcome::identicalUntilGap:
            ++incomplete;
            break;
        case Outcome::different:
            ++different;
            break;
        case Outcome::stopped:
        case Outcome::unusable:
            ++unusable;
            break;
        }
    }
    int exitCode() const {
        return unusable != 0    ? ExitCode::unusableInput
               : different != 0 ? ExitCode::different
                                : ExitCode::good;
    }
};

// For people

void showText(const Verdict& verdict) {
    if (verdict.outcome == Outcome::unusable) {
        complain(verdict.reason); // which names the file
        return;
    }
    std::cout << harmless(verdict.file) << ": " << harmless(summaryOf(verdict)) << "\n";
    if (verdict.outcome != Outcome::different) {
        return;
    }
    const Told told = tell(verdict);
    if (!told.operation.empty()) {
        std::cout << "  in operation " << verdict.operation << ": " << told.operation << "\n";
    }
    for (const std::string& line : told.before) {
        std::cout << "    " << line << "\n";
    }
    std::cout << "  recorded: " << told.recorded << "\n  now:      " << told.now << "\n";
    if (verdict.difference == Difference::more) {
        std::cout << "  The library asks for more: the recording has no answer to it.\n";
    }
    if (told.passedOver != 0) {
        std::cout << "  The recording lacks " << told.passedOver
                  << " things for which it had no room; that can look like a difference.\n";
    }
}

/** `replayed` of `files` recordings. */
void showSummary(const Counts& counts, std::size_t replayed, std::size_t files) {
    if (files > 1) {
        std::cout << counted(replayed, "recording") << ": " << counts.identical << " identical, "
                  << counts.incomplete << " identical up to a gap, " << counts.different << " different, "
                  << counts.unusable << " unusable; " << counted(counts.calls, "call") << "\n";
    }
    if (replayed < files) {
        std::cout << "Interrupted: " << replayed << " of " << counted(files, "recording")
                  << (replayed == 1 ? " was" : " were") << " replayed.\n";
    }
}

// For programs

std::string wordOf(const Verdict& verdict) {
    switch (verdict.outcome) {
    case Outcome::identical:
        return "identical";
    case Outcome::identicalUntilGap:
        return "identical_until_gap";
    case Outcome::different:
        return "different";
    case Outcome::stopped:
        return "stopped";
    case Outcome::unusable:
        return "unusable";
    }
    return "";
}

std::string wordOf(Difference difference) {
    switch (difference) {
    case Difference::call:
        return "call";
    case Difference::more:
        return "more";
    case Difference::less:
        return "less";
    case Difference::answer:
        return "answer";
    case Difference::crash:
        return "crash";
    case Difference::none:
        break;
    }
    return "";
}

void showJson(const Verdict& verdict) {
    Json event{{"event", "replayed_recording"},
               {"file", verdict.file},
               {"outcome", wordOf(verdict)},
               {"calls", verdict.calls},
               {"recorded_calls", verdict.recorded}};
    if (!verdict.reason.empty()) {
        event["reason"] = verdict.reason;
    }
    if (verdict.outcome == Outcome::different) {
        const Told told = tell(verdict);
        event["difference"] = wordOf(verdict.difference);
        event["operation_number"] = verdict.operation;
        event["operation"] = told.operation;
        event["before"] = told.before;
        event["recorded"] = told.recorded;
        event["now"] = told.now;
        event["passed_over"] = told.passedOver;
    }
    writeJsonLine(std::cout, event);
}

void showJsonSummary(const Counts& counts, std::size_t replayed, std::size_t files) {
    writeJsonLine(std::cout, {{"event", "replayed_recordings"},
                              {"recordings", replayed},
                              {"identical", counts.identical},
                              {"identical_until_gap", counts.incomplete},
                              {"different", counts.different},
                              {"unusable", counts.unusable},
                              {"calls", counts.calls},
                              {"interrupted", replayed < files}});
}

int replay(const Options& options) {
    const std::size_t processors = std::max(1U, std::thread::hardware_concurrency());
    const Interrupt interrupt;
    Counts counts;
    Replays replays(options, options.jobs ? static_cast<std::size_t>(*options.jobs) : processors,
                    [&](const Verdict& verdict) {
                        counts.add(verdict);
                        options.json ? showJson(verdict) : showText(verdict);
                    });
    replays.run(interrupt);
    const std::size_t files = options.files.size();
    options.json ? showJsonSummary(counts, replays.shown(), files)
                 : showSummary(counts, replays.shown(), files);
    return replays.shown() < files ? ExitCode::signalBase + interrupt.signal() : counts.exitCode();
}

} // namespace

int runReplay(const Options& options) {
    return refusing(options.json, [&] { return replay(options); });
}

} // namespace Radio::Replaying
