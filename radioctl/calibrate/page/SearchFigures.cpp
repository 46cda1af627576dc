#include "radioctl/calibrate/page/SearchFigures.h"

#include "radioctl/calibrate/page/CorrectionPlane.h"
#include "radioctl/calibrate/page/PlotScript.h"
#include "radioctl/calibrate/page/SearchPath.h"
#include "radioctl/page/Html.h"
#include "radioctl/page/Svg.h"

#include <algorithm>
#include <iterator>

namespace Radio::Calibration {

namespace {

/** More corners of curves than this make a drawing large, and nothing clearer. */
constexpr std::size_t mostCorners = 5000;

void writePath(std::ostream& out, const LeakageDescription* leakage, const Point& point, const Plane& plane,
               const std::string& id, const std::string& title) {
    std::ostringstream script = beginScript(960, 640);
    const std::string beginning = writePlane(script, leakage, point, plane);
    writeBlock(script, "probes", placesOf(point.probes));
    writeBlock(script, "best", placesOf(bestProbes(point)));
    writeBlock(script, "result", {{static_cast<double>(point.i), static_cast<double>(point.q)}});
    script << "set xlabel 'I, units of its driver'\nset ylabel 'Q, units of its driver'\n"
           << "plot " << beginning
           << ", $probes using 1:2 with points pointtype 7 pointsize 0.5 linecolor rgb 'white' notitle"
              ", $probes using 1:2 with points pointtype 6 pointsize 0.5 linecolor rgb 'black' title 'probe'"
              ", $best using 1:2 with lines linewidth 3 linecolor rgb 'black' notitle"
              ", $best using 1:2 with linespoints pointtype 7 pointsize 0.5 linewidth 1.5 linecolor rgb '"
           << Page::orange
           << "' title 'best probe of each iteration'"
              ", $result using 1:2 with points pointtype 7 pointsize 1.1 linecolor rgb 'white' notitle"
              ", $result using 1:2 with points pointtype 2 pointsize 0.9 linecolor rgb 'black' title 'result'"
              "\n";
    Page::writeFigure(out, title, Page::drawSvg(script.str(), id, title));
}

/** The points that were searched to their ends, with at least one iteration. */
std::vector<const Point*> searched(const Result& result) {
    std::vector<const Point*> points;
    for (const Point& point : result.points) {
        if (point.state != PointState::failed && point.probes.size() >= probesOfIteration) {
            points.push_back(&point);
        }
    }
    return points;
}

void writePathNote(std::ostream& out, const LeakageDescription* leakage, const Point& point) {
    const std::string place =
        std::to_string(point.frequency) + " kHz, " + std::to_string(point.temperature) + " °C";
    if (leakage == nullptr) {
        out << "<p class=\"note\">The search at the point with the highest reading at its first probe: "
            << place
            << ". A path that jumps about took wrong turns: the detector settles too slowly, is noisy, or "
               "does "
               "not see what leaks.</p>\n";
        return;
    }
    out << "<p class=\"note\">The search at the point that leaked most without corrections: " << place
        << ", over what the modelled transmitter leaks with each pair of corrections; its colours are its "
           "own. The path should run into the dark hollow, and the result be at its bottom. A search that "
           "ends "
           "beside it took a wrong turn: the detector settles too slowly, is noisy, or does not see what "
           "leaks."
           "</p>\n";
}

void writePaths(std::ostream& out, const Settings& settings, const LeakageDescription* leakage,
                const Point& point) {
    const std::size_t iterations = bestProbes(point).size();
    writePathNote(out, leakage, point);
    writePath(out, leakage, point, wholePlane(settings), "path", "Path of a search");
    if (const std::size_t half = iterations / 2; half != 0) {
        writePath(out, leakage, point, planeAround(point, half * probesOfIteration), "path-end",
                  "The same path from iteration " + std::to_string(half + 1) + " on");
    }
}

void writeConvergence(std::ostream& out, const std::vector<std::vector<double>>& searches, bool isHardware) {
    std::vector<PlotPoint> middle;
    for (const double level : medianOf(searches)) {
        middle.push_back({static_cast<double>(middle.size() + 1), level});
    }
    const std::size_t stride = searches.size() * middle.size() / mostCorners + 1;
    std::ostringstream script = beginScript(960, 360);
    script << "$searches << END\n";
    for (std::size_t k = 0; k < searches.size(); k += stride) {
        for (std::size_t iteration = 0; iteration < searches[k].size(); ++iteration) {
            script << iteration + 1 << ' ' << searches[k][iteration] << '\n';
        }
        script << '\n';
    }
    script << "END\n";
    writeBlock(script, "median", middle);
    script << "set grid\nset xlabel 'iteration'\nset ylabel '"
           << (isHardware ? "reading of the best probe" : "leakage of the best probe, dBc") << "'\n"
           << "set xrange [0.5:" << static_cast<double>(middle.size()) + 0.5 << "]\n"
           << "set offsets graph 0, graph 0, graph 0.05, graph 0.05\n"
           << "plot $searches using 1:2 with " << (middle.size() == 1 ? "points pointtype 7" : "lines")
           << " linewidth 0.7 linecolor rgb '#88aabb' title 'one point', $median using 1:2 with linespoints "
              "pointtype 7 pointsize 0.4 "
              "linewidth 3 linecolor rgb '"
           << Page::blue << "' title 'median of all'\n";
    out << "<p class=\"note\">"
        << (isHardware ? "What the detector read at the best probe of each iteration. "
                       : "What leaks with the best probe of each iteration, as the model has it. ")
        << "The curves "
           "should fall until a step of the corrections, or the floor of the detector, ends it. A curve that "
           "stays high shows a search that went astray.";
    if (stride > 1) {
        out << " Every " << stride << ". point is drawn; the median is that of all.";
    }
    out << "</p>\n";
    Page::writeFigure(out, "Convergence",
                      Page::drawSvg(script.str(), "convergence", "Convergence of the searches"));
}

} // namespace

void writeSearchFigures(std::ostream& out, const Result& result, const LeakageDescription* leakage) {
    const std::vector<const Point*> points = searched(result);
    if (points.empty()) {
        return;
    }
    const Point& worst =
        **std::max_element(points.begin(), points.end(), [leakage](const Point* one, const Point* other) {
            return leakage != nullptr ? one->before < other->before : one->firstReading < other->firstReading;
        });
    std::vector<std::vector<double>> searches;
    std::transform(points.begin(), points.end(), std::back_inserter(searches), [leakage](const Point* point) {
        return leakage != nullptr ? convergenceOf(*point, *leakage) : convergenceOf(*point);
    });
    out << "<h2>How the searches went</h2>\n";
    writePaths(out, result.settings, leakage, worst);
    writeConvergence(out, searches, leakage == nullptr);
}

} // namespace Radio::Calibration
