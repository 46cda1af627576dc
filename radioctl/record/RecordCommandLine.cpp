#include "radioctl/record/RecordCommandLine.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>

namespace Radio::Recordings {

namespace {

/** A time since the recording began: seconds, with decimals or without; nothing when it is none. */
std::optional<double> secondsIn(const std::string& text) {
    char* end = nullptr;
    const double seconds = std::strtod(text.c_str(), &end);
    const bool isDecimal = text.find_first_not_of("0123456789.") == std::string::npos;
    return !text.empty() && isDecimal && *end == '\0' && std::isfinite(seconds) ? std::optional(seconds)
                                                                                : std::nullopt;
}

std::string whyNoSeconds(const std::string& text) {
    return secondsIn(text) ? "" : "expected seconds since the recording began, such as 12.5";
}

} // namespace

RecordCommandLine::RecordCommandLine(CommandLine::Command program)
    : m_record(program.command("record", "Look at what was recorded of a radio")),
      m_show(m_record.command("show", "Show what happened in a recording, as run does")),
      m_diff(m_record.command("diff", "Show what two radios did otherwise, or one radio\nbefore and after")) {
    m_record.requireCommand();
    m_show.option("FILE", m_showOptions.file, "Recording, from librecordingplatform.so").required().file();
    addFilters(m_show, m_showOptions.wanted);
    m_show.flag("-v,--verbose", m_showOptions.verbose, "Show every call to the platform");
    m_show.json(m_showOptions.json);
    m_diff.option("A", m_diffOptions.before, "Recording, from librecordingplatform.so").required().file();
    m_diff.option("B", m_diffOptions.after, "Another one").required().file();
    addFilters(m_diff, m_diffOptions.wanted);
    m_diff.flag("-v,--verbose", m_diffOptions.verbose, "Show the calls of operations that only one has");
    m_diff.option("--limit", m_diffOptions.limit, "Differing operations to show, and calls of each")
        .named("N")
        .within(0, std::numeric_limits<int>::max());
    m_diff.json(m_diffOptions.json);
}

void RecordCommandLine::addFilters(CommandLine::Command& command, Wanted& wanted) {
    command.option("--channel", wanted.channel, "Radio channel; all of them")
        .named("N")
        .within(0, std::numeric_limits<int>::max());
    command.option("--driver", wanted.driver, "Only the calls of this driver").named("NAME");
    command.option("--from", m_from, "Seconds since the recording began").named("S").check(whyNoSeconds);
    command.option("--to", m_to, "Seconds since the recording began").named("S").check(whyNoSeconds);
}

int RecordCommandLine::run(bool json) {
    for (Wanted* const wanted : {&m_showOptions.wanted, &m_diffOptions.wanted}) {
        wanted->from = secondsIn(m_from);
        wanted->to = secondsIn(m_to);
    }
    m_showOptions.json |= json;
    m_diffOptions.json |= json;
    return m_diff.isCalled() ? runDiff(m_diffOptions) : runShow(m_showOptions);
}

} // namespace Radio::Recordings
