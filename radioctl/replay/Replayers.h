#ifndef RADIOCTL_REPLAY_REPLAYERS_H
#define RADIOCTL_REPLAY_REPLAYERS_H

#include "radioctl/replay/Process.h"
#include "radioctl/replay/Verdict.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace Radio::Replaying {

/** Has recordings replayed, several at a time, each by a process of its own. None outlives the object. */
class Replayers {
public:
    /** At most `jobs` at a time; a recording that takes longer than `timeout` has no end. */
    Replayers(std::size_t jobs, std::chrono::seconds timeout);
    Replayers(const Replayers&) = delete;
    Replayers& operator=(const Replayers&) = delete;
    ~Replayers();

    /** `show` is called in the order in which the files were given. */
    void replay(const std::vector<std::string>& files, const std::function<void(const Verdict&)>& show);

private:
    using Clock = std::chrono::steady_clock;
    /** What is at work, and what it has said. */
    struct Running {
        std::size_t index;
        Process process;
        std::string said;
        Clock::time_point deadline;
        bool isOverdue = false;
        bool isKilled = false;
    };

    void startSome(const std::vector<std::string>& files);
    void await();
    void endOverdue();
    void readAll(const std::vector<std::string>& files);

    std::string m_replayer;
    std::size_t m_jobs;
    std::chrono::seconds m_timeout;
    std::size_t m_started = 0;
    std::vector<Running> m_running;
    /** By the place of the file. */
    std::map<std::size_t, Verdict> m_done;
    /** Which of those that run have something to say. */
    std::vector<bool> m_isReady;
};

} // namespace Radio::Replaying

#endif
