#ifndef TESTS_RADIO_SESSION_SESSIONTEST_H
#define TESTS_RADIO_SESSION_SESSIONTEST_H

#include "radio/board/PlatformWords.h"
#include "radio/session/Session.h"
#include "radio/text/Words.h"
#include "tests/radio/support/PlanBoards.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace Radio {

/** The cell of a list as a test writes it. */
inline std::string cellText(const Listing::Cell& cell) {
    return std::visit(Visitor{[](std::int64_t number) { return std::to_string(number); },
                              [](double level) { return inTwoDecimals(level); },
                              [](const std::string& text) { return text; },
                              [](const std::vector<std::int32_t>& values) {
                                  std::vector<std::string> items;
                                  items.reserve(values.size());
                                  for (const std::int32_t value : values) {
                                      items.push_back(std::to_string(value));
                                  }
                                  return "[" + joined(items, " ") + "]";
                              },
                              [](std::monostate /*unknown*/) { return std::string("-"); }},
                      cell);
}

/** Keeps a line for each event. Of the calls it keeps those that find a driver or write to one, and reads
 * that failed. */
class RecordingListener final : public SessionListener {
public:
    void phaseStarted(unsigned long phase) override { note("phase " + std::to_string(phase)); }
    void phaseFinished(const Standalone::PhaseReport& report) override {
        note("phase " + std::to_string(report.phase) + ": " + counted(report.steps.size(), "module") +
             (report.succeeded() ? "" : ", failed"));
    }
    void booted(bool succeeded) override { note(succeeded ? "booted" : "did not boot"); }
    void commandStarted(const ScriptLine& line) override { note("> " + line.text); }
    void commandFinished(std::int32_t code, const std::string& text) override {
        note((code == 0 ? "ok" : codeText(code)) + (text.empty() ? "" : ", " + text));
    }
    void called(const Standalone::Call& call) override {
        const bool failedToRead = call.operation == Standalone::Operation::driverRead && call.code != 0;
        if (call.operation == Standalone::Operation::driverLookup ||
            call.operation == Standalone::Operation::driverWrite || failedToRead) {
            note(std::string(Standalone::toString(call.operation)) + " " + call.object + " " +
                 std::to_string(call.value) + (call.code == 0 ? "" : " answered " + codeText(call.code)));
        }
    }
    void traced(const Standalone::TraceMessage& message) override {
        note(std::string(Radio::toString(message.level)) + ": " + message.text);
    }
    void notified(const Notification& notification) override {
        note("told " + std::string(Radio::toString(notification.direction)) + " " +
             std::to_string(notification.channel) + " " + std::to_string(notification.frequency) +
             (notification.throughC ? " through C" : ""));
    }
    void valueRead(const Reading& reading) override {
        note(reading.driver + " = " + std::to_string(reading.value) +
             (reading.seconds ? " after " + inDecimals(*reading.seconds, 1) + " s" : ""));
    }
    void warned(const std::string& text) override { note("warning: " + text); }
    void judged(const ScriptLine& line, const Judgement& judgement) override {
        note(line.text + (judgement.held ? " held" : " failed") + ": expected " + judgement.expected +
             ", found " + judgement.found);
    }
    void listed(const Listing& listing) override {
        note(listing.title + ": " + joined(listing.columns, " "));
        for (const auto& row : listing.rows) {
            std::vector<std::string> cells;
            cells.reserve(row.size());
            for (const Listing::Cell& cell : row) {
                cells.push_back(cellText(cell));
            }
            note(joined(cells, " "));
        }
    }
    void helpWanted(const std::string& about) override { note("help about \"" + about + "\""); }

    std::vector<std::string> take() { return std::exchange(m_lines, {}); }

private:
    void note(const std::string& line) { m_lines.push_back(line); }

    std::vector<std::string> m_lines;
};

/** A radio of one RF module, with two drivers, in a session of its own. */
class SessionTest : public testing::Test {
protected:
    void start(OrbiTraceLevel shownTrace = Standalone::TraceLevel::notice) {
        m_session.emplace(board, m_listener, shownTrace);
        m_listener.take();
        m_session->boot();
    }
    /** Starts, and leaves out what the start-up tells. */
    void startQuietly(OrbiTraceLevel shownTrace = Standalone::TraceLevel::notice) {
        start(shownTrace);
        m_listener.take();
    }
    /** Does one thing; what it told. */
    std::vector<std::string> act(const Action& action, const std::string& text = "command") {
        m_session->execute({{}, text, action});
        return m_listener.take();
    }
    std::vector<std::string> expect(const Expectation& expectation, const std::string& text = "expect") {
        m_session->execute({{}, text, expectation});
        return m_listener.take();
    }
    std::vector<std::string> tune(std::uint32_t frequency) {
        return act(Tune{Direction::tx, 1, frequency}, "tune tx 1 " + std::to_string(frequency));
    }
    /** Repeats the initialisation without the driver layer, which it cannot do without. */
    void failOnce() {
        act(SetPresence{"IDriverLayer", Standalone::Presence::absent});
        act(RunPhase{Standalone::phaseModuleInit});
    }
    std::vector<std::string> told() { return m_listener.take(); }
    Summary finish() { return m_session->finish(); }
    Session& session() { return *m_session; }
    bool isOver() const { return m_session->isOver(); }

    static ExpectResult result(ExpectResult::Kind kind, std::int32_t code = 0) { return {kind, code}; }
    static constexpr auto ok = ExpectResult::Kind::ok;
    static constexpr auto failed = ExpectResult::Kind::failed;

    Board board = PlanBoards::rfModule();

private:
    RecordingListener m_listener;
    std::optional<Session> m_session;
};

} // namespace Radio

#endif
