#ifndef RADIOCTL_REPORT_TEXTREPORTER_H
#define RADIOCTL_REPORT_TEXTREPORTER_H

#include "radio/session/ScriptLine.h"
#include "radioctl/report/Reporter.h"

#include <ostream>
#include <string>
#include <string_view>

namespace Radio {

/** How the text output is to look. */
struct TextStyle {
    bool colour = false;
    /** Shows all calls to the platform, and where trace messages come from. */
    bool verbose = false;
    /** Shows each command before what it does; not wanted where the user has just typed it. Those of a file
     * are shown all the same. */
    bool echo = true;
};

/** Shows events as lines for people. */
class TextReporter final : public Reporter {
public:
    /** `out` must outlive the object. */
    TextReporter(std::ostream& out, TextStyle style) : m_out(out), m_style(style) {}

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
    /** Shows nothing: the message goes to standard error, which is not this reporter's. */
    void refused(const std::string& message) override;
    void summarised(const RunSummary& summary, int exitCode) override;

private:
    enum class Paint { failure, warning, notice, faint };

    std::string painted(Paint paint, std::string_view text) const;
    std::string failure(std::string_view text) const { return painted(Paint::failure, text); }
    std::string answer(std::int32_t code) const;
    void showWrite(const Standalone::Call& call);
    /** The writes that were expected and those that were found, with what differs marked. */
    void showWrites(const std::vector<AlignedWrite>& writes);
    void showTotals(const Summary& summary);

    std::ostream& m_out;
    TextStyle m_style;
    std::string m_boardFile;
    /** The number of the last value that reached the hardware. */
    unsigned m_writes = 0;
};

/** Numbers in a sentence: "1, 2" or "1 to 64". */
std::string numberList(const std::vector<unsigned>& numbers);

} // namespace Radio

#endif
