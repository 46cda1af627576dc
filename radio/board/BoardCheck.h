#ifndef RADIO_BOARD_BOARDCHECK_H
#define RADIO_BOARD_BOARDCHECK_H

#include "radio/board/Board.h"
#include "radio/board/Finding.h"

#include <filesystem>
#include <vector>

/** Boards, looked through before a radio is made of them. Touches no radio; may be called on any thread. */
namespace Radio {

/**
 * Holds the board against what its channels will ask the platform for. The findings come in the order of
 * their lines; there are none for a board on which everything fits.
 */
std::vector<Finding> checkBoard(const Board& board);

/** Throws InputError for the first error that checkBoard() finds. */
void requireUsable(const Board& board);

/** Reads a board like loadBoard(), and throws InputError also for the first error that checkBoard() finds. */
Board loadUsableBoard(const std::filesystem::path& file);

} // namespace Radio

#endif
