#include "radioctl/calibrate/page/FitFigures.h"

#include "radioctl/calibrate/page/CorrectionPlane.h"
#include "radioctl/calibrate/page/PlotScript.h"
#include "radioctl/calibrate/page/PointLists.h"
#include "radioctl/page/Html.h"
#include "radioctl/page/Svg.h"

#include <algorithm>
#include <string>
#include <vector>

namespace Radio::Calibration {

namespace {

/** The last of the probes at a point: a ring of four and one at what it tells. */
constexpr std::size_t lastProbes = 5;

/** Marks of one kind. */
struct Series {
    const char* name;
    const char* title;
    /** How gnuplot draws them. */
    std::string style;
    std::vector<PlotPoint> marks{};
};

/** Everything that was probed, by what came of it. */
class SeriesOfAll {
public:
    Series& of(PointState state) {
        return state == PointState::good ? m_all[0] : state == PointState::failed ? m_all[2] : m_all[1];
    }
    Series& of(const Fit::Verification& tried) { return tried.isAsForetold ? m_all[3] : m_all[4]; }

    bool isEmpty() const {
        return std::all_of(m_all.begin(), m_all.end(),
                           [](const Series& series) { return series.marks.empty(); });
    }
    void writeBlocks(std::ostream& script) const {
        for (const Series& series : m_all) {
            writeBlock(script, series.name, series.marks);
        }
    }
    /** Adds them to a plot. */
    void writePlot(std::ostream& plot) const {
        for (const Series& series : m_all) {
            if (!series.marks.empty()) {
                plot << ", $" << series.name << " using 1:2 with points " << series.style << " title '"
                     << series.title << "'";
            }
        }
    }

private:
    std::vector<Series> m_all{
        {"good", "point", std::string("pointtype 7 pointsize 0.6 linecolor rgb '") + Page::blue + "'"},
        {"other", "point, missed or at an edge",
         std::string("pointtype 9 pointsize 0.9 linecolor rgb '") + Page::orange + "'"},
        {"failed", "failed", "pointtype 2 pointsize 0.9 linecolor rgb 'black'"},
        {"foretold", "tried, as foretold",
         std::string("pointtype 6 pointsize 0.8 linewidth 1.5 linecolor rgb '") + Page::green + "'"},
        {"worse", "tried, worse than foretold",
         std::string("pointtype 4 pointsize 1 linewidth 1.5 linecolor rgb '") + Page::orange + "'"}};
};

/** The axis of the carriers, with some room beside the ends of the band. */
void writeCarriers(std::ostream& script, const Settings& settings) {
    const double first = inGHz(settings.frequencies.front());
    const double last = inGHz(settings.frequencies.back());
    const double room = first == last ? 0.5 : (last - first) / 40;
    script << "set grid\nset xlabel 'carrier, GHz'\nset xrange [" << first - room << ':' << last + room
           << "]\n";
    if (first == last) {
        writeSingleTic(script, 'x', first);
    }
}

void writePlaces(std::ostream& out, const Result& result) {
    SeriesOfAll series;
    for (const Point& point : result.points) {
        series.of(point.state)
            .marks.push_back({inGHz(point.frequency), static_cast<double>(point.temperature)});
    }
    for (const Fit::Verification& tried : result.fit->verifications) {
        series.of(tried).marks.push_back(
            {inGHz(tried.place.carrier), static_cast<double>(tried.place.temperature)});
    }
    std::ostringstream script = beginScript(960, 330);
    writeCarriers(script, result.settings);
    const double low = result.settings.temperatures.front();
    const double high = result.settings.temperatures.back();
    const double room = low == high ? 0.5 : (high - low) / 12;
    script << "set ylabel 'temperature, °C'\nset yrange [" << low - room << ':' << high + room << "]\n";
    if (low == high) {
        writeSingleTic(script, 'y', low);
    }
    series.writeBlocks(script);
    script << "plot NaN notitle";
    series.writePlot(script);
    script << '\n';
    out << "<p class=\"note\">At the points the best corrections were looked for; at the places where the "
           "table was tried there was one probe, with what the radio would set there.</p>\n";
    const std::string title = "Where it was probed";
    Page::writeFigure(out, title, Page::drawSvg(script.str(), "places", title));
}

void writeLevels(std::ostream& out, const Result& result) {
    const Fit::Outcome& fit = *result.fit;
    SeriesOfAll series;
    for (std::size_t k = 0; k < fit.points.size(); ++k) {
        const Fit::Point& point = fit.points[k];
        if (point.level) {
            series.of(result.points.at(k).state).marks.push_back({inGHz(point.place.carrier), *point.level});
        }
    }
    for (const Fit::Verification& tried : fit.verifications) {
        series.of(tried).marks.push_back({inGHz(tried.place.carrier), tried.level});
    }
    if (series.isEmpty()) {
        return;
    }
    std::ostringstream script = beginScript(960, 330);
    writeCarriers(script, result.settings);
    script << "set ylabel 'level, " << (fit.isRelative ? "dB against the first probe" : "dBc") << "'\n"
           << "set offsets graph 0, graph 0, graph 0.1, graph 0.1\n";
    series.writeBlocks(script);
    script << "plot ";
    if (fit.claim) {
        script << fit.claim->level << " with lines linewidth 2 linecolor rgb '" << Page::purple
               << "' title 'claimed anywhere, at most'";
    } else {
        script << "NaN notitle";
    }
    series.writePlot(script);
    script << '\n';
    out << "<p class=\"note\">What the detector read at the last probe of each point, and where the table "
           "was "
           "tried, as a level. Its own floor and noise are in these, and not in the claim"
        << (fit.isRelative ? "; where it reads 0 is not known, so that levels are relative to what leaked "
                             "without corrections at the first point"
                           : "")
        << ".</p>\n";
    const std::string title = "Levels read by the detector, over the carrier";
    Page::writeFigure(out, title, Page::drawSvg(script.str(), "levels", title));
}

void writeProbes(std::ostream& out, const LeakageDescription* leakage, const Point& point, const Plane& plane,
                 const std::string& id, const std::string& title) {
    std::ostringstream script = beginScript(960, 640);
    const std::string beginning = writePlane(script, leakage, point, plane);
    writeBlock(script, "probes", placesOf(point.probes));
    writeBlock(script, "result", {{static_cast<double>(point.i), static_cast<double>(point.q)}});
    script << "set xlabel 'I, units of its driver'\nset ylabel 'Q, units of its driver'\n"
           << "plot " << beginning
           << ", $probes using 1:2 with points pointtype 7 pointsize 0.8 linecolor rgb 'white' notitle"
              ", $probes using 1:2 with points pointtype 6 pointsize 0.8 linecolor rgb 'black' title 'probe'"
              ", $result using 1:2 with points pointtype 7 pointsize 1.1 linecolor rgb 'white' notitle"
              ", $result using 1:2 with points pointtype 2 pointsize 0.9 linecolor rgb 'black' title 'result'"
              "\n";
    Page::writeFigure(out, title, Page::drawSvg(script.str(), id, title));
}

/** The one with the most of something among the points that have corrections and probes; null when none has.
 */
template <typename Amount>
const Point* mostOf(const Result& result, Amount amountOf) {
    const Point* most = nullptr;
    for (const Point& point : result.points) {
        const bool isShown = point.state != PointState::failed && !point.probes.empty();
        if (isShown && (most == nullptr || amountOf(point) > amountOf(*most))) {
            most = &point;
        }
    }
    return most;
}

/** The point that shows the whole bowl, and the last probes of the one with the most left. */
void writeProbesOfTwo(std::ostream& out, const Result& result, const LeakageDescription* leakage) {
    const bool isHardware = leakage == nullptr;
    const Point* const longest = mostOf(result, [](const Point& point) { return point.probes.size(); });
    const Point* const worst = mostOf(result, [isHardware](const Point& point) {
        return isHardware ? point.lastReading.value_or(0) : point.after.value_or(0.0);
    });
    if (longest == nullptr || worst == nullptr) {
        return;
    }
    out << "<p class=\"note\">The point with the most probes: "
        << pointPlace(longest->frequency, longest->temperature)
        << (isHardware ? "" : ", over what the modelled transmitter leaks with each pair of corrections")
        << ". Rings of probes, one narrower than the other, tell the form of the bowl.</p>\n";
    writeProbes(out, leakage, *longest, wholePlane(result.settings), "probes", "The most probes of a point");
    out << "<p class=\"note\">The point "
        << (isHardware ? "with the highest last reading: " : "that leaks most with its corrections: ")
        << pointPlace(worst->frequency, worst->temperature)
        << ". The probes around the corrections that were expected tell where the bottom of the bowl is; the "
           "result should be at it.</p>\n";
    const std::size_t first = worst->probes.size() - std::min(worst->probes.size(), lastProbes);
    writeProbes(out, leakage, *worst, planeAround(*worst, first), "probes-end",
                "The last probes of the worst point");
}

} // namespace

void writeFitFigures(std::ostream& out, const Result& result, const LeakageDescription* leakage) {
    if (result.points.empty()) {
        return;
    }
    out << "<h2>How the fit went</h2>\n";
    writePlaces(out, result);
    writeLevels(out, result);
    writeProbesOfTwo(out, result, leakage);
}

} // namespace Radio::Calibration
