#ifndef RADIO_BOARD_BOARDDRAFT_H
#define RADIO_BOARD_BOARDDRAFT_H

#include "radio/board/Board.h"

#include <string>

/** Board files to begin with. Touches no radio; may be called on any thread. */
namespace Radio {

/**
 * The text of a board file for a radio of one channel of this type, with a comment for everything that has to
 * be known of the board. What the library alone decides stands there; what only the board's maker knows is
 * left open, so that checkBoard() names it.
 *
 * `band`: first and last carrier, in kHz, both within carrierBounds. `stem`: the name of the file without its
 * ending, after which the file of its LO-cancellation tables is called.
 */
std::string draftBoard(::FrequencyHandler::FrequencyHandlerType type, Range band, const std::string& stem);

} // namespace Radio

#endif
