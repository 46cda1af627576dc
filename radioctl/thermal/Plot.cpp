#include "radioctl/thermal/Plot.h"

#include "radioctl/page/Svg.h"

#include <algorithm>
#include <sstream>
#include <string_view>

namespace Radio::Thermal {

namespace {

/** More than a screen has columns. */
constexpr std::int64_t parts = 1000;

std::string scriptFor(const Plot& plot) {
    const TimeUnit unit = unitFor(plot.end - plot.begin);
    const auto scaled = [&](std::int64_t seconds) {
        return static_cast<double>(seconds - plot.begin) / static_cast<double>(unit.seconds);
    };
    std::ostringstream script;
    script.precision(10);
    script << "set terminal svg noenhanced dynamic size 960,300 font 'sans-serif,13'\n"
              "set key outside top right horizontal\n"
              "set grid\n"
              "set border 3\n"
              "set tics nomirror\n"
              "set offsets graph 0, graph 0, graph 0.08, graph 0.08\n"
              "set xrange [0:"
           << (plot.end == plot.begin ? 1.0 : scaled(plot.end)) << "]\n"
           << "set xlabel '" << unit.name << " from the beginning of the log'\n"
           << "set ylabel '" << plot.yLabel << "'\n";
    for (std::size_t i = 0; i < plot.curves.size(); ++i) {
        script << "$curve" << i << " << END\n";
        for (const Point& point : plot.curves[i].points) {
            script << scaled(point.seconds) << ' ' << point.value << '\n';
        }
        // A step needs two ends: a log of one sample is drawn as a level.
        if (plot.end == plot.begin && !plot.curves[i].points.empty()) {
            script << "1 " << plot.curves[i].points.back().value << '\n';
        }
        script << "END\n";
    }
    script << "plot ";
    for (std::size_t i = 0; i < plot.curves.size(); ++i) {
        const Curve& curve = plot.curves[i];
        script << (i == 0 ? "" : ", ") << "$curve" << i << " with steps linewidth 2 dashtype "
               << (curve.isDashed ? "2" : "1") << " linecolor rgb '" << curve.colour << "' title '"
               << curve.title << "'";
    }
    script << '\n';
    return script.str();
}

} // namespace

std::int64_t Series::partOf(std::int64_t seconds) const {
    return (seconds - m_begin) * parts / (m_end - m_begin + 1);
}

void Series::append(std::vector<Point>& points, const std::vector<Point>& part) {
    std::vector<Point> inOrder = part;
    std::stable_sort(inOrder.begin(), inOrder.end(),
                     [](const Point& one, const Point& other) { return one.seconds < other.seconds; });
    for (const Point& point : inOrder) {
        if (points.empty() || points.back().seconds != point.seconds) {
            points.push_back(point);
        }
    }
}

void Series::add(std::int64_t seconds, double value) {
    const Point point{seconds, value};
    if (!m_part.empty() && partOf(m_part.front().seconds) != partOf(seconds)) {
        append(m_points, m_part);
        m_part.clear();
    }
    if (m_part.empty()) {
        m_part = {point, point, point, point};
        return;
    }
    m_part[1] = value < m_part[1].value ? point : m_part[1];
    m_part[2] = value > m_part[2].value ? point : m_part[2];
    m_part[3] = point;
}

std::vector<Point> Series::points() const {
    std::vector<Point> points = m_points;
    append(points, m_part);
    if (!points.empty() && points.back().seconds < m_end) {
        points.push_back({m_end, points.back().value});
    }
    return points;
}

TimeUnit unitFor(std::int64_t seconds) {
    constexpr std::int64_t minute = 60;
    constexpr std::int64_t hour = 60 * minute;
    constexpr std::int64_t day = 24 * hour;
    if (seconds <= 5 * minute) {
        return {"seconds", 1};
    }
    if (seconds <= 3 * hour) {
        return {"minutes", minute};
    }
    return seconds <= 3 * day ? TimeUnit{"hours", hour} : TimeUnit{"days", day};
}

std::string drawSvg(const Plot& plot) {
    return Page::drawSvg(scriptFor(plot), plot.id, plot.title);
}

} // namespace Radio::Thermal
