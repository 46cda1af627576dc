#include "radioctl/calibrate/page/LeakageFigures.h"

#include "radio/calibration/Surface.h"
#include "radioctl/calibrate/page/HeatMap.h"
#include "radioctl/calibrate/page/PlotScript.h"
#include "radioctl/page/Html.h"
#include "radioctl/page/Svg.h"

#include <algorithm>
#include <iterator>

namespace Radio::Calibration {

namespace {

/** More marks of a kind than this hide what is below them. */
constexpr std::size_t mostMarksOfAKind = 600;

HeatMap mapOf(const Surface& surface) {
    std::vector<double> columns;
    std::transform(surface.frequencies.begin(), surface.frequencies.end(), std::back_inserter(columns),
                   inGHz);
    const std::vector<double> rows(surface.temperatures.begin(), surface.temperatures.end());
    return thinned({axisAround(columns), axisAround(rows), surface.levels});
}

/** Where the points are, by their state. */
struct Marks {
    std::vector<PlotPoint> good;
    std::vector<PlotPoint> missed;
    std::vector<PlotPoint> edge;
    std::vector<PlotPoint> failed;
};

std::size_t cellOf(const MapAxis& axis, double coordinate) {
    const auto behind = std::upper_bound(axis.edges.begin() + 1, axis.edges.end() - 1, coordinate);
    return static_cast<std::size_t>(behind - axis.edges.begin()) - 1;
}

/** One for each cell, for the worst of its points. */
Marks marksOf(const Result& result, const HeatMap& map) {
    const std::size_t columns = map.x.nodes.size();
    std::vector<std::optional<PointState>> states(map.levels.size());
    for (const Point& point : result.points) {
        std::optional<PointState>& state =
            states[cellOf(map.y, point.temperature) * columns + cellOf(map.x, inGHz(point.frequency))];
        state = std::max(state, std::optional(point.state));
    }
    Marks marks;
    for (std::size_t i = 0; i < states.size(); ++i) {
        if (states[i]) {
            std::vector<PlotPoint>& those = states[i] == PointState::good     ? marks.good
                                            : states[i] == PointState::missed ? marks.missed
                                            : states[i] == PointState::edge   ? marks.edge
                                                                              : marks.failed;
            those.push_back({map.x.nodes[i % columns], map.y.nodes[i / columns]});
        }
    }
    for (std::vector<PlotPoint>* those : {&marks.good, &marks.missed, &marks.edge, &marks.failed}) {
        if (those->size() > mostMarksOfAKind) {
            those->clear();
        }
    }
    return marks;
}

/** How a mark looks: gnuplot's type and size, on something white so that it is seen on any colour. */
struct MarkStyle {
    int type;
    double size;
    int typeBelow;
    double sizeBelow;
};
constexpr MarkStyle goodStyle{7, 0.25, 7, 0.45};
constexpr MarkStyle missedStyle{4, 0.8, 7, 1.1};
constexpr MarkStyle edgeStyle{8, 0.9, 7, 1.2};
constexpr MarkStyle failedStyle{2, 0.8, 7, 1.1};
constexpr MarkStyle worstStyle{6, 1.4, 6, 1.6};

/** Adds marks to a plot. */
void writeMarks(std::ostream& plot, const std::string& block, const std::vector<PlotPoint>& points,
                const MarkStyle& style, const std::string& title) {
    if (points.empty()) {
        return;
    }
    plot << ", $" << block << " using 1:2 with points pointtype " << style.typeBelow << " pointsize "
         << style.sizeBelow << " linecolor rgb 'white' notitle, $" << block
         << " using 1:2 with points pointtype " << style.type << " pointsize " << style.size
         << " linecolor rgb 'black' title '" << title << "'";
}

/** What all these pictures have alike. */
struct Frame {
    ColourScale scale;
    Marks marks;
    /** What the colours are, and what is said of the highest. */
    const char* quantity = "leakage, dBc";
    const char* worst = "highest leakage";
    const char* edge = "at the edge of the search range";
};

/** One picture; its name and title are the program's own. */
void writeFigureOf(std::ostream& out, const Frame& frame, const Surface& surface, const std::string& id,
                   const std::string& title) {
    std::ostringstream script = beginScript(960, 330);
    const HeatMap map = mapOf(surface);
    writeMap(script, map, frame.scale, frame.quantity);
    script << "set xlabel 'carrier, GHz'\nset ylabel 'temperature, °C'\n";
    if (map.x.nodes.size() == 1) {
        writeSingleTic(script, 'x', map.x.nodes.front());
    }
    if (map.y.nodes.size() == 1) {
        writeSingleTic(script, 'y', map.y.nodes.front());
    }
    std::vector<PlotPoint> worst;
    if (const std::optional<Worst> found = worstOf(surface)) {
        worst.push_back({inGHz(found->frequency), static_cast<double>(found->temperature)});
    }
    writeBlock(script, "good", frame.marks.good);
    writeBlock(script, "missed", frame.marks.missed);
    writeBlock(script, "edge", frame.marks.edge);
    writeBlock(script, "failed", frame.marks.failed);
    writeBlock(script, "worst", worst);
    // A plot needs something to begin with, even if no cell has a level.
    script << "plot " << (worst.empty() ? "NaN notitle" : mapPlot);
    writeMarks(script, "good", frame.marks.good, goodStyle, "point");
    writeMarks(script, "missed", frame.marks.missed, missedStyle, "missed a limit");
    writeMarks(script, "edge", frame.marks.edge, edgeStyle, frame.edge);
    writeMarks(script, "failed", frame.marks.failed, failedStyle, "failed");
    writeMarks(script, "worst", worst, worstStyle, frame.worst);
    script << '\n';
    Page::writeFigure(out, title, Page::drawSvg(script.str(), id, title));
}

} // namespace

void writeLeakageFigures(std::ostream& out, const Result& result, const LeakageDescription& leakage) {
    const bool isFit = result.settings.method == CalibrationMethod::fit;
    const std::optional<Result> tables = isFit ? std::optional(asTables(result)) : std::nullopt;
    const Result& nodes = tables ? *tables : result;
    out << "<h2>Leakage over carrier and temperature</h2>\n";
    if (nodes.settings.frequencies.empty()) {
        out << "<p class=\"note\">There are no tables, and so there is no picture of them.</p>\n";
        return;
    }
    const Surface before = leakageBefore(nodes);
    const Surface after = leakageAfter(nodes);
    const std::optional<Surface> between = leakageBetween(nodes, leakage);
    std::vector<double> levels;
    for (const Surface* surface : {&before, &after, between ? &*between : nullptr}) {
        if (surface != nullptr) {
            const std::vector<double> those = levelsOf(surface->levels);
            levels.insert(levels.end(), those.begin(), those.end());
        }
    }
    Frame frame{scaleFor(levels), marksOf(result, mapOf(before))};
    if (isFit) {
        frame.edge = "at an edge";
    }

    out << "<p class=\"note\">One colour scale for all of these: bright is high leakage, dark is low. The "
           "first "
           "picture may be bright; the second should be dark everywhere. A coloured field is what leaks at "
           "its "
        << (isFit ? "node of the tables; the points that were fitted are marked.</p>\n"
                  : "point; of a field with several points, at the worst of them. Grey fields have no "
                    "corrections.</p>\n");
    writeFigureOf(out, frame, before, "before", "Before: without corrections");
    writeFigureOf(out, frame, after, "after",
                  isFit ? "After: with the corrections of the tables, at their nodes"
                        : "After: with the corrections found, at the points");
    if (between) {
        out << (isFit ? "<p class=\"note\">Between the nodes the radio interpolates its corrections. Bright "
                        "places there mean that the leakage is not as smooth as the fit took it to be.</p>\n"
                      : "<p class=\"note\">Between the points the radio interpolates its corrections. Bright "
                        "places "
                        "there, away from the points, mean that the points are too far apart.</p>\n");
        writeFigureOf(out, frame, *between, "between",
                      isFit ? "After, between the nodes: with interpolated corrections"
                            : "After, between the points: with interpolated corrections");
    } else {
        out << "<p class=\"note\">There is no picture of the leakage between the points, because not every "
               "point has corrections from which to interpolate.</p>\n";
    }
}

void writeReadingFigures(std::ostream& out, const Result& result) {
    const Surface first = firstReadings(result);
    const Surface last = lastReadings(result);
    std::vector<double> readings = levelsOf(first.levels);
    const std::vector<double> others = levelsOf(last.levels);
    readings.insert(readings.end(), others.begin(), others.end());
    const Frame frame{scaleForReadings(readings), marksOf(result, mapOf(first)), "reading of the detector",
                      "highest reading"};
    out << "<h2>Readings over carrier and temperature</h2>\n"
           "<p class=\"note\">One colour scale for both: bright is a high reading, dark is a low one. The "
           "first picture may be bright; the second should be dark everywhere. Grey fields have no "
           "corrections.</p>\n";
    writeFigureOf(out, frame, first, "first", "At the first probe of each search");
    writeFigureOf(out, frame, last, "last", "At the last probe of each search");
}

} // namespace Radio::Calibration
