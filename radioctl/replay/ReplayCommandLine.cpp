#include "radioctl/replay/ReplayCommandLine.h"

namespace Radio::Replaying {

namespace {

constexpr int mostJobs = 1024;
constexpr int mostSeconds = 1000000;

} // namespace

ReplayCommandLine::ReplayCommandLine(CommandLine::Command program)
    : m_replay(program.command("replay", "Live what was recorded with today's library, and\nsay where it "
                                         "goes another way")) {
    m_replay.option("FILE", m_options.files, "Recordings, from librecordingplatform.so").required().file();
    m_replay.option("--jobs", m_options.jobs, "So many at a time; as there are processors")
        .named("N")
        .within(1, mostJobs);
    m_replay.option("--timeout", m_options.seconds, "Seconds without an end that are one; 600")
        .named("S")
        .within(1, mostSeconds);
    m_replay.json(m_options.json);
}

int ReplayCommandLine::run(bool json) {
    m_options.json |= json;
    return runReplay(m_options);
}

} // namespace Radio::Replaying
