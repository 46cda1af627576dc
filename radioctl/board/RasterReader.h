#ifndef RADIOCTL_BOARD_RASTERREADER_H
#define RADIOCTL_BOARD_RASTERREADER_H

#include "Board.h"
#include "TomlItem.h"

#include <vector>

namespace Radioctl {

/** The [[raster]] tables of a board file, in its order; for `channels`, or some of them. */
std::vector<RasterDescription> readRasters(const TomlItem& root,
                                           const std::vector<ChannelDescription>& channels);

} // namespace Radioctl

#endif
