#ifndef RADIOCTL_REPLAY_REPLAYS_H
#define RADIOCTL_REPLAY_REPLAYS_H

#include "radioctl/console/Interrupt.h"
#include "radioctl/replay/Process.h"
#include "radioctl/replay/ReplayProgram.h"
#include "radioctl/replay/Verdict.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace Radio::Replaying {

/** Something to wait on for several processes at once. */
class Outputs {
public:
    Outputs();
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;
    ~Outputs();

    void add(int output) const;
    /** To be called before it is closed: a process that is just being started may still hold it. */
    void remove(int output) const;
    /** Those that have more to say; none when somebody has asked the program to leave, or after `time`. */
    std::vector<int> await(const Interrupt& interrupt, std::chrono::milliseconds time) const;

private:
    int m_all;
};

/** Replays files, some at a time, until all are done or somebody asks the program to leave. */
class Replays {
public:
    using Show = std::function<void(const Verdict&)>;

    /** `show` is called in the order of the files. `options` must outlive the object. */
    Replays(const Options& options, std::size_t jobs, Show show);

    void run(const Interrupt& interrupt);
    std::size_t shown() const { return m_shown; }

private:
    using Clock = std::chrono::steady_clock;
    using Done = std::map<std::size_t, Verdict>;
    /** What is at work, and what it has said. */
    struct Running {
        std::size_t index;
        Process process;
        std::string said;
        Clock::time_point deadline;
        bool isReminded = false;
    };

    void startMore();
    std::chrono::milliseconds timeLeft() const;
    void read(int output);
    void endOverdue();
    void show(Done::iterator verdict);

    const Options& m_options;
    std::string m_replayer;
    std::size_t m_jobs;
    Show m_show;
    Outputs m_outputs;
    std::vector<Running> m_running;
    Done m_done;
    std::size_t m_started = 0;
    std::size_t m_shown = 0;
};

} // namespace Radio::Replaying

#endif
