#include "radioctl/calibrate/page/CorrectionPlane.h"

#include "radio/calibration/Surface.h"
#include "radioctl/calibrate/page/HeatMap.h"

#include <algorithm>
#include <iterator>

namespace Radio::Calibration {

namespace {

/** Cells of a map of the plane of corrections, along each axis. */
constexpr std::int64_t partsOfPlane = 47;

/** The range with both ends in their order. */
Range inOrder(const Range& range) {
    return {std::min(range.low, range.high), std::max(range.low, range.high)};
}

HeatMap mapOf(const LeakageDescription& leakage, const Point& point, const Plane& plane) {
    const std::vector<std::int64_t> columns = evenSteps(plane.i.low, plane.i.high, partsOfPlane);
    const std::vector<std::int64_t> rows = evenSteps(plane.q.low, plane.q.high, partsOfPlane);
    HeatMap map{axisAround({columns.begin(), columns.end()}), axisAround({rows.begin(), rows.end()}), {}};
    for (const std::int64_t q : rows) {
        for (const std::int64_t i : columns) {
            map.levels.emplace_back(
                leakageLevel(leakage, {point.frequency, static_cast<double>(point.temperature)},
                             {static_cast<std::int32_t>(i), static_cast<std::int32_t>(q)}));
        }
    }
    return map;
}

} // namespace

Plane wholePlane(const Settings& settings) {
    return {inOrder(settings.i), inOrder(settings.q)};
}

Plane planeAround(const Point& point, std::size_t first) {
    Plane plane{{point.i, point.i}, {point.q, point.q}};
    const auto widen = [](Range& range, std::int64_t value) {
        range = {std::min(range.low, value), std::max(range.high, value)};
    };
    for (std::size_t k = first; k < point.probes.size(); ++k) {
        widen(plane.i, point.probes[k].i);
        widen(plane.q, point.probes[k].q);
    }
    return plane;
}

std::vector<PlotPoint> placesOf(const std::vector<Probe>& probes) {
    std::vector<PlotPoint> places;
    std::transform(probes.begin(), probes.end(), std::back_inserter(places), [](const Probe& probe) {
        return PlotPoint{static_cast<double>(probe.i), static_cast<double>(probe.q)};
    });
    return places;
}

std::string writePlane(std::ostream& script, const LeakageDescription* leakage, const Point& point,
                       const Plane& plane) {
    if (leakage == nullptr) {
        script << "set grid\nset xrange [" << plane.i.low - 1 << ':' << plane.i.high + 1 << "]\nset yrange ["
               << plane.q.low - 1 << ':' << plane.q.high + 1 << "]\n";
        return "NaN notitle";
    }
    const HeatMap map = mapOf(*leakage, point, plane);
    writeMap(script, map, scaleFor(levelsOf(map.levels)));
    return mapPlot;
}

} // namespace Radio::Calibration
