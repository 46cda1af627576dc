#include "radio/calibration/Surface.h"

#include "standalone/Interpolation.h"

#include <algorithm>
#include <functional>

namespace Radio::Calibration {

namespace {

/** How many parts a cell between four points is cut into, along each axis. */
constexpr std::int64_t partsOfCell = 8;

/** Where `node` is on an axis; it is there. */
template <typename Number>
std::size_t indexOf(const std::vector<Number>& axis, Number node) {
    return static_cast<std::size_t>(std::lower_bound(axis.begin(), axis.end(), node) - axis.begin());
}

/** What each point of a calibration has of something, for each temperature all carriers. */
template <typename Value, typename ValueOf>
std::vector<std::optional<Value>> onGrid(const Result& result, ValueOf valueOf) {
    const std::vector<std::uint32_t>& frequencies = result.settings.frequencies;
    const std::vector<std::int32_t>& temperatures = result.settings.temperatures;
    std::vector<std::optional<Value>> grid(frequencies.size() * temperatures.size());
    for (const Point& point : result.points) {
        if (point.state != PointState::failed) {
            const std::size_t row = indexOf(temperatures, point.temperature);
            grid.at(row * frequencies.size() + indexOf(frequencies, point.frequency)) = valueOf(point);
        }
    }
    return grid;
}

/** The nodes of an axis and what lies between them. */
template <typename Number>
std::vector<Number> refined(const std::vector<Number>& axis) {
    std::vector<Number> fine{axis.front()};
    for (std::size_t i = 1; i < axis.size(); ++i) {
        const std::vector<std::int64_t> steps = evenSteps(axis[i - 1], axis[i], partsOfCell);
        std::transform(steps.begin() + 1, steps.end(), std::back_inserter(fine),
                       [](std::int64_t step) { return static_cast<Number>(step); });
    }
    return fine;
}

/** A calibration table of the platform. */
struct Table {
    std::vector<std::int32_t> frequencies;
    std::vector<std::int32_t> temperatures;
    std::vector<std::int32_t> values;

    std::int32_t at(std::uint32_t frequency, std::int32_t temperature) const {
        return Standalone::Interpolation::bilinear(frequencies, temperatures, values,
                                                   static_cast<std::int32_t>(frequency), temperature);
    }
};

/** The table of one correction; nothing when a point has none. */
std::optional<Table> tableOf(const Result& result, std::int32_t Point::*correction) {
    const auto grid =
        onGrid<std::int32_t>(result, [correction](const Point& point) { return point.*correction; });
    if (grid.empty() || std::find(grid.begin(), grid.end(), std::nullopt) != grid.end()) {
        return std::nullopt;
    }
    const std::vector<std::uint32_t>& frequencies = result.settings.frequencies;
    Table table{{}, result.settings.temperatures, {}};
    for (std::size_t column = 0; column < frequencies.size(); ++column) {
        table.frequencies.push_back(static_cast<std::int32_t>(frequencies[column]));
        for (std::size_t row = 0; row < table.temperatures.size(); ++row) {
            table.values.push_back(*grid[row * frequencies.size() + column]);
        }
    }
    return table;
}

/** The first of the points with the highest level or reading; nothing when none of them has one. */
template <typename LevelOf>
std::optional<Worst> worstPoint(const std::vector<Point>& points, LevelOf levelOf) {
    std::optional<Worst> worst;
    for (const Point& point : points) {
        const auto level = std::invoke(levelOf, point);
        if (point.state != PointState::failed && level && (!worst || *level > worst->level)) {
            worst = Worst{static_cast<double>(*level), point.frequency, point.temperature};
        }
    }
    return worst;
}

LeakageSummary countStates(const Result& result) {
    LeakageSummary summary;
    for (const Point& point : result.points) {
        ++(point.state == PointState::good     ? summary.good
           : point.state == PointState::missed ? summary.missed
           : point.state == PointState::edge   ? summary.edge
                                               : summary.failed);
    }
    return summary;
}

} // namespace

std::optional<double> seenLevel(const Point& point) {
    // Nothing is less than any level.
    return std::max(point.after, point.analysed);
}

std::optional<Worst> worstSeen(const std::vector<Point>& points) {
    return worstPoint(points, seenLevel);
}

std::vector<std::int64_t> evenSteps(std::int64_t low, std::int64_t high, std::int64_t parts) {
    std::vector<std::int64_t> steps;
    for (std::int64_t part = 0; part <= parts; ++part) {
        const std::int64_t step = low + (high - low) * part / parts;
        if (steps.empty() || steps.back() != step) {
            steps.push_back(step);
        }
    }
    return steps;
}

Surface leakageBefore(const Result& result) {
    return {result.settings.frequencies, result.settings.temperatures,
            onGrid<double>(result, [](const Point& point) { return point.before; })};
}

Surface leakageAfter(const Result& result) {
    return {result.settings.frequencies, result.settings.temperatures,
            onGrid<double>(result, [](const Point& point) { return point.after; })};
}

Surface firstReadings(const Result& result) {
    return {result.settings.frequencies, result.settings.temperatures,
            onGrid<double>(result, [](const Point& point) { return point.firstReading; })};
}

Surface lastReadings(const Result& result) {
    return {result.settings.frequencies, result.settings.temperatures,
            onGrid<double>(result, [](const Point& point) { return point.lastReading; })};
}

std::optional<Surface> leakageBetween(const Result& result, const LeakageDescription& leakage) {
    const std::optional<Table> i = tableOf(result, &Point::i);
    const std::optional<Table> q = tableOf(result, &Point::q);
    if (!i || !q) {
        return std::nullopt;
    }
    Surface surface{refined(result.settings.frequencies), refined(result.settings.temperatures), {}};
    surface.levels.reserve(surface.frequencies.size() * surface.temperatures.size());
    for (const std::int32_t temperature : surface.temperatures) {
        for (const std::uint32_t frequency : surface.frequencies) {
            surface.levels.emplace_back(
                leakageLevel(leakage, {frequency, static_cast<double>(temperature)},
                             {i->at(frequency, temperature), q->at(frequency, temperature)}));
        }
    }
    return surface;
}

std::optional<Worst> worstOf(const Surface& surface) {
    // Nothing is less than any level.
    const auto worst = std::max_element(surface.levels.begin(), surface.levels.end());
    if (worst == surface.levels.end() || !*worst) {
        return std::nullopt;
    }
    const auto index = static_cast<std::size_t>(worst - surface.levels.begin());
    return Worst{**worst, surface.frequencies[index % surface.frequencies.size()],
                 surface.temperatures[index / surface.frequencies.size()]};
}

LeakageSummary summarise(const Result& result, const LeakageDescription& leakage) {
    LeakageSummary summary = summarise(result);
    if (const std::optional<Surface> between = leakageBetween(asTables(result), leakage)) {
        summary.between = worstOf(*between);
    }
    return summary;
}

LeakageSummary summarise(const Result& result) {
    LeakageSummary summary = countStates(result);
    summary.before = worstPoint(result.points, &Point::before);
    summary.after = worstPoint(result.points, &Point::after);
    summary.seen = worstSeen(result.points);
    summary.tried = worstSeen(result.tries);
    summary.firstReading = worstPoint(result.points, &Point::firstReading);
    summary.lastReading = worstPoint(result.points, &Point::lastReading);
    if (result.fit && result.fit->claim && !result.fit->isRelative) {
        const Fit::LevelAt& claim = *result.fit->claim;
        summary.claim = Worst{claim.level, claim.place.carrier, claim.place.temperature};
    }
    return summary;
}

} // namespace Radio::Calibration
