#ifndef RADIO_SESSION_SESSION_H
#define RADIO_SESSION_SESSION_H

#include "radio/board/Board.h"
#include "radio/session/ChannelFailures.h"
#include "radio/session/Command.h"
#include "radio/session/LastCommand.h"
#include "radio/session/RadioUnit.h"
#include "radio/session/ScriptLine.h"
#include "radio/session/SessionListener.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Radio {

/** Asked again and again while drivers are watched: waits so long at most, and says whether to go on. */
using Watching = std::function<bool(std::chrono::milliseconds)>;

/**
 * Boots one radio and carries out commands on it, telling a listener what happens. One radio at a time in a
 * process, and all calls on one thread. It throws nothing of its own: what goes wrong is told to the listener
 * and counted in the summary.
 */
class Session {
public:
    /**
     * `board` and `listener` must outlive the object. `shownTrace` chooses the trace messages that are shown;
     * what expectations see does not depend on it. `hardware`, if the radio is to have it, must outlive the
     * object, too.
     */
    Session(const Board& board, SessionListener& listener, OrbiTraceLevel shownTrace,
            Devices::Hardware* hardware = nullptr);

    /**
     * Is asked before an action is carried out, and before each carrier of a sweep as if it were tuned alone.
     * What it answers is told as a warning; an empty text: there is nothing to say.
     */
    void setGuard(std::function<std::string(const Action&)> guard) { m_guard = std::move(guard); }
    /** Whether an action of which the guard warns is left undone unless it is forced; off at the start. */
    void setRefusing(bool isRefusing) { m_isRefusing = isRefusing; }
    /** Is asked whether to go on, between the steps of commands that have several and every 100 ms of those
     * that take time. */
    void setGoOn(std::function<bool()> goOn) { m_goOn = std::move(goOn); }
    /**
     * Is called when drivers begin to be watched; what it gives is asked at least every 100 ms, and destroyed
     * at the end. A watch without an end of its own is carried out only where this is set.
     */
    void setWatching(std::function<Watching()> watching) { m_watching = std::move(watching); }
    /** Is called before each action, and every 100 ms while one takes time. What it does to the radio counts
     * to the action before, or to the one that takes time. */
    void setIdle(std::function<void()> idle) { m_idle = std::move(idle); }

    /** Runs the phases of a start-up, up to the first that fails. To be called first, and once. */
    void boot();
    /** Carries out one command, which has been checked against the board. */
    void execute(const ScriptLine& line);
    /**
     * Tells the radio a temperature that nobody typed, in degrees Celsius; gives how many observers were
     * told. What it writes is told to the listener, and is not what the last command did.
     */
    std::size_t sense(int degrees);
    RadioUnit& radio() { return m_radio; }
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

    bool refuses(const Action& action);
    void warnOfWrite(const std::pair<std::string, std::int64_t>& write);
    static Outcome refusal();
    bool goesOn() const { return !m_goOn || m_goOn(); }
    void idle() const;
    /** Lets time pass unless somebody wants to leave; how much of it has passed. */
    std::chrono::microseconds letPass(std::chrono::microseconds time);
    /** The same while drivers are watched; false when there is no need to go on. */
    bool letPassWatching(std::chrono::microseconds time, const Watching& watching, bool isWaiting);
    void tellReading(Standalone::Driver& driver, std::string& known, double seconds);

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
    Outcome carryOut(const ReadDriver& command);
    Outcome carryOut(const WriteDriver& command);
    Outcome carryOut(const Watch& command);
    Outcome carryOut(const Wait& command);
    Outcome carryOut(const Sweep& command);
    Outcome carryOut(const Repeat& command);
    Outcome carryOut(const Help& command);
    Outcome carryOut(const Quit& command);

    const Board& m_board;
    SessionListener& m_listener;
    OrbiTraceLevel m_shownTrace;
    bool m_isOnHardware;
    OrbiTraceLevel m_expectedTrace;
    LastCommand m_last;
    ChannelFailures m_failures;
    /** Calls that are told only if they turn out to matter; null: calls are told at once. */
    std::vector<Standalone::Call>* m_heldCalls = nullptr;
    RadioUnit m_radio;
    Summary m_summary;
    /** A failure of the last command, the start-up included, that no expectation has asked for yet. */
    bool m_failureOpen = false;
    bool m_lastWasBoot = true;
    bool m_over = false;
    /** Where the line stands that is carried out. */
    Place m_place;

    std::function<std::string(const Action&)> m_guard;
    bool m_isRefusing = false;
    /** What the guard said of the last action. */
    std::string m_warning;
    std::function<bool()> m_goOn;
    std::function<Watching()> m_watching;
    std::function<void()> m_idle;
};

} // namespace Radio

#endif
