#ifndef RADIOCTL_REPORTER_H
#define RADIOCTL_REPORTER_H

#include "Board.h"
#include "Radio.h"
#include "Script.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace Radioctl {

/** How an expectation turned out. */
struct Judgement {
    bool held;
    std::string expected;
    std::string found;
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
    /** Lines that were no commands; there can be some at a prompt only. */
    std::size_t refusedLines = 0;
    /** The signal that ended the run early; 0 for none. */
    int signal = 0;
};

/** Shows what happens to whoever runs the program. Is told of every event in the order of the events. */
class Reporter {
public:
    Reporter() = default;
    Reporter(const Reporter&) = delete;
    Reporter& operator=(const Reporter&) = delete;
    virtual ~Reporter() = default;

    virtual void boardLoaded(const Board& board) = 0;
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
    virtual void judged(const ScriptLine& line, const Judgement& judgement) = 0;
    virtual void listed(const Listing& listing) = 0;
    virtual void helped(const std::string& text) = 0;
    /** Something the user gave cannot be used. */
    virtual void refused(const std::string& message) = 0;
    virtual void summarised(const Summary& summary, int exitCode) = 0;
};

/**
 * True for a call that a person wants to see: one that put a value into hardware or tried to, and one that
 * failed. A lookup of what is not there does not count as failed: a radio asks for many things that it can do
 * without, and the trace tells of the others.
 */
bool mattersToAPerson(const Standalone::Call& call);
/** True for a call that puts a value into hardware. */
bool isWrite(const Standalone::Call& call);
/** Where a write goes: the driver's name, or a carrier of a remote radio unit such as "IRauHandler_1.tx". */
std::string destination(const Standalone::Call& call);

} // namespace Radioctl

#endif
