#ifndef RADIOCTL_REPLAY_REPLAYCOMMANDLINE_H
#define RADIOCTL_REPLAY_REPLAYCOMMANDLINE_H

#include "radioctl/options/Options.h"
#include "radioctl/replay/ReplayProgram.h"

namespace Radio::Replaying {

/** The command line of "radioctl replay". */
class ReplayCommandLine final : public CommandLine::Verb {
public:
    /** Adds "replay" to the program's. Must outlive the parsing. */
    explicit ReplayCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_replay.isCalled(); }
    int run(bool json) override;

private:
    CommandLine::Command m_replay;
    Options m_options;
};

} // namespace Radio::Replaying

#endif
