#ifndef RADIOCTL_COMMANDCHECK_H
#define RADIOCTL_COMMANDCHECK_H

#include "Board.h"
#include "BoardNames.h"
#include "Command.h"

namespace Radioctl {

/** Holds commands against a board before anything is carried out. */
class CommandCheck {
public:
    /** `board` must outlive the object. */
    explicit CommandCheck(const Board& board) : m_board(board), m_names(board) {}

    /**
     * Throws CommandError when `command` names a channel, driver, variable, table or interface that the board
     * does not have, or a LO leakage that it does not model, gives a variable more values than it has places,
     * or states a size for an array that it does not have.
     */
    void check(const Command& command) const;

    const BoardNames& names() const { return m_names; }

private:
    const Board& m_board;
    BoardNames m_names;
};

} // namespace Radioctl

#endif
