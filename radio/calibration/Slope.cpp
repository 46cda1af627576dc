#include "radio/calibration/Slope.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace Radio::Calibration {

namespace {

constexpr std::size_t terms = 3;
using Matrix = std::array<std::array<double, terms + 1>, terms>;

constexpr double decibels = 10.0;
/** What all readings together can span, in dB: more tells no detector, less no slope. */
constexpr double mostSpan = 100.0;
constexpr double leastSpan = 1.0;

/** Solves three equations; all unknowns are 0 where there is no solution. */
std::array<double, terms> solve(Matrix matrix) {
    for (std::size_t column = 0; column < terms; ++column) {
        std::size_t best = column;
        for (std::size_t row = column; row < terms; ++row) {
            best = std::abs(matrix[row][column]) > std::abs(matrix[best][column]) ? row : best;
        }
        std::swap(matrix[column], matrix[best]);
        if (matrix[column][column] == 0.0) {
            return {};
        }
        for (std::size_t row = 0; row < terms; ++row) {
            const double factor = row == column ? 0.0 : matrix[row][column] / matrix[column][column];
            for (std::size_t n = column; n <= terms; ++n) {
                matrix[row][n] -= factor * matrix[column][n];
            }
        }
    }
    return {matrix[0][terms] / matrix[0][0], matrix[1][terms] / matrix[1][1],
            matrix[2][terms] / matrix[2][2]};
}

/** Of the relative errors with which a parabola fits powers best, the sum of squares. */
double misfit(const ReadingLine& line, double slope, double highest) {
    const double low = line.front().first;
    const double width = line.back().first - low;
    const auto powers = [&](double place) {
        const double x = width == 0.0 ? 0.0 : 2 * (place - low) / width - 1;
        return std::array<double, terms>{1.0, x, x * x};
    };
    const auto powerOf = [&](double reading) {
        return std::pow(10.0, (reading - highest) / (decibels * slope));
    };
    Matrix equations{};
    for (const auto& [place, reading] : line) {
        const double weight = 1 / powerOf(reading);
        const std::array<double, terms> x = powers(place);
        for (std::size_t row = 0; row < terms; ++row) {
            for (std::size_t column = 0; column < terms; ++column) {
                equations[row][column] += weight * weight * x[row] * x[column];
            }
            equations[row][terms] += weight * x[row];
        }
    }
    const std::array<double, terms> parabola = solve(equations);
    double sum = 0.0;
    for (const auto& [place, reading] : line) {
        const std::array<double, terms> x = powers(place);
        const double value = parabola[0] + parabola[1] * x[1] + parabola[2] * x[2];
        const double error = value / powerOf(reading) - 1;
        sum += error * error;
    }
    return sum;
}

/** What all lines are off, root mean square, in units. */
double misfit(const std::vector<ReadingLine>& lines, double slope, double highest) {
    double sum = 0.0;
    std::size_t count = 0;
    for (const ReadingLine& line : lines) {
        sum += line.empty() ? 0.0 : misfit(line, slope, highest);
        count += line.size();
    }
    return decibels * slope / std::log(10.0) * std::sqrt(sum / static_cast<double>(count));
}

/** By how much the readings differ, and the highest of them. */
std::pair<double, double> spanOf(const std::vector<ReadingLine>& lines) {
    double lowest = std::numeric_limits<double>::max();
    double highest = std::numeric_limits<double>::lowest();
    for (const ReadingLine& line : lines) {
        for (const auto& [place, reading] : line) {
            lowest = std::min(lowest, reading);
            highest = std::max(highest, reading);
        }
    }
    return {highest - lowest, highest};
}

} // namespace

std::optional<double> slopeOf(const std::vector<ReadingLine>& lines, double tolerance) {
    constexpr std::size_t fewest = 8;
    constexpr int steps = 400;
    std::size_t count = 0;
    for (const ReadingLine& line : lines) {
        count += line.size();
    }
    const auto [span, highest] = spanOf(lines);
    if (count < fewest || span <= 0.0) {
        return std::nullopt;
    }
    // Fine enough that nothing is to be gained between two steps: 1.2 % each.
    double best = 0.0;
    double least = std::numeric_limits<double>::max();
    for (int n = 0; n <= steps; ++n) {
        const double slope = span / mostSpan * std::pow(mostSpan / leastSpan, static_cast<double>(n) / steps);
        const double error = misfit(lines, slope, highest);
        if (error < least) {
            least = error;
            best = slope;
        }
    }
    return least <= tolerance ? std::optional<double>(best) : std::nullopt;
}

} // namespace Radio::Calibration
