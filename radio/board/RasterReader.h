#ifndef RADIO_BOARD_RASTERREADER_H
#define RADIO_BOARD_RASTERREADER_H

#include "radio/board/Board.h"
#include "radio/board/TomlItem.h"

#include <vector>

namespace Radio {

/** The [[raster]] tables of a board file, in its order; for `channels`, or some of them. */
std::vector<RasterDescription> readRasters(const TomlItem& root,
                                           const std::vector<ChannelDescription>& channels);

} // namespace Radio

#endif
