#ifndef RADIO_SESSION_SESSION_H
#define RADIO_SESSION_SESSION_H

#include "radio/board/Board.h"
#include "radio/session/Command.h"
#include "radio/session/LastCommand.h"
#include "radio/session/RadioUnit.h"
#include "radio/session/ScriptLine.h"
#include "radio/session/SessionListener.h"

#include <cstdint>

namespace Radio {

/**
 * Boots one radio and carries out commands on it, telling a listener what happens. One radio at a time in a
 * process, and all calls on one thread. It throws nothing of its own: what goes wrong is told to the listener
 * and counted in the summary.
 */
class Session {
public:
    /**
     * `board` and `listener` must outlive the object. `shownTrace` chooses the trace messages that are shown;
     * what expectations see does not depend on it.
     */
    Session(const Board& board, SessionListener& listener, OrbiTraceLevel shownTrace);

    /** Runs the phases of a start-up, up to the first that fails. To be called first, and once. */
    void boot();
    /** Carries out one command, which has been checked against the board. */
    void execute(const ScriptLine& line);
    /** True once a command has asked to leave. */
    bool isOver() const { return m_over; }
    /** Ends the session; what it came to. To be called once, at the end. */
    Summary finish();

private:
    /** What a command answered. */
    struct Outcome {
        std::int32_t code = 0;
        std::string note;
    };

    RadioEvents events();
    bool runPhase(Standalone::Phase phase);
    void applyTraceLevels();
    void beginActing();
    void settleUnexpectedFailure();
    void act(const ScriptLine& line, const Action& action);
    void judge(const ScriptLine& line, const Expectation& expectation);

    Outcome carryOut(const Tune& command);
    Outcome carryOut(const SetTemperature& command);
    Outcome carryOut(const SetVariable& command);
    Outcome carryOut(const RunPhase& command);
    Outcome carryOut(const InjectFault& command);
    Outcome carryOut(const ClearFaults& command);
    Outcome carryOut(const SetPresence& command);
    Outcome carryOut(const Observe& command);
    Outcome carryOut(const SetTrace& command);
    Outcome carryOut(const Show& command);
    Outcome carryOut(const Help& command);
    Outcome carryOut(const Quit& command);

    const Board& m_board;
    SessionListener& m_listener;
    OrbiTraceLevel m_shownTrace;
    OrbiTraceLevel m_expectedTrace;
    LastCommand m_last;
    RadioUnit m_radio;
    Summary m_summary;
    /** A failure of the last command, the start-up included, that no expectation has asked for yet. */
    bool m_failureOpen = false;
    bool m_lastWasBoot = true;
    bool m_over = false;
};

} // namespace Radio

#endif
