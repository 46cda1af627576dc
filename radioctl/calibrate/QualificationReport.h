#ifndef RADIOCTL_CALIBRATE_QUALIFICATIONREPORT_H
#define RADIOCTL_CALIBRATE_QUALIFICATIONREPORT_H

#include "radio/calibration/Qualification.h"

#include <string>

namespace Radio::Calibration {

/** "Detector: settles within 4.2 ms, noise 1.1, 25.0 units per dB; ..." and a line for each warning; of a
 * chain that was refused why. With line ends. */
std::string qualificationText(const Qualification& qualification);

} // namespace Radio::Calibration

#endif
