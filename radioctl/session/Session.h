#ifndef RADIOCTL_SESSION_H
#define RADIOCTL_SESSION_H

#include "Board.h"
#include "Command.h"
#include "LastCommand.h"
#include "Radio.h"
#include "Reporter.h"
#include "Script.h"

#include <cstdint>
#include <optional>

namespace Radioctl {

/** Boots one radio and carries out commands on it, telling a reporter what happens. */
class Session {
public:
    /**
     * `reporter` must outlive the object. `shownTrace` chooses the trace messages that are shown; what
     * expectations see does not depend on it.
     */
    Session(const Board& board, Reporter& reporter, OrbiTraceLevel shownTrace);

    /** Runs the phases of a start-up, up to the first that fails. */
    void boot();
    /** Carries out one command, which has been checked against the board. */
    void execute(const ScriptLine& line);
    /** True once a command has asked to leave. */
    bool isOver() const { return m_over; }
    /** Ends the session; what it came to. Without the parts that only the program knows. */
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

    Reporter& m_reporter;
    OrbiTraceLevel m_shownTrace;
    OrbiTraceLevel m_expectedTrace;
    LastCommand m_last;
    Radio m_radio;
    Summary m_summary;
    /** A failure of the last command, the start-up included, that no expectation has asked for yet. */
    bool m_failureOpen = false;
    bool m_lastWasBoot = true;
    bool m_over = false;
};

} // namespace Radioctl

#endif
