#ifndef RADIOCTL_REPLAY_PROCESS_H
#define RADIOCTL_REPLAY_PROCESS_H

#include <sys/types.h>

#include <string>

namespace Radio::Replaying {

/** radioctl-replay at work on a recording. */
struct Process {
    pid_t pid = -1;
    /** What it says is read from here. */
    int output = -1;
};

/** Where radioctl-replay is: beside this program, or where it is installed. Throws InputError: nowhere. */
std::string findReplayer();

/** Throws InputError when it cannot be started. */
Process start(const std::string& replayer, const std::string& file);

/** Reads what there is; false at its end. */
bool readMore(const Process& process, std::string& text);

/** Its end; a signal is a negative number. Closes the output. */
int endOf(const Process& process);

} // namespace Radio::Replaying

#endif
