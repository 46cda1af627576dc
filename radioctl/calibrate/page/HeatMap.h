#ifndef RADIOCTL_CALIBRATE_PAGE_HEATMAP_H
#define RADIOCTL_CALIBRATE_PAGE_HEATMAP_H

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace Radio::Calibration {

/** Where the columns or the rows of a heat map are. */
struct MapAxis {
    /** What a column or row stands for; ascending, at least one. */
    std::vector<double> nodes;
    /** Where it begins, and at the end where the last one ends. */
    std::vector<double> edges;
};

/** Columns or rows around nodes: each reaches halfway to the next one. */
MapAxis axisAround(const std::vector<double>& nodes);

/** Levels over two coordinates, in cells of a colour. */
struct HeatMap {
    MapAxis x;
    MapAxis y;
    /** Row by row; nothing: a hole. */
    std::vector<std::optional<double>> levels;
};

/**
 * The map with no more cells than a picture of it can show: neighbours are one cell, which has the highest
 * level of them, so that nothing bad disappears.
 */
HeatMap thinned(const HeatMap& map);

/** The levels at the two ends of the colours. */
struct ColourScale {
    double low = 0.0;
    double high = 0.0;
};

/** A scale for all these levels, from one round number to another. Levels below -100 are shown as that. */
ColourScale scaleFor(const std::vector<double>& levels);

/** A scale for what a detector read, from the lowest to the highest. */
ColourScale scaleForReadings(const std::vector<double>& readings);

/** All levels that are there. */
std::vector<double> levelsOf(const std::vector<std::optional<double>>& levels);

/** A part of a gnuplot script: axes as wide as the map, with its colours beside it and grey where it has a
 * hole, and its cells as data block $map. `quantity` is what the colours are. */
void writeMap(std::ostream& script, const HeatMap& map, const ColourScale& scale,
              const char* quantity = "leakage, dBc");

/** The cells as the first thing of a plot command. */
constexpr const char* mapPlot =
    "$map using 1:2:3:4:5:6:7 with boxxyerror fillcolor palette fillstyle solid noborder notitle";

/** Colours from dark to bright that are told apart by anybody, and in print: for gnuplot's palette. */
extern const char* const evenPalette;

} // namespace Radio::Calibration

#endif
