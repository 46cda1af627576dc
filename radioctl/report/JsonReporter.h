#ifndef RADIOCTL_REPORT_JSONREPORTER_H
#define RADIOCTL_REPORT_JSONREPORTER_H

#include "radio/session/ScriptLine.h"
#include "radioctl/report/Reporter.h"

#include <ostream>

namespace Radio {

/** Writes each event as one JSON object on a line of its own, for other programs. */
class JsonReporter final : public Reporter {
public:
    /** `out` must outlive the object. `verbose`: all calls to the platform, not only those that matter. */
    JsonReporter(std::ostream& out, bool verbose) : m_out(out), m_verbose(verbose) {}

    void boardLoaded(const Board& board) override;
    void sensed(int degrees, std::size_t observers) override;
    void phaseStarted(unsigned long phase) override;
    void phaseFinished(const Standalone::PhaseReport& report) override;
    void booted(bool succeeded) override;
    void commandStarted(const ScriptLine& line) override;
    void commandFinished(std::int32_t code, const std::string& note) override;
    void called(const Standalone::Call& call) override;
    void traced(const Standalone::TraceMessage& message) override;
    void notified(const Notification& notification) override;
    void valueRead(const Reading& reading) override;
    void warned(const std::string& text) override;
    void judged(const ScriptLine& line, const Judgement& judgement) override;
    void listed(const Listing& listing) override;
    void helpWanted(const std::string& about) override;
    void refused(const std::string& message) override;
    void summarised(const RunSummary& summary, int exitCode) override;

private:
    std::ostream& m_out;
    bool m_verbose;
};

} // namespace Radio

#endif
