#ifndef RADIO_BOARD_TRANSMITTERREADER_H
#define RADIO_BOARD_TRANSMITTERREADER_H

#include "radio/board/Board.h"
#include "radio/board/TomlItem.h"

#include <vector>

namespace Radio {

/** The [[transmitter]] tables of a board file, in its order; each for another one of `channels`. */
std::vector<TransmitterDescription> readTransmitters(const TomlItem& root,
                                                     const std::vector<ChannelDescription>& channels);

} // namespace Radio

#endif
