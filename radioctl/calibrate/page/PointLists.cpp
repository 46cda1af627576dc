#include "radioctl/calibrate/page/PointLists.h"

#include "radio/text/Words.h"
#include "radioctl/page/Html.h"

#include <algorithm>
#include <optional>
#include <string>

namespace Radio::Calibration {

namespace {

using namespace Page;

/** More points than this are not listed at the top of the page. */
constexpr std::size_t mostNamed = 20;
/** More lines than this make a page that browsers are slow with. */
constexpr std::size_t mostLines = 2000;

bool isNotGood(const Point* point) {
    return point->state != PointState::good;
}

std::string textOf(const std::optional<double>& level) {
    return level ? inTwoDecimals(*level) : "-";
}

std::string textOf(const std::optional<std::int32_t>& reading) {
    return reading ? std::to_string(*reading) : "-";
}

void writePoint(std::ostream& out, const Point& point, bool isHardware) {
    const bool isFailed = point.state == PointState::failed;
    out << (point.state == PointState::good ? "<tr>" : "<tr class=\"bad\">")
        << numberCell(std::to_string(point.frequency)) << numberCell(std::to_string(point.temperature))
        << cell(std::string(toString(point.state))) << numberCell(isFailed ? "-" : std::to_string(point.i))
        << numberCell(isFailed ? "-" : std::to_string(point.q))
        << numberCell(isHardware ? textOf(point.firstReading) : textOf(point.before))
        << numberCell(isFailed     ? "-"
                      : isHardware ? textOf(point.lastReading)
                                   : textOf(point.after))
        << numberCell(std::to_string(point.iterations)) << cell(inHtml(point.remark)) << "</tr>\n";
}

} // namespace

std::string pointPlace(std::uint32_t frequency, std::int32_t temperature) {
    return std::to_string(frequency) + " kHz, " + std::to_string(temperature) + " °C";
}

void writeLine(std::ostream& out, const std::string& what, const std::string& value) {
    out << "<tr><th>" << what << "</th>" << cell(value) << "</tr>\n";
}

void writeWarnings(std::ostream& out, const std::vector<const Point*>& points) {
    const auto bad = static_cast<std::size_t>(std::count_if(points.begin(), points.end(), isNotGood));
    if (bad == 0) {
        return;
    }
    out << "<div class=\"warning\">\n<p>Look at these points before the tables are used:</p>\n<ul>\n";
    std::size_t named = 0;
    for (const Point* point : points) {
        if (isNotGood(point) && named < mostNamed) {
            out << "<li>" << pointPlace(point->frequency, point->temperature) << ": "
                << toString(point->state) << (point->remark.empty() ? "" : ", " + inHtml(point->remark))
                << "</li>\n";
            ++named;
        }
    }
    if (bad > named) {
        out << "<li>and " << bad - named << " more, in the table at the end</li>\n";
    }
    out << "</ul>\n</div>\n";
}

void writePoints(std::ostream& out, std::vector<const Point*> points, bool isHardware) {
    out << "<h2>All points</h2>\n";
    if (points.size() > mostLines) {
        // Those that matter are not to be the ones that are left out.
        std::stable_partition(points.begin(), points.end(), isNotGood);
        out << "<p>Those that are not good, and some of the others: " << mostLines << " of " << points.size()
            << ".</p>\n";
        points.resize(mostLines);
    }
    out << "<table>\n<tr><th class=\"number\">kHz</th><th class=\"number\">°C</th><th>state</th>"
           "<th class=\"number\">I</th><th class=\"number\">Q</th>"
        << (isHardware ? R"(<th class="number">first reading</th><th class="number">last reading</th>)"
                       : R"(<th class="number">before, dBc</th><th class="number">after, dBc</th>)")
        << "<th class=\"number\">iterations</th><th>remark</th></tr>\n";
    for (const Point* point : points) {
        writePoint(out, *point, isHardware);
    }
    out << "</table>\n";
}

} // namespace Radio::Calibration
