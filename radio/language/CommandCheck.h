#ifndef RADIO_LANGUAGE_COMMANDCHECK_H
#define RADIO_LANGUAGE_COMMANDCHECK_H

#include "radio/board/Board.h"
#include "radio/board/BoardNames.h"
#include "radio/session/Command.h"

namespace Radio {

/** Holds commands against a board before anything is carried out. */
class CommandCheck {
public:
    /** `board` must outlive the object. `hasKeys`: somebody can press a key when they have seen enough. */
    explicit CommandCheck(const Board& board, bool hasKeys = false)
        : m_board(board),
          m_names(board),
          m_hasKeys(hasKeys) {}

    /**
     * Throws WordError when `command` names a channel, driver, variable, table or interface that the board
     * does not have, or a LO leakage that it does not model, gives a variable more values than it has places,
     * or states a size for an array that it does not have; and when nothing would end it.
     */
    void check(const Command& command) const;

    const BoardNames& names() const { return m_names; }

private:
    const Board& m_board;
    BoardNames m_names;
    bool m_hasKeys;
};

} // namespace Radio

#endif
