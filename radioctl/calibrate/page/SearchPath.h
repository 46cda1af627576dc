#ifndef RADIOCTL_CALIBRATE_PAGE_SEARCHPATH_H
#define RADIOCTL_CALIBRATE_PAGE_SEARCHPATH_H

#include "radio/calibration/Calibration.h"
#include "radio/model/LeakageModel.h"

#include <vector>

namespace Radio::Calibration {

/** How many probes an iteration of a search makes. */
constexpr std::size_t probesOfIteration = 4;

/**
 * Which probe each complete iteration took for the best: that with the lowest reading, of equal ones the
 * last. As for the search, a probe without a reading has that of the iteration before, in the first one 0.
 */
std::vector<Probe> bestProbes(const Point& point);

/** The modelled leakage of the best probe of each complete iteration, in dBc. */
std::vector<double> convergenceOf(const Point& point, const LeakageDescription& leakage);

/** What the detector read at the best probe of each complete iteration. */
std::vector<double> convergenceOf(const Point& point);

/** The values in the middle, for each iteration of the longest search; a search that has ended stays at its
 * last value. Empty ones do not count. */
std::vector<double> medianOf(const std::vector<std::vector<double>>& searches);

} // namespace Radio::Calibration

#endif
