#ifndef RADIOCTL_MODEL_TRANSMITTERREADER_H
#define RADIOCTL_MODEL_TRANSMITTERREADER_H

#include "Board.h"
#include "TomlItem.h"

#include <vector>

namespace Radioctl {

/** The [[transmitter]] tables of a board file, in its order; each for another one of `channels`. */
std::vector<TransmitterDescription> readTransmitters(const TomlItem& root,
                                                     const std::vector<ChannelDescription>& channels);

} // namespace Radioctl

#endif
