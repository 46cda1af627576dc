#ifndef RADIOCTL_REPLAY_PROCESS_H
#define RADIOCTL_REPLAY_PROCESS_H

#include <sys/types.h>

#include <string>

namespace Radio::Replaying {

/** Where radioctl-replay is: beside this program, or where it is installed. Throws InputError: nowhere. */
std::string findReplayer();

/** radioctl-replay at work on a recording. Killed when the object is destroyed before it has ended. */
class Process {
public:
    /** The library that goes on for `seconds` without an end is taken for one that does not come back. Throws
     * InputError when it cannot be started. */
    Process(const std::string& replayer, const std::string& file, int seconds);
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    Process(Process&& other) noexcept;
    Process& operator=(Process&& other) noexcept;
    ~Process();

    /** What it says is read from here. */
    int output() const { return m_output; }
    /** Reads what there is; false at its end. */
    bool readMore(std::string& text) const;
    /** Tells it that its time is over: it is to say where it was, and to end. */
    void remind() const;
    /** Waits for its end; a signal is a negative number. */
    int end();

private:
    pid_t m_pid = -1;
    int m_output = -1;
};

} // namespace Radio::Replaying

#endif
