#ifndef RADIOCTL_CALIBRATION_CALIBRATIONREADER_H
#define RADIOCTL_CALIBRATION_CALIBRATIONREADER_H

#include "Board.h"
#include "TomlItem.h"

#include <vector>

namespace Radioctl {

/** The [[calibration]] tables of a board file, in its order; each for another one of `channels`. */
std::vector<CalibrationDescription> readCalibrations(const TomlItem& root,
                                                     const std::vector<ChannelDescription>& channels);

} // namespace Radioctl

#endif
