#ifndef RADIO_PLAN_GUARD_H
#define RADIO_PLAN_GUARD_H

#include "radio/board/Board.h"
#include "radio/session/Command.h"
#include "standalone/Platform.h"

#include <map>
#include <string>

namespace Radio::Plan {

/**
 * Says before an action is carried out what speaks against it, as Session::setGuard() wants it. Remembers
 * which variables were changed and not taken over yet: what a carrier comes to is not known meanwhile.
 */
class Guard {
public:
    /** `board` must outlive the object. `hasSensor`: the temperature is that of real hardware. */
    Guard(const Board& board, bool hasSensor) : m_board(board), m_hasSensor(hasSensor) {}

    /** Empty when nothing speaks against it. `platform` is that of the radio, and only read. */
    std::string whyNot(const Action& action, Standalone::Platform& platform);

private:
    std::string whyNotTuned(const Tune& tune, Standalone::Platform& platform) const;
    std::string whyNotTemperature(int degrees) const;
    void note(const SetVariable& command);
    void note(const RunPhase& command);

    const Board& m_board;
    const bool m_hasSensor;
    /** Variables that were changed, and the phases for which the handlers wait to take them over. */
    std::map<std::string, std::string> m_waiting;
};

} // namespace Radio::Plan

#endif
