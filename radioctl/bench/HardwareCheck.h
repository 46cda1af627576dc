#ifndef RADIOCTL_BENCH_HARDWARECHECK_H
#define RADIOCTL_BENCH_HARDWARECHECK_H

#include "radio/board/Board.h"

namespace Radio {

/** Looks for every device and attribute of a board, writing nothing, and shows what it found; gives the exit
 * code. Throws InputError for a board without hardware. */
int checkHardware(const Board& board, bool json);

} // namespace Radio

#endif
