#include "radioctl/calibrate/page/CorrectionFigures.h"

#include "radioctl/calibrate/page/PlotScript.h"
#include "radioctl/page/Html.h"
#include "radioctl/page/Svg.h"

#include <algorithm>

namespace Radio::Calibration {

namespace {

/** More temperatures than this cannot be told apart by their colours. */
constexpr std::size_t mostCurves = 48;
/** More temperatures than this cannot be written beside their colours. */
constexpr std::size_t mostNames = 12;
/** More points than this run into each other: then only the curves are drawn. */
constexpr std::size_t mostMarks = 1000;
/** More carriers than this make a drawing large, and nothing clearer. */
constexpr std::size_t mostCarriers = 240;

/** From cold to warm, without colours that are too bright for a line. */
constexpr const char* linePalette =
    "set palette defined (0 '#440154', 1 '#414487', 2 '#2a788e', 3 '#22a884', 4 '#a0b020')\n";

/** A part of the values, evenly spread; all of them when they are not more than `most`. */
template <typename Number>
std::vector<Number> spread(const std::vector<Number>& values, std::size_t most) {
    const std::size_t stride = (values.size() + most - 1) / most;
    std::vector<Number> part;
    for (std::size_t k = 0; k < values.size(); k += stride) {
        part.push_back(values[k]);
    }
    return part;
}

/** What is drawn. */
struct Curves {
    std::vector<std::uint32_t> frequencies;
    std::vector<std::int32_t> temperatures;
    /** The points of each temperature, in the order of their carriers. */
    std::vector<std::vector<const Point*>> points;
    /** There are more carriers or temperatures than can be drawn. */
    bool areThinned = false;
};

Curves curvesOf(const std::vector<Point>& points, const Settings& settings) {
    Curves curves{spread(settings.frequencies, mostCarriers), spread(settings.temperatures, mostCurves), {}};
    curves.points.resize(curves.temperatures.size());
    curves.areThinned = curves.frequencies.size() < settings.frequencies.size() ||
                        curves.temperatures.size() < settings.temperatures.size();
    for (const Point& point : points) {
        const auto curve =
            std::lower_bound(curves.temperatures.begin(), curves.temperatures.end(), point.temperature);
        if (curve != curves.temperatures.end() && *curve == point.temperature &&
            std::binary_search(curves.frequencies.begin(), curves.frequencies.end(), point.frequency)) {
            curves.points[static_cast<std::size_t>(curve - curves.temperatures.begin())].push_back(&point);
        }
    }
    return curves;
}

void writeColours(std::ostream& script, const std::vector<std::int32_t>& temperatures) {
    const std::int32_t low = temperatures.front();
    const std::int32_t high = temperatures.back();
    // Colours need a range, even for one temperature.
    script << linePalette << "set cbrange [" << low << ':' << (low == high ? low + 1 : high) << "]\n"
           << "set cblabel 'temperature, °C'\n";
    if (temperatures.size() <= mostNames) {
        script << "set cbtics (";
        for (const std::int32_t temperature : temperatures) {
            script << (temperature == low ? "" : ", ") << temperature;
        }
        script << ")\n";
    }
}

/** As data blocks $curve0 and so on. A failed point is an empty line, which is a gap. */
void writeBlocks(std::ostream& script, const Curves& curves, std::int32_t Point::*correction) {
    for (std::size_t k = 0; k < curves.points.size(); ++k) {
        script << "$curve" << k << " << END\n";
        for (const Point* point : curves.points[k]) {
            if (point->state != PointState::failed) {
                script << inGHz(point->frequency) << ' ' << point->*correction;
            }
            script << '\n';
        }
        script << "END\n";
    }
}

/** There is nothing to be drawn of it. */
bool isEmpty(const std::vector<const Point*>& curve) {
    return std::all_of(curve.begin(), curve.end(),
                       [](const Point* point) { return point->state == PointState::failed; });
}

void writePlot(std::ostream& script, const Curves& curves) {
    const bool hasMarks = curves.frequencies.size() * curves.temperatures.size() <= mostMarks;
    // A plot needs something to begin with.
    script << "plot NaN notitle";
    for (std::size_t k = 0; k < curves.points.size(); ++k) {
        if (!isEmpty(curves.points[k])) {
            script << ", $curve" << k << " using 1:2 with "
                   << (hasMarks ? "linespoints pointtype 7 pointsize 0.4" : "lines")
                   << " linewidth 2 linecolor palette cb " << curves.temperatures[k] << " notitle";
        }
    }
    script << '\n';
}

void writeFigureOf(std::ostream& out, const Curves& curves, const std::string& name,
                   std::int32_t Point::*correction) {
    std::ostringstream script = beginScript(960, 330);
    writeColours(script, curves.temperatures);
    writeBlocks(script, curves, correction);
    const double first = inGHz(curves.frequencies.front());
    const double last = inGHz(curves.frequencies.back());
    if (curves.frequencies.size() == 1) {
        script << "set xrange [" << first - 0.5 << ':' << last + 0.5 << "]\n";
        writeSingleTic(script, 'x', first);
    } else {
        script << "set xrange [" << first << ':' << last << "]\n";
    }
    script << "set grid\nset xlabel 'carrier, GHz'\nset ylabel '" << name << ", units of its driver'\n"
           << "set offsets graph 0, graph 0, graph 0.05, graph 0.05\n";
    writePlot(script, curves);
    const std::string title = "Correction " + name;
    Page::writeFigure(out, title, Page::drawSvg(script.str(), "correction-" + name, title));
}

} // namespace

void writeCorrectionFigures(std::ostream& out, const Result& result) {
    const bool isFit = result.settings.method == CalibrationMethod::fit;
    const Curves curves =
        isFit ? curvesOf(result.nodes, asTables(result).settings) : curvesOf(result.points, result.settings);
    if (std::all_of(curves.points.begin(), curves.points.end(), isEmpty)) {
        return;
    }
    out << (isFit ? "<h2>Corrections in the tables</h2>\n"
                    "<p class=\"note\">These are smooth, as the fit has them: each temperature has a curve "
                    "like its neighbours."
                  : "<h2>Corrections found</h2>\n"
                    "<p class=\"note\">Neighbouring temperatures should have curves alike: a kink that one "
                    "has and "
                    "its "
                    "neighbours have not points to a search that went astray. A gap is a failed point.");
    if (curves.areThinned) {
        out << " There are more points than a picture can show: only some of them are drawn.";
    }
    out << "</p>\n";
    writeFigureOf(out, curves, "I", &Point::i);
    writeFigureOf(out, curves, "Q", &Point::q);
}

} // namespace Radio::Calibration
