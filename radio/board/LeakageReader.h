#ifndef RADIO_BOARD_LEAKAGEREADER_H
#define RADIO_BOARD_LEAKAGEREADER_H

#include "radio/board/Board.h"
#include "radio/board/TomlItem.h"

#include <vector>

namespace Radio {

/** The [[leakage]] tables of a board file, in its order; each for another one of `channels`, and bound to
 * some of `drivers`. */
std::vector<LeakageDescription> readLeakages(const TomlItem& root,
                                             const std::vector<ChannelDescription>& channels,
                                             const std::vector<DriverDescription>& drivers);

} // namespace Radio

#endif
