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
      m_show(m_record.command("show", "Show what happened in a recording, as run does")) {
    m_record.requireCommand();
    m_show.option("FILE", m_options.file, "Recording, from librecordingplatform.so").required().named("FILE");
    m_show.option("--channel", m_options.wanted.channel, "Radio channel; all of them")
        .named("N")
        .within(0, std::numeric_limits<int>::max());
    m_show.option("--driver", m_options.wanted.driver, "Only the calls of this driver").named("NAME");
    m_show.option("--from", m_from, "Seconds since the recording began").named("S").check(whyNoSeconds);
    m_show.option("--to", m_to, "Seconds since the recording began").named("S").check(whyNoSeconds);
    m_show.flag("-v,--verbose", m_options.verbose, "Show every call to the platform");
    m_show.json(m_options.json);
}

int RecordCommandLine::run(bool json) {
    m_options.json |= json;
    m_options.wanted.from = secondsIn(m_from);
    m_options.wanted.to = secondsIn(m_to);
    return runShow(m_options);
}

} // namespace Radio::Recordings
