#include "radioctl/replay/ReplayCommandLine.h"

namespace Radio::Replaying {

namespace {

constexpr int mostJobs = 1024;
constexpr int longestTimeout = 86400;

} // namespace

ReplayCommandLine::ReplayCommandLine(CommandLine::Command program)
    : m_replay(program.command("replay", "Live what was recorded with today's library, and\nsay where it "
                                         "goes another way")) {
    m_replay.option("FILE", m_options.files, "Recordings, from librecordingplatform.so")
        .required()
        .named("FILE");
    m_replay.option("--jobs", m_options.jobs, "So many at a time; as there are processors")
        .named("N")
        .within(1, mostJobs);
    m_replay.option("--timeout", m_options.timeout, "So long each may take; 600")
        .named("S")
        .within(1, longestTimeout);
    m_replay.json(m_options.json);
}

int ReplayCommandLine::run(bool json) {
    m_options.json |= json;
    return runReplay(m_options);
}

} // namespace Radio::Replaying
