#include "radioctl/calibrate/page/SearchPath.h"

#include "radio/text/Median.h"

#include <algorithm>
#include <array>

namespace Radio::Calibration {

std::vector<Probe> bestProbes(const Point& point) {
    std::vector<Probe> best;
    std::array<std::int32_t, probesOfIteration> readings{};
    for (std::size_t first = 0; first + probesOfIteration <= point.probes.size();
         first += probesOfIteration) {
        std::size_t winner = 0;
        for (std::size_t i = 0; i < probesOfIteration; ++i) {
            readings[i] = point.probes[first + i].reading.value_or(readings[i]);
            winner = readings[i] <= readings[winner] ? i : winner;
        }
        best.push_back(point.probes[first + winner]);
    }
    return best;
}

std::vector<double> convergenceOf(const Point& point, const LeakageDescription& leakage) {
    std::vector<double> levels;
    for (const Probe& probe : bestProbes(point)) {
        levels.push_back(leakageLevel(leakage, {point.frequency, static_cast<double>(point.temperature)},
                                      {probe.i, probe.q}));
    }
    return levels;
}

std::vector<double> convergenceOf(const Point& point) {
    std::vector<double> readings;
    for (const Probe& probe : bestProbes(point)) {
        readings.push_back(probe.reading.value_or(0));
    }
    return readings;
}

std::vector<double> medianOf(const std::vector<std::vector<double>>& searches) {
    std::size_t longest = 0;
    for (const std::vector<double>& search : searches) {
        longest = std::max(longest, search.size());
    }
    std::vector<double> medians;
    for (std::size_t iteration = 0; iteration < longest; ++iteration) {
        std::vector<double> values;
        for (const std::vector<double>& search : searches) {
            if (!search.empty()) {
                values.push_back(search[std::min(iteration, search.size() - 1)]);
            }
        }
        medians.push_back(median(values));
    }
    return medians;
}

} // namespace Radio::Calibration
