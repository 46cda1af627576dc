#ifndef RADIOCTL_CALIBRATE_PAGE_CORRECTIONPLANE_H
#define RADIOCTL_CALIBRATE_PAGE_CORRECTIONPLANE_H

#include "radio/calibration/Calibration.h"
#include "radio/model/LeakageModel.h"
#include "radioctl/calibrate/page/PlotScript.h"

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace Radio::Calibration {

/** A part of the plane of corrections. */
struct Plane {
    Range i;
    Range q;
};

/** All of it that may be set. */
Plane wholePlane(const Settings& settings);

/** Around the result and all probes from the one at `first` on. */
Plane planeAround(const Point& point, std::size_t first);

/** Where probes are in it. */
std::vector<PlotPoint> placesOf(const std::vector<Probe>& probes);

/** What leaks with each pair of corrections; of a real radio nobody knows, and there are only the axes. Gives
 * how the plot command begins. `leakage` is null on hardware. */
std::string writePlane(std::ostream& script, const LeakageDescription* leakage, const Point& point,
                       const Plane& plane);

} // namespace Radio::Calibration

#endif
