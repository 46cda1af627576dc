#ifndef RADIO_SESSION_SESSIONLISTENER_H
#define RADIO_SESSION_SESSIONLISTENER_H

#include "radio/session/AlignedWrites.h"
#include "radio/session/RadioUnit.h"
#include "radio/session/ScriptLine.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace Radio {

/** How an expectation turned out. */
struct Judgement {
    bool held;
    std::string expected;
    std::string found;
    /** Of writes that were not those expected, both lists side by side. */
    std::vector<AlignedWrite> writes{};
};

/** A list that a command shows. */
struct Listing {
    /** A number with a fraction is a level in dBc, shown with two decimals; the last is for what is not
     * known.
     */
    using Cell = std::variant<std::int64_t, double, std::string, std::vector<std::int32_t>, std::monostate>;

    std::string title;
    std::vector<std::string> columns;
    /** Each with one cell for each column. */
    std::vector<std::vector<Cell>> rows;
};

/** A value that was read from a driver to be shown. */
struct Reading {
    std::string driver;
    std::int64_t value;
    /** While drivers are watched: since the beginning, in seconds. */
    std::optional<double> seconds{};
};

/** What the run came to. */
struct Summary {
    bool booted = false;
    /** Commands carried out on the radio; those that only show something, and expectations, are not counted.
     */
    std::size_t commands = 0;
    std::size_t held = 0;
    std::size_t failed = 0;
    /** Commands that failed although nobody expected it; the start-up is not one of them. */
    std::size_t unexpectedFailures = 0;
    /** False when the start-up failed and the script did not expect its result. */
    bool bootAccepted = true;
};

/** Is told of every event of a session, in the order in which they happen and on the thread that drives it.
 */
class SessionListener {
public:
    SessionListener() = default;
    SessionListener(const SessionListener&) = delete;
    SessionListener& operator=(const SessionListener&) = delete;
    virtual ~SessionListener() = default;

    virtual void phaseStarted(unsigned long phase) = 0;
    virtual void phaseFinished(const Standalone::PhaseReport& report) = 0;
    /** The start-up is over. */
    virtual void booted(bool succeeded) = 0;
    /** A command that is no expectation begins. */
    virtual void commandStarted(const ScriptLine& line) = 0;
    /** It has ended with `code`; `note` says what else there is to know, or nothing. */
    virtual void commandFinished(std::int32_t code, const std::string& note) = 0;
    virtual void called(const Standalone::Call& call) = 0;
    virtual void traced(const Standalone::TraceMessage& message) = 0;
    virtual void notified(const Notification& notification) = 0;
    virtual void valueRead(const Reading& /*reading*/) {}
    /** What is about to be done should perhaps not be. */
    virtual void warned(const std::string& /*text*/) {}
    virtual void judged(const ScriptLine& line, const Judgement& judgement) = 0;
    virtual void listed(const Listing& listing) = 0;
    /** Somebody wants to know about a command; empty: about all of them. */
    virtual void helpWanted(const std::string& about) = 0;
};

} // namespace Radio

#endif
