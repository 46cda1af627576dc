#ifndef PYTHON_BINDING_BOARDHANDLE_H
#define PYTHON_BINDING_BOARDHANDLE_H

#include "python/binding/Unlocked.h"
#include "python/binding/Values.h"
#include "radio/board/Board.h"
#include "radio/board/Finding.h"
#include "radio/board/PlatformWords.h"
#include "radio/board/Verdict.h"

#include <memory>
#include <set>
#include <string>

namespace Radio::Python {

/** A board as Python has it. What is made of it has a copy of its own: a board may be changed meanwhile. */
struct BoardHandle {
    Board board;
    /** Names of the tables that are not those of their files any more: Python has replaced them. */
    std::set<std::string> replaced{};

    std::shared_ptr<const Board> copy() const { return std::make_shared<const Board>(board); }
};

/** For messages, "a radio of board.toml". */
std::string named(const char* what, const Board& board);

/** Throws WordError for a channel that the board does not have. */
const ChannelDescription& channelOf(const Board& board, int number);
/** "tx" or "rx"; throws WordError for another word. */
Direction directionOf(const std::string& word);

/** (severity, (file, line), text) for each. */
py::list toPython(const std::vector<Finding>& findings);
/** As frequencyhandler/verdict.py takes it. */
py::dict toPython(const Verdict& verdict);

} // namespace Radio::Python

#endif
