#ifndef RADIOCTL_REPLAY_REPLAYPROGRAM_H
#define RADIOCTL_REPLAY_REPLAYPROGRAM_H

#include <optional>
#include <string>
#include <vector>

/** What "radioctl replay" does. */
namespace Radio::Replaying {

struct Options {
    bool json = false;
    std::vector<std::string> files;
    /** So many at a time; nothing: as there are processors. */
    std::optional<int> jobs;
    /** In seconds, of each. */
    int timeout = 600;
};

/** Replays recordings with the library that is installed; gives the exit code. */
int runReplay(const Options& options);

} // namespace Radio::Replaying

#endif
