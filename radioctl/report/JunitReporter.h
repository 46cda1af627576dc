#ifndef RADIOCTL_REPORT_JUNITREPORTER_H
#define RADIOCTL_REPORT_JUNITREPORTER_H

#include "radioctl/report/Reporter.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Radio {

/**
 * Passes everything on to another reporter, and keeps what came of a script for a report in the form of
 * JUnit's XML: a case for the start-up, for each expectation and for each command that failed unexpectedly.
 */
class JunitReporter final : public Reporter {
public:
    /** `other` must outlive the object; `script` is how the report calls what was run. */
    JunitReporter(Reporter& other, std::string script);

    void showAttributes(AttributesOf attributesOf) override {
        m_other.showAttributes(std::move(attributesOf));
    }
    void boardLoaded(const Board& board) override;
    void sensed(int degrees, std::size_t observers) override { m_other.sensed(degrees, observers); }
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

    /** The name of each case so far, and whether it passed. */
    std::vector<std::pair<std::string, bool>> outcomes() const;
    /** Writes the report; a run that told of no summary did not come to its end, and the report says so. */
    void write(std::ostream& out, int exitCode) const;

private:
    enum class Verdict : std::uint8_t { passed, failure, error };
    struct Case {
        Place place;
        std::string name;
        Verdict verdict = Verdict::passed;
        std::string message{};
        double seconds = 0.0;
    };

    static void writeCase(std::ostream& out, const Case& item);
    Case makeCase(const Place& place, const std::string& name, Verdict verdict, const std::string& message);
    std::size_t countOf(Verdict verdict) const;
    void settleOpen();

    Reporter& m_other;
    std::string m_script;
    std::vector<Case> m_cases;
    /** Of a command that failed, or of the start-up: it counts unless its result was expected. */
    std::optional<Case> m_open;
    /** The command that is carried out. */
    Place m_place;
    std::string m_text;
    bool m_isConcluded = false;
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    /** When the last case ended. */
    std::chrono::steady_clock::time_point m_before = m_start;
};

/** `text` as it stands in an attribute or between tags: markup is escaped, and so is, as "\x1b", what no
 * document may have. */
std::string inXml(std::string_view text);

} // namespace Radio

#endif
