#ifndef RADIOCTL_REPORT_REPORTER_H
#define RADIOCTL_REPORT_REPORTER_H

#include "radio/board/Board.h"
#include "radio/session/Bench.h"
#include "radio/session/SessionListener.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Radio {

/** What a run of the program came to. */
struct RunSummary {
    Summary session;
    /** Lines that were no commands; there can be some at a prompt only. */
    std::size_t refusedLines = 0;
    /** The signal that ended the run early; 0 for none. */
    int signal = 0;
};

/** Shows what happens to whoever runs the program: the session, and what is around it. */
class Reporter : public SessionListener {
public:
    /** What a written value is in hardware, if that is to be shown, too. */
    using AttributesOf =
        std::function<std::vector<AttributeWrite>(const std::string& driver, std::int64_t value)>;

    virtual void boardLoaded(const Board& board) = 0;
    /** The sensor has given a temperature, and so many observers were told. */
    virtual void sensed(int degrees, std::size_t observers) = 0;
    /** From now on each write also shows what it is in hardware. */
    virtual void showAttributes(AttributesOf attributesOf) { m_attributesOf = std::move(attributesOf); }
    /** Something the user gave cannot be used. */
    virtual void refused(const std::string& message) = 0;
    virtual void summarised(const RunSummary& summary, int exitCode) = 0;

protected:
    std::vector<AttributeWrite> attributesOf(const Standalone::Call& call) const {
        return m_attributesOf ? m_attributesOf(call.object, call.value) : std::vector<AttributeWrite>();
    }

private:
    AttributesOf m_attributesOf;
};

/**
 * True for a call that a person wants to see: one that put a value into hardware or tried to, and one that
 * failed. A lookup of what is not there does not count as failed: a radio asks for many things that it can do
 * without, and the trace tells of the others.
 */
bool mattersToAPerson(const Standalone::Call& call);

} // namespace Radio

#endif
