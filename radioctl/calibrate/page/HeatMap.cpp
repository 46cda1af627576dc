#include "radioctl/calibrate/page/HeatMap.h"

#include <algorithm>
#include <cmath>

namespace Radio::Calibration {

namespace {

constexpr std::size_t mostColumns = 90;
constexpr std::size_t mostRows = 36;

/** Below this nobody needs to tell levels apart, in dBc. */
constexpr double lowestShown = -100.0;

/** How many neighbours become one, so that not more than `most` are left. */
std::size_t groupSize(const MapAxis& axis, std::size_t most) {
    return (axis.nodes.size() + most - 1) / most;
}

MapAxis grouped(const MapAxis& axis, std::size_t size) {
    MapAxis thin;
    const std::size_t count = axis.nodes.size();
    for (std::size_t first = 0; first < count; first += size) {
        const std::size_t last = std::min(first + size, count) - 1;
        thin.nodes.push_back((axis.nodes[first] + axis.nodes[last]) / 2.0);
        thin.edges.push_back(axis.edges[first]);
    }
    thin.edges.push_back(axis.edges.back());
    return thin;
}

} // namespace

const char* const evenPalette =
    "set palette defined (0 '#440154', 1 '#482475', 2 '#414487', 3 '#355f8d', 4 '#2a788e', 5 '#21918c', "
    "6 '#22a884', 7 '#44bf70', 8 '#7ad151', 9 '#bddf26', 10 '#fde725')\n";

MapAxis axisAround(const std::vector<double>& nodes) {
    // A single one has no neighbour that would say how wide it is.
    const double firstHalf = nodes.size() == 1 ? 0.5 : (nodes[1] - nodes[0]) / 2.0;
    const double lastHalf = nodes.size() == 1 ? 0.5 : (nodes.back() - nodes[nodes.size() - 2]) / 2.0;
    MapAxis axis{nodes, {nodes.front() - firstHalf}};
    for (std::size_t i = 1; i < nodes.size(); ++i) {
        axis.edges.push_back((nodes[i - 1] + nodes[i]) / 2.0);
    }
    axis.edges.push_back(nodes.back() + lastHalf);
    return axis;
}

HeatMap thinned(const HeatMap& map) {
    const std::size_t width = groupSize(map.x, mostColumns);
    const std::size_t height = groupSize(map.y, mostRows);
    HeatMap thin{grouped(map.x, width), grouped(map.y, height), {}};
    const std::size_t columns = thin.x.nodes.size();
    thin.levels.resize(columns * thin.y.nodes.size());
    for (std::size_t i = 0; i < map.levels.size(); ++i) {
        const std::size_t row = i / map.x.nodes.size() / height;
        const std::size_t column = i % map.x.nodes.size() / width;
        // Nothing is less than any level.
        std::optional<double>& level = thin.levels[row * columns + column];
        level = std::max(level, map.levels[i]);
    }
    return thin;
}

std::vector<double> levelsOf(const std::vector<std::optional<double>>& levels) {
    std::vector<double> there;
    for (const std::optional<double>& level : levels) {
        if (level) {
            there.push_back(*level);
        }
    }
    return there;
}

ColourScale scaleFor(const std::vector<double>& levels) {
    if (levels.empty()) {
        return {lowestShown, 0.0};
    }
    const auto [lowest, highest] = std::minmax_element(levels.begin(), levels.end());
    const double low = std::max(std::floor(*lowest / 10.0) * 10.0, lowestShown);
    return {low, std::max(std::ceil(*highest / 10.0) * 10.0, low + 10.0)};
}

ColourScale scaleForReadings(const std::vector<double>& readings) {
    if (readings.empty()) {
        return {0.0, 1.0};
    }
    const auto [lowest, highest] = std::minmax_element(readings.begin(), readings.end());
    return {*lowest, std::max(*highest, *lowest + 1.0)};
}

void writeMap(std::ostream& script, const HeatMap& map, const ColourScale& scale, const char* quantity) {
    const MapAxis& x = map.x;
    const MapAxis& y = map.y;
    script << evenPalette << "set cbrange [" << scale.low << ':' << scale.high << "]\n"
           << "set cblabel '" << quantity << "'\n"
           << "set xrange [" << x.edges.front() << ':' << x.edges.back() << "]\n"
           << "set yrange [" << y.edges.front() << ':' << y.edges.back() << "]\n"
           << "set object 1 rectangle from graph 0,0 to graph 1,1 fillcolor rgb '#dddddd' fillstyle solid "
              "noborder behind\n"
           << "$map << END\n";
    for (std::size_t i = 0; i < map.levels.size(); ++i) {
        if (const std::optional<double>& level = map.levels[i]) {
            const std::size_t column = i % x.nodes.size();
            const std::size_t row = i / x.nodes.size();
            script << x.nodes[column] << ' ' << y.nodes[row] << ' ' << x.edges[column] << ' '
                   << x.edges[column + 1] << ' ' << y.edges[row] << ' ' << y.edges[row + 1] << ' ' << *level
                   << '\n';
        }
    }
    script << "END\n";
}

} // namespace Radio::Calibration
