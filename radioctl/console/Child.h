#ifndef RADIOCTL_CONSOLE_CHILD_H
#define RADIOCTL_CONSOLE_CHILD_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace Radio {

/**
 * A program that this one has started. It goes when this one goes, however that is, and when the object is
 * destroyed; signals that this program holds back reach it.
 */
class Child {
public:
    struct Streams {
        int input;
        int output;
        int errors;
    };

    /** Starts `words`, the first of which is looked for in the PATH. Throws std::system_error: it cannot be.
     */
    Child(std::vector<std::string> words, const Streams& streams);
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child();

    /**
     * Waits for its end: the exit code, or the negative number of the signal that killed it. Nothing when a
     * signal asks this program to leave first. Throws std::system_error when its end cannot be learnt.
     */
    std::optional<int> wait();

private:
    pid_t m_pid = -1;
    int m_end = -1;
};

} // namespace Radio

#endif
