#ifndef RADIOCTL_THERMAL_PLOT_H
#define RADIOCTL_THERMAL_PLOT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Radio::Thermal {

struct Point {
    std::int64_t seconds;
    double value;
};

/**
 * A value over time for a plot. It keeps a few points for each of a thousand parts of the time, the lowest
 * and the highest among them, so that a plot of a week is not larger than it can show.
 */
class Series {
public:
    Series(std::int64_t begin, std::int64_t end) : m_begin(begin), m_end(end) {}

    /** Adds a value that holds from `seconds` on; in the order of time, between begin and end. */
    void add(std::int64_t seconds, double value);
    /** The points in the order of time, up to the end. */
    std::vector<Point> points() const;

private:
    /** Takes over the points of a part. */
    static void append(std::vector<Point>& points, const std::vector<Point>& part);
    std::int64_t partOf(std::int64_t seconds) const;

    std::int64_t m_begin;
    std::int64_t m_end;
    std::vector<Point> m_points;
    /** First, lowest, highest and last point of the part that is being filled; empty at the beginning. */
    std::vector<Point> m_part;
};

struct Curve {
    std::string title;
    /** As "#rrggbb". */
    std::string colour;
    bool isDashed;
    std::vector<Point> points;
};

struct TimeUnit {
    std::string_view name;
    std::int64_t seconds;
};

/** The unit in which a time is read most easily. */
TimeUnit unitFor(std::int64_t seconds);

/** Curves over one time. All texts are the program's own, without quotation marks. */
struct Plot {
    /** What the names inside the drawing begin with: one of its own for each plot of a page. */
    std::string id;
    /** Read to those who do not see the plot. */
    std::string title;
    std::string yLabel;
    std::int64_t begin;
    std::int64_t end;
    std::vector<Curve> curves;
};

/** Has gnuplot draw the plot; gives an svg element for a page. Throws InputError when it cannot. */
std::string drawSvg(const Plot& plot);

} // namespace Radio::Thermal

#endif
