#ifndef RADIOCTL_MODEL_LEAKAGEREADER_H
#define RADIOCTL_MODEL_LEAKAGEREADER_H

#include "Board.h"
#include "TomlItem.h"

#include <vector>

namespace Radioctl {

/** The [[leakage]] tables of a board file, in its order; each for another one of `channels`, and bound to
 * some of `drivers`. */
std::vector<LeakageDescription> readLeakages(const TomlItem& root,
                                             const std::vector<ChannelDescription>& channels,
                                             const std::vector<DriverDescription>& drivers);

} // namespace Radioctl

#endif
