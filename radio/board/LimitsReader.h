#ifndef RADIO_BOARD_LIMITSREADER_H
#define RADIO_BOARD_LIMITSREADER_H

#include "radio/board/Board.h"
#include "radio/board/TomlItem.h"

namespace Radio {

/** The section [limits] of a board file, if there is one. Throws InputError for what cannot be used. */
Limits readLimits(const TomlItem& root);

} // namespace Radio

#endif
